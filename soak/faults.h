// The kinds of faults that a session can meet.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace soak {

enum class FaultKind {
    flippedToUnit,
    lostToUnit,
    doubledToUnit,
    insertedToUnit,
    hiddenToUnit,
    vanishedToUnit,
    lateToUnit,

    flippedFromUnit,
    lostFromUnit,
    doubledFromUnit,
    insertedFromUnit,
    vanishedFromUnit,
    lateFromUnit,
    cutFromUnit,
    naksInstead,
    ackInstead,
    canAhead,
    cansInstead,
    otherCommand,
    otherResult,
    otherData,
    otherEndCode,

    earlyAnswer,
    noiseFlood,
    silence,
    restart,
    refusal,
    piecedBlocks,
    halvedBlocks,
    slowSender,
    hastySender,
    singleEnd,

    portFailsOnce,
    portFailsForGood,
    adapterPulled,
    adapterBack,
    diskFailsOnce,
    diskFailsForGood,
    diskFull,

    operatorActs,
    operatorCloses,
    operatorCancels,

    portMissing,
    portHeld,
    portOutsideList,
    noSettingFile,
    noTypeFile,
    secondInstance,
    unitLate,
    unusualSensors,
};
constexpr std::size_t faultKindCount = static_cast<std::size_t>(FaultKind::unusualSensors) + 1;

// Where a fault takes hold.
enum class Site {
    toUnit,   // on what the tool writes
    fromUnit, // on what the unit says after a message of the tool
    moment,   // when a message of the tool begins; a few last until another begins
    start,    // on what the program finds when it starts
};

struct FaultRow {
    std::string_view name;
    Site site;
};

// In the order of FaultKind.
constexpr std::array<FaultRow, faultKindCount> faultRows{{
    {"bits flipped to the unit", Site::toUnit},
    {"bytes lost to the unit", Site::toUnit},
    {"bytes doubled to the unit", Site::toUnit},
    {"bytes inserted to the unit", Site::toUnit},
    {"data changed, sum kept", Site::toUnit},
    {"message lost", Site::toUnit},
    {"message late", Site::toUnit},

    {"bits flipped from the unit", Site::fromUnit},
    {"bytes lost from the unit", Site::fromUnit},
    {"bytes doubled from the unit", Site::fromUnit},
    {"bytes inserted from the unit", Site::fromUnit},
    {"answer lost", Site::fromUnit},
    {"answer late", Site::fromUnit},
    {"answer cut short", Site::fromUnit},
    {"NAK instead", Site::fromUnit},
    {"ACK instead", Site::fromUnit},
    {"CAN ahead", Site::fromUnit},
    {"CAN CAN instead", Site::fromUnit},
    {"reply of another command", Site::fromUnit},
    {"another result code", Site::fromUnit},
    {"other data", Site::fromUnit},
    {"another end code", Site::fromUnit},

    {"answer early", Site::moment},
    {"flood of noise", Site::moment},
    {"silence", Site::moment},
    {"restart of the unit", Site::moment},
    {"command refused", Site::moment},
    {"blocks in pieces", Site::moment},
    {"blocks in two parts", Site::moment},
    {"blocks late", Site::moment},
    {"blocks sent again soon", Site::moment},
    {"end sent once", Site::moment},

    {"port fails once", Site::moment},
    {"port fails for good", Site::moment},
    {"adapter pulled", Site::moment},
    {"adapter pulled and back", Site::moment},
    {"disk fails once", Site::moment},
    {"disk fails for good", Site::moment},
    {"disk full", Site::moment},

    {"operator acts", Site::moment},
    {"operator closes", Site::moment},
    {"operator cancels", Site::moment},

    {"port missing", Site::start},
    {"port held", Site::start},
    {"port outside the list", Site::start},
    {"no Setting.INI", Site::start},
    {"no TYPE.INI", Site::start},
    {"second instance", Site::start},
    {"unit switched on late", Site::start},
    {"unusual sensors", Site::start},
}};

constexpr const FaultRow& rowOf(FaultKind kind) {
    return faultRows[static_cast<std::size_t>(kind)];
}

// One fault of a plan. It lasts from one message of the tool to another; a message is a command frame, a block or a
// control byte.
struct Fault {
    FaultKind kind = FaultKind::flippedToUnit;
    int job = 0;            // of the session; 0 is the start of the program
    int message = 1;        // of the job, the first that it falls on
    int span = 1;           // messages
    int percent = 100;      // of what it could fall on
    std::uint64_t seed = 0; // of all that is left to chance
};

} // namespace soak
