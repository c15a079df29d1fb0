# Sourced by run and scripts/tryPackage: loads a firmware file, writes it into the unit, and ends the program.
# shellcheck shell=bash disable=SC2154

# The user does the upgrade.
instructUser() {
    say "Load $firmwareFile, press \"Start upgrade\", and \"End\" when it is done."
}

# The script does the upgrade, with mouse and keyboard. It ends at the first step that fails.
operate() {
    startUnit
    startToMainWindow
    loadFile
    if showsFileVersion; then
        fail "The unit and the file show the same version already before the upgrade."
    fi

    click "$main" "${cmdUpgrade[@]}"
    waitForProgressDialog "Tarn Beacon"
    sleep 6 # some way into the transfer
    screenshot progress
    waitForEndBox 120 "Tarn Beacon" end-box
    answerBox
    screenshot upgraded
    # The row takes the file's version only after "Succeed".
    showsFileVersion || fail "The unit's row does not show the file's version: the upgrade did not succeed."

    pressEnd
}
