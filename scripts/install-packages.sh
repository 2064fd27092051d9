#!/bin/sh
# Installs what building, testing and the demo need, on Debian 12 and its kin. Does nothing where all is there.
# usage: install-packages.sh [PACKAGE...]
#   PACKAGE: what the caller needs besides
set -eu

packages="cmake ninja-build ccache g++ clang clang-format clang-tidy cppcheck libclang-rt-dev pkg-config
    qtbase5-dev qtbase5-private-dev
    libavformat-dev libavcodec-dev libavutil-dev libswscale-dev libswresample-dev
    libhwy-dev libcli11-dev libuchardet-dev libfontconfig-dev
    libgtest-dev libbenchmark-dev libass-dev libavfilter-dev python3 python3-av valgrind
    bash-completion mandoc zsh
    libgstreamer1.0-dev libgstreamer-plugins-base1.0-dev
    gstreamer1.0-tools gstreamer1.0-plugins-base gstreamer1.0-plugins-good
    frei0r-plugins-dev melt
    fontconfig fonts-dejavu-core fonts-noto-cjk fonts-noto-color-emoji fonts-lohit-deva
    ffmpeg mkvtoolnix dvdauthor locales git $*"

missing=
for package in $packages; do
    dpkg-query -W -f '${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || missing="$missing $package"
done
[ -n "$missing" ] || exit 0

root=
[ "$(id -u)" = 0 ] || root=sudo
export DEBIAN_FRONTEND=noninteractive
echo "installing:$missing"
$root apt-get update -qq
# shellcheck disable=SC2086 # one word a package
$root apt-get install -y -qq --no-install-recommends $missing >/dev/null
