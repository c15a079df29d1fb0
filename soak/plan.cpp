#include "soak/plan.h"

#include "soak/random.h"

#include <algorithm>

namespace soak {

namespace {

constexpr std::array<const char*, 7> jobNames{"start", "load", "write", "save", "verification", "language", "row"};

// Real lines and lines that hide what depends on them.
constexpr std::array paces{
    platform::LinePace{},
    platform::LinePace{.wholeWrites = true},
    platform::LinePace{.latency = 0},
    platform::LinePace{.latency = fromMilliseconds(16)},
    platform::unpaced,
};

platform::WorldOptions drawWorld(Random& random) {
    platform::WorldOptions world;
    world.unit.crc = random.chance(50);
    world.unit.startDelay = fromMilliseconds(random.spread(1, 5000));
    world.unit.replyDelay = fromMilliseconds(random.spread(1, 300));
    world.unit.packetDelay = fromMilliseconds(random.chance(70) ? 0 : random.spread(1, 200));
    world.pace = random.chance(60) ? paces[0] : random.pick(paces);
    world.image.seed = static_cast<std::uint32_t>(random.draw());
    return world;
}

Job otherFile(Random& random) {
    return {JobKind::load, static_cast<int>(random.between(1, std::ssize(loadFiles) - 1))};
}

Job mainJob(Random& random) {
    if (random.chance(60)) {
        return {JobKind::write};
    }
    return {JobKind::save, random.chance(70) ? 0 : static_cast<int>(random.below(std::ssize(saveFiles)))};
}

// Row 0 takes the usual file, row 1 the interface unit's.
void drawTarget(Random& random, std::vector<Job>& jobs) {
    const int row = random.chance(85) ? 0 : 1;
    if (row == 1) {
        jobs.push_back({JobKind::row, row});
    }
    jobs.push_back({JobKind::load, row});
}

std::vector<Job> drawJobs(Random& random) {
    std::vector<Job> jobs{{JobKind::start}};
    if (random.chance(25)) {
        jobs.push_back({JobKind::language, static_cast<int>(random.below(2))});
    }
    if (random.chance(10)) {
        jobs.push_back(otherFile(random));
    }
    drawTarget(random, jobs);
    if (random.chance(10)) {
        jobs.push_back(otherFile(random));
    }
    const bool verifies = random.chance(20);
    if (verifies) {
        jobs.push_back({JobKind::verification});
    }
    jobs.push_back(mainJob(random));
    if (random.chance(35)) {
        if (verifies && random.chance(50)) {
            jobs.push_back({JobKind::verification});
        }
        jobs.push_back(mainJob(random));
    }
    return jobs;
}

// Commands come first, the end of a transfer after some 1,920 blocks; both deserve more than their share.
int drawMessage(Random& random) {
    constexpr int endOfTransfer = 1925;
    const std::int64_t part = random.below(100);
    if (part < 45) {
        return static_cast<int>(random.between(1, 10));
    }
    return static_cast<int>(part < 70 ? random.spread(1, endOfTransfer)
                                      : random.between(endOfTransfer - 10, endOfTransfer + 5));
}

int drawSpan(Random& random) {
    const std::int64_t part = random.below(100);
    return static_cast<int>(part < 50 ? 1 : part < 80 ? random.between(2, 12) : random.spread(8, 2000));
}

// The unit sends an image in this job: a save, or a write with the check box ticked an odd number of times before.
bool reads(const std::vector<Job>& jobs, int number) {
    const auto last = jobs.begin() + number;
    return last->kind == JobKind::save ||
           std::count_if(jobs.begin(), last, [](const Job& job) { return job.kind == JobKind::verification; }) % 2 == 1;
}

// False for a fault that could change nothing in its job.
bool bites(const Fault& fault, const Plan& plan) {
    const JobKind job = plan.jobs[static_cast<std::size_t>(fault.job)].kind;
    if (fault.job == 0 || rowOf(fault.kind).site == Site::start) {
        return fault.job == 0;
    }
    if (job != JobKind::write && job != JobKind::save) {
        return false;
    }
    switch (fault.kind) {
    case FaultKind::hiddenToUnit: return job == JobKind::write && !plan.world.unit.crc;
    case FaultKind::piecedBlocks:
    case FaultKind::halvedBlocks:
    case FaultKind::slowSender:
    case FaultKind::hastySender:
    case FaultKind::singleEnd: return reads(plan.jobs, fault.job);
    default: return true;
    }
}

Fault drawFault(Random& random, const Plan& plan) {
    constexpr std::array percents{100, 100, 30, 5, 1};
    Fault fault;
    do {
        fault.kind = static_cast<FaultKind>(random.below(faultKindCount));
        fault.job = random.chance(8) ? 0 : static_cast<int>(random.between(1, std::ssize(plan.jobs) - 1));
    } while (!bites(fault, plan));
    fault.message = fault.job == 0 ? static_cast<int>(random.between(1, 6)) : drawMessage(random);
    fault.span = drawSpan(random);
    fault.percent = fault.span == 1 ? 100 : random.pick(percents);
    fault.seed = random.draw();
    return fault;
}

int drawFaultCount(Random& random) {
    const std::int64_t part = random.below(100);
    return static_cast<int>(part < 4 ? 0 : part < 55 ? 1 : part < 80 ? 2 : random.between(3, 6));
}

} // namespace

Plan planOf(std::uint64_t seed) {
    Random random(seed);
    Plan plan;
    plan.seed = seed;
    plan.world = drawWorld(random);
    plan.jobs = drawJobs(random);
    for (int count = drawFaultCount(random); count > 0; --count) {
        plan.faults.push_back(drawFault(random, plan));
    }
    plan.last = random.chance(70) ? JobKind::write : JobKind::save;
    plan.cancelPercent = random.chance(80) ? 0 : 40;
    plan.reaction = fromMilliseconds(random.spread(10, 8000));
    return plan;
}

std::string textOf(const Plan& plan) {
    std::string text = std::string("unit with ") + (plan.world.unit.crc ? "CRC" : "checksum") + ", line of " +
                       std::to_string(plan.world.pace.bitsPerSecond) + " bit/s, latency " +
                       std::to_string(plan.world.pace.latency) + " us\njobs:";
    for (const Job& job : plan.jobs) {
        text += std::string(" ") + jobNames[static_cast<std::size_t>(job.kind)] + ' ' + std::to_string(job.choice);
    }
    text += "\n";
    for (const Fault& fault : plan.faults) {
        text += "fault: " + std::string(rowOf(fault.kind).name) + ", job " + std::to_string(fault.job) + ", message " +
                std::to_string(fault.message) + ", " + std::to_string(fault.span) + " long, " +
                std::to_string(fault.percent) + " %\n";
    }
    return text;
}

} // namespace soak
