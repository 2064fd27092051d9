#!/bin/sh
# Makes the Debian packages and checks them with lintian.
# usage: make-packages.sh [FOLDER]
#   FOLDER: where to put them, packages/ by default; packages of the same version are replaced
set -eu
cd "$(dirname "$0")/.."
case ${1:-} in
-*)
    sed -n '3,4s/^# //p' "$0" >&2
    exit 2
    ;;
esac
folder=$(realpath -m "${1:-packages}")

scripts/install-packages.sh dpkg-dev file lintian
cmake -S . -B build-packages -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_C_COMPILER=gcc -DCMAKE_CXX_COMPILER=g++ \
    -DCMAKE_INSTALL_PREFIX=/usr -DCMAKE_INSTALL_DOCDIR=share/doc/libsubtitle-dev \
    -DSUBTITLE_TESTS=OFF -DSUBTITLE_BENCH=OFF >/dev/null
cmake --build build-packages
rm -f build-packages/*.deb

# Fixes the times of the files in the packages, so that the same sources make the same packages.
SOURCE_DATE_EPOCH=$(dpkg-parsechangelog -l build-packages/debian/changelog.Debian -S Timestamp)
export SOURCE_DATE_EPOCH
(cd build-packages && umask 022 && cpack -G DEB)
lintian --fail-on error,warning --tag-display-limit 0 build-packages/*.deb

# expect PACKAGE FIELD TEXT: checks, since lintian does not, that a field of a package contains the text
expect() {
    dpkg-deb --field build-packages/"$1"_*.deb "$2" | grep -qF "$3" || {
        echo "make-packages.sh: $1: no $3 in $2" >&2
        exit 1
    }
}
version=$(dpkg-parsechangelog -l build-packages/debian/changelog.Debian -S Version)
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

# Checks that the program finds the libraries where the packages install them.
rm -rf build-packages/unpacked
for package in build-packages/*.deb; do
    dpkg-deb --extract "$package" build-packages/unpacked
done
for library in libsubtitle libsubtitleframe; do
    echo | LD_DEBUG=files build-packages/unpacked/usr/bin/subburn --subtitles README.md --pipe 2x2@1 2>&1 |
        grep -qF "calling init: $PWD/build-packages/unpacked/usr/lib/$(gcc -print-multiarch)/$library.so.1"
done
# Checks that the plugin finds both libraries there.
LD_LIBRARY_PATH=build-packages/unpacked/usr/lib/$(gcc -print-multiarch) \
    ldd build-packages/unpacked/usr/lib/frei0r-1/subtitleburn.so |
    grep -cF "=> build-packages/unpacked/usr/lib/$(gcc -print-multiarch)/libsubtitle" | grep -qx 2
mkdir -p "$folder"
mv build-packages/*.deb "$folder"
