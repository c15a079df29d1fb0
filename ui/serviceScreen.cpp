#include "ui/serviceScreen.h"

namespace {

[[maybe_unused]] constexpr HiddenControls deliveredScreen{
    .cmdPresent = {{0, 2640, 75, 315}, false},
    .chkVerify = {{360, 2160, 1935, 255}, false},
    .fraLanguage = {{120, 960, 15, 735}, false},
    .optLanguage = {{{120, 180, 1095, 180}, {120, 480, 1095, 180}}},
    .cmdCancel = {{3720, 1320, 1095, 315}, false},
};

[[maybe_unused]] constexpr HiddenControls serviceScreen{
    .cmdPresent = {{600, 2985, 2895, 300}, true},
    .chkVerify = {{360, 2160, 1935, 255}, true},
    .fraLanguage = {{3840, 120, 1455, 975}, true},
    .optLanguage = {{{120, 330, 1215, 255}, {120, 630, 1215, 255}}},
    .cmdCancel = {{3720, 1320, 1095, 315}, true},
};

} // namespace

#ifdef TARNBEACON_SERVICE_SCREEN
const HiddenControls& hiddenControls = serviceScreen;
#else
const HiddenControls& hiddenControls = deliveredScreen;
#endif
