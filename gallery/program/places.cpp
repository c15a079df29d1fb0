// Prints for the scripts that operate the windows, as arrays of the shell and in twips: the size of each form,
// "frmWait=(width height)", and the place of each control in it, "cmdEnd=(left top width height)". The index of a control
// follows its name.
#include "ui/frmMain.h"
#include "ui/frmWait.h"

#include <algorithm>
#include <cstdio>

namespace {

void print(const platform::Form& form) {
    std::printf("%s=(%d %d)\n", form.name.c_str(), form.clientArea.width, form.clientArea.height);
    for (const platform::Control* control : form.controls) {
        const std::string index = control->index < 0 ? "" : std::to_string(control->index);
        const auto frame = std::ranges::find(form.controls, control->container, &platform::Control::name);
        const platform::Place origin = frame == form.controls.end() ? platform::Place{} : (*frame)->place;
        const platform::Place& place = control->place;
        std::printf("%s%s=(%d %d %d %d)\n", control->name.c_str(), index.c_str(), origin.left + place.left,
                    origin.top + place.top, place.width, place.height);
    }
}

} // namespace

int main() {
    print(FrmMain());
    print(FrmWait());
}
