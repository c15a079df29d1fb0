// Setting.INI and TYPE.INI, in the program's directory, read only. Nothing is cached: an edit of TYPE.INI takes effect
// at the next lookup.
#pragma once

#include <cstdint>
#include <string>

namespace Common {

// The value of `key` in `section` of the file: what stands ahead of the first apostrophe, tabs as blanks, without
// blanks at both ends. Empty when there is none.
std::string fncGetIniString(const std::string& section, const std::string& key, const std::string& path);

// Splits `text` at its commas into shared.iniList, blanks at the ends of the items removed, and gives the number of items:
// at least 1, at most 101, the rest is dropped. Tabs in `text` become blanks.
std::int16_t fncSplitList(std::string& text);

// Looks the amplifier type key up and gives True when `rawVersion` lies in a range of it: then `typeName` is the model
// and `version` the version in thousandths. Outside its ranges they become empty and 0; for an unknown key they stay as
// they are. Fails for an entry that holds no model name.
bool fncGetAmpType(const std::string& key, std::int32_t rawVersion, std::string& typeName, std::int32_t& version);

// Model name of an interface unit by its key in "IFU_TYPE" or "IFU_BIN_TYPE"; empty when it is not known.
std::string fncGetIfuType(const std::string& key, const std::string& section);

// Key of the amplifier type that a firmware file's type text stands for; empty when it is not known.
std::string fncGetAmpBinType(const std::string& typeText);

// Fills the start values of a shared. False, after a report, when the port number does not fit into 16 bits.
bool fncReadSetting();

} // namespace Common
