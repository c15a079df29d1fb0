#include "simulator/program/programOptions.h"

#include <charconv>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <stdexcept>
#include <string>

namespace simulator {

namespace {

[[noreturn]] void refuse(std::string_view option, std::string_view value) {
    throw std::runtime_error(std::string(option) + " does not take \"" + std::string(value) + "\"");
}

int numberOf(std::string_view option, std::string_view text, int highest) {
    int number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size() || number < 0 || number > highest) {
        refuse(option, text);
    }
    return number;
}

Micros durationOf(std::string_view option, std::string_view text) {
    return fromMilliseconds(numberOf(option, text, 1'000'000));
}

// [PREFIX:]N=CODE, or N=silence.
ReplyRule ruleOf(std::string_view option, std::string_view text) {
    const std::size_t equals = text.find('=');
    if (equals == std::string_view::npos) {
        refuse(option, text);
    }
    const std::string_view which = text.substr(0, equals);
    const std::string_view reply = text.substr(equals + 1);
    const std::size_t colon = which.find(':');
    ReplyRule rule;
    if (colon != std::string_view::npos) {
        rule.prefix = which.substr(0, colon);
    }
    rule.occurrence = numberOf(option, which.substr(colon == std::string_view::npos ? 0 : colon + 1), 1'000'000);
    if (reply == "silence") {
        rule.reply.silent = rule.reply.ignored = true;
    } else if (reply.size() == 4) {
        rule.reply.resultCode = reply;
    } else {
        refuse(option, text);
    }
    return rule;
}

// SIZE:MILLISECONDS
Pieces piecesOf(std::string_view option, std::string_view text) {
    const std::size_t colon = text.find(':');
    if (colon == std::string_view::npos) {
        refuse(option, text);
    }
    const int size = numberOf(option, text.substr(0, colon), 1024);
    return {static_cast<std::size_t>(size), durationOf(option, text.substr(colon + 1))};
}

Bytes imageFrom(std::string_view option, const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    Bytes image{std::istreambuf_iterator<char>(file), {}};
    if (image.size() != imageSize) {
        refuse(option, path);
    }
    return image;
}

using Text = const std::string&;
struct Option {
    bool takesValue;
    std::function<void(ProgramOptions&, Text name, Text value)> apply;
};

const std::map<std::string, Option, std::less<>> knownOptions{
    {"--help", {false, [](auto& o, Text, Text) { o.help = true; }}},
    {"--link", {true, [](auto& o, Text, Text v) { o.link = v; }}},
    {"--paced", {false, [](auto& o, Text, Text) { o.paced = true; }}},
    {"--journal", {true, [](auto& o, Text, Text v) { o.journal = v; }}},
    {"--image-out", {true, [](auto& o, Text, Text v) { o.imageOut = v; }}},
    {"--image", {true, [](auto& o, Text n, Text v) { o.unit.amplifierImage = imageFrom(n, v); }}},
    {"--interface-image", {true, [](auto& o, Text n, Text v) { o.unit.interfaceUnitImage = imageFrom(n, v); }}},
    {"--identification", {true, [](auto& o, Text, Text v) { o.unit.modelText = v; }}},
    {"--version-text", {true, [](auto& o, Text, Text v) { o.unit.versionText = v; }}},
    {"--state", {true, [](auto& o, Text, Text v) { o.unit.stateText = v; }}},
    {"--sensors", {true, [](auto& o, Text n, Text v) { o.unit.sensorCount = numberOf(n, v, 99); }}},
    {"--raw-version",
     {true, [](auto& o, Text n, Text v) { o.unit.rawVersion = static_cast<std::uint16_t>(numberOf(n, v, 0xFFFF)); }}},
    {"--type-key",
     {true, [](auto& o, Text n, Text v) { o.unit.typeKey = v.size() == 1 ? v[0] : (refuse(n, v), ' '); }}},
    {"--checksum", {false, [](auto& o, Text, Text) { o.unit.crc = false; }}},
    {"--silent", {false, [](auto& o, Text, Text) { o.unit.silentFrom = 0; }}},
    {"--reply", {true, [](auto& o, Text n, Text v) { o.unit.replies.push_back(ruleOf(n, v)); }}},
    {"--reply-delay", {true, [](auto& o, Text n, Text v) { o.unit.replyDelay = durationOf(n, v); }}},
    {"--packet-delay", {true, [](auto& o, Text n, Text v) { o.unit.packetDelay = durationOf(n, v); }}},
    {"--no-answer",
     {true, [](auto& o, Text n, Text v) { o.unit.packetAnswers[numberOf(n, v, 1'000'000)] = {.bytes = Bytes()}; }}},
    {"--slow-blocks", {true, [](auto& o, Text n, Text v) { o.unit.sendDelay = durationOf(n, v); }}},
    {"--pieces", {true, [](auto& o, Text n, Text v) { o.unit.sendPieces = piecesOf(n, v); }}},
    {"--transfer-at-once", {false, [](auto& o, Text, Text) { o.transferAtOnce = TransferAtOnce::receive; }}},
    {"--send-at-once", {false, [](auto& o, Text, Text) { o.transferAtOnce = TransferAtOnce::send; }}},
    {"--make-sample", {true, [](auto& o, Text, Text v) { o.sampleOut = v; }}},
    {"--type", {true, [](auto& o, Text, Text v) { o.sample.typeText = v; }}},
    {"--version",
     {true, [](auto& o, Text n, Text v) { o.sample.rawVersion = static_cast<std::uint16_t>(numberOf(n, v, 0xFFFF)); }}},
    {"--seed",
     {true, [](auto& o, Text n, Text v) { o.sample.seed = static_cast<std::uint32_t>(numberOf(n, v, 1'000'000)); }}},
};

} // namespace

