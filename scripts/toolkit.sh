# Sourced by scripts/windows: Qt for Windows, linked statically. It is built once from Debian's own source, with
# Debian's patches, and kept in the user's cache folder; its version and configuration make its name.
# shellcheck shell=bash

toolkitPackages=(cmake ninja-build g++ qt6-base-dev qt6-base-dev-tools dpkg-dev g++-mingw-w64-x86-64-posix)
toolchain="$root/platform/windows/toolchain.cmake"

# What the program does not use, and what would need a library that is not there.
toolkitFeaturesOff=(
    androiddeployqt concurrent dbus direct2d direct2d1_1 directwrite directwrite3 fontconfig gif glib icu itemmodeltester
    jpeg network opengl pdf pkg_config printsupport qmake sql tabletevent textmarkdownreader textmarkdownwriter
    textodfwriter tuiotouch vulkan windeployqt xml zstd
    system_doubleconversion system_freetype system_harfbuzz system_jpeg system_pcre2 system_png system_zlib
)
toolkitOptions=(
    -DCMAKE_INSTALL_PREFIX=/toolkit # in the libraries, so the same for each user; it is installed below another folder
    -DCMAKE_BUILD_TYPE=Release -DBUILD_SHARED_LIBS=OFF -DBUILD_WITH_PCH=ON -DFEATURE_static_runtime=ON
    -DQT_BUILD_EXAMPLES=OFF -DQT_BUILD_TESTS=OFF -DQT_FORCE_BUILD_TOOLS=OFF -DINPUT_opengl=no
    -DQT_QMAKE_TARGET_MKSPEC=win32-g++
)
for feature in "${toolkitFeaturesOff[@]}"; do
    toolkitOptions+=("-DFEATURE_$feature=OFF")
done

# Sets the variable TARNBEACON_TOOLKIT to the folder of the toolkit, unless it is set already. Builds the toolkit if it is
# missing, goes on with a build that was broken off, and waits for one that another process does.
needToolkit() {
    local version key toolkit work lock
    if [[ -n ${TARNBEACON_TOOLKIT-} ]]; then
        return
    fi
    version="$(dpkg-query --show --showformat '${source:Version}' qt6-base-dev)" # the host tools have to match
    key="$(printf '%s\n' "${toolkitOptions[@]}" | cat - "$toolchain" | sha256sum | head -c 12)"
    toolkit="${XDG_CACHE_HOME:-$HOME/.cache}/tarnbeacon/qt6-base_${version}_$key"
    export TARNBEACON_TOOLKIT="$toolkit"
    if [[ -d $toolkit ]]; then
        return
    fi
    work="$toolkit.part"
    mkdir -p "$work"
    exec {lock}>"$toolkit.lock" # released at the latest when this process ends
    flock --nonblock "$lock" || {
        say "Another process builds Qt $version for Windows; waiting for it"
        flock "$lock"
    }
    if [[ ! -d $toolkit ]]; then
        buildToolkit
    fi
    exec {lock}>&-
}

# Uses the variables of needToolkit. What a build that was broken off has finished is in the folder `work`. The libraries
# do not depend on that folder, nor on the date.
buildToolkit() {
    local map="-ffile-prefix-map=$work=." SOURCE_DATE_EPOCH
    say "Building Qt $version for Windows in $work; this takes up to half an hour, and is done once"
    [[ -d $work/source ]] || fetchSource "$version" "$work"
    say "  configuring"
    SOURCE_DATE_EPOCH="$(dpkg-parsechangelog -l "$work/source/debian/changelog" -S Timestamp)"
    export SOURCE_DATE_EPOCH
    quietly cmake -S "$work/source" -B "$work/build" -G Ninja -DCMAKE_C_FLAGS="$map" -DCMAKE_CXX_FLAGS="$map" \
        -DCMAKE_TOOLCHAIN_FILE="$toolchain" -DQT_HOST_PATH=/usr \
        -DQT_HOST_PATH_CMAKE_DIR="/usr/lib/$(dpkg-architecture -q DEB_HOST_MULTIARCH)/cmake" "${toolkitOptions[@]}"
    showProgress "$work/build.log" cmake --build "$work/build"
    quietly env DESTDIR="$work/installed" cmake --install "$work/build" --strip
    mv "$work/installed/toolkit" "$toolkit" # it can be moved
    rm -rf "$work"
}

# Runs a build with its output in a log file, and prints a line at each twentieth of its steps.
showProgress() { # log file, command...
    local log="$1" line percent shown=0
    shift
    NINJA_STATUS='%p of %t steps, %e s: ' "$@" 2>&1 </dev/null | tee "$log" | while IFS= read -r line; do
        [[ $line =~ ^\ *([0-9]+)%\ of\ [0-9]+\ steps,\ [0-9]+ ]] || continue
        percent="${BASH_REMATCH[1]}"
        if ((percent >= shown + 5)); then
            shown="$percent"
            say "  ${BASH_REMATCH[0]## } s"
        fi
    done || {
        tail -n 40 "$log" >&2
        fail "The build failed; its output is in $log."
    }
}

# Downloads Debian's source of Qt from the package sources of this system, verifies and patches it, in the folder
# `source`. Does not change the package lists of the system.
fetchSource() { # version, folder
    local lists="$2/lists"
    say "  downloading the source"
    mkdir -p "$lists/partial"
    # shellcheck disable=SC2016 # apt-get expands them
    apt-get indextargets --format 'deb-src $(REPO_URI) $(RELEASE) $(COMPONENT)' \
        'Created-By: Packages' 'Origin: Debian' 'Component: main' | sort -u >"$2/sources.list"
    (
        cd "$2"
        apt=(apt-get -q -o Dir::Etc::SourceList="$2/sources.list" -o Dir::Etc::SourceParts=/dev/null
            -o Dir::State::Lists="$lists" -o APT::Sandbox::User="$(id -un)")
        quietly "${apt[@]}" update
        quietly "${apt[@]}" --download-only source "qt6-base=$1"
        rm -rf unpacked
        quietly dpkg-source --extract qt6-base_*.dsc unpacked
        mv unpacked source # whole
    ) || fail "The source of Qt $1 could not be downloaded."
}
