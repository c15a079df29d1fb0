#include "platform/simulated/scriptedOperator.h"

#include <algorithm>

namespace platform {

namespace {

Control* find(const Form& form, std::string_view name, int index) {
    const auto at = std::ranges::find_if(
        form.controls, [&](const Control* control) { return control->name == name && control->index == index; });
    return at == form.controls.end() ? nullptr : *at;
}

bool takesClicks(const Control& control) {
    return control.kind == ControlKind::button || control.kind == ControlKind::optionButton ||
           control.kind == ControlKind::checkBox;
}

bool fits(const Control& control, const Action& action) {
    if (action.kind == Action::Kind::click) {
        return takesClicks(control);
    }
    return control.kind == ControlKind::dropDownList && action.entry >= 0 &&
           action.entry < static_cast<int>(control.items.size());
}

std::string_view controlRefusal(const Form& form, const Action& action) {
    const Control* control = find(form, action.control, action.index);
    if (control == nullptr) {
        return "there is no such control";
    }
    if (!fits(*control, action)) {
        return "the control does not take that";
    }
    for (const Control* part = control; part != nullptr; part = find(form, part->container, -1)) {
        if (!part->visible) {
            return "the control is hidden";
        }
        if (!part->enabled) {
            return "the control is disabled";
        }
    }
    return {};
}

void change(const Form& form, Control& control, const Action& action) {
    switch (control.kind) {
    case ControlKind::optionButton: turnOn(form, control); break;
    case ControlKind::checkBox: control.value = control.value == 0 ? 1 : 0; break;
    case ControlKind::dropDownList: control.listIndex = action.entry; break;
    default: break;
    }
}

} // namespace

Action click(std::string form, std::string control, int index) {
    return {Action::Kind::click, std::move(form), std::move(control), index};
}

Action choose(std::string form, std::string control, int entry) {
    return {Action::Kind::choose, std::move(form), std::move(control), -1, entry};
}

Action closing(std::string form) {
    return {Action::Kind::close, std::move(form)};
}

std::string_view ScriptedOperator::refusal(const Action& action) const {
    const Form* form = host_.form(action.form);
    if (form == nullptr) {
        return "the form is not loaded";
    }
    if (!form->visible) {
        return "the form is hidden";
    }
    if (!form->enabled) {
        return "the form is disabled";
    }
    if (host_.modalOpen()) {
        return "a box is open";
    }
    return action.kind == Action::Kind::close ? std::string_view{} : controlRefusal(*form, action);
}

bool ScriptedOperator::perform(const Action& action) {
    if (!refusal(action).empty()) {
        return false;
    }
    const Form& form = *host_.form(action.form);
    std::function<void()> handler = form.queryUnload;
    if (action.kind != Action::Kind::close) {
        Control& control = *find(form, action.control, action.index);
        change(form, control, action);
        handler = control.click;
    }
    if (handler) {
        handler();
    }
    return true;
}

std::vector<Action> ScriptedOperator::possible() const {
    std::vector<Action> actions;
    const auto addIfPossible = [&](Action action) {
        if (refusal(action).empty()) {
            actions.push_back(std::move(action));
        }
    };
    for (const Form* form : host_.forms()) {
        for (const Control* control : form->controls) {
            if (takesClicks(*control)) {
                addIfPossible(click(form->name, control->name, control->index));
            }
            for (int entry = 0; entry < static_cast<int>(control->items.size()); ++entry) {
                addIfPossible(choose(form->name, control->name, entry));
            }
        }
        addIfPossible(closing(form->name));
    }
    return actions;
}

} // namespace platform
