#include "configuration/iniFiles.h"

#include "base/checked.h"
#include "base/text.h"
#include "platform/host.h"
#include "platform/profile.h"
#include "state/variables.h"
#include "texts/messages.h"

using platform::host;

namespace Common {

IniState ini;

namespace {

constexpr std::int16_t maxItems = 101;
constexpr std::int32_t highestVersion = 9999; // of a range, in thousandths

std::string iniPath(const char* fileName) {
    return host().programDirectory() + fileName;
}

std::string typeValue(const std::string& section, const std::string& key) {
    ini.iniFilePath = iniPath("TYPE.INI");
    return fncGetIniString(section, key, ini.iniFilePath);
}

// Uses the range whose base is item `base` of ini.iniList; the model name is the next item.
bool takeRange(std::int32_t base, std::int32_t rawVersion, std::string& typeName, std::int32_t& version) {
    version = roundToWhole(rawVersion - leadingNumber(at(ini.iniList, base)));
    typeName = at(ini.iniList, base + 1);
    return version >= 0 && version <= highestVersion;
}

} // namespace

std::string fncGetIniString(const std::string& section, const std::string& key, const std::string& path) {
    return cleanedValue(getPrivateProfileString(host().files(), section, key, path));
}

std::int16_t fncSplitList(std::string& text) {
    text = replaceAll(text, '\t', ' ');
    ini.iniList.clear();
    std::size_t start = 0;
    while (ini.iniList.size() < maxItems) {
        const std::size_t comma = text.find(',', start);
        ini.iniList.push_back(trim(std::string_view(text).substr(start, comma - start)));
        if (comma == std::string::npos) {
            break;
        }
        start = comma + 1;
    }
    return static_cast<std::int16_t>(ini.iniList.size());
}

bool fncGetAmpType(const std::string& key, std::int32_t rawVersion, std::string& typeName, std::int32_t& version) {
    constexpr std::int32_t firstBase = 0;
    constexpr std::int32_t secondBase = 3;
    std::string value = typeValue("AMP_TYPE", key);
    if (value.empty()) {
        return false;
    }
    const std::int16_t items = fncSplitList(value);
    if (takeRange(firstBase, rawVersion, typeName, version) ||
        (items > secondBase + 1 && takeRange(secondBase, rawVersion, typeName, version))) {
        return true;
    }
    version = 0;
    typeName.clear();
    return false;
}

std::string fncGetIfuType(const std::string& key, const std::string& section) {
    std::string value = typeValue(section, trim(key));
    if (value.empty()) {
        return {};
    }
    fncSplitList(value);
    return typeValue("IFU_DEFINE", at(ini.iniList, 0));
}

std::string fncGetAmpBinType(const std::string& typeText) {
    return typeValue("AMP_BIN_TYPE", typeText);
}

bool fncReadSetting() {
    try {
        shared.targetUnit = 1;
        ini.iniFilePath = iniPath("Setting.INI");
        shared.bpsText = "38400";
        shared.comPortNumber = 1;
        if (const auto given = host().givenPort()) {
            shared.comPortNumber = *given;
        } else if (const auto number = parseNumber(fncGetIniString("IFU", "COM", ini.iniFilePath))) {
            shared.comPortNumber = narrow<std::int16_t>(roundToWhole(*number));
        }
        shared.loadFilePath.clear();
        shared.saveFilePath.clear();
        shared.ampVersionText.clear();
        shared.ifuVersionText.clear();
        shared.fileVersionText.clear();
        return true;
    } catch (const std::exception&) {
        subReportError();
        return false;
    }
}

} // namespace Common
