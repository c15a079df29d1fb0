# Sourced by run: the main job. A firmware file is loaded and written into the unit, and the program is ended.
# shellcheck shell=bash

# By the person at the screen.
attend() {
    startUnit
    startProgram
    say "Load $demo/sample.bin, press \"Start upgrade\", and \"End\" when it is done."
    waitForProgram 86400
}

# By script, with mouse and keyboard. It goes no further than the first step that does not come about.
operate() {
    local main progress

    startUnit
    startProgram

    waitFor 20 "the start-up picture" findOther
    screenshot 1-start-up

    waitForWindow 20 "TarnBeacon ver1.003"
    main="$window"
    sleep 0.3 # for the paint
    screenshot 2-main-window

    click "$main" 2400 1920 1095 315 # Loading file
    waitFor 10 "the load dialog" findOther "$main"
    enterText "$window" "$demo/sample.bin"
    screenshot 3-load-dialog
    press "$window" Return
    waitForEndOf 10 "the load dialog" "$window"
    sleep 0.3
    screenshot 4-file-loaded
    if showsFileVersion "$main"; then
        fail "The unit and the file show the same version already before the upgrade."
    fi

    click "$main" 600 2640 1335 315 # Start upgrade
    waitForWindow 20 "Tarn Beacon"
    progress="$window"
    hasClientArea "$progress" 5220 1755 || fail "A message came up in place of the progress window."
    sleep 6 # some way into the transfer
    screenshot 5-progress
    waitFor 120 "the end of the transfer" findWindow "Tarn Beacon" "$main" "$progress"
    isGone "$progress" || fail "A message came up during the transfer."
    sleep 0.3
    screenshot 6-end-box
    press "$window" Return
    waitForEndOf 10 "the box at the end" "$window"
    sleep 0.3
    screenshot 7-upgraded
    # The row takes the file's version only behind "Succeed".
    showsFileVersion "$main" || fail "The unit's row does not show the file's version: the upgrade did not succeed."

    click "$main" 2160 2640 1335 315 # End
    waitForProgram 10
}

showsFileVersion() { # main window
    looksEqual "$1" 2040 480 2040 1560 1455 255
}
