#include "platform/host.h"

namespace platform {

namespace {
Host* theHost = nullptr;
}

Host& host() {
    return *theHost;
}

void setHost(Host* host) {
    theHost = host;
}

} // namespace platform
