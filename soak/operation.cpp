#include "soak/operation.h"

#include <array>

namespace soak {

namespace {

struct ButtonRow {
    std::string_view control;
    Operation::Kind kind;
};
constexpr std::array buttons{
    ButtonRow{"cmdLoading", Operation::Kind::load},
    ButtonRow{"cmdUpgrade", Operation::Kind::write},
    ButtonRow{"cmdPresent", Operation::Kind::save},
};

} // namespace

FrmMain* mainForm(const platform::SimulatedDesktop& desktop) {
    return static_cast<FrmMain*>(desktop.form("frmMain"));
}

FrmWait* waitForm(const platform::SimulatedDesktop& desktop) {
    return static_cast<FrmWait*>(desktop.form("frmWait"));
}

Operation::Operation(platform::World& world)
    : world_(&world), verifying_(mainForm(world.desktop)->chkVerify.value == 1),
      firstBox_(world.desktop.boxes().size()), firstDialog_(world.desktop.askedFiles().size()),
      writesBefore_(world.files.operations().passed(platform::Operation::writeFile)) {}

std::optional<Operation> Operation::begunBy(const platform::Deed& deed, platform::World& world) {
    for (const ButtonRow& button : buttons) {
        if (deed.form == "frmMain" && deed.control == button.control) {
            Operation operation(world);
            operation.kind_ = button.kind;
            return operation;
        }
    }
    return std::nullopt;
}

const platform::Box* Operation::lastBox() const {
    return boxCount() == 0 ? nullptr : &world_->desktop.boxes().back();
}

std::optional<std::string> Operation::path() const {
    const auto& asked = world_->desktop.askedFiles();
    return asked.size() > firstDialog_ ? asked[firstDialog_].path : std::nullopt;
}

platform::SimulatedFile* Operation::file() const {
    return path() ? world_->files.find(*path()) : nullptr;
}

bool Operation::fileWritten() const {
    return world_->files.operations().passed(platform::Operation::writeFile) > writesBefore_;
}

std::string Operation::outcome() const {
    switch (kind_) {
    case Kind::write: return outcomeOfWrite();
    case Kind::save: return outcomeOfSave();
    default: return boxCount() == 0 ? "load" : "load with a report";
    }
}

std::string Operation::outcomeOfWrite() const {
    if (boxCount() == 0) {
        return {};
    }
    switch (kindOf(*lastBox())) {
    case BoxKind::succeed: return verifying_ ? "write, verification equal" : "write succeeded";
    case BoxKind::failed: return "write failed";
    case BoxKind::verificationFailed: return verifying_ ? "write, verification differs" : "";
    case BoxKind::otherModel: return "write refused, other model";
    case BoxKind::notChecked: return "write given up at the question";
    default: return {};
    }
}

std::string Operation::outcomeOfSave() const {
    if (!path()) {
        return boxCount() == 0 ? "save, no file named" : "";
    }
    const std::string file = fileWritten() ? ", file" : ", no file";
    if (verifying_) {
        return "read without a notice" + file;
    }
    if (lastBoxIs(BoxKind::succeed)) {
        return (cancelled_ ? "save cancelled" : boxCount() == 1 ? "save succeeded" : "save with a report") + file;
    }
    return lastBoxIs(BoxKind::failed) ? "save failed" + file : std::string();
}

} // namespace soak
