// Result codes: four characters, "0000" is success.
#pragma once

#include <cstdint>
#include <string_view>

namespace FirmComm {

constexpr std::int32_t resultSuccess = 7;
constexpr std::int32_t resultOther = 8;

// Number of a result code; resultSuccess for "0000", resultOther for a code that is not in the table.
std::int32_t fncResultNumber(std::string_view code);

inline bool succeeded(std::string_view code) {
    return fncResultNumber(code) == resultSuccess;
}

} // namespace FirmComm
