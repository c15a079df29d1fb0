// The windows that differ on the service screen, tested as those of the delivered one. Its places replace the library's.
#define TARNBEACON_SERVICE_SCREEN
// NOLINTBEGIN(bugprone-suspicious-include)
#include "tests/qtGalleryTest.cpp"
#include "ui/serviceScreen.cpp"
// NOLINTEND(bugprone-suspicious-include)
