#!/bin/sh
# Installs what is missing, builds everything and runs the tests.
# usage: test.sh [CONFIGURATION [TEST-PATTERN]]
#   CONFIGURATION: gcc (the default) or clang, in Release; clang-asan, with sanitizers; clang-tsan, with that of threads
#                  and only the tests that start some, of which those that go on for SUBTITLE_SOAK_SECONDS do so for
#                  60; coverage, which counts what runs, for coverage.sh
#   TEST-PATTERN:  a regular expression; only tests whose names match are run
set -eu
cd "$(dirname "$0")/.."

configuration=${1:-gcc}
pattern=${2:-.}
type=Release
sanitize=
flags=
target=all
case $configuration in
gcc) compiler='gcc g++' ;;
clang) compiler='clang clang++' ;;
clang-asan)
    compiler='clang clang++'
    type=RelWithDebInfo
    sanitize=address,undefined
    ;;
clang-tsan)
    compiler='clang clang++'
    type=RelWithDebInfo
    sanitize=thread
    target=thread_tests
    pattern=${2:-OnManyThreads|OnTwoThreads}
    export SUBTITLE_SOAK_SECONDS="${SUBTITLE_SOAK_SECONDS:-60}"
    ;;
coverage)
    compiler='gcc g++'
    type=Debug
    flags='--coverage -fprofile-update=atomic'
    ;;
*)
    echo "test.sh: $configuration: no such configuration" >&2
    exit 2
    ;;
esac

scripts/install-packages.sh
cmake -S . -B "build-$configuration" -G Ninja -DCMAKE_BUILD_TYPE=$type \
    -DCMAKE_C_COMPILER="${compiler% *}" -DCMAKE_CXX_COMPILER="${compiler#* }" \
    -DCMAKE_C_FLAGS="$flags" -DCMAKE_CXX_FLAGS="$flags" -DSUBTITLE_SANITIZE="$sanitize" -DSUBTITLE_WERROR=ON >/dev/null
cmake --build "build-$configuration" --target $target
ctest --test-dir "build-$configuration" --output-on-failure --no-tests=error -j "$(nproc)" -R "$pattern"
