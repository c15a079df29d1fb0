# Sourced by the commands: where the project lies, the packages, the build.
# shellcheck shell=bash

root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"

buildPackages=(cmake ninja-build g++ qt6-base-dev qt6-serialport-dev libgtest-dev)
# A stand-in for each of the two fonts that the windows ask for.
fontPackages=(fontconfig fonts-liberation2 fonts-ipafont-gothic)
# A screen for machines without one, and hands and eyes for the scripted operator.
screenPackages=(xvfb openbox xdotool x11-utils imagemagick)

say() {
    printf '%s\n' "$*"
}

fail() {
    printf '%s\n' "$*" >&2
    exit 1
}

# Installs those of the given Debian packages that are missing; touches nothing when there are none.
needPackages() {
    local package missing=() asRoot=()
    if ! command -v dpkg-query >/dev/null; then
        say "Not a Debian system; going on in the hope that these are there: $*"
        return
    fi
    for package in "$@"; do
        dpkg-query --show --showformat='${db:Status-Status}' "$package" 2>/dev/null | grep -qx installed || missing+=("$package")
    done
    if ((${#missing[@]} == 0)); then
        return
    fi
    if ((EUID != 0)); then
        command -v sudo >/dev/null || fail "These packages are missing and there is no sudo: ${missing[*]}"
        asRoot=(sudo)
    fi
    say "Installing: ${missing[*]}"
    "${asRoot[@]}" apt-get -qq -o DPkg::Lock::Timeout=300 update </dev/null ||
        say "The package lists could not be brought up to date; trying with those at hand."
    "${asRoot[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -qq -o DPkg::Lock::Timeout=300 -o Dpkg::Use-Pty=0 \
        install --no-install-recommends "${missing[@]}" </dev/null >/dev/null ||
        fail "These packages could not be installed: ${missing[*]}"
}

# Builds the given targets of a preset, all of them when none is named.
buildPreset() {
    local preset="$1"
    shift
    cd "$root" || return
    if [[ ! -f build/$preset/build.ninja ]]; then
        say "Configuring the $preset build"
        cmake --preset "$preset" >/dev/null
    fi
    cmake --build --preset "$preset" ${1:+--target "$@"}
}
