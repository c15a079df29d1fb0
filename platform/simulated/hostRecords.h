// The simulated host's records of boxes, file dialogs and window changes.
#pragma once

#include "platform/host.h"
#include "platform/simulated/virtualClock.h"

#include <optional>
#include <string>

namespace platform {

struct Box : Message {
    Micros at = 0;
    int answer = 0; // 0 while it is open

    bool hasCancel() const { return (style & boxStyle::okCancel) != 0; }
};

struct FileRequest {
    FileDialog dialog; // as the program set it
    bool save = false;
    Micros at = 0;
    std::optional<std::string> path = std::nullopt; // the operator's choice; nullopt: cancelled
    bool askedToOverwrite = false;
};

// What the program did with a window.
enum class FormChange { loaded, shown, hidden, unloaded };

} // namespace platform
