#include "platform/simulated/lane.h"

#include <algorithm>

namespace platform {

namespace {

constexpr Micros bitsPerByte = 10; // start bit, eight data bits, stop bit

} // namespace

Micros LinePace::duration(std::size_t bytes) const {
    return bitsPerSecond == 0 ? 0 : static_cast<Micros>(bytes) * bitsPerByte * fromSeconds(1) / bitsPerSecond;
}

void Lane::send(Bytes bytes, Micros at) {
    if (bytes.empty()) {
        return;
    }
    writes_.push_back({std::max(at, busyUntil_), 0, std::move(bytes)});
    busyUntil_ = end(writes_.back());
}

Micros Lane::writeEnd() const {
    return writes_.empty() ? never : end(writes_.front());
}

Bytes Lane::takeWrite() {
    Bytes bytes = std::move(writes_.front().bytes);
    writes_.pop_front();
    return bytes;
}

Micros Lane::deliveryTime(Micros arrival) const {
    return pace_.latency == 0 ? arrival : (arrival + pace_.latency - 1) / pace_.latency * pace_.latency;
}

Micros Lane::nextArrival() const {
    if (writes_.empty()) {
        return never;
    }
    const Write& write = writes_.front();
    return deliveryTime(pace_.wholeWrites ? end(write) : write.start + pace_.duration(write.taken + 1));
}

std::size_t Lane::arrived(const Write& write, Micros now) const {
    const Micros deliveredUntil = pace_.latency == 0 ? now : now / pace_.latency * pace_.latency;
    if (deliveredUntil >= end(write)) {
        return write.bytes.size();
    }
    if (pace_.wholeWrites || deliveredUntil < write.start) {
        return 0;
    }
    // The largest count whose duration, rounded down to whole microseconds, has passed.
    const Micros passed = deliveredUntil - write.start + 1;
    const Micros unit = bitsPerByte * fromSeconds(1);
    return static_cast<std::size_t>((passed * pace_.bitsPerSecond + unit - 1) / unit - 1);
}

bool Lane::takeArrived(Micros now, Bytes& received) {
    bool some = false;
    while (!writes_.empty()) {
        Write& write = writes_.front();
        const std::size_t count = std::max(write.taken, arrived(write, now));
        some = some || count > write.taken;
        received.insert(received.end(), write.bytes.begin() + static_cast<std::ptrdiff_t>(write.taken),
                        write.bytes.begin() + static_cast<std::ptrdiff_t>(count));
        write.taken = count;
        if (count < write.bytes.size()) {
            break;
        }
        writes_.pop_front();
    }
    return some;
}

void Lane::dropUnsent(Micros now) {
    while (!writes_.empty() && writes_.back().start > now) {
        writes_.pop_back();
    }
    busyUntil_ = now;
    if (!writes_.empty()) {
        Write& last = writes_.back();
        std::size_t begun = last.bytes.size();
        while (begun > 1 && last.start + pace_.duration(begun - 1) > now) {
            --begun;
        }
        last.bytes.resize(begun);
        busyUntil_ = std::max(now, end(last));
    }
}

void Lane::clear() {
    writes_.clear();
    busyUntil_ = 0;
}

} // namespace platform
