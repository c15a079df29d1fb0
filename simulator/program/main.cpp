#include "simulator/program/lineSession.h"
#include "simulator/program/programOptions.h"
#include "simulator/program/pseudoTerminal.h"

#include <csignal>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <iostream>
#include <stdexcept>

using namespace simulator;

namespace {

volatile std::sig_atomic_t stop = 0;

// Blocks the two signals except while the session sleeps, and returns the mask for that.
sigset_t catchStopSignals() {
    sigset_t held;
    sigset_t waitMask;
    sigemptyset(&held);
    sigaddset(&held, SIGTERM);
    sigaddset(&held, SIGINT);
    sigprocmask(SIG_BLOCK, &held, &waitMask);
    sigdelset(&waitMask, SIGTERM);
    sigdelset(&waitMask, SIGINT);
    struct sigaction action {};
    action.sa_handler = [](int) { stop = 1; };
    sigaction(SIGTERM, &action, nullptr);
    sigaction(SIGINT, &action, nullptr);
    return waitMask;
}

void writeSample(const ProgramOptions& options) {
    const Bytes image = makeSampleImage(options.sample);
    std::ofstream file(options.sampleOut, std::ios::binary);
    file.write(reinterpret_cast<const char*>(image.data()), static_cast<std::streamsize>(image.size()));
    if (!file.flush()) {
        throw std::runtime_error("cannot write " + options.sampleOut.string());
    }
}

void runUnit(ProgramOptions options) {
    const sigset_t waitMask = catchStopSignals();
    PseudoTerminal terminal(options.link);
    std::cout << terminal.device() << std::endl;
    LineSession(std::move(options), terminal).run(stop, waitMask);
}

} // namespace

int main(int argc, char** argv) {
    try {
        ProgramOptions options = readOptions(argc, argv);
        if (options.help) {
            std::cout << helpText;
        } else if (!options.sampleOut.empty()) {
            writeSample(options);
        } else {
            runUnit(std::move(options));
        }
        return EXIT_SUCCESS;
    } catch (const std::exception& failure) {
        std::cerr << "tarnbeacon-unit: " << failure.what() << '\n';
        return EXIT_FAILURE;
    }
}
