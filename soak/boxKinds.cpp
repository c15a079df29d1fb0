#include "soak/boxKinds.h"

#include "ui/messages.h"
#include "ui/stringTable.h"

#include <array>

namespace soak {

namespace {

struct TableRow {
    std::int32_t id;
    BoxKind kind;
};
constexpr std::array tableRows{
    TableRow{textId::fileNotAdapted, BoxKind::otherModel}, TableRow{textId::sensorNotChecked, BoxKind::notChecked},
    TableRow{textId::iniFileMissing, BoxKind::fatal},      TableRow{textId::alreadyStarted, BoxKind::fatal},
    TableRow{textId::notOnlyOneSensor, BoxKind::fatal},    TableRow{textId::unitNotConnected, BoxKind::fatal},
};

struct LiteralRow {
    const char* text;
    BoxKind kind;
};
constexpr std::array literalRows{
    LiteralRow{messageText::succeed, BoxKind::succeed},
    LiteralRow{messageText::succeedJapanese, BoxKind::succeed},
    LiteralRow{messageText::failed, BoxKind::failed},
    LiteralRow{messageText::failedJapanese, BoxKind::failed},
    LiteralRow{messageText::verifyFailedJapanese, BoxKind::verificationFailed},
};

bool isText(const std::string& text, std::int32_t id) {
    return text == loadText(id) || text == loadText(id + englishOffset);
}

} // namespace

BoxKind kindOf(const platform::Box& box) {
    using namespace platform::boxStyle;
    if (box.text == messageText::failed && (box.style & information) == 0) {
        return BoxKind::verificationFailed;
    }
    for (const LiteralRow& row : literalRows) {
        if (box.text == row.text) {
            return row.kind;
        }
    }
    for (const TableRow& row : tableRows) {
        if (isText(box.text, row.id)) {
            return row.kind;
        }
    }
    return box.style == critical + okCancel ? BoxKind::failureDialog : BoxKind::report;
}

} // namespace soak
