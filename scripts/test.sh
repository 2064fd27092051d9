#!/bin/sh
# Installs missing packages, builds everything and runs the tests.
# usage: test.sh [CONFIGURATION [TEST-PATTERN [TARGET...]]]
#   CONFIGURATION: gcc (the default) or clang, Release builds; qt6, gcc with Qt 6; arm64, gcc for arm64, tested in QEMU,
#                  for which platforms.sh prepares a chroot; clang-asan, with AddressSanitizer and
#                  UndefinedBehaviorSanitizer; clang-tsan, with ThreadSanitizer and only the tests that start threads,
#                  where SUBTITLE_SOAK_SECONDS is 60 by default; coverage, for coverage.sh
#   TEST-PATTERN:  a regular expression; only tests whose names match are run
#   TARGET:        only these targets are built, which have to include the tests that match
set -eu
cd "$(dirname "$0")/.."

configuration=${1:-gcc}
pattern=${2:-.}
packages=
case $configuration in
gcc) preset=release ;;
qt6)
    preset=qt6
    packages="qt6-base-dev qt6-base-private-dev"
    ;;
arm64)
    preset=arm64
    packages=--arm64
    ;;
clang) preset=clang ;;
clang-asan) preset=asan ;;
clang-tsan)
    preset=tsan
    pattern=${2:-OnManyThreads|OnTwoThreads}
    export SUBTITLE_SOAK_SECONDS="${SUBTITLE_SOAK_SECONDS:-60}"
    ;;
coverage) preset=coverage ;;
*)
    echo "test.sh: $configuration: no such configuration" >&2
    exit 2
    ;;
esac

[ $# -lt 2 ] || shift
[ $# = 0 ] || shift

# shellcheck disable=SC2086 # one word per package
scripts/install-packages.sh $packages
cmake --preset $preset >/dev/null
cmake --build --preset $preset ${1:+--target "$@"}
ctest --preset $preset -j "$(nproc)" -R "$pattern"
