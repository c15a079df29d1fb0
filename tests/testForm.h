// A form that holds a control of every kind and notes the clicks of each.
#pragma once

#include "platform/form.h"

#include <algorithm>
#include <string>
#include <vector>

struct TestForm : platform::Form {
    using Kind = platform::ControlKind;

    static platform::Control make(Kind kind, const char* name, platform::Place place, int tabIndex = -1) {
        return {.kind = kind, .name = name, .place = place, .tabIndex = tabIndex, .caption = name};
    }

    platform::Control picture = make(Kind::picture, "picture", {0, 0, 300, 300});
    platform::Control rectangle = make(Kind::rectangle, "rectangle", {0, 0, 1500, 300});
    platform::Control line = make(Kind::line, "line", {1500, 300, -1500, 0});
    platform::Control label = make(Kind::label, "label", {150, 150, 1500, 255});
    platform::Control second = make(Kind::button, "second", {150, 450, 1500, 315}, 2);
    platform::Control first = make(Kind::button, "R&D", {150, 900, 1500, 315}, 1);
    platform::Control frame = make(Kind::frame, "frame", {150, 1350, 3000, 1200});
    platform::Control inFrame[2] = {make(Kind::optionButton, "inFrame0", {150, 300, 1500, 255}, 3),
                                    make(Kind::optionButton, "inFrame1", {150, 700, 1500, 255}, 4)};
    platform::Control outside = make(Kind::optionButton, "outside", {3300, 150, 1500, 255}, 5);
    platform::Control check = make(Kind::checkBox, "check", {3300, 450, 1500, 255}, 6);
    platform::Control list = make(Kind::dropDownList, "list", {3300, 900, 1500, 315}, 7);
    platform::Control bar = make(Kind::progressBar, "bar", {3300, 1350, 1500, 315});
    platform::Control menu = make(Kind::menu, "menu", {});
    platform::Timer timer{"timer"};
    std::vector<std::string> events;

    platform::Control& control(const std::string& wanted) const {
        return **std::ranges::find(controls, wanted, &platform::Control::name);
    }

    TestForm() {
        name = "form";
        title = "Form";
        clientArea = {5000, 3000};
        inFrame[0].container = inFrame[1].container = "frame";
        inFrame[0].value = outside.value = 1;
        list.items = {"COM1", "COM2", "COM3"};
        list.listIndex = 0;
        controls = {&picture,    &rectangle,  &line,    &label, &second, &first, &frame,
                    &inFrame[0], &inFrame[1], &outside, &check, &list,   &bar,   &menu};
        timers.push_back(&timer);
        for (platform::Control* control : controls) {
            control->click = [this, control] { events.push_back(control->name); };
        }
    }
};
