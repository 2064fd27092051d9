#!/bin/bash
# Runs the test programs under valgrind's memcheck, two at a time, together with the project's programs that they start.
# Fails if a test fails, or if memcheck reports an error or lost memory that scripts/valgrind.supp does not list.
# usage: memcheck.sh [NAME...]
#   NAME:  name of a test program, e.g. assparser_test; all by default, with only some of subburn_test's tests
#   BUILD: environment variable, folder to build in instead of build-memcheck
set -eu
cd "$(dirname "$0")/.."

build=${BUILD:-build-memcheck}
scripts/install-packages.sh
cmake --preset memcheck -B "$build" >/dev/null
cmake --build "$build"

logs=$(mktemp -d)
trap 'rm -rf "$logs"' EXIT
export build logs

# check NAME: runs one program; valgrind's messages are in one file for each process
check() {
    local name=$1 started=$SECONDS filter='*' status=0
    case $name in
    # Encoders are slow under valgrind, so there is one test of each path through the program.
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

# Not run: two programs that only inspect built files, one that limits the memory of others to less than valgrind needs,
# and one with a failing allocator, which valgrind would replace by its own.
mapfile -t all < <(
    find "$build/bin" -name '*_test' ! -name exports_test ! -name hardening_test ! -name bounds_test \
        ! -name memoryfaults_test -printf '%f\n' | sort
)
if [ $# -gt 0 ]; then
    all=("$@")
fi
printf '%s\n' "${all[@]}" | xargs -P 2 -I '{}' bash -c 'check {}'
[ ! -e "$logs/failed" ]
