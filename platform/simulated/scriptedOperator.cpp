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

bool fits(const Control& control, const Deed& deed) {
    if (deed.kind == Deed::Kind::click) {
        return takesClicks(control);
    }
    return control.kind == ControlKind::dropDownList && deed.entry >= 0 &&
           deed.entry < static_cast<int>(control.items.size());
}

std::string_view controlRefusal(const Form& form, const Deed& deed) {
    const Control* control = find(form, deed.control, deed.index);
    if (control == nullptr) {
        return "there is no such control";
    }
    if (!fits(*control, deed)) {
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

void turnOn(const Form& form, Control& option) {
    for (Control* other : form.controls) {
        if (other->kind == ControlKind::optionButton && other->container == option.container) {
            other->value = other == &option ? 1 : 0;
        }
    }
}

void change(const Form& form, Control& control, const Deed& deed) {
    switch (control.kind) {
    case ControlKind::optionButton: turnOn(form, control); break;
    case ControlKind::checkBox: control.value = control.value == 0 ? 1 : 0; break;
    case ControlKind::dropDownList: control.listIndex = deed.entry; break;
    default: break;
    }
}

} // namespace

Deed click(std::string form, std::string control, int index) {
    return {Deed::Kind::click, std::move(form), std::move(control), index};
}

Deed choose(std::string form, std::string control, int entry) {
    return {Deed::Kind::choose, std::move(form), std::move(control), -1, entry};
}

Deed closing(std::string form) {
    return {Deed::Kind::close, std::move(form)};
}

std::string_view ScriptedOperator::refusal(const Deed& deed) const {
    const Form* form = desktop_.form(deed.form);
    if (form == nullptr) {
        return "the form is not loaded";
    }
    if (!form->visible) {
        return "the form is hidden";
    }
    if (!form->enabled) {
        return "the form is disabled";
    }
    if (desktop_.modalStands()) {
        return "a box stands";
    }
    return deed.kind == Deed::Kind::close ? std::string_view{} : controlRefusal(*form, deed);
}

bool ScriptedOperator::perform(const Deed& deed) {
    const std::string_view refused = refusal(deed);
    done_.push_back({deed, clock_.now(), std::string(refused)});
    if (!refused.empty()) {
        return false;
    }
    const Form& form = *desktop_.form(deed.form);
    std::function<void()> handler = form.queryUnload;
    if (deed.kind != Deed::Kind::close) {
        Control& control = *find(form, deed.control, deed.index);
        change(form, control, deed);
        handler = control.click;
    }
    if (handler) {
        handler();
    }
    return true;
}

std::vector<Deed> ScriptedOperator::possible() const {
    std::vector<Deed> deeds;
    const auto addIfPossible = [&](Deed deed) {
        if (refusal(deed).empty()) {
            deeds.push_back(std::move(deed));
        }
    };
    for (const Form* form : desktop_.forms()) {
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
    return deeds;
}

} // namespace platform
