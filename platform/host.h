// The interface to the system: everything that the program needs from outside. It has three implementations: the
// windows on the screen (platform/qt), a terminal (platform/terminal) and a simulation (platform/simulated). All of it runs
// on one thread.
#pragma once

#include "base/time.h"
#include "platform/files.h"
#include "platform/form.h"
#include "platform/serialPort.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace platform {

// Style of a message box: the sum of a button set and an icon.
namespace boxStyle {
constexpr int ok = 0;
constexpr int okCancel = 1;
constexpr int critical = 16;
constexpr int question = 32;
constexpr int exclamation = 48;
constexpr int information = 64;
} // namespace boxStyle

// Answers of a message box.
namespace boxAnswer {
constexpr int ok = 1;
constexpr int cancel = 2;
} // namespace boxAnswer

// A message box. The text is plain, "\r\n" is a line break.
struct Message {
    int id = 0; // the number of its text, whatever the language: a host without a screen chooses its answer by it
    std::string text;
    int style = boxStyle::ok;
    std::string title;
};

// The state of the file dialog component. A dialog that the operator confirms puts the path into fileName.
struct FileDialog {
    static constexpr int overwritePrompt = 2;

    int flags = 0; // overwritePrompt: a save dialog asks before it accepts an existing file
    std::string initialDirectory;
    std::string fileName;
    std::string filter;       // pairs of description and pattern, separated and ended by "|"
    bool cancelError = false; // raise failureNumber::dialogCancelled when the operator cancels
};

class Host {
  public:
    Host() = default;
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;
    virtual ~Host() = default;

    // A counter of milliseconds; it never goes back and never wraps.
    virtual std::int64_t timeGetTime() = 0;

    // Local date and time, as 2024/04/01 09:05:00.
    virtual std::string dateAndTime() = 0;

    // Blocks for that many milliseconds; no window event runs.
    virtual void sleep(int milliseconds) = 0;

    // Waits until the serial port holds received bytes, has failed, or the clock has reached `until`. No window event
    // runs; the screen shows the present state of the forms.
    virtual void waitForBytes(std::int64_t until) = 0;

    // Lets the pending window events run; does not wait for more.
    virtual void doEvents() = 0;

    // Lets window events run, and returns as soon as something has happened: a window event, a timer's tick, a
    // received byte, a failure of the port, or the clock has reached `until`; sometimes earlier.
    virtual void waitForEvents(std::int64_t until) = 0;

    // Shows a modal box and returns boxAnswer::ok or boxAnswer::cancel. Window events run meanwhile. Escape and the close
    // box answer Cancel, or OK where there is no Cancel button.
    virtual int msgBox(const Message& message) = 0;

    // Show the dialogs for opening and saving. An open dialog accepts a file that does not exist; neither adds an
    // extension. Blanks at the ends of a name are ignored, also for the question whether to overwrite.
    virtual void showOpen(FileDialog& dialog) = 0;
    virtual void showSave(FileDialog& dialog) = 0;

    // Loads the window of a form without showing it, and starts its timers.
    virtual void load(Form& form) = 0;
    // Shows the window of a loaded form and does not wait. Both set the form's `visible`.
    virtual void show(Form& form) = 0;
    virtual void hide(Form& form) = 0;
    // Closes the window and stops its timers; the form object may be destroyed afterwards.
    virtual void unload(Form& form) = 0;
    virtual Size screenSize() = 0;

    // While on, blocks idle suspend, sleep, lid suspend and the end of the session. Has no effect where the system offers
    // no such lock. Never waits longer than 100 ms.
    virtual void keepAwake(bool on) = 0;

    // Called once, as a window event, when the system ends the process nevertheless while keepAwake is on. From then on
    // boxes are not shown; they answer Cancel.
    std::function<void()> endRequested;

    virtual SerialPort& commPort() = 0;
    virtual Files& files() = 0;

    // Directory of the program, with a separator at its end.
    virtual std::string programDirectory() = 0;

    // True when another instance of the program runs. The first call registers this instance.
    virtual bool previousInstance() = 0;

    // The number of the COM port that the start of the program names; without one, Setting.INI says it.
    virtual std::optional<std::int16_t> givenPort() { return {}; }

    // Stops the whole process at once: no further code of the program runs.
    [[noreturn]] virtual void endProgram(int exitCode) = 0;
};

// The host that this program runs on, set once before anything else.
Host& host();
void setHost(Host* host);

} // namespace platform
