#include "transfer/blockReader.h"

#include "common/checked.h"
#include "common/variables.h"
#include "link/commPort.h"
#include "platform/desktop.h"
#include "transfer/xModem.h"
#include "ui/language.h"
#include "ui/messages.h"
#include "ui/stringTable.h"

#include <algorithm>
#include <array>
#include <span>

using platform::Bytes;

namespace FirmComm {

namespace {

constexpr std::int64_t silenceLimit = 3000; // milliseconds
constexpr std::int64_t pieceGap = 1000;     // a longer pause ends a block caught in the middle
constexpr std::int32_t packetSize = xModem::headerSize + blockSize + 1;

struct ControlRow {
    std::uint8_t byte;
    std::int32_t result;
};
constexpr std::array controlRows{
    ControlRow{xModem::ack, found::ack},
    ControlRow{xModem::nak, found::nak},
    ControlRow{xModem::eot, found::eot},
    ControlRow{xModem::crcRequest, found::crcRequest},
};

std::int32_t lookAtSilence(std::int64_t now) {
    if (now - run.signOfLifeAt >= silenceLimit) {
        fncMsgBox(textId::applicationError, platform::boxStyle::critical,
                  japaneseSelected() ? "ユニットからの送信が止まりました。何も保存されていません。"
                                     : "The unit stopped sending. Nothing was saved.");
        return found::end;
    }
    return run.blockLength > 0 ? found::noBlock : found::nothing;
}

void keep(std::span<const std::uint8_t> bytes) {
    std::ranges::fill(run.blockBuffer, std::uint8_t{0});
    const auto kept = std::min(bytes.size(), run.blockBuffer.size());
    std::ranges::copy_n(bytes.begin(), static_cast<std::ptrdiff_t>(kept), run.blockBuffer.begin());
    run.blockLength = static_cast<std::int16_t>(kept);
}

bool beginsAsBlock(std::span<const std::uint8_t> bytes) {
    return std::ssize(bytes) > 2 && bytes[0] == xModem::soh && (bytes[1] ^ bytes[2]) == 0xFF;
}

// Right behind a piece, only what begins as a block and is too long for the piece's rest is a block sent again.
bool sentAgain(std::span<const std::uint8_t> bytes) {
    return std::ssize(bytes) >= blockSize && beginsAsBlock(bytes) && run.blockLength + std::ssize(bytes) > packetSize;
}

// Right behind a block that was cut short, its rest comes ahead of everything else. Takes it off `bytes`; data go to their
// place in the image, which held zeros for them.
void takeRest(std::span<const std::uint8_t>& bytes) {
    if (!beginsAsBlock(bytes)) {
        const auto rest = bytes.first(std::min(static_cast<std::size_t>(run.restLength), bytes.size()));
        for (const std::uint8_t byte : rest.first(std::min(static_cast<std::size_t>(run.missingData), rest.size()))) {
            at(run.readBackImage, run.readBackCount - run.missingData) = byte;
            --run.missingData;
        }
        bytes = bytes.subspan(rest.size());
    }
    run.imageDamaged |= run.missingData > 0;
    run.restLength = run.missingData = 0;
}

std::int32_t takePoll(std::span<const std::uint8_t> bytes, std::int64_t now) {
    const bool closeBehind = now - run.signOfLifeAt < pieceGap;
    run.signOfLifeAt = now;
    if (run.restLength > 0 && closeBehind) {
        takeRest(bytes);
    }
    if (bytes.empty()) {
        return found::noBlock;
    }
    if (run.pieceCaught && closeBehind && !sentAgain(bytes)) {
        keep(bytes);
        return found::noBlock;
    }
    run.pieceCaught = false;
    const auto control = std::ranges::find(controlRows, bytes[0], &ControlRow::byte);
    if (control != controlRows.end()) {
        return control->result;
    }
    keep(bytes);
    if (run.blockLength >= blockSize) {
        return found::block;
    }
    run.pieceCaught = run.blockLost = bytes[0] == xModem::soh;
    return found::noBlock;
}

} // namespace

std::int32_t fncReadBlock() {
    try {
        platform::SerialPort& port = CommonComm::serialPort();
        port.setReadLimit(0);
        const Bytes bytes = port.countReceived() > 0 ? port.read() : Bytes();
        const std::int64_t now = platform::desktop().timeGetTime();
        return bytes.empty() ? lookAtSilence(now) : takePoll(bytes, now); // bytes that wait win over a silence
    } catch (const std::exception&) {
        subReportError();
        run.readRefused = true;
        return found::end;
    }
}

void subStoreBlock() {
    try {
        const std::uint8_t number = run.blockBuffer[1];
        if (run.blockLost) {
            run.imageDamaged |= number != static_cast<std::uint8_t>(run.lastBlockNumber + 1);
            run.blockLost = false;
        }
        run.lastBlockNumber = number;
        for (std::int32_t index = xModem::headerSize;
             index < xModem::headerSize + blockSize && run.readBackCount <= imageSize; ++index) {
            at(run.readBackImage, run.readBackCount) = at(run.blockBuffer, index);
            ++run.readBackCount;
        }
        run.restLength = std::max(0, packetSize - run.blockLength);
        run.missingData = std::max(0, run.restLength - 1); // the last byte of a block is its checksum
        frmWait().prbComm.value = std::min(run.readBackCount, imageSize);
    } catch (const std::exception&) {
        subReportError();
    }
}

bool imageIncomplete() {
    return run.imageDamaged || run.blockLost || run.missingData > 0;
}

void subResetReader() {
    std::ranges::fill(run.readBackImage, std::uint8_t{0});
    run.readBackCount = 0;
    run.pieceCaught = run.blockLost = run.imageDamaged = false;
    run.restLength = run.missingData = 0;
    run.lastBlockNumber = 0;
}

} // namespace FirmComm
