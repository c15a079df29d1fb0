#include "story/record/screen.h"

#include "story/record/text.h"

#include <algorithm>

namespace story {

using platform::Control;
using platform::ControlKind;
using platform::Form;

namespace {

constexpr double barParts = 10; // a bar is recorded in tenths

int valueOf(const Control& control) {
    const double range = control.max - control.min;
    const bool bar = control.kind == ControlKind::progressBar;
    return static_cast<int>(bar && range > 0 ? (control.value - control.min) / range * barParts : control.value);
}

bool setByOperator(const Control& control) {
    return control.kind == ControlKind::optionButton || control.kind == ControlKind::checkBox ||
           control.kind == ControlKind::dropDownList;
}

std::string shortName(const Control& control) {
    return control.name + (control.index < 0 ? "" : '(' + std::to_string(control.index) + ')');
}

// Adds "name property value" to a list if the value differs from the one before, which it replaces.
template <class Name, class Value, class Text>
void compare(std::string& list, Name name, Value& before, const Value& now, Text text) {
    if (before != now) {
        before = now;
        list += (list.empty() ? "" : ", ") + std::string(name()) + text(now);
    }
}

std::string quoted(const std::string& text) {
    return " \"" + escaped(text) + '"';
}

auto word(const char* name) {
    return [name](bool value) { return std::string(value ? " " : " not ") + name; };
}

auto number(const char* name) {
    return [name](auto value) { return std::string(" ") + name + ' ' + std::to_string(static_cast<int>(value)); };
}

} // namespace

std::string nameOf(const Form& form, const Control& control) {
    return form.name + '.' + shortName(control);
}

Screen::Window Screen::stateOf(const Form& form) {
    Window window{&form, form.title, form.enabled, form.mousePointer, {}, {}};
    for (const Control* control : form.controls) {
        if (setByOperator(*control)) {
            window.settable.push_back(window.parts.size());
        }
        window.parts.push_back({control, control->caption, control->font.name, control->enabled, control->visible,
                                control->textColour.source, valueOf(*control), control->listIndex,
                                control->items.size()});
    }
    return window;
}

void Screen::add(const Form& form) {
    windows_.push_back(stateOf(form));
}

void Screen::remove(const Form& form) {
    std::erase_if(windows_, [&](const Window& window) { return window.form == &form; });
}

std::string Screen::changesOf(Window& before) {
    const Form& form = *before.form;
    std::string list;
    const auto named = [](const char* name) { return [name] { return name; }; };
    compare(list, named("title"), before.title, form.title, quoted);
    compare(list, named("window"), before.enabled, form.enabled, word("enabled"));
    compare(list, named("pointer"), before.pointer, form.mousePointer, number("number"));
    for (Part& part : before.parts) {
        const Control& control = *part.control;
        const auto name = [&control] { return shortName(control); };
        compare(list, name, part.caption, control.caption, quoted);
        compare(list, name, part.font, control.font.name, quoted);
        compare(list, name, part.enabled, control.enabled, word("enabled"));
        compare(list, name, part.visible, control.visible, word("visible"));
        compare(list, name, part.colour, control.textColour.source, number("colour"));
        compare(list, name, part.value, valueOf(control), number("value"));
        compare(list, name, part.listIndex, control.listIndex, number("entry"));
        compare(list, name, part.items, control.items.size(), number("entries"));
    }
    return list;
}

std::vector<std::string> Screen::changes() {
    std::vector<std::string> lines;
    for (Window& window : windows_) {
        if (const std::string list = changesOf(window); !list.empty()) {
            lines.push_back('[' + window.form->name + ": " + list + ']');
        }
    }
    return lines;
}

std::vector<std::string> Screen::settings() {
    std::vector<std::string> lines;
    for (Window& window : windows_) {
        for (const std::size_t place : window.settable) {
            Part& part = window.parts[place];
            const Control& control = *part.control;
            const bool entry = control.kind == ControlKind::dropDownList;
            if (part.value != valueOf(control) || part.listIndex != control.listIndex) {
                part.value = valueOf(control);
                part.listIndex = control.listIndex;
                lines.push_back("set " + nameOf(*window.form, control) + ' ' +
                                std::to_string(entry ? part.listIndex : part.value));
            }
        }
    }
    return lines;
}

} // namespace story
