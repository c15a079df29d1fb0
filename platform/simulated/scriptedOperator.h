// The operator of a simulated host. It can do only what the windows allow at that moment.
#pragma once

#include "platform/simulated/simulatedHost.h"

#include <string>
#include <string_view>
#include <vector>

namespace platform {

// One action of the operator on a window.
struct Action {
    enum class Kind {
        click,  // a button, an option button, a check box
        choose, // an entry of a drop-down list
        close,  // a request to close the window
    };
    Kind kind = Kind::click;
    std::string form;
    std::string control = {};
    int index = -1; // of a control in an array
    int entry = -1; // of the list
};

Action click(std::string form, std::string control, int index = -1);
Action choose(std::string form, std::string control, int entry);
Action closing(std::string form);

class ScriptedOperator {
  public:
    explicit ScriptedOperator(SimulatedHost& host) : host_(host) {}
    ScriptedOperator(const ScriptedOperator&) = delete;
    ScriptedOperator& operator=(const ScriptedOperator&) = delete;

    // Performs the action now, as part of the running event. False when the windows do not allow it now.
    bool perform(const Action& action);

    // Reason why an action would have no effect now; empty when it would have one.
    std::string_view refusal(const Action& action) const;

    // All actions that are possible now, in the order of the forms and their controls.
    std::vector<Action> possible() const;

  private:
    SimulatedHost& host_;
};

} // namespace platform
