# Sourced by run: the additions of the service screen. Saves the unit's firmware, cancels a save, and writes a file with
# verification, in Japanese. A read takes 100 ms for each block, so this takes some six minutes.
# shellcheck shell=bash disable=SC2154

readonly boxIcon=(0 0 750 750)

instructUser() {
    say "Save the present firmware, cancel a save, or tick \"Verification\", load $firmwareFile and press"
    say "\"Start upgrade\". Press \"End\" when you are done; at the end the unit should hold that file."
}

operate() {
    "$unitProgram" --make-sample "$demo/present.bin" --version 11022 --seed 2
    startUnit --image "$demo/present.bin"
    startToMainWindow
    save
    cancelSave
    writeWithVerification
    pressEnd
}

save() {
    local saved="$demo/saved.bin"
    click "$main" "${cmdPresent[@]}"
    enterPath "$saved" save-dialog
    waitForProgressDialog "Tarn Beacon"
    sleep 20
    screenshot saving
    waitForEndBox 400 "Tarn Beacon" saved
    hashArea "$window" "${boxIcon[@]}"
    successIcon="$areaHash"
    answerBox
    cmp "$demo/present.bin" "$saved" || fail "The saved file is not the unit's firmware."
    say "The saved file holds exactly the unit's firmware."
}

cancelSave() {
    local cancelled="$demo/cancelled.bin"
    click "$main" "${cmdPresent[@]}"
    enterPath "$cancelled" second-save-dialog
    waitForProgressDialog "Tarn Beacon"
    sleep 5
    screenshot before-cancel
    click "$progress" "${cmdCancel[@]}"
    waitForEndBox 30 "Tarn Beacon" cancelled
    answerBox
    [[ ! -e $cancelled ]] || fail "A cancelled save left a file."
}

writeWithVerification() {
    click "$main" "${optLanguage0[@]}"
    screenshot japanese
    loadFile
    click "$main" "${chkVerify[@]}"
    screenshot verification-chosen

    click "$main" "${cmdUpgrade[@]}"
    waitForProgressDialog "ターンビーコン"
    sleep 6
    screenshot writing
    waitUntilGone 120 "the progress dialog of the write" "$progress"
    waitForProgressDialog "ターンビーコン"
    sleep 20
    screenshot verifying
    # The progress dialog may be open behind this box.
    waitFor 400 "the end of the verification" findWindow "ターンビーコン" "$main" "$progress"
    screenshot verified
    hashArea "$window" "${boxIcon[@]}"
    [[ $areaHash == "$successIcon" ]] || fail "The box at the end of the verification does not look like success."
    answerBox

    click "$main" "${optLanguage1[@]}"
    screenshot english-again
}
