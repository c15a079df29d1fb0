// A session as a story: a line for each thing, in order, "x9" for nine of a kind in a row.
//   >300551010C00 <0000   a command and the code of its answer; packets and their answers likewise
//   ->                    ahead of it what had been received was dropped, as many times
//   +128                  so far the bar has moved
//   (10.0 s)              so long nothing happened
//   ~                     the window event that has been pending since a reply or a closing of the port has run
//   box title|text|style  as it comes up; likewise file dialogs and operations of port and disk
//   [window off, ...]     what has changed by now of what the operator sees
#pragma once

#include "tests/session.h"

#include <cstdio>
#include <fstream>
#include <sstream>

class Story {
  public:
    explicit Story(Session& session) : world_(session.world), state_(state()) {
        world_.line.addHook([this](const Passage& passage) { hear(passage); });
        const auto noteOperation = [this](const OperationCall& call) { noteCall(call.operation); };
        world_.port.operations().add(noteOperation);
        world_.files.operations().add(noteOperation);
        SimulatedDesktop& desktop = world_.desktop;
        desktop.boxStands = [this](const Box& box) {
            note("box " + box.title + '|' + box.text + '|' + std::to_string(box.style));
        };
        desktop.answerBox = [this, answer = desktop.answerBox](const Box& box) {
            lastAt_ = world_.clock.now(); // the operator's own time does not count
            look();
            return answer ? answer(box) : boxAnswer::ok;
        };
        desktop.chooseFile = [this, choose = desktop.chooseFile](const AskedFile& asked) {
            lastAt_ = world_.clock.now();
            note(asked.save ? "dialog save" : "dialog open");
            return choose ? choose(asked) : std::nullopt;
        };
    }
    Story(const Story&) = delete;
    Story& operator=(const Story&) = delete;

    std::string text() {
        look();
        std::string text;
        for (const Line& line : lines_) {
            text += line.text + (line.count > 1 ? " x" + std::to_string(line.count) : "") + '\n';
        }
        for (std::size_t at = text.find('\r'); at != std::string::npos; at = text.find('\r')) {
            text.replace(at, 2, " / "); // of a box
        }
        return text;
    }

    // Compares it, from the first place of a text on, with the one of that name in tests/stories/. With RECORD_STORIES set,
    // adds it to that file instead.
    void expect(const std::string& file, const std::string& name, const std::string& from = "") {
        const std::string told = text().substr(text().find(from));
        const std::string path = std::string(STORIES) + file;
        const std::string head = "== " + name + '\n';
        if (std::getenv("RECORD_STORIES") != nullptr) {
            std::ofstream(path, std::ios::app) << head << told;
            return;
        }
        std::stringstream stories;
        stories << std::ifstream(path).rdbuf();
        const std::size_t begin = stories.str().find(head);
        ASSERT_NE(begin, std::string::npos) << name;
        const std::string rest = stories.str().substr(begin + head.size());
        EXPECT_EQ(told, rest.substr(0, rest.find("== "))) << name;
    }

  private:
    struct Line {
        std::string text;
        char waits = 0; // the side that waits for an answer
        int count = 1;
    };

    std::vector<std::string> state() const {
        const FrmMain& form = frmMain();
        const FrmWait* wait = frmWaitLoaded() ? &frmWait() : nullptr;
        const char* pointers[] = {"usual pointer", "arrow"};
        return {
            form.enabled ? "window on" : "window off",
            form.mousePointer == MousePointer::hourglass ? "hourglass" : pointers[static_cast<int>(form.mousePointer)],
            form.lblVersion[0].caption + ' ' + form.lblVersion[1].caption,
            (form.CommTimer.enabled() ? "ticks " : "no ticks ") + std::to_string(form.CommTimer.interval()),
            wait == nullptr ? "no progress"
            : wait->visible ? wait->lblMsg.caption + " 0 to " + std::to_string(static_cast<int>(wait->prbComm.max))
                            : "progress hidden",
            wait == nullptr || wait->cmdCancel.enabled ? "cancel on" : "cancel off",
            world_.desktop.keptAwake() ? "awake" : "may sleep",
        };
    }

