#pragma once

#include "cli/report.h"
#include "platform/terminal/terminalHost.h"

namespace cli {

// Reports the serial ports: COM number, device, whether it can be opened, what the system knows of it.
void reportPorts(platform::TerminalHost& host, Report& report);

} // namespace cli
