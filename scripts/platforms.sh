#!/bin/bash
# Builds the committed tree on other platforms and runs the tests there. All platforms except qt6 use chroots, which
# need root. A platform is skipped if its chroot cannot be made; the exit status is 77 if it is the only one asked for.
# usage: platforms.sh [PLATFORM [TEST-PATTERN [TARGET...]]]
#   PLATFORM:     qt6, this machine with Qt 6; trixie or forky, Debian 13 or the release after it; trixie-qt6 or
#                 forky-qt6, the same with Qt 6. All of them by default.
#   TEST-PATTERN: a regular expression; only tests whose names match are run
#   TARGET:       only these targets are built; all by default
#   SUBTITLE_PLATFORMS: environment variable, folder for the chroots instead of ~/.cache/libsubtitle-platforms
#   SUBTITLE_MIRROR:    environment variable, Debian mirror instead of this machine's
set -eu
cd "$(dirname "$0")/.."

cache=${SUBTITLE_PLATFORMS:-${XDG_CACHE_HOME:-$HOME/.cache}/libsubtitle-platforms}
# shellcheck disable=SC2016 # apt-get expands it
mirror=${SUBTITLE_MIRROR:-$(apt-get indextargets --format '$(REPO_URI)' 'Created-By: Packages' | grep -v security | head -n 1)}
pattern=${2:-.}
targets=("${@:3}")
skipped=

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

# chroots_work: whether chroots can be made here; prints why not. Installs debootstrap if it is missing.
chroots_work() {
    if [ "$(id -u)" != 0 ]; then
        echo 'it needs root'
    elif ! unshare --mount --pid --fork true 2>/dev/null; then
        echo 'this machine allows no mounts'
    elif ! command -v debootstrap >/dev/null && ! scripts/install-packages.sh debootstrap >&2; then
        echo 'debootstrap cannot be installed'
    else
        return 0
    fi
    return 1
}

# make_root SUITE: makes the chroot $cache/SUITE if it is not there; prints why it cannot be made
make_root() {
    local root=$cache/$1
    [ ! -d "$root" ] || return 0
    rm -rf "$root.new"
    # The script that all suites share is given, since an older debootstrap does not know newer suites.
    if ! debootstrap --variant=minbase "$1" "$root.new" "$mirror" /usr/share/debootstrap/scripts/sid >"$root.log" 2>&1; then
        echo "debootstrap failed: $(tail -n 1 "$root.log")"
        return 1
    fi
    mv "$root.new" "$root"
}

# check_out ROOT: checks out the committed tree in root/libsubtitle of a chroot
check_out() {
    cp -L /etc/resolv.conf "$1/etc/resolv.conf"
    local tree=$1/root/libsubtitle
    [ -d "$tree" ] || git init -q "$tree"
    git -C "$tree" fetch -q --depth 1 "$PWD" HEAD
    git -C "$tree" checkout -q --detach FETCH_HEAD
}

run_suite() {
    local suite=${1%-qt6} configuration=gcc lock why
    [ "$1" = "$suite" ] || configuration=qt6
    if ! why=$(chroots_work); then
        skip "$1" "$why"
        return
    fi
    # One run at a time changes a chroot.
    mkdir -p "$cache"
    exec {lock}>"$cache/$suite.lock"
    flock "$lock"
    if ! why=$(make_root "$suite"); then
        skip "$1" "$why"
    else
        check_out "$cache/$suite"
        enter "$cache/$suite" /root/libsubtitle/scripts/test.sh $configuration "$pattern" "${targets[@]}"
    fi
    exec {lock}>&-
}

skip() {
    echo "$1: skipped, $2"
    skipped=$1
}

run() {
    case $1 in
    qt6) scripts/test.sh qt6 "$pattern" "${targets[@]}" ;;
    trixie | forky | trixie-qt6 | forky-qt6) run_suite "$1" ;;
    *)
        echo "platforms.sh: $1: no such platform" >&2
        exit 2
        ;;
    esac
}

if [ $# -gt 0 ]; then
    run "$1"
    [ -z "$skipped" ] || exit 77
else
    for platform in qt6 trixie trixie-qt6 forky forky-qt6; do
        echo "== $platform"
        run $platform
    done
fi
