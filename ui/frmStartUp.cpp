#include "ui/frmStartUp.h"

#include "ui/artNumbers.h"

using platform::Control;
using platform::ControlKind;
using platform::Font;
using platform::Place;

namespace {

const Font boldFont{.name = "Arial", .points = 9.75, .bold = true};
const Font plainFont{.name = "Arial", .points = 8.25};
constexpr platform::Colour orange = platform::rgb(255, 128, 0);

Control label(const char* name, Place place) {
    return {.kind = ControlKind::label, .name = name, .place = place, .font = boldFont, .backColour = orange};
}

Control list(const char* name, int tabIndex, Place place) {
    return {.kind = ControlKind::dropDownList, .name = name, .place = place, .tabIndex = tabIndex, .font = plainFont};
}

Control plainButton(const char* name, int tabIndex, Place place) {
    return {.kind = ControlKind::button, .name = name, .place = place, .tabIndex = tabIndex, .font = plainFont};
}

} // namespace

FrmStartUp::FrmStartUp() {
    name = "frmStartUp";
    clientArea = {4800, 855};
    centred = false; // its Form_Load computes the position
    icon = art::programIcon;
    backPicture = art::startUpPicture;

    shpComm = {.kind = ControlKind::rectangle, .name = "shpComm", .place = {0, 0, 4800, 855}, .backColour = orange};
    lblBPS = label("lblBPS", {135, 75, 1155, 240});
    cmbBps = list("cmbBps", 0, {1320, 45, 1215, 315});
    lblCom = label("lblCom", {135, 315, 1155, 240});
    cmbCom = list("cmbCom", 1, {1320, 270, 1215, 315});
    cmdTest = plainButton("cmdTest", 2, {2640, 270, 975, 315});
    cmdEnd = plainButton("cmdEnd", 3, {3705, 270, 975, 315});
    cmbBps.label = &lblBPS;
    cmbCom.label = &lblCom;
    imgLogo = {.kind = ControlKind::picture, .name = "imgLogo", .place = {0, 0, 7440, 5760}, .visible = false};
    STARTBOX = {.kind = ControlKind::menu, .name = "STARTBOX", .caption = "Tarn Beacon"};

    controls = {&imgLogo, &shpComm, &lblBPS, &cmbBps, &lblCom, &cmbCom, &cmdTest, &cmdEnd, &STARTBOX};
}
