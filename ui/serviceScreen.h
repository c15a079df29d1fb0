// The controls that the delivered screen hides and the service screen shows. There are two sets of their properties; the
// build chooses one.
#pragma once

#include "platform/form.h"

#include <array>

struct Showing {
    platform::Place place;
    bool visible;
};

struct HiddenControls {
    Showing cmdPresent, chkVerify, fraLanguage;
    std::array<platform::Place, 2> optLanguage; // visible when fraLanguage is
    Showing cmdCancel;
};

extern const HiddenControls& hiddenControls;
