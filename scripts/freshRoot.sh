# Sourced by commands that work in a fresh root, which scripts/withFreshRoot has made.
# shellcheck shell=bash disable=SC2154 # the folder of the root

# Runs a program of the root.
inRoot() { # command...
    chroot "$freshRoot" env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin LC_ALL=C.UTF-8 DEBIAN_FRONTEND=noninteractive "$@"
}

# Installs packages in the root; those of arm64 too, if it has that architecture.
installInRoot() { # packages...
    quietly inRoot apt-get -q update
    quietly inRoot apt-get -q -y install --no-install-recommends "$@"
}

# Lets the kernel start programs of another architecture, where the installation of the emulator could not: in a
# container.
enableEmulation() {
    local emulated=/proc/sys/fs/binfmt_misc
    [[ -e $emulated/register ]] || mount -t binfmt_misc binfmt_misc "$emulated"
    [[ -e $emulated/qemu-aarch64 ]] || cat /usr/lib/binfmt.d/qemu-aarch64.conf >"$emulated/register"
}
