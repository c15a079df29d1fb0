# Sourced by tests/linux/cliTest.cpp: the commands of tests/stories/cli.txt. The folder is new for each story.
# shellcheck shell=bash

cp "$SOURCE/packaging/TYPE.INI" .
"$UNIT_PROGRAM" --make-sample sample.bin

# Starts the simulated unit on the port ./port.
unit() {
    "$UNIT_PROGRAM" --link port --image-out unit.bin --journal journal.txt "$@" >/dev/null &
    unitProcess=$!
    until [[ -e port ]]; do sleep 0.01; done
}

# Ends the unit; it then writes its journal.
endUnit() {
    kill "$unitProcess"
    wait "$unitProcess"
    unitProcess=
}

operations() { grep '^operations' journal.txt; }

# Runs the program; prints its exit code unless that is 0.
cli() {
    LC_ALL=C "$CLI_PROGRAM" --config . --port ./port "$@" 2>&1 || echo "exit code $?"
}

# Plays a session; prints the exit code unless that is 0.
story() { "$STORY_PROGRAM" "$@" 2>&1 || echo "exit code $?"; }

# Becomes the program, so that a signal reaches it.
program() { exec "$CLI_PROGRAM" --config . --port ./port "$@"; }

# Waits until it has printed the word into the file "out".
untilPrinted() { until grep -qs "$1" out; do sleep 0.02; done; }

# Runs it in a terminal 60 characters wide, with what is typed after that many seconds. bash goes on after a SIGINT that
# the program has handled; other shells end.
onTerminal() { # seconds:characters... -- arguments
    local keys=()
    while [[ $1 != -- ]]; do keys+=("$1") && shift; done
    shift
    {
        for key in "${keys[@]}"; do
            sleep "${key%%:*}"
            printf '%b' "${key#*:}"
        done
        sleep 0.5
    } | SHELL=/bin/bash LC_ALL=C script -qec "stty cols 60; '$CLI_PROGRAM' --config . --port ./port $*; echo exit code \$?" /dev/null |
        tr '\r' '\n' | grep -v '^$'
}

# Runs it in a terminal that goes away after a second; the shell in it stays for the exit code.
inLostTerminal() { # arguments
    SHELL=/bin/bash LC_ALL=C script -qec "trap : HUP; '$CLI_PROGRAM' --config . --port ./port $*; echo exit code \$? >status" \
        /dev/null &>/dev/null &
    disown
    sleep 1
    kill -KILL $!
    until [[ -s status ]]; do sleep 0.05; done
    cat status
}
trap '[[ -z ${unitProcess-} ]] || kill "$unitProcess"' EXIT
