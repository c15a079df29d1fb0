// Watches a session and holds it against the invariants: at every message of the tool, every byte that it takes, every
// box, every window event, and at the end.
#pragma once

#include "platform/simulated/world.h"
#include "soak/blindSpots.h"
#include "soak/log.h"
#include "soak/operation.h"
#include "soak/order.h"

#include <functional>
#include <map>

namespace soak {

// What came of sessions.
struct Tally {
    std::int64_t upgrades = 0; // writes after which the unit held the file
    std::int64_t saves = 0;    // files that hold the unit's image
    std::array<std::int64_t, blindSpotNames.size()> blindSpotsMet{};
    std::map<std::string, std::int64_t> outcomes;
};

class Monitor {
  public:
    // Watches from here on. The line's two hooks and the window events are left to the session to bind.
    Monitor(platform::World& world, Log& log);
    Monitor(const Monitor&) = delete;
    Monitor& operator=(const Monitor&) = delete;

    // The line's hooks, ahead of the faults and after them.
    void sent(const platform::Passage& passage);
    void passed(const platform::Passage& passage);
    // Called when a message of the tool begins.
    std::function<void()> messageBegins;

    // What the faults do and what does not show on the line: bytes from nowhere, up to a moment; a failure of the port.
    void strayBytes(Micros until);
    void portFailed() { portFailed_ = true; }

    void formChanges(const platform::Form& form, platform::FormChange change);
    void deedBegins(const platform::Deed& deed); // one that is possible
    void eventRan();
    void ranTo(platform::RunEnd end);

    const Tally& tally() const { return tally_; }

  private:
    void boxStands(const platform::Box& box);
    void sentByUnit(const Bytes& bytes);
    void bytesTaken(std::span<const std::uint8_t> bytes);
    void signOfLife(Micros until);
    Micros patience() const;

    void hear(Word word);
    void hearTransfer(Word word);
    void judge(std::string_view complaint);
    bool verifying() const { return operation_ && operation_->verifying(); }
    bool portBad() const;

    void checkWindows();
    void checkRest(const FrmMain& form);
    void checkEnd();
    std::string wayToEnd() const;

    void succeeded();
    void compared(bool equal);
    void checkLoaded();
    void checkSaved();
    void endOperation();

    const Bytes& unitImage() const; // of the part that the selected row addresses
    void meet(BlindSpot spot) { ++tally_.blindSpotsMet[static_cast<std::size_t>(spot)]; }
    void meetReadSpots();

    platform::World& world_;
    Log& log_;
    Tally tally_;
    ToolReader reader_;
    Order order_;
    WriteAccount write_;
    ReadAccount read_;
    Bytes sent_; // the latest passage, as it was sent
    Micros sentAt_ = 0;
    Micros disturbedUntil_ = -1; // the line, by late and stray bytes
    Micros sign_ = 0;            // the latest moment at which the program has shown a sign of life
    bool portFailed_ = false;    // since the present operation began
    int boxesWithoutPort_ = 0;   // of the present operation, since its device has gone away
    std::optional<Operation> operation_;
    std::optional<platform::Deed> deed_; // that is being done
    Bytes loaded_;                       // the image loaded last
    std::size_t violationsSeen_ = 0;     // of the desktop's own
};

} // namespace soak
