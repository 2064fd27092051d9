#!/bin/sh
# Installs the packages for building, testing and the demo, on Debian 12 and similar. Does nothing if all are there.
# usage: install-packages.sh [--demo|--arm64] [PACKAGE...]
#   --demo:  only those for building the library and subburn, and for the demo
#   --arm64: only those for building with a cross compiler for arm64, and for testing the result in QEMU
#   PACKAGE: another package that the caller needs
set -eu

tools="cmake ninja-build pkg-config
    fontconfig fonts-dejavu-core fonts-noto-cjk fonts-noto-color-emoji fonts-lohit-deva
    libcli11-dev ffmpeg"
libraries="qtbase5-dev qtbase5-private-dev
    libavformat-dev libavcodec-dev libavutil-dev libswscale-dev libswresample-dev
    libhwy-dev libuchardet-dev libfontconfig-dev libfreetype-dev"
test_tools="ccache bash-completion mandoc manpages zsh mkvtoolnix dvdauthor locales git"
case ${1:-} in
--demo)
    shift
    packages="$tools g++ $libraries"
    ;;
--arm64)
    shift
    packages="$tools $test_tools crossbuild-essential-arm64 qemu-user-static"
    for library in $libraries libgtest-dev; do
        packages="$packages $library:arm64"
    done
    ;;
*)
    packages="$tools g++ $libraries libgtest-dev $test_tools clang clang-format clang-tidy cppcheck libclang-rt-dev
    libbenchmark-dev libass-dev libavfilter-dev python3 python3-av valgrind
    libgstreamer1.0-dev libgstreamer-plugins-base1.0-dev
    gstreamer1.0-tools gstreamer1.0-plugins-base gstreamer1.0-plugins-good
    frei0r-plugins-dev melt"
    ;;
esac

missing=
for package in $packages "$@"; do
    dpkg-query -W -f '${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || missing="$missing $package"
done
[ -n "$missing" ] || exit 0

root=
[ "$(id -u)" = 0 ] || root=sudo
export DEBIAN_FRONTEND=noninteractive
echo "installing:$missing"
$root apt-get update -qq
# shellcheck disable=SC2086 # one word per package
$root apt-get install -y -qq --no-install-recommends $missing >/dev/null
