// A form with controls of all kinds that an operator works with. Each has its name as its caption.
#pragma once

#include "platform/form.h"

#include <algorithm>
#include <deque>
#include <string>

struct TestForm : platform::Form {
    std::deque<platform::Control> parts;
    platform::Timer timer{"timer"};

    explicit TestForm(const char* formName = "form") {
        using enum platform::ControlKind;
        name = title = formName;
        clientArea = {5000, 3000};
        timers.push_back(&timer);
        add(line, "line", {1500, 300, -1500, 0}, -1);
        add(label, "label", {150, 150, 1500, 255}, -1);
        add(button, "second", {150, 450, 1500, 315}, 2);
        add(button, "R&D", {150, 900, 1500, 315}, 1);
        add(frame, "frame", {150, 1350, 3000, 1200}, -1);
        add(optionButton, "inFrame0", {150, 300, 1500, 255}, 3).container = "frame";
        add(optionButton, "inFrame1", {150, 700, 1500, 255}, 4).container = "frame";
        add(optionButton, "outside", {3300, 150, 1500, 255}, 5).value = 1;
        add(checkBox, "check", {3300, 450, 1500, 255}, 6);
        add(dropDownList, "list", {3300, 900, 1500, 315}, 7).items = {"COM1", "COM2", "COM3"};
        add(progressBar, "bar", {3300, 1350, 1500, 315}, -1).min = 500;
        add(picture, "picture", {3300, 1800, 1500, 750}, -1);
        control("bar").max = 1500;
        control("inFrame0").value = 1;
        control("list").listIndex = 0;
    }

    platform::Control& control(const std::string& wanted) const {
        return **std::ranges::find(controls, wanted, &platform::Control::name);
    }

  private:
    platform::Control& add(platform::ControlKind kind, const char* part, platform::Place place, int tabIndex) {
        controls.push_back(&parts.emplace_back(
            platform::Control{.kind = kind, .name = part, .place = place, .tabIndex = tabIndex, .caption = part}));
        return parts.back();
    }
};
