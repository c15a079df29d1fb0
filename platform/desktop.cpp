#include "platform/desktop.h"

namespace platform {

namespace {
Desktop* theDesktop = nullptr;
}

Desktop& desktop() {
    return *theDesktop;
}

void setDesktop(Desktop* desktop) {
    theDesktop = desktop;
}

} // namespace platform
