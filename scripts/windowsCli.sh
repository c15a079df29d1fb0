# Sourced by scripts/windows: steps with the PATH, and with the program without a screen. Each of its sessions is
# recorded, and the record has to play to the same lines on this system.
# shellcheck shell=bash disable=SC2154

userPath() {
    "$wine" reg query 'HKCU\Environment' /v Path | sed -n 's/.*REG_EXPAND_SZ *//p' | tr -d '\r'
}

# The installer's entry in a PATH that is longer than its own texts, and ends with a semicolon.
tryPath() {
    local before entry
    say "The PATH"
    settings="$home/AppData/Local/Programs/TarnBeacon"
    entry="$(windowsPath "$settings")"
    before="$(seq -f '%%T%%\%g' -s ';' 700);"
    "$wine" reg add 'HKCU\Environment' /v Path /t REG_EXPAND_SZ /d "$before" /f >/dev/null
    install ""
    [[ $(userPath) == "$before" ]] || fail "The installer changed the PATH unasked."
    install "" /PATH
    [[ $(userPath) == "$before$entry;" ]] || fail "The folder is not in the PATH."
    install ""
    [[ $(userPath) == "$before$entry;" ]] || fail "An update changed the PATH."
    install "" /NOPATH
    [[ $(userPath) == "$before" ]] || fail "The folder is still in the PATH."
    install "" /PATH
    remove
    [[ $(userPath) == "$before" ]] || fail "The removal did not restore the PATH."
}

# Runs the program without a screen. Fails unless it ends with this code and prints this text.
cliEnds() { # exit code, text, arguments...
    local code=0 record="$drive/record.txt"
    rm -f "$record"
    "${cliCommand[@]}" --record 'C:\record.txt' "${@:3}" >"$demo/cli.log" 2>&1 </dev/null || code=$?
    sed 's/^/  /' "$demo/cli.log"
    ((code == $1)) || fail "${*:3}: the exit code is $code, not $1."
    grep -qF -- "$2" "$demo/cli.log" || fail "${*:3}: it does not print \"$2\"."
    build/release/story/program/tarnbeacon-story --check "$record" || fail "${*:3}: the record plays differently."
}

startCliUnit() { # options...
    startUnit --reply-delay 5 --packet-delay 0 "$@"
}

tryCli() {
    local sample version
    say "The program without a screen"
    sample="$(windowsPath "$settings/$firmwareFile")"
    version="$(sed -n 's/^project(.* VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)"
    cliCommand=("$wine" "$settings/tarnbeacon-cli.exe")
    unitOptions=()
    "${cliCommand[@]}" --version | tr -d '\r' | grep -qx "tarnbeacon-cli $version" || fail "It has another version."
    startCliUnit
    printf '[IFU]\r\nCOM=3\r\n[DEVICE]\r\nCOM5=COM3\r\n' >"$settings/Setting.INI"
    "${cliCommand[@]}" ports | grep -q '^COM3  *COM3  *can be opened' || fail "It does not list the port."
    cliEnds 0 "Amplifier: QT-MVR 1.022" identify
    cliEnds 0 "100 %" upgrade "$sample"
    reportUnit
    startCliUnit --image "$demo/sample.bin" --raw-version 11046
    cliEnds 0 '"result":"unchanged"' --json upgrade --if-different "$sample"
    grep -v "^{.*}\r\?\$" "$demo/cli.log" && fail "There is something that is not an object."
    cliEnds 5 "--overwrite" save "$sample"
    stopProcess "$unitProcess" || true
    startCliUnit --reply 300550:0=1001
    cliEnds 1 "Failed" upgrade "$sample"
    stopProcess "$unitProcess" || true
    startCliUnit --silent
    cliEnds 4 "COM3" identify
    stopProcess "$unitProcess" || true
    rm "$WINEPREFIX/dosdevices/com3"
    cliEnds 3 "COM3" --language ja identify
    tryInterrupt
}

# A first Ctrl-C warns, a second one breaks off.
tryInterrupt() {
    local code=0 screen="$demo/terminal.log" record="$drive/interrupted.txt"
    say "Ctrl-C in a transfer"
    startCliUnit --packet-delay 10
    : >"$screen"
    {
        waitFor 30 "the transfer" grep -q ' 5 %' "$screen"
        printf '\003'
        waitFor 10 "the warning" grep -q 'A transfer is running' "$screen"
        printf '\003'
        waitFor 30 "the end" grep -q 'broken off\.' "$screen"
    } | script --quiet --flush --return --command "${cliCommand[*]@Q} --record 'C:\interrupted.txt' \
        upgrade ${sample@Q}" "$screen" >/dev/null || code=$?
    ((code == 130)) || fail "The exit code is $code, not 130."
    stopProcess "$unitProcess" || true
    grep -q 'cancels: 1' "$demo/journal.txt" || fail "The unit was not told."
    build/release/story/program/tarnbeacon-story --check "$record" || fail "The record plays differently."
}

# The zip file: its folder is all that is needed.
tryArchive() {
    say "The zip file"
    (cd "$drive" && quietly unzip "$root/$archive")
    settings="$drive/$(basename "$archive" -windows.zip)"
    cmp build/windows/packaging/tarnbeacon-cli.exe "$settings/tarnbeacon-cli.exe"
    cliCommand=("$wine" "$settings/tarnbeacon-cli.exe")
    startCliUnit
    cliEnds 0 "Amplifier: QT-MVR 1.022" --port COM3 identify
    stopProcess "$unitProcess" || true
}
