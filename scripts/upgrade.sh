# Sourced by run and scripts/tryPackage: the main job. A firmware file is loaded and written into the unit, and the
# program is ended.
# shellcheck shell=bash

# By the person at the screen.
attend() {
    say "Load $demo/sample.bin, press \"Start upgrade\", and \"End\" when it is done."
}

# By script, with mouse and keyboard. It goes no further than the first step that does not come about.
operate() {
    startUnit
    comeUp
    loadFile
    if showsFileVersion; then
        fail "The unit and the file show the same version already before the upgrade."
    fi

    click "$main" "${cmdUpgrade[@]}"
    seeProgress "Tarn Beacon"
    sleep 6 # some way into the transfer
    screenshot progress
    seeEndBox 120 "Tarn Beacon" end-box
    answerBox
    screenshot upgraded
    # The row takes the file's version only behind "Succeed".
    showsFileVersion || fail "The unit's row does not show the file's version: the upgrade did not succeed."

    pressEnd
}
