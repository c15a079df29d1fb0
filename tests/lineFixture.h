// The fixture of the hosts on a real computer: the system's stubs and the far end of COM3's line. Its rows are in
// tests/stories/lineHost.txt.
#pragma once

#include "tests/testFolder.h"

#include <ctime>
#include <fstream>
#include <numeric>
#include <optional>
#include <systemFixture.h> // of tests/linux or tests/windows
#include <thread>

class LineFixture : public SystemFixture {
  protected:
    explicit LineFixture(platform::Host& host) : SystemFixture(host, makeTestFolder().generic_string() + '/') {
        commands["give"] = [this](contract::Text text) { end->write(bytes(text)); };
        commands["arrived"] = [this](contract::Text count) { addBytes(take(std::stoul(count))); };
        commands["unsent"] = [this](contract::Text) { add(take(200'000).size() < 100'000 ? "dropped" : "sent"); };
        commands["stream"] = [this](contract::Text) {
            stream = std::jthread([this](const std::stop_token& stop) {
                for (; !stop.stop_requested(); std::this_thread::sleep_for(std::chrono::milliseconds(5))) {
                    end->write(Bytes{'x'});
                }
            });
        };
        commands["pull"] = [this](contract::Text) { end.reset(); };
        commands["plug"] = [this](contract::Text) { end.emplace(unit); };
        commands["hold"] = [this](contract::Text) { program->open(unit, {}); };
        commands["free"] = [this](contract::Text) { program->close(); };
        commands["device"] = [this](contract::Text path) {
            std::ofstream(desk.programDirectory() + "Setting.INI")
                << "[DEVICE]\nCOM3=" << path << "\nCOM4=/nowhere/tty\n";
        };
        commands["everyByte"] = [this](contract::Text) {
            Bytes all(256);
            std::iota(all.begin(), all.end(), std::uint8_t{0});
            port.write(all);
            const bool sent = take(all.size()) == all;
            end->write(all);
            waitFor([&] { return port.countReceived() == 256; });
            add(std::ranges::equal(port.read(), all) && sent ? "same" : "other");
        };
        commands["idle"] = [this](contract::Text) {
            const double used = processorTime();
            desk.waitForBytes(desk.timeGetTime() + 200);
            add(processorTime() - used < 0.04 ? "asleep" : "busy");
        };
        commands["now"] = [this](contract::Text) {
            const auto clock = [] {
                const std::time_t now = std::time(nullptr);
                char text[20];
                std::strftime(text, sizeof text, "%Y/%m/%d %H:%M:%S", std::localtime(&now));
                return std::string(text);
            };
            const std::string before = clock();
            const std::string present = desk.dateAndTime();
            add(before <= present && present <= clock() ? "now" : present);
        };
    }
    ~LineFixture() override {
        stream = {};
        std::filesystem::remove_all(folder);
    }

  private:
    // Reads up to `count` bytes at the far end, until no more arrive.
    Bytes take(std::size_t count) {
        Bytes bytes(count);
        std::size_t taken = 0;
        for (int quiet = 0; taken < count && quiet < 50; ++quiet) {
            desk.waitForBytes(desk.timeGetTime() + 1); // this also sends
            const std::size_t more = end->read(std::span(bytes).subspan(taken));
            taken += more;
            quiet = more > 0 ? 0 : quiet;
        }
        bytes.resize(taken);
        return bytes;
    }

    std::optional<simulator::PseudoTerminal> end{unit};
    std::jthread stream;
    std::unique_ptr<platform::LineDevice> program = platform::makeLineDevice(); // of another program
};
