# Sourced by commands with a scripted operator: the steps of every job. prepareDemo sets the places of the controls.
# shellcheck shell=bash disable=SC2154

# Starts the program, waits for its main window, and sets `main` to it.
startToMainWindow() {
    startProgram
    waitFor 20 "the start-up picture" findOther
    screenshot start-up
    waitForWindow 20 "$mainTitle"
    main="$window"
    screenshot main-window
}

# Types a path into the open file dialog.
enterPath() { # path, name of the screenshot
    waitFor 10 "the file dialog" findOther "$main"
    enterText "$window" "$1"
    screenshot "$2"
    press "$window" Return
    waitUntilGone 10 "the file dialog" "$window"
}

loadFile() {
    click "$main" "${cmdLoading[@]}"
    enterPath "$firmwareFile" load-dialog
    screenshot file-loaded
}

# Waits for the progress dialog and sets `progress` to it.
waitForProgressDialog() { # title
    waitForWindow 20 "$1" "$main"
    progress="$window"
    hasClientArea "$progress" "${frmWait[@]}" || fail "There is a message instead of the progress dialog."
}

# Waits for the box at the end of a transfer and sets `window` to it; fails at a box during the transfer.
waitForEndBox() { # seconds, title, name of the screenshot
    waitFor "$1" "the end of the transfer" findWindow "$2" "$main" "$progress"
    isGone "$progress" || fail "There is a message during the transfer."
    screenshot "$3"
}

answerBox() {
    press "$window" Return
    waitUntilGone 10 "the box" "$window"
}

showsFileVersion() { # in the amplifier's row
    local version
    hashArea "$main" "${lblVersion0[@]}"
    version="$areaHash"
    hashArea "$main" "${lblVersion2[@]}"
    [[ $areaHash == "$version" ]]
}

pressEnd() {
    click "$main" "${cmdEnd[@]}"
    waitForProgram 10
}