const std::string_view helpText = R"(Usage: tarnbeacon-unit [options]

Simulates an amplifier unit on a pseudo terminal until SIGTERM or SIGINT. Prints the name of the terminal.

  --link PATH             create a symbolic link to the pseudo terminal
  --paced                 send and receive at 38400 bit/s
  --journal FILE          write a summary of what the unit has received
  --image-out FILE        write the image received, at operation 53 and at the end

Properties of the unit:
  --identification TEXT   model text ("KP42 UNIT")
  --version-text TEXT     firmware version after it ("V2.301")
  --state TEXT            unit state, two characters ("00")
  --sensors N             sensors connected (1)
  --raw-version N         raw version of the amplifier (11022)
  --type-key X            amplifier type key, a hexadecimal digit (1)
  --image FILE            present firmware of the amplifier, 245760 bytes
  --interface-image FILE  present firmware of the interface unit

Behaviour:
  --reply-delay MS        from a command to its reply (2)
  --reply [PREFIX:]N=CODE reply to the N-th command (0: each) that begins with PREFIX with this result code of
                          four digits, or with "silence"; may be given more than once
  --silent                receive and send nothing
  --checksum              receive with checksums instead of CRC
  --packet-delay MS       from a received packet to its answer
  --no-answer N           accept the N-th packet received without an answer; may be given more than once
  --slow-blocks MS        wait before each block sent
  --pieces SIZE:MS        send blocks in pieces with a pause between them
  --transfer-at-once      begin as XMODEM receiver, without a command
  --send-at-once          begin as XMODEM sender, without a command

  --make-sample FILE      write a sample firmware file and exit
      --type TEXT --version RAW --seed N   its contents (AMPFIRM, 11046, 1)
)";

ProgramOptions readOptions(int argc, char** argv) {
    ProgramOptions options;
    for (int i = 1; i < argc; ++i) {
        const std::string name = argv[i];
        const auto known = knownOptions.find(name);
        if (known == knownOptions.end()) {
            throw std::runtime_error("unknown option " + name);
        }
        const bool takesValue = known->second.takesValue;
        if (takesValue && i + 1 == argc) {
            throw std::runtime_error(name + " needs a value");
        }
        known->second.apply(options, name, takesValue ? argv[++i] : "");
    }
    return options;
}

} // namespace simulator
