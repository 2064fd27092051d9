#!/bin/sh
# Installs the packages for building, testing and the demo, on Debian 12 and similar. Does nothing if all are there.
# usage: install-packages.sh [--demo] [PACKAGE...]
#   --demo:  only those for building the library and subburn, and for the demo
#   PACKAGE: another package that the caller needs
set -eu

packages="cmake ninja-build g++ pkg-config
    qtbase5-dev qtbase5-private-dev
    libavformat-dev libavcodec-dev libavutil-dev libswscale-dev libswresample-dev
    libhwy-dev libcli11-dev libuchardet-dev libfontconfig-dev
    fontconfig fonts-dejavu-core fonts-noto-cjk fonts-noto-color-emoji fonts-lohit-deva
    ffmpeg"
if [ "${1:-}" = --demo ]; then
    shift
else
    packages="$packages ccache clang clang-format clang-tidy cppcheck libclang-rt-dev
    libgtest-dev libbenchmark-dev libass-dev libavfilter-dev python3 python3-av valgrind
    bash-completion mandoc zsh
    libgstreamer1.0-dev libgstreamer-plugins-base1.0-dev
    gstreamer1.0-tools gstreamer1.0-plugins-base gstreamer1.0-plugins-good
    frei0r-plugins-dev melt
    mkvtoolnix dvdauthor locales git"
fi

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
