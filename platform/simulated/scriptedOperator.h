// The operator of a simulated desktop: does what a person in front of the windows could do, and nothing else.
#pragma once

#include "platform/simulated/simulatedDesktop.h"

#include <string>
#include <string_view>
#include <vector>

namespace platform {

// One thing done to a window.
struct Deed {
    enum class Kind {
        click,  // a button, an option button, a check box
        choose, // an entry of a drop-down list
        close,  // a request to close the window
    };
    Kind kind = Kind::click;
    std::string form;
    std::string control = {};
    int index = -1; // of a numbered control
    int entry = -1; // of the list

    bool operator==(const Deed&) const = default;
};

Deed click(std::string form, std::string control, int index = -1);
Deed choose(std::string form, std::string control, int entry);
Deed closing(std::string form);

struct DoneDeed {
    Deed deed;
    Micros at = 0;
    std::string refused; // why it had no effect; empty when it had
};

class ScriptedOperator {
  public:
    ScriptedOperator(SimulatedDesktop& desktop, const VirtualClock& clock) : desktop_(desktop), clock_(clock) {}
    ScriptedOperator(const ScriptedOperator&) = delete;
    ScriptedOperator& operator=(const ScriptedOperator&) = delete;

    // Does it now, as part of the event that runs. False when no person could do it at this moment.
    bool perform(const Deed& deed);

    // Why a deed would have no effect at this moment; empty when it would have one.
    std::string_view refusal(const Deed& deed) const;

    // All that a person could do at this moment, in the order of the forms and their controls.
    std::vector<Deed> possible() const;

    const std::vector<DoneDeed>& done() const { return done_; }

  private:
    SimulatedDesktop& desktop_;
    const VirtualClock& clock_;
    std::vector<DoneDeed> done_;
};

} // namespace platform
