#include "transfer/blockReader.h"

#include "base/checked.h"
#include "link/commPort.h"
#include "platform/host.h"
#include "state/variables.h"
#include "texts/language.h"
#include "texts/messages.h"
#include "texts/stringTable.h"
#include "transfer/outcome.h"
#include "transfer/transferMode.h"
#include "transfer/xModem.h"
#include "ui/forms.h"

#include <algorithm>
#include <array>
#include <span>
#include <utility>

namespace FirmComm {

Reader reader;

namespace {

constexpr std::int64_t silenceLimit = 3000; // milliseconds
constexpr std::int32_t packetSize = xModem::headerSize + blockSize + 1;
constexpr std::int32_t allDataReceived = packetSize - 1; // the last byte is the checksum
constexpr std::size_t longestRest = packetSize + 1 - blockSize;

// How long a poll waits for the next byte of a block. Adapters pass bytes on in groups, up to 16 ms apart. After a
// whole block in the checksum form, the second check byte of the CRC form follows at once or not at all.
constexpr int byteGap = 20; // milliseconds
constexpr int checkByteGap = 2;
constexpr int longestWait = 100;

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

void showError(std::int32_t id) {
    fncMsgBox(textId::applicationError, platform::boxStyle::critical, selectedText(id));
}

std::int32_t checkSilence(std::int64_t now) {
    if (now - reader.lastActivityAt < silenceLimit) {
        return reader.blockLength > 0 ? found::noBlock : found::nothing;
    }
    endWith(Outcome::failed);
    showError(verificationSelected() ? textId::silentNotVerified : textId::silentNothingSaved);
    return found::end;
}

void keep(std::span<const std::uint8_t> bytes) {
    std::ranges::fill(reader.blockBuffer, std::uint8_t{0});
    const auto kept = std::min(bytes.size(), reader.blockBuffer.size());
    std::ranges::copy_n(bytes.begin(), static_cast<std::ptrdiff_t>(kept), reader.blockBuffer.begin());
    reader.blockLength = static_cast<std::int16_t>(kept);
}

std::int32_t controlResult(std::uint8_t byte) {
    const auto row = std::ranges::find(controlRows, byte, &ControlRow::byte);
    return row == controlRows.end() ? found::nothing : row->result;
}

bool beginsAsBlock(std::span<const std::uint8_t> bytes) {
    return std::ssize(bytes) >= xModem::headerSize && bytes[0] == xModem::soh && (bytes[1] ^ bytes[2]) == 0xFF;
}

// After a poll that took a part of a block, the bytes of the next poll begin with the rest: at most 5 bytes if the part had
// 128. Returns the block after the rest; empty if there is none.
std::span<const std::uint8_t> skipRest(std::span<const std::uint8_t> bytes) {
    for (std::size_t rest = 0; rest <= std::min(longestRest, bytes.size()); ++rest) {
        if (beginsAsBlock(bytes.subspan(rest))) {
            return bytes.subspan(rest);
        }
    }
    return {};
}

std::int32_t takePoll(std::span<const std::uint8_t> bytes) {
    Reader::CutBlocks& cut = reader.cutBlocks;
    if (cut.restDue && bytes.size() > 1) { // a single byte may be a control byte
        const auto block = skipRest(bytes);
        if (block.empty()) {
            cut.lost |= bytes.size() > longestRest; // they may hold the start of the next block
            keep(bytes);
            return found::noBlock;
        }
        bytes = block;
    }
    cut.restDue = false;
    if (const std::int32_t control = controlResult(bytes[0]); control != found::nothing) {
        return control;
    }
    keep(bytes);
    if (reader.blockLength >= blockSize) {
        cut.restDue = reader.blockLength < packetSize && beginsAsBlock(bytes);
        return found::block;
    }
    if (bytes[0] == xModem::soh) {
        cut.restDue = cut.lost = true;
    }
    return found::noBlock;
}

// A lost block is recovered only by the block with number lastNumber + 1.
void noteStored(Reader::CutBlocks& cut) {
    const std::uint8_t number = reader.blockBuffer[1];
    cut.damaged |=
        reader.blockLength < allDataReceived || (cut.lost && number != static_cast<std::uint8_t>(cut.lastNumber + 1));
    cut.lost = false;
    cut.lastNumber = number;
}

} // namespace

void waitForWholeBlock() {
    try {
        std::int32_t count = CommonComm::serialPort().countReceived();
        for (int waited = 0; count > 0 && count <= packetSize && waited < longestWait;) {
            const int gap = count < packetSize ? byteGap : checkByteGap;
            platform::host().sleep(gap);
            waited += gap;
            const std::int32_t before = std::exchange(count, CommonComm::serialPort().countReceived());
            if (count == before) {
                return;
            }
        }
    } catch (const std::exception&) {
        return; // the next call meets the same failure and reports it
    }
}

std::int32_t fncReadBlock() {
    try {
        platform::SerialPort& port = CommonComm::serialPort();
        port.setReadLimit(0);
        const Bytes bytes = port.countReceived() > 0 ? port.read() : Bytes();
        const std::int64_t now = platform::host().timeGetTime();
        if (bytes.empty()) {
            return checkSilence(now);
        }
        reader.lastActivityAt = now;
        return takePoll(bytes);
    } catch (const std::exception&) {
        reportFailure();
        return found::end;
    }
}

void subStoreBlock() {
    try {
        noteStored(reader.cutBlocks);
        for (std::int32_t index = xModem::headerSize;
             index < xModem::headerSize + blockSize && reader.readBackCount <= imageSize; ++index) {
            at(shared.readBackImage, reader.readBackCount) = at(reader.blockBuffer, index);
            ++reader.readBackCount;
        }
        frmWait().prbComm.value = std::min(reader.readBackCount, imageSize);
    } catch (const std::exception&) {
        subReportError();
    }
}

// After the last block, a part of a block is noise.
bool imageIncomplete() {
    return reader.cutBlocks.damaged || (reader.cutBlocks.lost && reader.readBackCount < imageSize);
}

bool imageArrived() {
    return reader.readBackCount == imageSize && !imageIncomplete();
}

void reportLostBlocks() {
    if (imageIncomplete()) {
        showError(verificationSelected() ? textId::lostNotVerified : textId::lostNothingSaved);
    }
}

void subResetReader() {
    std::ranges::fill(shared.readBackImage, std::uint8_t{0});
    reader.readBackCount = 0;
    reader.cutBlocks = {};
}

} // namespace FirmComm
