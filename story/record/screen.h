// What the operator sees of the loaded forms, compared with the last time.
#pragma once

#include "platform/form.h"

#include <string>
#include <vector>

namespace story {

// "frmMain.optLanguage(1)"
std::string nameOf(const platform::Form& form, const platform::Control& control);

class Screen {
  public:
    // Takes the present state of the form as known.
    void add(const platform::Form& form);
    void remove(const platform::Form& form);

    // A line for each form that the program has changed since the last call: "[frmMain: enabled no, lblMsg "text"]".
    std::vector<std::string> changes();

    // A line for each control that the operator has set: "set frmMain.chkVerify 1". To be called after changes().
    std::vector<std::string> settings();

  private:
    struct Part {
        const platform::Control* control;
        std::string caption, font;
        bool enabled, visible;
        platform::Colour::Source colour;
        int value, listIndex;
        std::size_t items;
    };
    struct Window {
        const platform::Form* form;
        std::string title;
        bool enabled;
        platform::MousePointer pointer;
        std::vector<Part> parts;
        std::vector<std::size_t> settable; // places of the parts that the operator can set
    };

    static Window stateOf(const platform::Form& form);
    static std::string changesOf(Window& before);

    std::vector<Window> windows_;
};

} // namespace story
