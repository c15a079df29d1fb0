# Sourced by commands that run the program with a simulated unit: the demo's folder, the unit, the program, and the
# comparison at the end.
# shellcheck shell=bash

# Milliseconds that the unit takes for each block, so that the bar can be watched: some 10 seconds for an image. A real
# unit takes 70 to 80 seconds, the time of the line.
readonly packetDelay=4
# Milliseconds for a reply, so that the start-up picture can be seen.
readonly replyDelay=300
# Title of the main window, with the version from CMakeLists.txt.
mainTitle="$(sed -n 's/^project(TarnBeacon VERSION \([0-9]*\)\.\([0-9]*\) .*/\1 \2/p' "$root/CMakeLists.txt" |
    xargs printf 'TarnBeacon ver%d.%03d')"
readonly mainTitle

# What the demo needs besides the program.
readonly demoTargets=(tarnbeacon-unit tarnbeacon-places)

# Makes the folder with the program, its two INI files and a firmware file for the unit. Sets the places of the controls.
prepareDemo() { # preset, name of the folder if not the preset's
    demo="$root/build/demo/${2-$1}"
    rm -rf "$demo"
    mkdir -p "$demo"
    cp "$root/build/$1/app/tarnbeacon" "$demo/"
    programCommand=("$demo/tarnbeacon")
    settings="$demo"
    unitProgram="$root/build/$1/simulator/program/tarnbeacon-unit"
    firmwareFile="$demo/sample.bin"
    "$unitProgram" --make-sample "$firmwareFile"
    eval "$("$root/build/$1/gallery/program/tarnbeacon-places")"
    cp "$root/packaging/TYPE.INI" "$demo/"
}

# Starts the simulated unit and assigns it to COM3.
unitOptions=()
startUnit() { # options of the unit, added to unitOptions...
    startProcess "$demo/unit.log" "$unitProgram" --reply-delay "$replyDelay" --packet-delay "$packetDelay" \
        --journal "$demo/journal.txt" --image-out "$demo/unitImage.bin" "${unitOptions[@]}" "$@"
    unitProcess="$!"
    waitFor 10 "the simulated unit" grep -q ^/dev/ "$demo/unit.log"
    unitDevice="$(head -n 1 "$demo/unit.log")"
    assignPort
}

assignPort() {
    cat >"$settings/Setting.INI" <<END
[IFU]
COM=3 ' the simulated unit
[DEVICE]
COM3=$unitDevice
END
}

startProgram() {
    startProcess "$demo/program.log" "${programCommand[@]}"
    programProcess="$!"
}

programHasEnded() {
    ! isRunning "$programProcess"
}

# Waits until the program has ended by itself; fails unless its exit code is 0.
waitForProgram() { # seconds
    waitFor "$1" "the end of the program" programHasEnded
    wait "$programProcess" || fail "The program ended with exit code $?; see $demo/program.log."
}

# Stops the unit, prints its journal, and compares its image with the firmware file.
reportUnit() {
    stopProcess "$unitProcess" || true
    say "The unit's journal:"
    fold -s -w 100 "$demo/journal.txt" | sed 's/^/  /'
    if cmp "$demo/sample.bin" "$demo/unitImage.bin"; then
        say "The unit holds exactly the firmware file: $(stat -c %s "$demo/unitImage.bin") bytes."
    else
        fail "The unit does not hold the firmware file."
    fi
}
