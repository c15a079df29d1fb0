// How an operation ends: a write, a read, or a write with verification. It ends with the first loss of its port; a lost
// port is opened again by the operator's next command, never within an operation.
#pragma once

#include "state/variables.h"

namespace FirmComm {

extern bool lossShown; // a box has named the failure of the port in this operation

// At the beginning of a command that uses the port: there is no outcome yet, and a lost port is opened again.
void beginOperation();

// Sets the outcome unless there is one.
void endWith(Outcome outcome);

// Shows the current exception as subReportError() does; a failure of the port only once in an operation. A lost port
// becomes the outcome of the operation, unless the operation has succeeded before.
void reportFailure();

// True while the port can be used; otherwise reports its failure.
bool portStands();

} // namespace FirmComm
