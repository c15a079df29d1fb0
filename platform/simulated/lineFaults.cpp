#include "platform/simulated/lineFaults.h"

#include "simulator/wire.h"

#include <array>

namespace platform {

namespace {

// Mostly a control byte, which the other side may take for an answer; else any byte.
std::uint8_t strayByte(Random& random) {
    using namespace simulator;
    constexpr std::array<std::uint8_t, 8> controls{soh, stx, etx, eot, ack, nak, can, crcStart};
    return random.chance(700) ? random.pick(controls) : static_cast<std::uint8_t>(random.below(256));
}

bool applies(LineFault& fault, Writes kind, Random& random) {
    if (fault.writes != Writes::any && fault.writes != kind) {
        return false;
    }
    ++fault.seen;
    return fault.seen >= fault.first && fault.seen <= fault.last &&
           (fault.perMille == 1000 || random.chance(fault.perMille));
}

void change(const LineFault& fault, Random& random, Bytes& bytes, Micros& at) {
    using Kind = LineFault::Kind;
    const bool atEnd = fault.kind == Kind::insert;
    const std::int64_t places = std::ssize(bytes) + (atEnd ? 1 : 0);
    const std::int64_t place =
        fault.place ? std::min(static_cast<std::int64_t>(*fault.place), places - 1) : random.below(places);
    const auto there = bytes.begin() + place;
    const Bytes before = bytes;
    switch (fault.kind) {
    case Kind::lose: bytes.erase(there); break;
    case Kind::flip: *there ^= static_cast<std::uint8_t>(1 << random.below(8)); break;
    case Kind::twice: bytes.insert(there, before[static_cast<std::size_t>(place)]); break;
    case Kind::insert:
        if (fault.bytes.empty()) {
            bytes.insert(there, strayByte(random));
        } else {
            bytes.insert(there, fault.bytes.begin(), fault.bytes.end());
        }
        break;
    case Kind::cut: bytes.erase(there, bytes.end()); break;
    case Kind::drop: bytes.clear(); break;
    case Kind::repeat: bytes.insert(bytes.end(), before.begin(), before.end()); break;
    case Kind::replace: bytes = fault.bytes; break;
    case Kind::delay: at += fault.time; break;
    }
}

} // namespace

void applyFaults(std::vector<LineFault>& faults, Writes kind, Random& random, Bytes& bytes, Micros& at) {
    for (LineFault& fault : faults) {
        if (!bytes.empty() && applies(fault, kind, random)) {
            const Bytes before = bytes;
            const Micros atBefore = at;
            change(fault, random, bytes, at);
            fault.applied += bytes != before || at != atBefore ? 1 : 0;
        }
    }
}

} // namespace platform
