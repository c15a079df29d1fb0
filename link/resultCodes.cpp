#include "link/resultCodes.h"

#include <algorithm>
#include <array>

namespace FirmComm {

namespace {

struct Row {
    std::string_view code;
    std::int32_t number;
};

constexpr std::array rows{
    Row{"0000", resultSuccess},
    Row{"0101", 9},
    Row{"9000", 10}, // not used
    Row{"9998", 11}, // an exchange is running
    Row{"9999", 12}, // no reply, or a run-time failure
    Row{"1001", 13},
    Row{"1002", 14},
    Row{"1004", 15},
    Row{"1101", 16},
    Row{"1103", 17},
    Row{"1104", 18},
    Row{"2203", 19},
    Row{"2204", 20},
    Row{"2205", 21},
    Row{"1111", 22},
    Row{"1234", 23},
    Row{"2222", 24},
    Row{"3333", 25},
    Row{"4444", 26},
    Row{"5555", 27},
};

} // namespace

std::int32_t fncResultNumber(std::string_view code) {
    const auto row = std::ranges::find(rows, code, &Row::code);
    return row == rows.end() ? resultOther : row->number;
}

} // namespace FirmComm
