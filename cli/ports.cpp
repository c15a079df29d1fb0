#include "cli/ports.h"

#include "base/failure.h"
#include "cli/commandLine.h"
#include "platform/portList.h"
#include "texts/language.h"

#include <algorithm>
#include <nlohmann/json.hpp>

namespace cli {

namespace {

using platform::PortEntry;

// The COM number by which the program opens the device; 0: none.
int comNumberOf(platform::TerminalHost& host, const std::string& device) {
    for (int number = 1; number <= highestPort; ++number) {
        if (platform::sameDevice(host.deviceOf(number), device)) {
            return number;
        }
    }
    return 0;
}

// The ports that the system knows, and others that Setting.INI assigns.
std::vector<PortEntry> allPorts(platform::TerminalHost& host) {
    std::vector<PortEntry> ports = platform::listPorts();
    for (int number = 1; number <= highestPort; ++number) {
        const std::string device = host.deviceOf(number);
        const bool listed = std::ranges::any_of(
            ports, [&](const PortEntry& port) { return platform::sameDevice(port.device, device); });
        if (!listed && device != platform::defaultDevice(number)) {
            ports.push_back({device, {}});
        }
    }
    return ports;
}

// Why the device cannot be opened; empty: it can.
std::string causeOf(const std::string& device) {
    try {
        const auto line = platform::makeLineDevice();
        line->open(device, platform::parseLineSettings("38400,n,8,1"));
        line->close();
        return {};
    } catch (const Failure& failure) {
        const std::string holder = failure.number() == failureNumber::portHeld ? platform::holderOf(device) : "";
        return failure.description() + (holder.empty() ? "" : " (" + holder + ")");
    }
}

std::string padded(std::string text, std::size_t width) {
    text.resize(std::max(width, text.size()), ' ');
    return text;
}

} // namespace

void reportPorts(platform::TerminalHost& host, Report& report) {
    const std::vector<PortEntry> ports = allPorts(host);
    std::size_t width = 0;
    for (const PortEntry& port : ports) {
        width = std::max(width, port.device.size());
    }
    for (const PortEntry& port : ports) {
        const int number = comNumberOf(host, port.device);
        const std::string name = number == 0 ? std::string() : "COM" + std::to_string(number);
        const std::string cause = causeOf(port.device);
        std::string line = padded(name, 5) + "  " + padded(port.device, width) + "  " +
                           (cause.empty() ? selectedText(textId::portOpens) : cause);
        line += port.description.empty() ? "" : "  [" + port.description + "]";
        report.event(line, {{"event", "port"},
                            {"port", name},
                            {"device", port.device},
                            {"opens", cause.empty()},
                            {"cause", cause},
                            {"description", port.description}});
    }
    if (ports.empty()) {
        const std::string text = selectedText(textId::noPorts);
        report.message(text, {{"event", "message"}, {"text", text}}, true);
    }
}

} // namespace cli
