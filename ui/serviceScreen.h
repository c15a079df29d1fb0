// The controls that the delivered screen hides and the service screen shows: two sets of stored properties. The build
// chooses one.
#pragma once

#include "platform/form.h"

#include <array>

struct Showing {
    platform::Place place;
    bool visible;
};

struct HiddenControls {
    Showing cmdPresent, chkVerify, fraLanguage;
    std::array<platform::Place, 2> optLanguage; // visible as far as fraLanguage is
    Showing cmdCancel;
};

extern const HiddenControls& hiddenControls;
