#include "cli/report.h"

#include "platform/clock.h"
#include "texts/language.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <nlohmann/json.hpp>

namespace cli {

namespace {

using json = nlohmann::ordered_json;

std::string dumped(const json& object) {
    return object.dump(-1, ' ', false, json::error_handler_t::replace);
}

std::string withLineFeeds(std::string text) {
    std::erase(text, '\r');
    while (text.ends_with('\n')) {
        text.pop_back();
    }
    return text;
}

struct Progress {
    int percent = 0;
    double rate = 0; // bytes a second
    int left = 0;    // seconds
};

Progress progressOf(double bytes, double all, Micros elapsed) {
    Progress progress{.percent = static_cast<int>(100 * bytes / all)};
    progress.rate = elapsed > 0 ? bytes * 1e6 / static_cast<double>(elapsed) : 0;
    progress.left = progress.rate > 0 ? static_cast<int>(std::lround((all - bytes) / progress.rate)) : 0;
    return progress;
}

std::string figures(const Progress& progress) {
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%3d %%  %6.0f B/s  %d:%02d", progress.percent, progress.rate,
                  progress.left / 60, progress.left % 60);
    return text.data();
}

// The places that a text takes on a terminal, where a Japanese character has two.
int placesOf(const std::string& text) {
    int places = 0;
    for (const char byte : text) {
        const auto value = static_cast<unsigned char>(byte);
        places += value < 0x80 ? 1 : value >= 0xE0 ? 2 : 0;
    }
    return places;
}

std::string barLine(const std::string& title, const Progress& progress, int columns) {
    constexpr int leastBar = 5;
    const std::string text = figures(progress);
    const int room = columns - 1 - static_cast<int>(text.size());
    const int width = room - placesOf(title) - 4; // brackets, two blanks
    if (width < leastBar) {
        return room >= placesOf(title) ? title + text
                                       : text.substr(0, static_cast<std::size_t>(std::max(columns - 1, 0)));
    }
    const auto done = static_cast<std::size_t>(width * progress.percent / 100);
    return title + '[' + std::string(done, '#') + std::string(static_cast<std::size_t>(width) - done, '.') + "]  " +
           text;
}

} // namespace

void OutputQueue::put(const std::string& text) {
    waiting_ += text;
    flush();
}

void OutputQueue::offer(const std::string& text) {
    flush();
    if (waiting_.empty()) {
        put(text);
    }
}

void OutputQueue::flush() {
    std::size_t taken = 1;
    while (!waiting_.empty() && taken > 0) {
        taken = output_->write(waiting_);
        waiting_.erase(0, taken);
    }
}

void OutputQueue::finish() {
    constexpr int patience = 100; // milliseconds
    for (flush(); !waiting_.empty() && platform::takeSignal() == 0; flush()) {
        output_->waitForRoom(patience);
    }
}

void Report::put(OutputQueue& queue, const std::string& line) {
    endBar();
    queue.put(line + '\n');
}

void Report::event(const std::string& line, const json& object) {
    if (json_) {
        put(output_, dumped(object));
    } else if (!line.empty()) {
        put(output_, line);
    }
}

void Report::message(const std::string& text, const json& object, bool notice) {
    if (quiet_ && notice) {
        return;
    }
    if (json_) {
        put(output_, dumped(object));
    } else {
        put(errors_, withLineFeeds(text));
    }
}

void Report::result(const std::string& text, const json& object, bool failure) {
    if (json_) {
        put(output_, dumped(object));
    } else if (!text.empty() && (failure || !quiet_)) {
        put(failure ? errors_ : output_, withLineFeeds(text));
    }
}

void Report::progress(const std::string& operation, double bytes, double all) {
    if (quiet_) {
        return;
    }
    const Micros now = platform::clockMicros();
    if (bytes == 0 || operation != operation_) {
        operation_ = operation;
        startedAt_ = now;
        reported_ = -1;
    }
    const Progress progress = progressOf(bytes, all, now - startedAt_);
    const std::string title = operation == "verify" ? selectedText(textId::verificationRuns) + ' ' : std::string();
    if (terminal_ && !json_) {
        output_.offer('\r' + barLine(title, progress, output_.columns()) + "\033[K");
        barShown_ = true;
        return;
    }
    const int step = json_ ? progress.percent : progress.percent / 10;
    if (step == reported_) {
        return;
    }
    reported_ = step;
    if (json_) {
        output_.offer(dumped({{"event", "progress"},
                              {"operation", operation},
                              {"bytes", static_cast<int>(bytes)},
                              {"total", static_cast<int>(all)},
                              {"percent", progress.percent},
                              {"bytesPerSecond", static_cast<int>(progress.rate)},
                              {"secondsLeft", progress.left}}) +
                      '\n');
    } else {
        output_.offer(title + figures(progress) + '\n');
    }
}

void Report::endBar() {
    if (barShown_) {
        barShown_ = false;
        output_.put("\n");
    }
}

void Report::flush() {
    output_.flush();
    errors_.flush();
}

void Report::finish() {
    endBar();
    output_.finish();
    errors_.finish();
}

} // namespace cli
