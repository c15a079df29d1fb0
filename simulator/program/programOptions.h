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
    bool paced = false; // both ways at the speed of the line
    TransferAtOnce transferAtOnce = TransferAtOnce::none;
    std::filesystem::path link;
    std::filesystem::path imageOut;
    std::filesystem::path journal;
    std::filesystem::path sampleOut; // write a sample image there and end
    SampleImage sample;
};

// Reads the command line. Throws std::runtime_error that names the fault.
ProgramOptions readOptions(int count, char** words);

extern const std::string_view helpText;

} // namespace simulator
