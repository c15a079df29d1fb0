// The INI reader, the list and the model lookups. The first line of an input is the key that is looked up, the second
// one a raw version; what follows is the text of both INI files.
#include "app/program.h"
#include "fuzz/check.h"
#include "fuzz/profileOracle.h"
#include "platform/profile.h"
#include "platform/simulated/world.h"
#include "startup/configuration.h"
#include "state/variables.h"

#include <optional>
#include <string_view>

namespace {

using Entries = std::vector<profileOracle::Entry>;
using profileOracle::valueOf;

std::string takeLine(std::string_view& input) {
    const std::size_t end = std::min(input.find('\n'), input.size());
    std::string line(input.substr(0, end));
    input.remove_prefix(std::min(end + 1, input.size()));
    return line;
}

bool continuesCharacter(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

// A value is the beginning of what stands in the file; where it is cut, no more than the rest of one character is lost
// below the limit.
void checkCut(const std::string& value, const std::string& whole) {
    check(whole.starts_with(value), "a value is the beginning of what the file has");
    check(value.size() <= profileValueLimit, "a value keeps its limit");
    if (value.size() < whole.size()) {
        check(value.size() + 3 >= profileValueLimit, "a value is cut at its limit");
        const bool noText = std::all_of(value.end() - 3, value.end(), continuesCharacter); // no character is that long
        check(!continuesCharacter(whole[value.size()]) || noText, "no character is cut");
    }
}

// What the program makes of a value that it has read.
std::string cleaned(std::string value) {
    value = value.substr(0, value.find('\''));
    std::ranges::replace(value, '\t', ' ');
    return profileOracle::stripped(value);
}

std::vector<std::string> itemsOf(std::string list) {
    std::ranges::replace(list, '\t', ' ');
    std::vector<std::string> items;
    std::istringstream rest(list + ',');
    for (std::string item; items.size() < 101 && std::getline(rest, item, ',');) {
        items.push_back(profileOracle::stripped(item));
    }
    return items;
}

// The value as the program takes it; nothing when it is cut.
std::optional<std::string> uncutValue(const Entries& entries, const std::string& section, const std::string& key) {
    const std::string whole = valueOf(entries, section, key);
    return whole.size() > profileValueLimit ? std::nullopt : std::optional(cleaned(whole));
}

void checkReader(const std::string& text, const Entries& entries, const std::string& key) {
    for (const char* section : {"AMP_TYPE", "AMP_BIN_TYPE", "IFU_TYPE", "IFU_BIN_TYPE", "IFU_DEFINE", "IFU"}) {
        const std::string value = profileValue(text, section, key);
        checkCut(value, valueOf(entries, section, key));
        check(Common::fncGetIniString(section, key, platform::desktop().programDirectory() + "TYPE.INI") ==
                  cleaned(value),
              "a value is cleaned");
    }
}

void checkList(std::string list) {
    const std::vector<std::string> items = itemsOf(list);
    check(Common::fncSplitList(list) == std::ssize(items) && shared.iniList == items, "a list is split at its commas");
}

void checkAmplifier(const Entries& entries, const std::string& key, std::int32_t rawVersion) {
    const auto value = uncutValue(entries, "AMP_TYPE", key);
    std::string typeName = "before";
    std::int32_t version = -1;
    try {
        const bool found = Common::fncGetAmpType(key, rawVersion, typeName, version);
        if (found) {
            check(version >= 0 && version <= 9999, "a version lies in its range");
        } else if (value && value->empty()) {
            check(typeName == "before" && version == -1, "an unknown type changes nothing");
        } else if (value) {
            check(typeName.empty() && version == 0, "an unknown version empties both");
        }
        if (found && value) {
            const auto items = itemsOf(*value);
            check(typeName == items.at(1) || (items.size() > 4 && typeName == items[4]), "a model is one of the two");
        }
    } catch (const Failure& failure) {
        check(failure.number() == failureNumber::overflow || !value || itemsOf(*value).size() < 2,
              "only a missing model and a number out of its width fail");
    }
}

void checkInterfaceUnit(const Entries& entries, const std::string& key) {
    const auto unitKey = uncutValue(entries, "IFU_TYPE", key);
    const std::string model = Common::fncGetIfuType(key, "IFU_TYPE");
    if (unitKey) {
        const auto expected = unitKey->empty() ? unitKey : uncutValue(entries, "IFU_DEFINE", itemsOf(*unitKey)[0]);
        check(!expected || model == *expected, "an interface unit gets its model");
    }
}

void checkSetting(const platform::SimulatedDesktop& desktop) {
    const bool fits = Common::fncReadSetting();
    check(fits == desktop.boxes().empty(), "a port number that does not fit is reported");
    check(fits || shared.comPortNumber == 1, "the port is then 1");
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    static platform::World world;
    world.desktop.run(program::start);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string_view input(reinterpret_cast<const char*>(data), size);
    const std::string key = takeLine(input);
    const auto rawVersion = static_cast<std::int32_t>(std::strtol(takeLine(input).c_str(), nullptr, 10));
    const std::string text(input);
    const Entries entries = profileOracle::entriesOf(text);

    platform::VirtualClock clock;
    platform::SimulatedFiles files(clock);
    platform::SimulatedPort port(clock);
    platform::SimulatedDesktop desktop(clock, port, files);
    platform::setDesktop(&desktop);
    files.put(desktop.directory + "TYPE.INI", text);
    files.put(desktop.directory + "Setting.INI", text);

    checkReader(text, entries, key);
    checkList(text);
    checkAmplifier(entries, key, rawVersion);
    checkInterfaceUnit(entries, key);
    checkSetting(desktop);
    return 0;
}
