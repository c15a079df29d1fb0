# Sourced by the commands: the project's folder, the packages, the build.
# shellcheck shell=bash

root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
cd "$root" || exit # commands can be called from any folder

cliPackages=(cmake ninja-build g++ libcli11-dev nlohmann-json3-dev)
buildPackages=("${cliPackages[@]}" libgtest-dev qt6-base-dev)
# A replacement for each of the two fonts that the windows ask for.
fontPackages=(fontconfig fonts-liberation2 fonts-ipafont-gothic)
packagingPackages=(dpkg-dev file cmark-gfm)
packageCheckPackages=(binutils dpkg-dev lintian desktop-file-utils appstream man-db)
# For the preset arm64.
crossPackages=(crossbuild-essential-arm64 qt6-base-dev:arm64 libgtest-dev:arm64)
sanitizerPackages=(clang libclang-rt-dev)
# A virtual screen, and the tools of the scripted operator.
screenPackages=(xvfb openbox xdotool x11-utils imagemagick)

say() {
    printf '%s\n' "$*"
}

fail() {
    printf '%s\n' "$*" >&2
    exit 1
}

# Installs those of the given Debian packages that are missing.
needPackages() {
    local package missing=()
    if ! command -v dpkg-query >/dev/null; then
        say "Not a Debian system; assuming that these are installed: $*"
        return
    fi
    for package in "$@"; do
        dpkg-query --show --showformat='${db:Status-Status}\n' "$package" 2>/dev/null | grep -qx installed ||
            missing+=("$package")
    done
    if ((${#missing[@]} == 0)); then
        return
    fi
    ((EUID == 0)) || command -v sudo >/dev/null || fail "These packages are missing and there is no sudo: ${missing[*]}"
    say "Installing: ${missing[*]}"
    quietly asRoot apt-get -q -o DPkg::Lock::Timeout=300 update ||
        say "The package lists could not be updated; trying with the present ones."
    quietly asRoot env DEBIAN_FRONTEND=noninteractive \
        apt-get -q -y -o DPkg::Lock::Timeout=300 install --no-install-recommends "${missing[@]}" ||
        fail "These packages could not be installed: ${missing[*]}"
}

asRoot() {
    if ((EUID == 0)); then
        "$@"
    else
        sudo "$@"
    fi
}

# Runs a command and shows its output only if it fails.
quietly() {
    local output
    output="$("$@" 2>&1 </dev/null)" || {
        say "$output" >&2
        return 1
    }
}

# The date of the commit in seconds; in an unpacked source archive its files have it.
releaseTime() {
    if [[ -e $root/.git ]]; then
        git log -1 --format=%ct
    else
        stat --format=%Y CHANGELOG.md
    fi
}

# Builds the given targets of a preset, or all of them.
buildPreset() {
    local preset="$1"
    shift
    if [[ ! -f build/$preset/build.ninja ]]; then
        say "Configuring the $preset build"
        quietly cmake --preset "$preset"
    fi
    cmake --build --preset "$preset" ${1:+--target "$@"}
}
