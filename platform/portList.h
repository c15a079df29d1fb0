// The serial ports that the system knows. The folder of each system defines it.
#pragma once

#include <string>
#include <vector>

namespace platform {

struct PortEntry {
    std::string device;      // as the port is opened
    std::string description; // driver, product, a name that stays; may be empty
};
std::vector<PortEntry> listPorts();

// True when both paths lead to the same device.
bool sameDevice(const std::string& a, const std::string& b);

// The program that holds the device, with its process number; empty: the system does not tell this user.
std::string holderOf(const std::string& device);

} // namespace platform
