// Numbers of the bitmaps and icons in ui/art.
#pragma once

namespace art {
constexpr int startUpPicture = 1; // 321 by 57
constexpr int logo = 1101;        // 496 by 384
constexpr int programIcon = 1;    // 32 by 32 and larger
} // namespace art
