# Sourced by commands that need a screen: a virtual display, and an operator's input and views of it.
# shellcheck shell=bash

# A pixel is 15 twips; the window positions below are those of the forms.
readonly twipsPerPixel=15

# Starts a virtual display and sets DISPLAY to it. The runtime folder is a new one too: another instance of the program
# that runs for this user must not keep this one from starting.
startDisplay() { # folder for logs
    startProcess "$1/xvfb.log" Xvfb -displayfd 1 -screen 0 800x600x24 -dpi 96 -nolisten tcp
    waitFor 20 "the virtual display" grep -qx '[0-9]\+' "$1/xvfb.log"
    DISPLAY=":$(grep -x '[0-9]\+' "$1/xvfb.log")"
    export DISPLAY XDG_RUNTIME_DIR="$1/runtime" QT_QPA_PLATFORM=xcb QT_XCB_GL_INTEGRATION=none
    mkdir -m 0700 "$XDG_RUNTIME_DIR"
    unset WAYLAND_DISPLAY QT_SCALE_FACTOR QT_SCREEN_SCALE_FACTORS QT_FONT_DPI QT_STYLE_OVERRIDE
}

# The same with a window manager.
startScreen() { # folder for logs, command of a window manager other than openbox
    startDisplay "$1"
    local manager=("${@:2}")
    (($# > 1)) || manager=(openbox --sm-disable)
    startProcess "$1/windowManager.log" "${manager[@]}"
    waitFor 20 "the window manager" hasWindowManager
}

hasWindowManager() {
    xprop -root _NET_SUPPORTING_WM_CHECK 2>/dev/null | grep -q '#'
}

# The windows on the screen, oldest first.
windows() {
    xprop -root _NET_CLIENT_LIST 2>/dev/null | grep -o '0x[0-9a-f]*' || true
}

isShown() {
    windows | grep -qx "$1"
}

isGone() {
    ! isShown "$1"
}

# Sets the variable `window` to the newest window, of any title, that is not among the known ones.
findOther() { # known window...
    local known=" $* " candidate
    window=""
    for candidate in $(windows); do
        [[ $known == *" $candidate "* ]] || window="$candidate"
    done
    [[ -n $window ]]
}

# The same for a window with that title.
findWindow() { # title, known window...
    findOther "${@:2}" && [[ $(titleOf "$window") == "$1" ]]
}

titleOf() {
    xdotool getwindowname "$1" 2>/dev/null
}

waitForWindow() { # seconds, title, known window...
    local seconds="$1" title="$2"
    shift 2
    waitFor "$seconds" "a window with the title \"$title\"" findWindow "$title" "$@"
}

waitUntilGone() { # seconds, what, window
    waitFor "$1" "$2 to go away" isGone "$3"
}

hasClientArea() { # window, width, height in twips
    local WIDTH HEIGHT
    eval "$(xdotool getwindowgeometry --shell "$1" | grep -E '^(WIDTH|HEIGHT)=[0-9]+$')"
    ((WIDTH == $2 / twipsPerPixel && HEIGHT == $3 / twipsPerPixel))
}

# Clicks in the middle of an area of a window; twips, as in the forms. The pause is for wine, which reads the mouse late.
click() { # window, left, top, width, height
    xdotool mousemove --window "$1" $((($2 + $4 / 2) / twipsPerPixel)) $((($3 + $5 / 2) / twipsPerPixel)) \
        sleep 0.2 click 1
}

isActive() {
    [[ $(printf '0x%x' "$(xdotool getactivewindow 2>/dev/null || echo 0)") == "$1" ]]
}

# Presses keys as soon as the window has the focus.
press() { # window, key...
    waitFor 10 "the window to get the focus" isActive "$1"
    shift
    xdotool key --delay 50 "$@"
}

enterText() { # window, text
    waitFor 10 "the window to get the focus" isActive "$1"
    xdotool type --delay 20 -- "$2"
}

screenshotCount=0

# Empties the folder; screenshots go there from now on.
takeScreenshots() { # folder
    screenshots="$1"
    mkdir -p "$screenshots"
    rm -f "$screenshots"/*.png
}

# Saves a picture of the screen, after the painting, with the next number and a name in the folder $screenshots.
screenshot() { # name
    sleep 0.3
    import -window root "$screenshots/$((++screenshotCount))-$1.png"
    say "  $screenshotCount-$1"
}

# Sets the variable `areaHash` to a hash of the pixels of a part of a window, without the frame of that part.
hashArea() { # window, left, top, width, height in twips
    local frame=2 area
    area="$(($4 / twipsPerPixel - 2 * frame))x$(($5 / twipsPerPixel - 2 * frame))"
    area+="+$(($2 / twipsPerPixel + frame))+$(($3 / twipsPerPixel + frame))"
    areaHash="$(import -window "$1" png:- | convert - -crop "$area" +repage -format '%#' info:)"
}

# The trap on EXIT of commands with a screen. After a failure it saves a picture first.
leaveScreen() {
    local code="$?"
    if ((code != 0)) && [[ -n ${screenshots-} ]]; then
        screenshot failure || true
    fi
    stopAllProcesses
}
