#include "soak/toolReader.h"

#include "simulator/frame.h"

#include <algorithm>
#include <array>
#include <string>

namespace soak {

namespace {

constexpr int partsOfFrame = 4;

struct WordRow {
    Word word;
    std::string_view name;
    std::string_view command; // of a frame; "uu" stands for the unit
};
constexpr std::array<WordRow, 15> words{{
    {Word::askIdentification, "0501", "0501"},
    {Word::askState, "0601", "0601"},
    {Word::askVersion, "area D4", "0101D40001000001"},
    {Word::askTypeKey, "area D5", "0101D50001000001"},
    {Word::prepareWrite, "50", "300550uu0000"},
    {Word::startWrite, "51", "300551uu0C00"},
    {Word::startRead, "52", "300552uu0C00"},
    {Word::endTransfer, "54", "300554uu0000"},
    {Word::closeProcedure, "53", "300553uu0000"},
    {Word::block, "block", {}},
    {Word::endOfImage, "EOT", {}},
    {Word::ack, "ACK", {}},
    {Word::nak, "NAK", {}},
    {Word::can, "CAN", {}},
    {Word::unknown, "something unknown", {}},
}};

bool isFrameOf(const Bytes& message, std::string_view command) {
    std::string text = "00000" + std::string(command);
    const std::size_t unit = text.find("uu");
    if (unit == std::string::npos) {
        return message == simulator::frameOf(text);
    }
    return message == simulator::frameOf(text.replace(unit, 2, "01")) ||
           message == simulator::frameOf(text.replace(unit, 2, "00"));
}

Word frameWord(const Bytes& message) {
    const auto row = std::ranges::find_if(words, [&](const WordRow& candidate) {
        return !candidate.command.empty() && isFrameOf(message, candidate.command);
    });
    return row == words.end() ? Word::unknown : row->word;
}

Word plainWord(std::span<const std::uint8_t> bytes) {
    if (bytes.size() >= simulator::checksumPacketSize && bytes.front() == simulator::soh) {
        return Word::block;
    }
    if (bytes.size() != 1) {
        return Word::unknown;
    }
    switch (bytes.front()) {
    case simulator::eot: return Word::endOfImage;
    case simulator::ack: return Word::ack;
    case simulator::nak: return Word::nak;
    case simulator::can: return Word::can;
    default: return Word::unknown;
    }
}

} // namespace

std::string_view wordName(Word word) {
    return words[static_cast<std::size_t>(word)].name;
}

ToolReader::Heard ToolReader::take(std::span<const std::uint8_t> bytes) {
    Heard heard;
    const bool goesOn = frameParts_ > 0 && bytes.front() != simulator::stx && bytes.front() != simulator::soh;
    if (!goesOn) {
        heard.begins = true;
        heard.brokenOff = frameParts_ > 0;
        message_.clear();
        frameParts_ = 0;
    }
    message_.insert(message_.end(), bytes.begin(), bytes.end());
    if (goesOn || bytes.front() == simulator::stx) {
        if (++frameParts_ == partsOfFrame) {
            frameParts_ = 0;
            heard.word = frameWord(message_);
        }
    } else {
        heard.word = plainWord(message_);
    }
    return heard;
}

} // namespace soak