    // Adds the quiet before this moment, and what has changed.
    void look() {
        if (const Micros quiet = world_.clock.now() - std::exchange(lastAt_, world_.clock.now());
            quiet >= fromSeconds(1)) {
            char length[32];
            std::snprintf(length, sizeof length, "(%.1f s)", static_cast<double>(quiet) / 1e6);
            add(length, length[0]);
        }
        const std::vector<std::string> before = std::exchange(state_, state());
        std::string changes;
        for (std::size_t part = 0; part < state_.size(); ++part) {
            changes += state_[part] == before[part] ? "" : (changes.empty() ? "" : ", ") + state_[part];
        }
        if (!changes.empty()) {
            lines_.push_back({'[' + changes + ']'});
        }
    }

    // `waits`: a packet or command, which the other side answers.
    void note(const std::string& event, bool waits = false) {
        look();
        const auto bar = frmWaitLoaded() ? static_cast<int>(frmWait().prbComm.value) : 0;
        const int moved = bar - std::exchange(bar_, bar);
        add(std::exchange(clears_, {}) + event + (bar > 0 && moved != 0 ? '+' + std::to_string(moved) : ""), event[0],
            waits);
    }

    // A line of its own, or the end of one that waits for it.
    void add(const std::string& text, char side, bool waits = false) {
        const char waiting = lines_.empty() ? '\0' : lines_.back().waits;
        if (waiting != 0 && ((side == '<' && waiting == '>') || (side == '>' && waiting == '<') || side == '(')) {
            lines_.back() = {lines_.back().text + ' ' + text};
        } else {
            lines_.push_back({text, waits ? side : '\0'});
        }
        if (const std::size_t last = lines_.size() - 1;
            last > 0 && lines_[last].waits == 0 && lines_[last - 1].text == lines_[last].text) {
            lines_.pop_back();
            ++lines_.back().count;
        }
    }

    void noteCall(Operation operation) {
        static const std::map<Operation, const char*> names{
            {Operation::clearUnsent, "clear unsent"}, {Operation::openPort, "port open"},
            {Operation::closePort, "port close"},     {Operation::openFile, "file open"},
            {Operation::readFile, "file read"},       {Operation::writeFile, "file write"},
            {Operation::closeFile, "file close"},     {Operation::appendLine, "log"},
        };
        clears_ += operation == Operation::clearReceived ? "-" : "";
        if (const auto name = names.find(operation); name != names.end()) {
            note(name->second);
        }
        if (operation == Operation::closePort) {
            awaitEvents();
        }
    }

    void awaitEvents() {
        if (!std::exchange(eventPending_, true)) {
            world_.desktop.schedule(world_.clock.now(), [this] {
                eventPending_ = false;
                note("~");
            });
        }
    }

    void hear(const Passage& passage) {
        const Bytes& bytes = passage.bytes;
        const std::string text(bytes.begin(), bytes.end());
        if (passage.direction == Direction::toUnit && (!frame_.empty() || text[0] == simulator::stx)) {
            frame_ += text; // STX, the text, ETX, the block check: each comes for itself
            if (frame_.size() > 3 && frame_[frame_.size() - 2] == simulator::etx) {
                note('>' + frame_.substr(6, frame_.size() - 8), true);
                frame_.clear();
            }
        } else if (passage.direction == Direction::fromUnit && text[0] == simulator::stx) {
            note('<' + text.substr(11, 4));
            awaitEvents();
        } else if (!text.empty()) {
            const bool packet = bytes.size() > 10 || bytes[0] == simulator::eot;
            note((passage.direction == Direction::toUnit ? ">" : "<") +
                     (bytes.size() >= simulator::checksumPacketSize ? "block" : wireText(bytes).substr(1)),
                 packet);
        }
    }

    World& world_;
    std::vector<std::string> state_;
    std::vector<Line> lines_;
    Micros lastAt_ = world_.clock.now();
    int bar_ = 0;
    std::string clears_;
    std::string frame_; // of the tool, as far as it has come
    bool eventPending_ = false;
};
