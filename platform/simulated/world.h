// The environment of one simulated run of the program: host, operator, line, unit and the usual files.
#pragma once

#include "platform/simulated/scriptedOperator.h"
#include "simulator/sampleImage.h"

namespace platform {

constexpr int defaultComPort = 3; // in Setting.INI and where the unit is

struct WorldOptions {
    simulator::UnitOptions unit = {};
    LinePace pace = {};
    int comPort = defaultComPort;
    simulator::SampleImage image = {};
};

// While it exists, `host` is the program's host. An open dialog gives the sample firmware, a save dialog
// `savedPath`. Models: the amplifier is a QT-MVR, as the sample firmware is; the interface unit a QT-KP42.
struct World {
    static constexpr const char* firmwarePath = "/firmware/sample.bin";
    static constexpr const char* savedPath = "/firmware/saved.bin";

    explicit World(WorldOptions options = {});
    World(const World&) = delete;
    World& operator=(const World&) = delete;
    ~World();

    // Switches the unit off and on again; it loses the state of a transfer and keeps its images.
    void restartUnit(Micros off, Micros on);

    VirtualClock clock;
    SimulatedFiles files{clock};
    simulator::Unit unit;
    SimulatedLine line;
    SimulatedPort port{clock};
    SimulatedHost host{clock, port, files};
    ScriptedOperator theOperator{host};
    Bytes image; // of the sample firmware
};

} // namespace platform
