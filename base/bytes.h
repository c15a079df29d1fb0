#pragma once

#include <cstdint>
#include <vector>

using Bytes = std::vector<std::uint8_t>;
