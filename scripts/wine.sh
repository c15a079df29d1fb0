# Sourced by scripts/windows: a wine prefix, which serves as the Windows computer.
# shellcheck shell=bash

winePackages=(wine64 fonts-wine "${fontPackages[@]}")
wine=/usr/lib/wine/wine64

# A new prefix with replacements for the fonts of Windows. Its drive C is the folder `drive`.
makePrefix() { # folder
    export WINEPREFIX="$1" WINEDEBUG=-all LC_ALL=C.UTF-8 # sets the encoding of file names
    rm -rf "$WINEPREFIX"
    mkdir -p "$WINEPREFIX"
    drive="$WINEPREFIX/drive_c"
    quietly env -u DISPLAY "$wine" wineboot --init
    cp /usr/share/wine/fonts/tahoma*.ttf /usr/share/fonts/truetype/liberation2/LiberationSans-*.ttf \
        /usr/share/fonts/opentype/ipafont-gothic/ipagp.ttf "$drive/windows/Fonts/"
    cat >"$WINEPREFIX/fonts.reg" <<'END'
REGEDIT4

[HKEY_CURRENT_USER\Software\Wine\Fonts\Replacements]
"Arial"="Liberation Sans"
"MS PGothic"="IPAPGothic"
"MS UI Gothic"="IPAPGothic"
END
    quietly env -u DISPLAY "$wine" regedit /S "$WINEPREFIX/fonts.reg"
}

# Ends all programs in the prefix.
stopWine() {
    if [[ -d ${WINEPREFIX-} ]]; then
        /usr/lib/wine/wineserver64 --kill || true
    fi
}

# Replaces the function in screen.sh: wine draws the frame of a tool window itself, inside the window.
hasClientArea() { # window, width, height in twips
    local WIDTH HEIGHT
    eval "$(xdotool getwindowgeometry --shell "$1" | grep -E '^(WIDTH|HEIGHT)=[0-9]+$')"
    ((WIDTH -= $2 / twipsPerPixel, HEIGHT -= $3 / twipsPerPixel))
    ((WIDTH >= 0 && WIDTH <= 10 && HEIGHT >= 0 && HEIGHT <= 30))
}

# Replaces the function in demo.sh: wine assigns the ports, not an INI file.
assignPort() {
    ln -sfn "$unitDevice" "$WINEPREFIX/dosdevices/com3"
    ln -sfn "$unitDevice" "$WINEPREFIX/dosdevices/com5"
}
