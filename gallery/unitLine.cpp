#include "gallery/unitLine.h"

#include "platform/clock.h"

#include <algorithm>
#include <chrono>
#include <thread>
#include <utility>

namespace gallery {

using platform::clockMicros;

void UnitLine::use() {
    auto now = std::exchange(moment, nullptr);
    if (now && !now()) {
        moment = std::move(now);
    }
}

void UnitLine::fetch() {
    unit->advance(clockMicros());
    for (const simulator::Output& output : unit->takeOutput()) {
        received_.insert(received_.end(), output.bytes.begin(), output.bytes.end());
    }
}

std::size_t UnitLine::read(std::span<std::uint8_t> bytes) {
    fetch();
    const std::size_t count = std::min(bytes.size(), received_.size());
    std::copy_n(received_.begin(), count, bytes.begin());
    received_.erase(received_.begin(), received_.begin() + static_cast<std::ptrdiff_t>(count));
    return count;
}

std::size_t UnitLine::write(std::span<const std::uint8_t> bytes) {
    use();
    unit->receive(bytes, clockMicros());
    return bytes.size();
}

void UnitLine::wait(Micros until, bool /*forRoom*/) {
    fetch();
    const Micros end = std::min(until, unit->due());
    if (received_.empty()) {
        std::this_thread::sleep_for(std::chrono::microseconds(std::max<Micros>(end - clockMicros(), 0)));
    }
}

} // namespace gallery
