// Setting.INI and TYPE.INI, in the program's directory, read only. Nothing is cached: an edit of TYPE.INI takes effect
// at the next lookup.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace Common {

struct IniState {
    std::string iniFilePath;          // the INI file being read
    std::vector<std::string> iniList; // items of the comma list last split
};
extern IniState ini;

// The value of `key` in `section` of the file, up to the first apostrophe; tabs become blanks, blanks at both ends are
// removed. Empty when there is none.
std::string fncGetIniString(const std::string& section, const std::string& key, const std::string& path);

// Splits `text` at its commas into ini.iniList, blanks at the ends of the items removed, and returns the number of items:
// at least 1, at most 101; the rest is ignored. Tabs in `text` become blanks.
std::int16_t fncSplitList(std::string& text);

// Looks up an amplifier type key. True when `rawVersion` lies in a range of it: then `typeName` is the model and `version`
// the version in thousandths. Outside its ranges they become empty and 0; for an unknown key they stay unchanged. Fails
// for an entry without a model name.
bool fncGetAmpType(const std::string& key, std::int32_t rawVersion, std::string& typeName, std::int32_t& version);

// Model name of an interface unit for a key of "IFU_TYPE" or "IFU_BIN_TYPE"; empty when the key is unknown.
std::string fncGetIfuType(const std::string& key, const std::string& section);

// Amplifier type key for the type text of a firmware file; empty when the text is unknown.
std::string fncGetAmpBinType(const std::string& typeText);

// Sets the start values of a run. False, after a report, when the port number does not fit into 16 bits.
bool fncReadSetting();

} // namespace Common
