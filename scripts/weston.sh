# Sourced after screen.sh by what runs the program under weston, a Wayland desktop, in a window on a virtual display.
# A Wayland desktop does not list its windows, so these functions read the program's own log of the protocol.
# shellcheck shell=bash

startWeston() { # folder for logs
    startDisplay "$1"
    cat >"$1/weston.ini" <<END
[shell]
panel-position=none
locking=false
animation=none
startup-animation=none
close-animation=none
END
    startProcess "$1/weston.log" weston --backend=x11-backend.so --use-pixman --width=800 --height=600 \
        --idle-time=0 --socket=wayland-tarnbeacon --config="$1/weston.ini"
    waitFor 20 "weston" test -S "$XDG_RUNTIME_DIR/wayland-tarnbeacon"
    export WAYLAND_DISPLAY=wayland-tarnbeacon WAYLAND_DEBUG=client QT_QPA_PLATFORM=wayland
}

windows() {
    awk '/\.get_toplevel\(/ { gsub(/.*new id |\).*/, ""); window[++count] = $0 }
        /xdg_toplevel.*\.destroy\(/ {
            gsub(/.*-> |\.destroy.*/, "")
            for (at in window) if (window[at] == $0) delete window[at]
        }
        END { for (at = 1; at <= count; ++at) if (at in window) print window[at] }' "$demo/program.log"
}

# The arguments of a window's last message of this name.
lastOf() { # window, message
    grep -o "$1\.$2(.*" "$demo/program.log" | tail -n 1 | sed 's/^[^(]*(\(.*\))$/\1/'
}

titleOf() {
    lastOf "$1" set_title | tr -d '"'
}

# The state array holds one state of 4 bytes only if the window is active.
isActive() {
    [[ $(lastOf "$1" configure) == *'array[4]' ]]
}

belongsTo() { # window, parent
    isShown "$1" && [[ $(lastOf "$1" set_parent) == "$2" ]]
}
