// The windows that differ on the service screen, tested by qtGalleryTest.cpp: these places replace those of the library.
#define TARNBEACON_SERVICE_SCREEN
#include "ui/serviceScreen.cpp" // NOLINT(bugprone-suspicious-include)
