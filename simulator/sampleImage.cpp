#include "simulator/sampleImage.h"

#include <algorithm>
#include <random>

namespace simulator {

namespace {

constexpr std::size_t leadOffset = 0x3BF00;
constexpr std::size_t leadLength = 5;

void putText(Bytes& image, std::size_t offset, std::size_t length, std::string text, char filler) {
    text.resize(length, filler);
    std::ranges::copy(text, image.begin() + static_cast<std::ptrdiff_t>(offset));
}

} // namespace

Bytes makeSampleImage(const SampleImage& sample) {
    Bytes image(imageSize);
    std::mt19937_64 random(sample.seed); // the C++ standard defines its sequence
    std::uint64_t drawn = 0;
    for (std::size_t i = 0; i < image.size(); ++i) {
        drawn = i % sizeof drawn == 0 ? random() : drawn >> 8;
        image[i] = static_cast<std::uint8_t>(drawn);
    }
    putText(image, leadOffset, leadLength, sample.leadText, ' ');
    image[versionOffset] = static_cast<std::uint8_t>(sample.rawVersion);
    image[versionOffset + 1] = static_cast<std::uint8_t>(sample.rawVersion >> 8);
    putText(image, typeTextOffset, typeTextLength, sample.typeText, '\0');
    return image;
}

} // namespace simulator
