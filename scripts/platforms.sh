#!/bin/bash
# Builds the committed tree on other platforms and runs the tests there. All platforms except qt6 use chroots, which
# need root. A platform is skipped if its chroot cannot be made.
# usage: platforms.sh [PLATFORM [TEST-PATTERN]]
#   PLATFORM:     qt6, this machine with Qt 6; trixie or forky, Debian 13 or the release after it; trixie-qt6 or
#                 forky-qt6, the same with Qt 6. All of them by default.
#   TEST-PATTERN: a regular expression; only tests whose names match are run
#   SUBTITLE_PLATFORMS: environment variable, folder for the chroots instead of ~/.cache/libsubtitle-platforms
#   SUBTITLE_MIRROR:    environment variable, Debian mirror instead of this machine's
set -eu
cd "$(dirname "$0")/.."

cache=${SUBTITLE_PLATFORMS:-${XDG_CACHE_HOME:-$HOME/.cache}/libsubtitle-platforms}
# shellcheck disable=SC2016 # apt-get expands it
mirror=${SUBTITLE_MIRROR:-$(apt-get indextargets --format '$(REPO_URI)' 'Created-By: Packages' | grep -v security | head -n 1)}
pattern=${2:-.}

# enter ROOT COMMAND...: runs a command in a chroot. Mounts and processes are in namespaces of their own, which
# disappear when the command ends for any reason.
enter() {
    # shellcheck disable=SC2016 # expanded by the inner shell
    unshare --mount --propagation private --pid --fork --kill-child sh -c '
        root=$1
        shift
        mount -t proc proc "$root/proc"
        mount --rbind /dev "$root/dev"
        mount -t tmpfs tmpfs "$root/tmp"
        exec chroot "$root" "$@"' sh "$1" /usr/bin/env -i HOME=/root LANG=C.UTF-8 PATH=/usr/sbin:/usr/bin:/sbin:/bin \
        http_proxy="${http_proxy-}" CMAKE_C_COMPILER_LAUNCHER=ccache CMAKE_CXX_COMPILER_LAUNCHER=ccache \
        CCACHE_DIR=/var/cache/ccache "${@:2}"
}

# chroots_work: whether chroots can be made here; prints why not
chroots_work() {
    if [ "$(id -u)" != 0 ]; then
        echo 'it needs root'
    elif ! unshare --mount --pid --fork true 2>/dev/null; then
        echo 'this machine allows no mounts'
    elif ! command -v debootstrap >/dev/null; then
        echo 'there is no debootstrap'
    else
        return 0
    fi
    return 1
}

# make_root SUITE: makes the chroot $cache/SUITE, and checks out the committed tree in its root/libsubtitle
make_root() {
    local suite=$1 root=$cache/$1
    if [ ! -d "$root" ]; then
        mkdir -p "$cache"
        rm -rf "$root.new"
        # The script that all suites share is given, since an older debootstrap does not know newer suites.
        debootstrap --variant=minbase "$suite" "$root.new" "$mirror" /usr/share/debootstrap/scripts/sid >"$root.log"
        mv "$root.new" "$root"
    fi
    cp -L /etc/resolv.conf "$root/etc/resolv.conf"
    local tree=$root/root/libsubtitle
    [ -d "$tree" ] || git init -q "$tree"
    git -C "$tree" fetch -q "$PWD" HEAD
    git -C "$tree" checkout -q --detach FETCH_HEAD
}

run_suite() {
    local suite=${1%-qt6} configuration=gcc
    [ "$1" = "$suite" ] || configuration=qt6
    make_root "$suite"
    enter "$cache/$suite" /root/libsubtitle/scripts/test.sh $configuration "$pattern"
}

run() {
    local why
    case $1 in
    qt6) scripts/test.sh qt6 "$pattern" ;;
    trixie | forky | trixie-qt6 | forky-qt6)
        if ! why=$(chroots_work); then
            echo "$1: skipped, $why"
        else
            run_suite "$1"
        fi
        ;;
    *)
        echo "platforms.sh: $1: no such platform" >&2
        exit 2
        ;;
    esac
}

if [ $# -gt 0 ]; then
    run "$1"
else
    for platform in qt6 trixie trixie-qt6 forky forky-qt6; do
        echo "== $platform"
        run $platform
    done
fi
