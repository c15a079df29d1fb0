// A serial line with a simulated unit at its end. Its time is the clock; bytes take no time on it.
#pragma once

#include "platform/lineDevice.h"
#include "simulator/unit.h"

#include <functional>
#include <memory>

namespace gallery {

class UnitLine final : public platform::LineDevice {
  public:
    void open(const std::string& /*device*/, const platform::LineSettings& /*settings*/) override { use(); }
    void close() override { received_.clear(); }
    std::size_t read(std::span<std::uint8_t> bytes) override;
    std::size_t write(std::span<const std::uint8_t> bytes) override;
    void clearReceived() override { received_.clear(); }
    void clearUnsent() override {}
    void wait(Micros until, bool forRoom) override;

    std::unique_ptr<simulator::Unit> unit;
    // Called before each open and each write until it returns true.
    std::function<bool()> moment;

  private:
    void use();
    void fetch();

    Bytes received_;
};

} // namespace gallery
