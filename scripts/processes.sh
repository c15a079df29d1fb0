# Sourced by commands that start processes. On exit they call stopAllProcesses, which ends each of them by its id.
# shellcheck shell=bash

startedProcesses=()

# Starts a command in the background with its output in a log file; its id is then in $!.
startProcess() {
    local log="$1"
    shift
    : >"$log" # now, so that a wait for a line of this log does not find an old one
    "$@" >>"$log" 2>&1 </dev/null &
    startedProcesses+=("$!")
}

isRunning() {
    kill -0 "$1" 2>/dev/null
}

# Asks the process to end, kills it after two seconds, and returns its exit code.
stopProcess() {
    local id="$1" tries
    kill "$id" 2>/dev/null || true
    for ((tries = 0; tries < 40; ++tries)); do
        isRunning "$id" || break
        sleep 0.05
    done
    kill -KILL "$id" 2>/dev/null || true
    wait "$id" 2>/dev/null
}

stopAllProcesses() {
    local place
    for ((place = ${#startedProcesses[@]} - 1; place >= 0; --place)); do
        stopProcess "${startedProcesses[place]}" || true
    done
    startedProcesses=()
}

# Factor of all time limits, for a slow computer.
timeFactor=1

# Repeats a command every 50 ms until it succeeds. After `seconds` it prints `what` and fails.
waitFor() { # seconds, what, command...
    local end=$((SECONDS + $1 * timeFactor)) what="$2"
    shift 2
    until "$@"; do
        if ((SECONDS >= end)); then
            say "Waiting for $what took too long." >&2
            return 1
        fi
        sleep 0.05
    done
}
