#include "cli/commandLine.h"
#include "cli/session.h"

int main(int argc, char** argv) {
    cli::CommandLine line;
    if (const auto exitCode = cli::readCommandLine(argc, argv, line)) {
        return *exitCode;
    }
    cli::Session(line).run();
}
