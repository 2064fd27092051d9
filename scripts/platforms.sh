#!/bin/bash
# Builds the committed tree on other platforms and runs the tests there. All platforms except qt6 use chroots, which
# need root. A platform is skipped if its chroot cannot be made; the exit status is 77 if it is the only one asked for.
# usage: platforms.sh [PLATFORM [TEST-PATTERN [TARGET...]]]
#   PLATFORM:     qt6, this machine with Qt 6; trixie or forky, Debian 13 or the release after it; trixie-qt6 or
#                 forky-qt6, the same with Qt 6; arm64, cross-compiled on Debian 12 and tested in QEMU. All of them by
#                 default.
#   TEST-PATTERN: a regular expression; only tests whose names match are run
#   TARGET:       only these targets are built; all by default
#   SUBTITLE_PLATFORMS: environment variable, folder for the chroots instead of ~/.cache/libsubtitle-platforms
#   SUBTITLE_MIRROR:    environment variable, Debian mirror instead of this machine's
set -eu
cd "$(dirname "$0")/.."
. scripts/chroots.sh

cache=${SUBTITLE_PLATFORMS:-${XDG_CACHE_HOME:-$HOME/.cache}/libsubtitle-platforms}
# shellcheck disable=SC2016 # apt-get expands it
mirror=${SUBTITLE_MIRROR:-$(apt-get indextargets --format '$(REPO_URI)' 'Created-By: Packages' | grep -v security | head -n 1)}
pattern=${2:-.}
targets=("${@:3}")
skipped=

# platforms_work: whether chroots of other platforms can be made here; prints why not. Installs debootstrap if it is
# missing.
platforms_work() {
    chroots_work || return 1
    command -v debootstrap >/dev/null || scripts/install-packages.sh debootstrap >&2 || {
        echo 'debootstrap cannot be installed'
        return 1
    }
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
    # A mirror may be a snapshot.
    echo 'Acquire::Check-Valid-Until "false";' >"$root.new/etc/apt/apt.conf.d/90snapshot"
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

# test_in ROOT CONFIGURATION: builds and tests in a chroot
test_in() {
    # shellcheck disable=SC2016 # expanded by the inner shell
    enter "$1" env CMAKE_C_COMPILER_LAUNCHER=ccache CMAKE_CXX_COMPILER_LAUNCHER=ccache CCACHE_DIR=/var/cache/ccache \
        bash -ec '
            cd /root/libsubtitle
            if [ "$1" = arm64 ]; then
                dpkg --add-architecture arm64
                scripts/install-packages.sh --arm64
                . scripts/chroots.sh
                run_arm64_programs
            fi
            scripts/test.sh "$@"' bash "$2" "$pattern" "${targets[@]}"
}

# run_suite PLATFORM SUITE CONFIGURATION: platforms of one suite share a chroot
run_suite() {
    local suite=$2 lock why
    if ! why=$(platforms_work); then
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
        test_in "$cache/$suite" "$3"
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
    trixie | forky) run_suite "$1" "$1" gcc ;;
    trixie-qt6 | forky-qt6) run_suite "$1" "${1%-qt6}" qt6 ;;
    arm64) run_suite arm64 bookworm arm64 ;;
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
    for platform in qt6 trixie trixie-qt6 forky forky-qt6 arm64; do
        echo "== $platform"
        run $platform
    done
fi
