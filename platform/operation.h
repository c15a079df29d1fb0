// The operations of a host, for those that observe them.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace platform {

enum class Operation {
    choosePort,
    setSettings,
    openPort,
    closePort,
    reopenPort,
    setBufferSizes,
    countReceived,
    clearReceived,
    clearUnsent,
    setReadLimit,
    readPort,
    writePort,
    fileExists,
    fileLength,
    openFile,
    readFile,
    writeFile,
    closeFile,
    readWholeFile,
    appendLine,
    dialog,
    wait, // doEvents and waitForEvents
    time,
    date,
    instance,
};
constexpr std::array<std::string_view, 25> operationNames{
    "choosePort",    "setSettings", "openPort",     "closePort", "reopenPort",    "setBufferSizes", "countReceived",
    "clearReceived", "clearUnsent", "setReadLimit", "readPort",  "writePort",     "fileExists",     "fileLength",
    "openFile",      "readFile",    "writeFile",    "closeFile", "readWholeFile", "appendLine",     "dialog",
    "wait",          "time",        "date",         "instance"};
constexpr std::size_t operationCount = operationNames.size();
static_assert(operationCount == static_cast<std::size_t>(Operation::instance) + 1);

constexpr std::string_view nameOf(Operation operation) {
    return operationNames[static_cast<std::size_t>(operation)];
}

} // namespace platform
