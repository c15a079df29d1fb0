#include "simulator/program/lineSession.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <fstream>
#include <iomanip>
#include <poll.h>
#include <sstream>
#include <stdexcept>
#include <sys/prctl.h>
#include <system_error>
#include <time.h>

namespace simulator {

namespace {

constexpr Micros bitsPerByte = 10; // start, eight data, stop
constexpr Micros bitsPerSecond = 38400;
constexpr std::size_t readSize =
    256; // less than the terminal's queue, so that the program waits while the line is full
constexpr std::size_t deliverySize = 8; // bytes that a serial chip collects before it reports them
constexpr Micros quietTime = fromMilliseconds(50);

Micros clockNow() {
    timespec time{};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return fromSeconds(time.tv_sec) + time.tv_nsec / 1000;
}

void writeFile(const std::filesystem::path& path, const char* bytes, std::size_t count) {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(bytes, static_cast<std::streamsize>(count));
    if (!file.flush()) {
        throw std::runtime_error("cannot write " + path.string());
    }
}

} // namespace

LineSession::LineSession(ProgramOptions options, PseudoTerminal& terminal)
    : options_(std::move(options)), terminal_(terminal), unit_(options_.unit) {}

void LineSession::run(const volatile int& stop, const sigset_t& waitMask) {
    prctl(PR_SET_TIMERSLACK, 1UL); // a byte lasts 260 us; the default slack of 50 us would add up
    if (options_.transferAtOnce == TransferAtOnce::receive) {
        unit_.startReceiving(clockNow());
    } else if (options_.transferAtOnce == TransferAtOnce::send) {
        unit_.startSending(clockNow());
    }
    while (stop == 0) {
        const Micros now = clockNow();
        takeInput(now);
        unit_.advance(now);
        queueOutput(now);
        saveFiles(now);
        writeOutput(now);
        sleep(now, waitMask);
    }
    saveImage();
    saveJournal();
}

Micros LineSession::lineTime(std::size_t bytes) const {
    return options_.paced ? static_cast<Micros>(bytes) * bitsPerByte * fromSeconds(1) / bitsPerSecond : 0;
}

void LineSession::takeInput(Micros now) {
    if (!pendingInput_.empty() && inputCompleteAt_ <= now) {
        unit_.receive(pendingInput_, inputCompleteAt_);
        pendingInput_.clear();
    }
    if (!pendingInput_.empty() || !mayRead_) {
        return;
    }
    pendingInput_.resize(readSize);
    pendingInput_.resize(terminal_.read(pendingInput_));
    if (!pendingInput_.empty()) {
        noteReceived(now);
        journalDueAt_ = now + quietTime;
        inputCompleteAt_ = std::max(now - lateness_, inputCompleteAt_) + lineTime(pendingInput_.size());
        lateness_ = 0;
    }
}

void LineSession::noteReceived(Micros now) {
    if (!firstByteAt_) {
        firstByteAt_ = std::chrono::system_clock::now();
    }
    if (lastOutputAt_) {
        turnarounds_.push_back(now - *lastOutputAt_);
        lastOutputAt_.reset();
    }
}

void LineSession::queueOutput(Micros now) {
    for (Output& output : unit_.takeOutput()) {
        const Micros start = std::max(output.at, outputEnd_);
        outputEnd_ = start + lineTime(output.bytes.size());
        pendingOutput_.push_back({start, std::move(output.bytes)});
        journalDueAt_ = now + quietTime;
    }
}

// Number of bytes of the delivery that are delivered with the next write, counted from its start.
std::size_t LineSession::nextWritten(const Delivery& delivery) const {
    const std::size_t size = delivery.bytes.size();
    return options_.paced ? std::min(size, delivery.written + deliverySize) : size;
}

void LineSession::writeOutput(Micros now) {
    terminalFull_ = false;
    while (!pendingOutput_.empty() && !terminalFull_) {
        Delivery& first = pendingOutput_.front();
        const std::size_t end = nextWritten(first);
        if (first.start + lineTime(end) > now) {
            return;
        }
        const std::size_t size = end - first.written;
        const std::size_t moved = terminal_.write(std::span(first.bytes).subspan(first.written, size));
        first.written += moved;
        lastOutputAt_ = clockNow();
        lateness_ = options_.paced ? *lastOutputAt_ - (first.start + lineTime(end)) : 0;
        terminalFull_ = moved < size;
        if (first.written == first.bytes.size()) {
            pendingOutput_.pop_front();
        }
    }
}

Micros LineSession::due() const {
    Micros output = never;
    if (!pendingOutput_.empty() && !terminalFull_) {
        output = pendingOutput_.front().start + lineTime(nextWritten(pendingOutput_.front()));
    }
    return std::min(
        {unit_.due(), pendingInput_.empty() ? never : inputCompleteAt_, output, journalDueAt_.value_or(never)});
}

void LineSession::sleep(Micros now, const sigset_t& waitMask) {
    pollfd terminal{terminal_.descriptor(), 0, 0};
    terminal.events = static_cast<short>((pendingInput_.empty() ? POLLIN : 0) | (terminalFull_ ? POLLOUT : 0));
    const Micros next = due();
    const Micros wait = std::max<Micros>(0, next - now);
    const timespec limit{wait / fromSeconds(1), wait % fromSeconds(1) * 1000};
    if (ppoll(&terminal, 1, next == never ? nullptr : &limit, &waitMask) < 0 && errno != EINTR) {
        throw std::system_error(errno, std::generic_category(), "ppoll");
    }
    mayRead_ = (terminal.revents & POLLIN) != 0;
}

// Writes the files before the reply to operation 53 is sent, so that they exist when the program has that reply.
void LineSession::saveFiles(Micros now) {
    const auto& operations = unit_.journal().operations;
    const bool procedureClosed = operations.size() > operationsSaved_ && operations.back() == "53";
    operationsSaved_ = operations.size();
    if (procedureClosed) {
        saveImage();
    }
    if (procedureClosed || (journalDueAt_ && *journalDueAt_ <= now)) {
        saveJournal();
        journalDueAt_.reset();
    }
}

void LineSession::saveImage() const {
    const Bytes& image = unit_.receivedImage();
    if (!options_.imageOut.empty() && !image.empty()) {
        writeFile(options_.imageOut, reinterpret_cast<const char*>(image.data()), image.size());
    }
}

// The time of the program's first byte, in seconds since 1970, and the program's turnaround: from the last byte that the unit
// sends to the first byte that the program sends next.
std::string LineSession::timesText() {
    std::ostringstream text;
    if (firstByteAt_) {
        const std::chrono::duration<double> since = firstByteAt_->time_since_epoch();
        text << std::fixed << std::setprecision(6) << "first byte: at " << since.count() << '\n';
    }
    if (!turnarounds_.empty()) {
        std::ranges::sort(turnarounds_);
        const auto share = [this](std::size_t percent) {
            return turnarounds_[(turnarounds_.size() - 1) * percent / 100];
        };
        text << "turnaround: median " << share(50) << " us, 99 % within " << share(99) << " us\n";
    }
    return text.str();
}

void LineSession::saveJournal() {
    const std::string text = options_.journal.empty() ? "" : journalText(unit_.journal()) + timesText();
    if (text != journalSaved_) {
        writeFile(options_.journal, text.data(), text.size());
        journalSaved_ = text;
    }
}

} // namespace simulator
