// One run of the whole program on the simulated host, and what the operator and the unit see.
#pragma once

#include "app/program.h"
#include "platform/simulated/world.h"
#include "state/variables.h"
#include "story/recorder.h"
#include "transfer/programState.h"
#include "ui/forms.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

using namespace platform;

class Session {
  public:
    explicit Session(WorldOptions options = {}) : world(std::move(options)) {
        world.line.addHook([this](const Transmission& write) {
            if (write.direction == Direction::toUnit) {
                sent.insert(sent.end(), write.bytes.begin(), write.bytes.end());
            }
        });
    }

    Bytes sent; // what the program has sent

    // Starts the program and runs it until it waits for the operator.
    RunEnd start() { return world.host.run(program::start); }

    // Presses a button of the main window and runs what follows to its end.
    RunEnd press(const char* control) {
        const Action action = click("frmMain", control);
        EXPECT_EQ(world.theOperator.refusal(action), "") << control;
        const RunEnd end = world.host.run([&] { world.theOperator.perform(action); });
        EXPECT_NE(end, RunEnd::stuck) << world.host.stuckReason();
        return end;
    }

    // Start, and load of the sample file.
    void load() {
        start();
        press("cmdLoading");
    }

    // The boxes so far, one line each: "title|text|style>answer".
    std::string boxes() const {
        std::string lines;
        for (const Box& box : world.host.boxes()) {
            lines +=
                box.title + "|" + box.text + "|" + std::to_string(box.style) + ">" + std::to_string(box.answer) + "\n";
        }
        return lines;
    }

    // True when the operator can go on: the window is back, nothing is under way.
    testing::AssertionResult atRest() const {
        const std::string obstacles = story::obstaclesIn(world);
        return (obstacles.empty() ? testing::AssertionSuccess() : testing::AssertionFailure()) << obstacles;
    }

    World world;
};
