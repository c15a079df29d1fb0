#include "ui/frmMain.h"

#include "ui/artNumbers.h"
#include "ui/serviceScreen.h"

using platform::Alignment;
using platform::Control;
using platform::ControlKind;
using platform::Font;
using platform::Place;

namespace {

const Font headingFont{.name = "ＭＳ Ｐゴシック", .points = 11.25, .underline = true};
const Font rowFont{.name = "ＭＳ Ｐゴシック", .points = 9.75};
const Font commandFont{.name = "ＭＳ Ｐゴシック", .points = 9};

Control heading(const char* name, Place place) {
    return {.kind = ControlKind::label, .name = name, .place = place, .font = headingFont};
}

Control rowLabel(const char* name, int index, Place place, const char* caption) {
    return {.kind = ControlKind::label,
            .name = name,
            .index = index,
            .place = place,
            .caption = caption,
            .font = rowFont,
            .alignment = Alignment::centre,
            .border = true};
}

Control button(const char* name, int tabIndex, Place place) {
    return {.kind = ControlKind::button, .name = name, .place = place, .tabIndex = tabIndex, .font = commandFont};
}

Control line(const char* name, Place place, bool visible) {
    return {.kind = ControlKind::line, .name = name, .place = place, .visible = visible};
}

Control rowOption(int index, Place place, double value) {
    return {.kind = ControlKind::optionButton,
            .name = "optPresent",
            .index = index,
            .place = place,
            .tabIndex = index,
            .value = value};
}

Control languageOption(int index, const char* caption, double value) {
    return {.kind = ControlKind::optionButton,
            .name = "optLanguage",
            .index = index,
            .container = "fraLanguage",
            .place = hiddenControls.optLanguage.at(static_cast<std::size_t>(index)),
            .tabIndex = 8 + index,
            .caption = caption,
            .value = value};
}

} // namespace

FrmMain::FrmMain() {
    name = "frmMain";
    clientArea = {5475, 3300};
    icon = art::programIcon;

    lblPresent = heading("lblPresent", {240, 120, 3255, 255});
    optPresent = {rowOption(0, {360, 480, 255, 255}, 1), rowOption(1, {360, 720, 255, 255}, 0)};
    lblRewriting = heading("lblRewriting", {240, 1200, 3255, 255});
    lblTitle = {rowLabel("lblTitle", 0, {720, 480, 1335, 255}, "QT-MVR"),
                rowLabel("lblTitle", 1, {720, 720, 1335, 255}, "QT-KP42"),
                rowLabel("lblTitle", 2, {720, 1560, 1335, 255}, "QT-MVR")};
    lblVersion = {rowLabel("lblVersion", 0, {2040, 480, 1455, 255}, "Ver.1.000"),
                  rowLabel("lblVersion", 1, {2040, 720, 1455, 255}, "Ver.1.000"),
                  rowLabel("lblVersion", 2, {2040, 1560, 1455, 255}, "Ver.1.000")};
    cmdLoading = button("cmdLoading", 3, {2400, 1920, 1095, 315});
    optPresent[0].described = {&lblTitle[0], &lblVersion[0]};
    optPresent[1].described = {&lblTitle[1], &lblVersion[1]};
    cmdLoading.described = {&lblTitle[2], &lblVersion[2]};
    Line1 = line("Line1", {0, 2520, 5400, 0}, true);
    cmdUpgrade = button("cmdUpgrade", 5, {600, 2640, 1335, 315});
    cmdEnd = button("cmdEnd", 6, {2160, 2640, 1335, 315});

    cmdPresent = button("cmdPresent", 4, hiddenControls.cmdPresent.place);
    cmdPresent.visible = hiddenControls.cmdPresent.visible;
    chkVerify = {.kind = ControlKind::checkBox,
                 .name = "chkVerify",
                 .place = hiddenControls.chkVerify.place,
                 .tabIndex = 2,
                 .font = commandFont,
                 .visible = hiddenControls.chkVerify.visible};
    fraLanguage = {.kind = ControlKind::frame,
                   .name = "fraLanguage",
                   .place = hiddenControls.fraLanguage.place,
                   .tabIndex = 7,
                   .caption = "Language",
                   .visible = hiddenControls.fraLanguage.visible};
    optLanguage = {languageOption(0, "Japanese", 1), languageOption(1, "English", 0)};
    LabelWriteProtect = {.kind = ControlKind::label,
                         .name = "LabelWriteProtect",
                         .place = {3480, 120, 1935, 255},
                         .backColour = platform::rgb(255, 255, 0),
                         .alignment = Alignment::centre,
                         .visible = false};
    Line2 = line("Line2", {3720, 0, 0, 2520}, false);

    controls = {&Line1,         &Line2,          &LabelWriteProtect, &lblPresent,    &optPresent[0], &lblTitle[0],
                &lblVersion[0], &optPresent[1],  &lblTitle[1],       &lblVersion[1], &lblRewriting,  &lblTitle[2],
                &lblVersion[2], &chkVerify,      &cmdLoading,        &cmdPresent,    &cmdUpgrade,    &cmdEnd,
                &fraLanguage,   &optLanguage[0], &optLanguage[1]};
    timers.push_back(&CommTimer);
}
