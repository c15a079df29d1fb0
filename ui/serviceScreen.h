// The controls that the delivered screen hides and the service screen shows. There are two sets of their properties; the
// build chooses one.
#pragma once

#include "platform/form.h"

#include <array>

struct Placement {
    platform::Place place;
    bool visible;
};

struct HiddenControls {
    Placement cmdPresent, chkVerify, fraLanguage;
    std::array<platform::Place, 2> optLanguage; // visible when fraLanguage is
    Placement cmdCancel;
};

extern const HiddenControls& hiddenControls;
