#include "soak/session.h"

#include "app/program.h"
#include "state/variables.h"

#include <algorithm>

namespace soak {

using platform::AskedFile;
using platform::Box;
using platform::Deed;
using platform::FormChange;
using platform::Passage;
using platform::World;

namespace {

constexpr int mostPresses = 4; // of the set button, before the operator gives up

class Session {
  public:
    Session(const Plan& plan, bool story);
    SessionResult live();

  private:
    void fillUnit();
    void putFiles();
    void bindWorld();
    void showHidden(platform::Form& form);
    std::optional<std::string> fileFor(const AskedFile& asked);
    bool cancels() { return injector_.takeCancel() || random_.chance(cancelPercent_); }

    bool act(const Deed& deed);
    void actOutOfTurn(bool close);
    void carryOn();
    void start();
    void choosePort();
    void carryOut(const Job& job);
    void finish();
    void requireSuccess(JobKind kind);
    bool operatorWaits() const;
    bool portLives() const { return shared.serialPort != nullptr && world_.port.isOpen() && !world_.port.lost(); }

    const Plan& plan_;
    World world_;
    Log log_;
    Monitor monitor_{world_, log_};
    FaultInjector injector_;
    Random random_;
    int cancelPercent_;
    Job job_;
};

Session::Session(const Plan& plan, bool story)
    : plan_(plan), world_(plan.world), log_(world_.clock, story), injector_(world_, monitor_, log_, plan.faults),
      random_(plan.seed ^ 0x5EED), cancelPercent_(plan.cancelPercent) {
    fillUnit();
    putFiles();
    bindWorld();
}

// What the unit holds at first is as good as any image, and another one than the files.
void Session::fillUnit() {
    simulator::UnitOptions& unit = world_.unit.options();
    const auto changed = [&](std::uint8_t mask) {
        Bytes image = world_.image;
        std::ranges::transform(image, image.begin(), [&](std::uint8_t byte) -> std::uint8_t { return byte ^ mask; });
        return image;
    };
    unit.amplifierImage = changed(0x5A);
    unit.interfaceUnitImage = changed(0xA5);
}

void Session::putFiles() {
    const std::string usual(world_.image.begin(), world_.image.end());
    const auto typed = [&](std::string type) {
        type.resize(simulator::typeTextLength);
        return std::string(usual).replace(simulator::typeTextOffset, type.size(), type);
    };
    world_.files.put(loadFiles[1].path, typed("KP42FIRM"));
    world_.files.put(loadFiles[2].path, typed("OTHER"));
    world_.files.put(loadFiles[3].path, usual.substr(1));
    world_.files.put(loadFiles[4].path, usual + ' ');
    world_.files.put(saveFiles[1].path, std::string(300'000, 'x'));
    world_.files.put(saveFiles[2].path, usual);
    world_.files.find(saveFiles[2].path)->readOnly = true;
}

void Session::bindWorld() {
    world_.line.record().keep(0); // the log tells more
    world_.line.addHook([this](Passage& passage) { monitor_.sent(passage); });
    world_.line.addHook([this](Passage& passage) { injector_.pass(passage); });
    world_.line.addHook([this](Passage& passage) { monitor_.passed(passage); });
    monitor_.messageBegins = [this] { injector_.beginMessage(); };
    injector_.act = [this](bool close) { actOutOfTurn(close); };

    platform::SimulatedDesktop& desktop = world_.desktop;
    desktop.reactionTime = plan_.reaction;
    desktop.answerBox = [this](const Box& box) {
        return box.hasCancel() && cancels() ? platform::boxAnswer::cancel : platform::boxAnswer::ok;
    };
    desktop.chooseFile = [this](const AskedFile& asked) { return fileFor(asked); };
    desktop.eventRan = [this] { monitor_.eventRan(); };
    desktop.formChanges = [this](platform::Form& form, FormChange change) {
        showHidden(form);
        monitor_.formChanges(form, change);
    };
}

// The controls that the delivered screen hides are there for this operator.
void Session::showHidden(platform::Form& form) {
    constexpr std::array<std::string_view, 4> hidden{"cmdPresent", "chkVerify", "fraLanguage", "cmdCancel"};
    for (platform::Control* control : form.controls) {
        control->visible = control->visible || std::ranges::find(hidden, control->name) != hidden.end();
    }
}

std::optional<std::string> Session::fileFor(const AskedFile& asked) {
    if (cancels()) {
        return std::nullopt;
    }
    const auto choice = static_cast<std::size_t>(job_.choice);
    if (asked.save) {
        return saveFiles[job_.kind == JobKind::save ? choice : 0].path;
    }
    return loadFiles[job_.kind == JobKind::load ? choice : 0].path;
}

// The operator.

bool Session::operatorWaits() const {
    return !world_.desktop.ended() && log_.violations().empty();
}

// Does it, and lets all that follows shared. False when it was not possible.
bool Session::act(const Deed& deed) {
    if (!world_.person.refusal(deed).empty()) {
        return false;
    }
    monitor_.ranTo(world_.desktop.run([&] {
        monitor_.deedBegins(deed);
        world_.person.perform(deed);
    }));
    return true;
}

void Session::carryOn() {
    monitor_.ranTo(world_.desktop.carryOn());
}

// One of all things that are possible at this moment, out of those that close or out of the others.
void Session::actOutOfTurn(bool close) {
    std::vector<Deed> deeds = world_.person.possible();
    std::erase_if(
        deeds, [&](const Deed& deed) { return close != (deed.kind == Deed::Kind::close || deed.control == "cmdEnd"); });
    if (deeds.empty()) {
        return;
    }
    Deed deed = random_.pick(deeds);
    if (deed.kind == Deed::Kind::choose) { // a list has many entries; the buttons get another chance
        deed = random_.pick(deeds);
    }
    monitor_.deedBegins(deed);
    world_.person.perform(deed);
}

void Session::start() {
    injector_.prepareStart();
    monitor_.ranTo(world_.desktop.run(program::start));
    choosePort();
}

// As long as the program offers the ports.
void Session::choosePort() {
    for (int press = 0; press < mostPresses && operatorWaits() && !mainForm(world_.desktop)->visible; ++press) {
        act(platform::choose("frmStartUp", "cmbCom", platform::usualComPort - 1));
        if (operatorWaits() && !act(platform::click("frmStartUp", "cmdTest"))) {
            log_.violation("start-up leaves the operator without a button");
        }
    }
}

void Session::carryOut(const Job& job) {
    job_ = job;
    injector_.beginJob();
    switch (job.kind) {
    case JobKind::start: start(); break;
    case JobKind::load: act(platform::click("frmMain", "cmdLoading")); break;
    case JobKind::write: act(platform::click("frmMain", "cmdUpgrade")); break;
    case JobKind::save: act(platform::click("frmMain", "cmdPresent")); break;
    case JobKind::verification: act(platform::click("frmMain", "chkVerify")); break;
    case JobKind::language: act(platform::click("frmMain", "optLanguage", job.choice)); break;
    case JobKind::row: act(platform::click("frmMain", "optPresent", job.choice)); break;
    }
}

// The end.

// Whatever has happened: without faults the next operation succeeds, where the port lives.
void Session::finish() {
    const Micros settled = injector_.stop();
    cancelPercent_ = 0;
    world_.desktop.schedule(settled, [] {});
    carryOn();
    choosePort();
    if (!operatorWaits() || !mainForm(world_.desktop)->visible) {
        return;
    }
    if (mainForm(world_.desktop)->chkVerify.value == 1) {
        carryOut({JobKind::verification});
    }
    carryOut({JobKind::row});
    carryOut({JobKind::load});
    const FrmMain& form = *mainForm(world_.desktop);
    const bool fits = form.lblTitle[0].caption == form.lblTitle[2].caption;
    if (!portLives()) {
        carryOut({JobKind::write}); // must end, no more
    } else {
        requireSuccess(fits ? plan_.last : JobKind::save);
    }
}

void Session::requireSuccess(JobKind kind) {
    log_.note("without faults");
    const bool write = kind == JobKind::write;
    const std::int64_t& successes = write ? monitor_.tally().upgrades : monitor_.tally().saves;
    const std::int64_t before = successes;
    carryOut({kind});
    if (successes == before) {
        log_.violation(write ? "a write without faults does not succeed" : "a save without faults does not succeed");
    }
}

SessionResult Session::live() {
    for (const Job& job : plan_.jobs) {
        if (operatorWaits()) {
            carryOut(job);
        }
    }
    if (operatorWaits()) {
        finish();
    }
    return {monitor_.tally(),  injector_.counts(), world_.clock.now(),
            log_.violations(), log_.lines(),       log_.violatedAt()};
}

} // namespace

SessionResult runSession(const Plan& plan, bool story) {
    return Session(plan, story).live();
}

} // namespace soak
