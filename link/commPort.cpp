#include "link/commPort.h"

#include "base/failure.h"
#include "platform/host.h"
#include "state/variables.h"
#include "texts/messages.h"
#include "texts/stringTable.h"

using platform::host;
using platform::SerialPort;

namespace CommonComm {

namespace {

constexpr int inputBufferSize = 1024;
constexpr int outputBufferSize = 512;

// Runs one step. Catches its failure and stores the number if it is the first.
template <class Step>
void tryStep(int& failure, Step step) {
    try {
        step();
    } catch (const Failure& raised) {
        failure = failure == 0 ? raised.number() : failure;
    }
}

template <class Step>
void tryStep(Step step) {
    int ignored = 0;
    tryStep(ignored, step);
}

// The texts are Japanese in both languages.
void showOpenFailure(int failure, std::int16_t portNumber) {
    if (failure == failureNumber::portMissing) {
        showText(textId::portMissing1, platform::boxStyle::critical,
                 loadText(textId::portMissing1) + std::to_string(portNumber) + loadText(textId::portMissing2));
    } else {
        showText(textId::portDoesNotOpen, platform::boxStyle::critical, loadText(textId::portDoesNotOpen));
    }
}

void closeIfOpen(SerialPort& port) {
    tryStep([&] {
        if (port.isOpen()) {
            port.close();
        }
    });
}

} // namespace

SerialPort& serialPort() {
    if (shared.serialPort == nullptr) {
        throw Failure(failureNumber::objectNotSet, "No serial port is in use.");
    }
    return *shared.serialPort;
}

bool fncOpenPort(std::int16_t portNumber, const std::string& settings) {
    shared.serialPort = &host().commPort();
    SerialPort& port = *shared.serialPort;
    tryStep([&] { port.choosePort(portNumber); });
    if (port.isOpen()) {
        showOpenFailure(failureNumber::portHeld, portNumber);
        return false;
    }
    int failure = 0;
    tryStep(failure, [&] { port.setSettings(settings); });
    tryStep(failure, [&] { port.open(); });
    tryStep(failure, [&] { port.read(); });
    if (failure != 0) {
        closeIfOpen(port);
        showOpenFailure(failure, portNumber);
        return false;
    }
    tryStep([&] { port.setBufferSizes(inputBufferSize, outputBufferSize); });
    tryStep([&] { port.clearReceived(); });
    return true;
}

void subClosePort() {
    if (shared.serialPort != nullptr) {
        closeIfOpen(*shared.serialPort);
    }
    shared.serialPort = nullptr;
}

void subReopenPort() {
    tryStep([] { serialPort().reopenIfLost(); });
}

void subClearInput() {
    tryStep([] { serialPort().clearReceived(); });
}

} // namespace CommonComm
