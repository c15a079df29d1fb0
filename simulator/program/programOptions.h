#pragma once

#include "simulator/sampleImage.h"
#include "simulator/unitOptions.h"

#include <filesystem>
#include <string_view>

namespace simulator {

enum class TransferAtOnce { none, receive, send };

struct ProgramOptions {
    bool help = false;
    UnitOptions unit;
    bool paced = false; // in both directions at the speed of the line
    TransferAtOnce transferAtOnce = TransferAtOnce::none;
    std::filesystem::path link;
    std::filesystem::path imageOut;
    std::filesystem::path journal;
    std::filesystem::path sampleOut; // where to write a sample image; the program then ends
    SampleImage sample;
};

// Reads the command line. Throws std::runtime_error with a description.
ProgramOptions readOptions(int argc, char** argv);

extern const std::string_view helpText;

} // namespace simulator
