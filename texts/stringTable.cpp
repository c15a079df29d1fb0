#include "texts/stringTable.h"

#include "base/failure.h"

#include <algorithm>
#include <array>

namespace {

struct Row {
    std::int32_t id;
    const char* key; // for the reader of this table; not used by the program
    const char* japanese;
    const char* english;
};

// The texts below 4000 are those of the product and are kept unchanged, spelling errors included.
constexpr std::array rows{
    Row{textId::fontName, "IDS_FONTNAME", "ＭＳ Ｐゴシック", "Arial"},
    Row{textId::binFileFilter, "IDS_FILTER_BINFILE", "Binファイル (*.bin)|*.bin||", "Bin File (*.bin)|*.bin||"},

    Row{textId::mainTitle, "IDS_FRMMAIN_TITLE", "Tarn Beacon", "Tarn Beacon"},
    Row{textId::presentHeading, "IDS_FRMMAIN_LBL_PRESENT", "現ソフト", "The present firmware"},
    Row{textId::rewritingHeading, "IDS_FRMMAIN_LBL_REWRITEING", "書換ソフト", "The rewriteing firmware"},
    Row{textId::loadFile, "IDS_FRMMAIN_CMD_LOADING", "読込", "Loading file"},
    Row{textId::savePresent, "IDS_FRMMAIN_CMD_SAVE_PRESENT", "現在のソフトを保存", "Save the present firmware"},
    Row{textId::startUpgrade, "IDS_FRMMAIN_CMD_UPGRADE", "書込開始", "Start upgrade"},
    Row{textId::end, "IDS_FRMMAIN_CMD_END", "終了", "End"},

    Row{textId::cancelStart, "IDS_FRMSTARTUP_CMD_END", "終了", "Cancel"},
    Row{textId::setPort, "IDS_FRMSTARTUP_CMD_TEST", "設定", "Set"},
    Row{textId::speed, "IDS_FRMSTARTUP_LBL_BPS", "通信速度", "COM SPEED"},
    Row{textId::port, "IDS_FRMSTARTUP_LBL_PORT", "COMポート", "COM PORT"},

    Row{textId::waitTitle, "IDS_FRMWAIT_TITLE", "ターンビーコン", "Tarn Beacon"},
    Row{textId::cancelWait, "IDS_FRMWAIT_CMD_CANCEL", "キャンセル", "Cancel"},

    Row{textId::receiveTimeout, "IDS_MSGERR_COMM_TIMEOUT", "受信タイムアウトエラーです。",
        "It is a receiving timeout error."},
    Row{textId::shutDownByCancel, "IDS_MSGERR_COMM_TIMEOUT2", "\r\n[キャンセル]でアプリケーションを終了します。\r\n",
        "\r\nApplication is shut down by [cancel].\r\n"},
    Row{textId::applicationError, "IDS_MSGERR_COMM_EXCEPTION",
        "アプリケーションで異常が発生しました。\r\nRES : ", "Application error.\r\nRES : "},
    Row{textId::portSetup, "IDS_MSGERR_COMM_NO_PORT", "通信ポートの設定に誤りがあります。確認して下さい。",
        "An error is in a setup of a COM port.Please check."},
    Row{textId::portDoesNotOpen, "IDS_MSGERR_COMM_PORTING",
        "通信ポートが開けません。通信ポートを使用するアプリケーションを終了して再度起動して下さい。",
        "A communication port does not open. Please end the application which uses a communication port and start "
        "again."},
    Row{textId::communicationError, "IDS_MSGERR_COMM_NG", "通信で異常が発生しました。", "Communication error."},
    Row{textId::fileNotAdapted, "IDS_MSGERR_NOTADAPTED",
        "書き込むファイルが対象ユニットに対応していないため書込を実行できません。",
        "Since the loaded file is not adapted to the connected unit, firmware upgrade cannot be performed."},
    Row{textId::sensorNotChecked, "IDS_MSGERR_NOTCHECK_CONFIRM",
        "センサと正常に通信できることを確認できませんでした。続行してよろしいですか？\r\n"
        "（「キャンセル」し、再度実行することをお勧めします）",
        "I could not check that it communicate with a sensor normally. May I continue work ? \r\n"
        "( I recommend you to choose \"cancellation\" and perform again)"},
    Row{textId::notOnlyOneSensor, "IDS_MSGERR_NOTONLY_ONE_SENSOR",
        "接続されているセンサが２台以上ですので、ファームウェア書換を実行できません。\r\n"
        "センサ台数を１台にし、電源再投入後、ターンビーコンを再起動させてください。",
        "Since the sensor connected is two or more sets, firmware upgrade cannot be performed. Connect only one "
        "sensor and reboot the application software after resetting sensor power supply."},
    Row{textId::unexpected, "IDS_MSGERR_UNEXPECTED", "予期せぬエラーが発生しました。",
        "The unexpected error occurred."},
    Row{textId::portMissing1, "IDS_MSGERR_COMM_PORT1", "現在の通信ポート(COM", "The present communication port(COM"},
    Row{textId::portMissing2, "IDS_MSGERR_COMM_PORT2", ")は有効ではありません", ")is not effective."},
    Row{textId::iniFileMissing, "IDS_MSGERR_INIFILE_NOTEXIST", "INIファイルが存在しません", "INI file does not exist."},
    Row{textId::unitNotConnected, "IDS_MSGERR_UNIT_NOTCONNECT",
        "ユニット接続状態が異常です。\r\n一度電源を切って接続を確認して下さい。", "Unit connection state is unusual."},

    Row{textId::alreadyStarted, "IDS_MSGDATA_STARTUP_ALREADY", "既にこのアプリケーションは起動されています。",
        "This application is already started."},
    Row{textId::portNotEffective1, "IDS_MSGDATA_COMM_PORT", "現在の通信ポート(COM",
        "The present communication port(COM"},
    Row{textId::portNotEffective2, "IDS_MSGDATA_COMM_PORT2", ")は有効ではありません", ")is not effective."},

    Row{textId::succeed, "IDS_RESULT_SUCCEED", "正常終了", "Succeed"},
    Row{textId::failed, "IDS_RESULT_FAILED", "異常終了", "Failed"},
    Row{textId::verifyFailed, "IDS_RESULT_VERIFY_FAILED", "ベリファイ失敗", "Failed"},
    Row{textId::formatTest, "IDS_RESULT_FORMAT_TEST", "形式認識テストです　書込み処理はスキップします。",
        "形式認識テストです　書込み処理はスキップします。"},
    Row{textId::rawWriteFailed, "IDS_RESULT_RAW_WRITE_FAILED", "エラー", "エラー"},

    Row{textId::silentNothingSaved, "IDS_READ_SILENT_SAVE",
        "ユニットからの送信が止まりました。何も保存されていません。", "The unit stopped sending. Nothing was saved."},
    Row{textId::silentNotVerified, "IDS_READ_SILENT_VERIFY",
        "ユニットからの送信が止まりました。ファームウェアを確認できません。",
        "The unit stopped sending. Its firmware could not be read back."},
    Row{textId::lostNothingSaved, "IDS_READ_LOST_SAVE", "受信できなかったデータがあります。何も保存されていません。",
        "A part of the firmware was lost on the way. Nothing was saved."},
    Row{textId::lostNotVerified, "IDS_READ_LOST_VERIFY", "受信できなかったデータがあります。",
        "A part of the firmware was lost on the way back."},

    Row{textId::verification, "IDS_SCREEN_VERIFICATION", "ベリファイ実行", "Verification"},
    Row{textId::verificationRuns, "IDS_SCREEN_VERIFICATION_RUNS", "ベリファイ中...", "Verification..."},
    Row{textId::updating1, "IDS_SCREEN_UPDATING_1", " のソフトウェアを ver", " is under updating to ver"},
    Row{textId::updating2, "IDS_SCREEN_UPDATING_2", " にアップデート中です。", "."},
    Row{textId::amplifier, "IDS_SCREEN_AMPLIFIER", "アンプ", "Amplifier"},
    Row{textId::interfaceUnit, "IDS_SCREEN_INTERFACE_UNIT", "インターフェースユニット", "Interface unit"},
    Row{textId::file, "IDS_SCREEN_FILE", "ファイル", "File"},
    Row{textId::model, "IDS_SCREEN_MODEL", " 型式", " model"},
    Row{textId::version, "IDS_SCREEN_VERSION", " バージョン", " version"},
    Row{textId::progress, "IDS_SCREEN_PROGRESS", "進行状況", "Progress"},

    Row{textId::boxFailed, "IDS_BOX_FAILED", "fncMsgBox関数のエラー", "fncMsgBox関数のエラー"},
    Row{textId::failureNumber, "IDS_BOX_FAILED_NUMBER", "番号 : ", "番号 : "},
    Row{textId::failureContent, "IDS_BOX_FAILED_CONTENT", "内容 : ", "内容 : "},

    Row{textId::breakOffMeans, "IDS_CLI_BREAK_OFF_MEANS",
        "転送中です。ここで中断すると、書き込みをやり直すまでユニットが動作しないことがあります。転送を続けます。中断す"
        "るには、3秒以内にもう一度操作してください。",
        "A transfer is running. If it is broken off, the unit may have no working firmware until an upgrade succeeds. "
        "The transfer goes on; interrupt again within three seconds to break it off."},
    Row{textId::breakOffReadMeans, "IDS_CLI_BREAK_OFF_READ_MEANS",
        "読み出し中です。ここで中断してもユニットのファームウェアは変わりませんが、"
        "読み出しは初めからやり直しになります。"
        "読み出しを続けます。中断するには、3秒以内にもう一度操作してください。",
        "The firmware of the unit is being read. If that is broken off, it has to be read from the beginning; the unit "
        "keeps its firmware. The reading goes on; interrupt again within three seconds to break it off."},
    Row{textId::brokenOff, "IDS_CLI_BROKEN_OFF", "転送を中断しました。", "The transfer was broken off."},
    Row{textId::portUnusable, "IDS_CLI_PORT_UNUSABLE", "ポート %1 を使用できません（%2）。",
        "The port %1 cannot be used: %2."},
    Row{textId::portHeldBy, "IDS_CLI_PORT_HELD_BY", "使用中のプログラム: %1。そのプログラムを終了してください。",
        "It is held by %1. End that program, or use another port."},
    Row{textId::portListAdvice, "IDS_CLI_PORT_LIST", "「tarnbeacon-cli ports」で使用できるポートを確認できます。",
        "\"tarnbeacon-cli ports\" shows the ports that there are."},
    Row{textId::noUnitAnswers, "IDS_CLI_NO_UNIT",
        "ポート %1 のユニットが応答しません。接続、電源、ポートを確認してください。",
        "No unit answers on %1. Check the cable, the power supply of the unit and the port."},
    Row{textId::unitRefuses, "IDS_CLI_UNIT_REFUSES",
        "ユニットの準備ができていません（コマンド %1 の応答: %2）。電源を入れ直してください。",
        "The unit is not ready: its answer to the command %1 is %2. Switch it off and on."},
    Row{textId::unitSilent, "IDS_CLI_UNIT_SILENT", "ユニットがコマンド %1 に応答しません。",
        "The unit does not answer the command %1."},
    Row{textId::unitUnknown, "IDS_CLI_UNIT_UNKNOWN", "ユニットの型式が得られません。",
        "The unit answers, but gives no model that TYPE.INI knows."},
    Row{textId::fileSize, "IDS_CLI_FILE_SIZE",
        "ファイル %1 は %2 バイトです。ファームウェアのファイルは %3 バイトです。",
        "The file %1 has %2 bytes; a firmware file has %3."},
    Row{textId::fileUnknown, "IDS_CLI_FILE_UNKNOWN", "ファイル %1 の種類は TYPE.INI にありません。",
        "TYPE.INI does not know the type of the file %1."},
    Row{textId::fileExists, "IDS_CLI_FILE_EXISTS",
        "ファイル %1 は既に存在します。上書きするには --overwrite を指定してください。",
        "The file %1 exists already; --overwrite replaces it."},
    Row{textId::written, "IDS_CLI_WRITTEN", "%1: ver%2 を ver%3 に書き換えました。",
        "%1: version %2 was replaced by %3."},
    Row{textId::unchanged, "IDS_CLI_UNCHANGED", "%1: 既に ver%2 です。書き込みは行いませんでした。",
        "%1: has version %2 already, nothing was written."},
    Row{textId::saved, "IDS_CLI_SAVED", "ファームウェアを %1 に保存しました。",
        "The firmware of the unit was saved in %1."},
    Row{textId::transferFailed, "IDS_CLI_TRANSFER_FAILED", "転送に失敗しました。", "The transfer failed."},
    Row{textId::notVerified, "IDS_CLI_NOT_VERIFIED", "書き込みは終わりましたが、ベリファイに失敗しました。",
        "The file was written, but the verification failed."},
    Row{textId::typeFileMissing, "IDS_CLI_TYPE_FILE_MISSING", "%1 に TYPE.INI がありません。",
        "There is no TYPE.INI in %1."},
    Row{textId::typeFileWrong, "IDS_CLI_TYPE_FILE_WRONG", "%1 の TYPE.INI に誤りがあります。",
        "TYPE.INI in %1 is wrong."},
    Row{textId::notChecked, "IDS_CLI_NOT_CHECKED",
        "センサを確認できなかったため、書き込みは行いませんでした。それでも書き込むには --accept-unchecked "
        "を指定してください。",
        "The check of the sensor failed and nothing was written; --accept-unchecked writes nevertheless."},
    Row{textId::answeredOk, "IDS_CLI_ANSWERED_OK", "応答: OK", "Answered: OK"},
    Row{textId::answeredCancel, "IDS_CLI_ANSWERED_CANCEL", "応答: キャンセル", "Answered: Cancel"},
    Row{textId::portOpens, "IDS_CLI_PORT_OPENS", "使用できます", "can be opened"},
    Row{textId::noPorts, "IDS_CLI_NO_PORTS", "シリアルポートがありません。", "There is no serial port."},
    Row{textId::ended, "IDS_CLI_ENDED", "終了しました。", "Ended before the transfer began."},
};

} // namespace

std::string loadText(std::int32_t id) {
    const bool english = id % 1000 >= englishOffset;
    const auto row = std::ranges::find(rows, english ? id - englishOffset : id, &Row::id);
    if (row == rows.end()) {
        throw Failure(failureNumber::noSuchText, "There is no text " + std::to_string(id) + ".");
    }
    return english ? row->english : row->japanese;
}
