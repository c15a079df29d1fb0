// A host that gives the program what a recorded session says (docs/SESSIONS.md). The program runs on a RecordingHost above
// it, whose lines tell how far the session has come.
#pragma once

#include "platform/host.h"
#include "story/record/knownFiles.h"
#include "story/record/recordingHost.h"
#include "story/record/shortLines.h"

#include <string>
#include <vector>

namespace story {

// Thrown at the end of the session. Not a std::exception, so that no handler of the program catches it.
struct SessionEnd {};

// A line of a session, taken apart.
struct SessionItem {
    std::string line; // as it is written, with its rows and line ends
    bool given = false;
    std::int64_t passed = 0;  // milliseconds
    std::int64_t without = 0; // calls
    std::string text = {};    // without these and without the marks of clearReceived
    std::string rows = {};
};

class RecordedHost final : public platform::Host, public SessionSink {
  public:
    explicit RecordedHost(const std::string& session);
    ~RecordedHost() override;

    // Plays the session and returns it with the lines that there are now.
    std::string play();

    void add(std::string_view line, bool given) override;

    std::int64_t timeGetTime() override;
    std::string dateAndTime() override;
    void sleep(int milliseconds) override;
    void waitForBytes(std::int64_t until) override;
    void doEvents() override;
    void waitForEvents(std::int64_t until) override;
    int msgBox(const platform::Message& message) override;
    void showOpen(platform::FileDialog& dialog) override { showDialog(dialog); }
    void showSave(platform::FileDialog& dialog) override { showDialog(dialog); }
    void load(platform::Form& form) override { forms_.push_back(&form); }
    void show(platform::Form& form) override { form.visible = true; }
    void hide(platform::Form& form) override { form.visible = false; }
    void unload(platform::Form& form) override;
    platform::Size screenSize() override { return screen_; }
    void keepAwake(bool /*on*/) override {}
    platform::SerialPort& commPort() override;
    platform::Files& files() override;
    std::string programDirectory() override { return directory_; }
    std::optional<std::int16_t> givenPort() override { return givenPort_; }
    bool previousInstance() override;
    [[noreturn]] void endProgram(int exitCode) override;

  private:
    friend class RecordedPort;
    friend class RecordedFiles;
    friend class RecordedFile;

    void readHead(const std::string& line);
    const SessionItem* next(std::string_view word) const;
    const SessionItem* due(std::string_view word, Call call) const;
    std::string take(const SessionItem& item);
    void failIfDue(Call call);
    void noteContent(const SessionItem& item);
    bool runEvent(std::string_view mark);
    bool runEvents();
    void runModal(std::string_view answer);
    void perform(const std::string& event);
    void endIfDue();
    void idle();
    void wait(std::int64_t until);
    void showDialog(platform::FileDialog& dialog);

    std::string head_;
    std::vector<SessionItem> items_;
    std::size_t at_ = 0; // the next item
    std::string rest_;   // the last line of a session that does not end
    std::string played_;
    ShortLines short_;       // of what is played
    std::string event_;      // the last one
    std::int64_t again_ = 0; // so many times it has come again
    std::int64_t now_ = 0;   // milliseconds since the start
    std::int64_t known_ = 0; // the time of the last line taken; a wait can be ahead of it
    std::int64_t idle_ = 0;  // calls since the last line
    platform::Size screen_;
    std::string directory_;
    std::optional<std::int16_t> givenPort_;
    KnownFiles disk_;
    std::string image_;
    std::vector<platform::Form*> forms_;
    std::unique_ptr<platform::SerialPort> port_;
    std::unique_ptr<platform::Files> files_;
    std::unique_ptr<RecordingHost> recording_;
};

} // namespace story
