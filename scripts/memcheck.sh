#!/bin/bash
# Runs the test programs under valgrind's memcheck, two at a time, and the programs of ours that they start with them.
# Fails at the first kind of error or of memory definitely lost that scripts/valgrind.supp does not name, and at every
# test that fails.
# usage: memcheck.sh [NAME...]
#   NAME:  of a test program, e.g. assparser_test; all but some tests of subburn by default
#   BUILD: from the environment, the folder to build in instead of build-memcheck
set -eu
cd "$(dirname "$0")/.."

build=${BUILD:-build-memcheck}
scripts/install-packages.sh
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_C_COMPILER=gcc -DCMAKE_CXX_COMPILER=g++ \
    -DSUBTITLE_BENCH=OFF >/dev/null
cmake --build "$build"

logs=$(mktemp -d)
trap 'rm -rf "$logs"' EXIT
export build logs

# check NAME: one program; what valgrind says of it and of its children goes to a file of each process.
check() {
    local name=$1 started=$SECONDS filter='*' status=0
    case $name in
    # Encoders are slow here; one test of every way through the program.
    subburn_test) filter=$subburn ;;
    esac
    "$build/environment/run" valgrind -q --tool=memcheck \
        --leak-check=full --show-leak-kinds=definite --errors-for-leak-kinds=definite \
        --error-exitcode=99 --suppressions=scripts/valgrind.supp --num-callers=25 --log-file="$logs/$name.%p" \
        --trace-children=yes --trace-children-skip='/usr/*,/bin/*,*.sh' \
        "$build/bin/$name" --gtest_filter="$filter" --gtest_brief=1 >"$logs/$name.out" 2>&1 || status=$?
    local tests
    tests=$(sed -n 's/^\[==========\] \([0-9]*\) test.* ran.*/\1/p' "$logs/$name.out")
    [ "${tests:-0}" -gt 0 ] || status=98
    cat "$logs/$name".[0-9]* >"$logs/$name.errors"
    if [ "$status" = 0 ] && [ ! -s "$logs/$name.errors" ]; then
        echo "$name: $tests tests, $((SECONDS - started)) s"
    else
        grep -v '^\[==\|^Running main' "$logs/$name.out"
        cat "$logs/$name.errors"
        echo "$name: FAILED, exit status $status"
        touch "$logs/failed"
    fi
}
export -f check
subburn='*.PixelsBetween*:*.PicturesAreBurnt*:*.CarriesTheSubtitle:*.SubtitleFiles:*.SoundAndOtherStreams'
export subburn="$subburn:*.PipeBurnsRawFrames:*.MarkupDoesNotShow:FailureTest.Subtitles:*.StartAndDurationCutAndShift"

# Two of the programs only look at files that were built, one runs others under a limit of memory that valgrind exceeds,
# one has an allocator of its own that fails, in whose place valgrind puts its own.
mapfile -t all < <(
    find "$build/bin" -name '*_test' ! -name exports_test ! -name hardening_test ! -name bounds_test \
        ! -name memoryfaults_test -printf '%f\n' | sort
)
if [ $# -gt 0 ]; then
    all=("$@")
fi
printf '%s\n' "${all[@]}" | xargs -P 2 -I '{}' bash -c 'check {}'
[ ! -e "$logs/failed" ]
