// The real host on the toolkit's offscreen screen. It is destroyed before the exit handlers run, because these destroy
// parts of the toolkit in another order.
#pragma once

#include "platform/qt/qtHost.h"
#include "tests/testFolder.h"

#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <optional>

// The font library keeps memory until the end of the process.
extern "C" const char* __lsan_default_suppressions() { // NOLINT: the sanitizer's name, once in each program
    return "leak:libfontconfig";
}

inline std::optional<platform::QtHost> realHost;
inline std::function<std::unique_ptr<platform::LineDevice>()> makeLine = platform::makeLineDevice;

class RealHost : public testing::Environment {
    void SetUp() override {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        qputenv("XDG_CONFIG_HOME", settings_.c_str());
        realHost.emplace(makeLine());
    }
    void TearDown() override {
        realHost.reset();
        std::filesystem::remove_all(settings_);
    }
    const std::string settings_ = makeTestFolder().string(); // where the toolkit would store settings
};
inline testing::Environment* const realHostUp = testing::AddGlobalTestEnvironment(new RealHost);
