// One run of the whole program on the simulated desktop, and what its operator and its unit see of it.
#pragma once

#include "app/program.h"
#include "platform/simulated/world.h"
#include "state/variables.h"
#include "transfer/programState.h"
#include "ui/forms.h"

#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <vector>

using namespace platform;

// What is special about a run, said to its world before it begins.
using Preparation = std::function<void(World&)>;

inline void nothing(World&) {}

template <class Change>
Preparation unit(Change change) {
    return [=](World& world) { change(world.unit.options()); };
}

// The unit's answers to the nth command that begins so (0: each).
struct Coded {
    const char* command;
    int occurrence;
    const char* code;
};
inline Preparation answers(const std::vector<Coded>& list) {
    return unit([=](auto& options) {
        for (const Coded& coded : list) {
            options.answers.push_back({coded.command, coded.occurrence, {.resultCode = coded.code}});
        }
    });
}

inline Preparation answersWith(const char* command, const simulator::CommandAnswer& answer, int occurrence = 0) {
    return unit([=](auto& options) { options.answers = {{command, occurrence, answer}}; });
}

inline Preparation pulledAfter(Micros time) {
    return [=](World& world) { world.port.socket(3).pulledAt = world.clock.now() + time; };
}

inline Preparation inJapanese(const Preparation& prepare) {
    return [=](World& world) {
        frmMain().fraLanguage.visible = true;
        EXPECT_TRUE(world.person.perform(click("frmMain", "optLanguage", 0)));
        prepare(world);
    };
}

// The operation fails once, the nth time from now.
inline Preparation fails(Operation operation, std::int64_t n) {
    return [=](World& world) {
        for (OperationGate* gate : {&world.port.operations(), &world.files.operations()}) {
            const Failure failure(failureNumber::portLost, "It broke.");
            gate->add(failNth(operation, gate->passed(operation) + n, Lasting::once, failure));
        }
    };
}

// Boxes that several tests meet, as Session::boxes() gives them.
namespace box {
const std::string timeout = "Tarn Beacon|It is a receiving timeout error.|16>1\n";
const std::string error = "Tarn Beacon|Application error.\r\nRES : "; // and what has failed
const std::string lost = error + "COM3 (/dev/simulated3): the device has gone away|16>1\n";
const std::string unsent = "エラー|COM3 (/dev/simulated3): the device has gone away|16>1\n";
const std::string failed = "Tarn Beacon|Failed|64>1\n";
const std::string portHeld = "Tarn Beacon|通信ポートが開けません。通信ポートを使用するアプリケーションを終了して再度"
                             "起動して下さい。|16>1\n";
const std::string goOn = "Tarn Beacon|通信で異常が発生しました。\r\nApplication is shut down by [cancel].\r\n|17>";
} // namespace box

class Session {
  public:
    explicit Session(WorldOptions options = {}) : world(std::move(options)) { world.line.record().keep(0); }

    // The start, up to the moment at which the program waits for its operator.
    RunEnd start() { return world.desktop.run(program::start); }

    // Presses a button of the main window and runs what follows to its end.
    RunEnd press(const char* control, int index = -1) {
        const Deed deed = click("frmMain", control, index);
        EXPECT_EQ(world.person.refusal(deed), "") << control;
        const RunEnd end = world.desktop.run([&] { world.person.perform(deed); });
        EXPECT_NE(end, RunEnd::stuck) << world.desktop.stuckReason();
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
        for (const Box& box : world.desktop.boxes()) {
            lines +=
                box.title + "|" + box.text + "|" + std::to_string(box.style) + ">" + std::to_string(box.answer) + "\n";
        }
        return lines;
    }

    std::string operations() const {
        std::string line;
        for (const std::string& operation : world.unit.journal().operations) {
            line += operation + ' ';
        }
        return line;
    }

    // True when the operator can go on: the window is back, nothing is under way.
    testing::AssertionResult atRest() const {
        const FrmMain& form = frmMain();
        using namespace FirmComm::state;
        const bool resting =
            shared.programState == idle || shared.programState == idleAfterWrite || shared.programState == verified;
        if (form.visible && form.enabled && form.mousePointer != MousePointer::hourglass && !frmWaitLoaded() &&
            !world.desktop.keptAwake() && !form.CommTimer.running() && !shared.stepBusy && resting &&
            world.desktop.violations().empty()) {
            return testing::AssertionSuccess();
        }
        return testing::AssertionFailure()
               << "visible " << form.visible << " enabled " << form.enabled << " frmWait " << frmWaitLoaded()
               << " kept awake " << world.desktop.keptAwake() << " CommTimer " << form.CommTimer.running()
               << " stepBusy " << shared.stepBusy << " programState " << shared.programState << " violations "
               << testing::PrintToString(world.desktop.violations());
    }

    World world;
};
