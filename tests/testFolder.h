#pragma once

#include <filesystem>
#include <random>

// Makes a new folder for a test.
inline std::filesystem::path makeTestFolder() {
    const auto folder =
        std::filesystem::temp_directory_path() / ("tarnbeacon" + std::to_string(std::random_device()()));
    std::filesystem::create_directory(folder);
    return folder;
}
