#pragma once

#include "platform/simulated/conversation.h"

namespace soak {

// The boxes that the program can show, as far as they mean different things to an operator.
enum class BoxKind {
    succeed,
    failed,
    verificationFailed,
    otherModel,    // refused: the file is not for the selected row
    notChecked,    // asks whether to go on without an answer of the unit
    failureDialog, // asks whether to end the program
    fatal,         // the program ends after it, whatever the answer
    report,        // of a failure
};

BoxKind kindOf(const platform::Box& box);

} // namespace soak
