#pragma once

#include "simulator/wire.h"

#include <string>

namespace simulator {

// Offsets of the version (low byte first) and the type text in an image.
inline constexpr std::size_t versionOffset = 0x3BF05;
inline constexpr std::size_t typeTextOffset = 0x3BF10;
inline constexpr std::size_t typeTextLength = 16;

struct SampleImage {
    std::string typeText = "AMPFIRM"; // up to 16 characters, padded with zero bytes
    std::uint16_t rawVersion = 11046;
    std::string leadText = "TARN0"; // up to 5 characters, at the start of the identification block
    std::uint32_t seed = 1;         // of the random bytes of the firmware
};

// A firmware image of the right size with an identification block.
Bytes makeSampleImage(const SampleImage& sample);

} // namespace simulator
