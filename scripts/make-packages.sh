#!/bin/bash
# Makes the Debian packages as debian/ describes them, checks them with lintian, and runs the tests in debian/tests on a copy
# of this machine in which they are installed. These tests are skipped where there can be no such copy: it needs root.
# usage: make-packages.sh [FOLDER]
#   FOLDER: where to put them, packages/ by default; packages of the same version are replaced
set -eu
cd "$(dirname "$0")/.."
. scripts/chroots.sh
case ${1:-} in
-*)
    sed -n '4,5s/^# //p' "$0" >&2
    exit 2
    ;;
esac
folder=$(realpath -m "${1:-packages}")

scripts/install-packages.sh autopkgtest debhelper dpkg-dev file lintian
# Builds a copy, since the build writes into the sources and beside them.
rm -rf build-packages
mkdir -p build-packages/libsubtitle
tar --create --exclude-vcs --exclude='./build*' --exclude=./demo --exclude=./packages . |
    tar --extract --directory build-packages/libsubtitle
# The suite is not run again, and there are no packages of debugging symbols. ccache would look for its folder in the
# HOME that debhelper sets.
(
    cd build-packages/libsubtitle
    DEB_BUILD_OPTIONS="nocheck noautodbgsym terse parallel=$(nproc)" DEB_CFLAGS_STRIP=-g DEB_CXXFLAGS_STRIP=-g \
        CCACHE_DIR=${CCACHE_DIR:-$(ccache --get-config cache_dir)} dpkg-buildpackage --build=binary --no-sign --post-clean
)
lintian --fail-on error,warning --tag-display-limit 0 build-packages/*.changes

# expect PACKAGE FIELD TEXT: checks, since lintian does not, that a field of a package contains the text
expect() {
    dpkg-deb --field build-packages/"$1"_*.deb "$2" | grep -qF "$3" || {
        echo "make-packages.sh: $1: no $3 in $2" >&2
        exit 1
    }
}
version=$(dpkg-parsechangelog -l debian/changelog -S Version)
expect libsubtitle1 Multi-Arch same
expect libsubtitle1 Depends 'libqt5gui5 '
expect libsubtitle1 Depends 'libhwy1 '
expect libsubtitle-dev Multi-Arch same
expect libsubtitle-dev Depends "libsubtitle1 (= $version)"
expect libsubtitleframe1 Depends "libsubtitle1 (= $version)"
expect libsubtitleframe1 Depends 'libavutil57 '
expect libsubtitleframe-dev Depends "libsubtitleframe1 (= $version), libsubtitle-dev (= $version)"
expect subburn Multi-Arch foreign
expect subburn Depends "libsubtitle1 (= $version), libsubtitleframe1 (= $version)"
expect subburn Recommends fonts-dejavu-core
expect gstreamer1.0-subtitle Multi-Arch same
expect gstreamer1.0-subtitle Depends "libsubtitle1 (= $version), libsubtitleframe1 (= $version)"
expect gstreamer1.0-subtitle Depends 'libgstreamer-plugins-base1.0-0 '
expect frei0r-subtitle Depends "libsubtitle1 (= $version)"
expect frei0r-subtitle Depends "libsubtitleframe1 (= $version)"

if why=$(copies_work); then
    enter_copy "$PWD/build-packages" sh -c 'exec autopkgtest --no-built-binaries --summary-file=/mnt/results \
        /mnt/*.deb /mnt/libsubtitle/ -- null' >build-packages/autopkgtest.log 2>&1 || {
        cat build-packages/autopkgtest.log >&2
        exit 1
    }
    cat build-packages/results
else
    echo "make-packages.sh: debian/tests skipped, $why" >&2
fi
mkdir -p "$folder"
mv build-packages/*.deb "$folder"
