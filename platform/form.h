// The screen as data: a form is a set of control objects that hold their state. The program reads and writes
// the state; a toolkit draws it whenever window events run, and turns the operator's input into events.
// All places and sizes are in twips: 1/1440 inch, 15 to a pixel at 96 dpi.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace platform {

struct Place {
    int left = 0;
    int top = 0;
    int width = 0;
    int height = 0;
    bool operator==(const Place&) const = default;
};

struct Size {
    int width = 0;
    int height = 0;
};

struct Font {
    std::string name = "Arial";
    double points = 8.25;
    bool bold = false;
    bool underline = false;
    bool operator==(const Font&) const = default;
};

// A colour: one of the desktop theme's own, or a fixed one.
struct Colour {
    enum class Source { windowText, greyText, buttonFace, fixed };
    Source source = Source::windowText;
    std::uint8_t red = 0;
    std::uint8_t green = 0;
    std::uint8_t blue = 0;
    bool operator==(const Colour&) const = default;
};

constexpr Colour windowText{};
constexpr Colour greyText{.source = Colour::Source::greyText};
constexpr Colour buttonFace{.source = Colour::Source::buttonFace};
constexpr Colour rgb(std::uint8_t red, std::uint8_t green, std::uint8_t blue) {
    return {Colour::Source::fixed, red, green, blue};
}

enum class ControlKind {
    label,
    button,
    optionButton, // those of one container are a group
    checkBox,
    frame,
    dropDownList,
    line, // from (left, top) to (left + width, top + height)
    rectangle,
    progressBar,
    picture,
    menu, // holds a caption; it is not drawn
};

enum class Alignment { left, centre };

struct Control {
    ControlKind kind = ControlKind::label;
    std::string name = {};
    int index = -1;                  // index in a numbered array of controls, -1: not in an array
    std::string container = {};      // name of the frame that holds the control, empty: the form itself
    Place place = {};                // within the container
    int tabIndex = -1;               // order of the Tab key, -1: not reached
    std::string caption = {};        // on a button, an ampersand is an ordinary character
    std::string accessibleName = {}; // name for a screen reader, followed by the caption of a label; empty: the caption
    std::vector<const Control*> described = {}; // for a screen reader: described by the captions of these controls
    const Control* label = nullptr;             // drop-down list: the label that names it
    Font font = {};
    Colour textColour = windowText;
    Colour backColour = buttonFace;
    Alignment alignment = Alignment::left;
    bool border = false; // single-line border of a label
    bool enabled = true;
    bool visible = true;
    double value = 0;                    // option button, check box: 0 off, 1 on; progress bar: min to max
    double min = 0;                      // progress bar
    double max = 100;                    // progress bar
    std::vector<std::string> items = {}; // drop-down list: its entries
    int listIndex = -1;                  // drop-down list: the selected entry, -1: none
    int picture = 0;                     // picture: number of the bitmap, 0: none
    std::function<void()> click = {};    // a click of the operator, or its equivalent by keyboard
};

// A timer on the window's event queue. It ticks every `interval` milliseconds while it is enabled and the
// interval is above 0; also while its own tick is running, if that tick lets window events run.
// Setting either property restarts the interval.
class Timer {
  public:
    explicit Timer(std::string name) : name_(std::move(name)) {}

    const std::string& name() const { return name_; }
    bool enabled() const { return enabled_; }
    int interval() const { return interval_; }
    bool running() const { return enabled_ && interval_ > 0; }
    // Number of settings so far, by which a host notices that a timer was stopped and started again.
    std::uint64_t settings() const { return settings_; }

    void setEnabled(bool enabled) {
        enabled_ = enabled;
        ++settings_;
    }
    void setInterval(int milliseconds) {
        interval_ = milliseconds;
        ++settings_;
    }

    std::function<void()> tick;

  private:
    std::string name_;
    bool enabled_ = false;
    int interval_ = 0;
    std::uint64_t settings_ = 0;
};

enum class MousePointer { standard = 0, arrow = 1, hourglass = 11 };

// A window. Fixed size, no minimise and no maximise button.
struct Form {
    std::string name;
    std::string title;
    Size clientArea;
    bool centred = true; // centred on the screen at each show; else at left, top
    int left = 0;
    int top = 0;
    bool onTaskBar = true;
    int icon = 0;        // number of the icon, 0: none
    int backPicture = 0; // bitmap behind the controls at the top left corner, 0: none
    bool enabled = true; // a disabled or hidden window ignores clicks, keys and close requests
    bool visible = false;
    MousePointer mousePointer = MousePointer::standard;
    std::vector<Control*> controls; // in drawing order, the first at the bottom
    std::vector<Timer*> timers;
    std::function<void()> load;        // runs once, after Host::load
    std::function<void()> queryUnload; // a close request of the operator or the system; empty: ignored

    Form() = default;
    Form(const Form&) = delete; // `controls` points into the form itself
    Form& operator=(const Form&) = delete;
    ~Form() = default;
};

// Turns an option button on and the others of its group off.
inline void turnOn(const Form& form, const Control& option) {
    for (Control* other : form.controls) {
        if (other->kind == ControlKind::optionButton && other->container == option.container) {
            other->value = other == &option ? 1 : 0;
        }
    }
}

} // namespace platform
