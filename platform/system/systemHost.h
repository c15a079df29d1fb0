// What the hosts on a real computer share: clock, disk, serial port, locks and end of the process.
#pragma once

#include "platform/clock.h"
#include "platform/devicePort.h"
#include "platform/host.h"
#include "platform/system.h"

#include <memory>
#include <string>

namespace platform {

class SystemHost : public Host {
  public:
    std::int64_t timeGetTime() override { return clockMicros() / 1000; }
    std::string dateAndTime() override;
    void keepAwake(bool on) override { platform::keepAwake(on); }
    SerialPort& commPort() override { return port_; }
    Files& files() override { return *files_; }
    std::string programDirectory() override { return platform::programDirectory(); }
    bool previousInstance() override { return !takeInstanceLock(); }
    [[noreturn]] void endProgram(int exitCode) override;

  protected:
    explicit SystemHost(std::unique_ptr<LineDevice> line = makeLineDevice());

    DevicePort& port() { return port_; }

    // Path of the device of a COM port: from Setting.INI, else the default of the system.
    virtual std::string deviceOf(int number);

  private:
    std::unique_ptr<Files> files_;
    DevicePort port_;
};

} // namespace platform
