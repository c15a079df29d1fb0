// The real desktop on the toolkit's offscreen screen. It stands while tests run: the exit handlers take the toolkit's
// parts away in an order of their own.
#pragma once

#include "platform/qt/qtDesktop.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <optional>
#include <random>

// What the font library keeps for itself is no leak of ours.
extern "C" const char* __lsan_default_suppressions() { // NOLINT: the sanitizer's name, once in each program
    return "leak:libfontconfig";
}

inline std::optional<platform::QtDesktop> realDesktop;

class RealDesktop : public testing::Environment {
    void SetUp() override {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        realDesktop.emplace();
    }
    void TearDown() override { realDesktop.reset(); }
};
inline testing::Environment* const realDesktopUp = testing::AddGlobalTestEnvironment(new RealDesktop);

// A folder of the test's own.
inline std::filesystem::path makeTestFolder() {
    const auto folder =
        std::filesystem::temp_directory_path() / ("tarnbeacon" + std::to_string(std::random_device()()));
    std::filesystem::create_directory(folder);
    return folder;
}
