#pragma once

#include "platform/simulated/world.h"
#include "soak/boxKinds.h"
#include "ui/forms.h"

#include <optional>
#include <string>

namespace soak {

// The main window and the progress dialog, nullptr while they are not loaded.
FrmMain* mainForm(const platform::SimulatedDesktop& desktop);
FrmWait* waitForm(const platform::SimulatedDesktop& desktop);

// One press of a button of the main window and all that follows, up to the moment at which the program waits again.
class Operation {
  public:
    enum class Kind { load, write, save };

    // The operation that a deed begins, nothing when it begins none.
    static std::optional<Operation> begunBy(const platform::Deed& deed, platform::World& world);

    Kind kind() const { return kind_; }
    bool verifying() const { return verifying_; } // the check box was ticked

    void cancel() { cancelled_ = true; }
    bool cancelled() const { return cancelled_; } // by the button of the progress dialog

    void failDisk() { diskFailed_ = true; }
    bool diskFailed() const { return diskFailed_; } // and a report has said so

    // The boxes so far.
    std::size_t boxCount() const { return world_->desktop.boxes().size() - firstBox_; }
    const platform::Box* lastBox() const;
    bool lastBoxIs(BoxKind kind) const { return lastBox() != nullptr && kindOf(*lastBox()) == kind; }

    // The file that the operator has named, nothing when there was no dialog or it was cancelled.
    std::optional<std::string> path() const;
    platform::SimulatedFile* file() const;
    // The disk was asked to write an image.
    bool fileWritten() const;

    // How it ended, for counting; empty when it ended in none of the ways that it may.
    std::string outcome() const;

  private:
    explicit Operation(platform::World& world);
    std::string outcomeOfWrite() const;
    std::string outcomeOfSave() const;

    platform::World* world_;
    Kind kind_ = Kind::load;
    bool verifying_ = false;
    bool cancelled_ = false;
    bool diskFailed_ = false;
    std::size_t firstBox_;
    std::size_t firstDialog_;
    std::int64_t writesBefore_;
};

} // namespace soak
