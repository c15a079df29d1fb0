// The operator of a simulated desktop. It can do only what a person in front of the windows could do.
#pragma once

#include "platform/simulated/simulatedDesktop.h"

#include <string>
#include <string_view>
#include <vector>

namespace platform {

// One action of the operator on a window.
struct Deed {
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

    bool operator==(const Deed&) const = default;
};

Deed click(std::string form, std::string control, int index = -1);
Deed choose(std::string form, std::string control, int entry);
Deed closing(std::string form);

struct DoneDeed {
    Deed deed;
    Micros at = 0;
    std::string refused; // reason why it had no effect; empty when it had one
};

class ScriptedOperator {
  public:
    ScriptedOperator(SimulatedDesktop& desktop, const VirtualClock& clock) : desktop_(desktop), clock_(clock) {}
    ScriptedOperator(const ScriptedOperator&) = delete;
    ScriptedOperator& operator=(const ScriptedOperator&) = delete;

    // Does it now, as part of the running event. False when a person could not do it now.
    bool perform(const Deed& deed);

    // Reason why a deed would have no effect now; empty when it would have one.
    std::string_view refusal(const Deed& deed) const;

    // All deeds that a person could do now, in the order of the forms and their controls.
    std::vector<Deed> possible() const;

    const std::vector<DoneDeed>& done() const { return done_; }

  private:
    SimulatedDesktop& desktop_;
    const VirtualClock& clock_;
    std::vector<DoneDeed> done_;
};

} // namespace platform
