// A host that records a session: it passes each call on to another host, and adds a line for what the program did and for
// what it was given (docs/SESSIONS.md). The other host notices nothing, and the program sees the same as without it.
#pragma once

#include "platform/host.h"
#include "story/record/knownFiles.h"
#include "story/record/screen.h"
#include "story/record/sessionLines.h"

#include <memory>

namespace story {

class RecordingPort;
class RecordingFiles;

class RecordingHost : public platform::Host {
  public:
    // Both must exist as long as the program runs. `clock` gives the time of the lines; without it, the inner host does.
    RecordingHost(platform::Host& inner, SessionSink& sink, KnownFiles known,
                  std::function<std::int64_t()> clock = nullptr);
    ~RecordingHost() override;

    const SessionLines& lines() const { return lines_; }

    // Runs an event of the program, by its name in the session.
    void event(const std::string& name, const std::function<void()>& handler);

    std::int64_t timeGetTime() override;
    std::string dateAndTime() override;
    void sleep(int milliseconds) override;
    void waitForBytes(std::int64_t until) override;
    void doEvents() override;
    void waitForEvents(std::int64_t until) override;
    int msgBox(const platform::Message& message) override;
    void showOpen(platform::FileDialog& dialog) override;
    void showSave(platform::FileDialog& dialog) override;
    void load(platform::Form& form) override;
    void show(platform::Form& form) override;
    void hide(platform::Form& form) override;
    void unload(platform::Form& form) override;
    platform::Size screenSize() override { return inner_.screenSize(); }
    void keepAwake(bool on) override;
    platform::SerialPort& commPort() override;
    platform::Files& files() override;
    std::string programDirectory() override { return inner_.programDirectory(); }
    bool previousInstance() override;
    std::optional<std::int16_t> givenPort() override { return inner_.givenPort(); }
    [[noreturn]] void endProgram(int exitCode) override;

  private:
    friend class RecordingPort;
    friend class RecordingFiles;
    friend class RecordingFile;

    void did(std::string_view line);
    void given(std::string_view line, std::int64_t without = 0);
    template <class Action>
    auto attempt(Call call, Action action);
    template <class Action>
    auto attemptSettled(Call call, Action action);
    void settle();
    void addScreen();
    void addSettings();
    void addEvent(const std::string& name, std::int64_t now);
    template <class Wait>
    bool runEvents(Wait wait);
    template <class Wait>
    void letEventsRun(Wait wait);
    void showDialog(const char* name, platform::FileDialog& dialog, void (Host::*dialogOf)(platform::FileDialog&));
    void bind(const std::string& name, std::function<void()>& handler);

    Host& inner_;
    SessionLines lines_;
    KnownFiles known_;
    Screen screen_;
    std::unique_ptr<RecordingPort> port_;
    std::unique_ptr<RecordingFiles> files_;
    std::string image_;        // the content of the file that was read last, whose blocks are named by their number
    bool screenDue_ = true;    // the program may have changed the screen
    int waits_ = 0;            // waits in progress, one in an event of the other
    bool eventInWait_ = false; // an event has run in the innermost wait
    std::string lastEvent_;
    std::int64_t lastEventLine_ = 0;
};

} // namespace story
