#!/bin/sh
# Checks the layout of all C and C++ files, then lints them with build-gcc's compile commands. Run test.sh gcc first.
# usage: lint.sh [format|tidy|cppcheck]
set -eu
cd "$(dirname "$0")/.."

sources() {
    git ls-files -- "$@"
}
check=${1:-all}
case $check in
all | format | tidy | cppcheck) ;;
*)
    echo "lint.sh: $check: no such check" >&2
    exit 2
    ;;
esac

if [ "$check" = all ] || [ "$check" = format ]; then
    sources '*.h' '*.c' '*.cpp' | xargs clang-format --dry-run --Werror
fi
if [ "$check" = all ] || [ "$check" = cppcheck ]; then
    cppcheck --project=build-gcc/compile_commands.json -j "$(nproc)" --quiet --template=gcc \
        --enable=warning,performance,portability,style --library=qt,googletest,posix,scripts/cppcheck.cfg \
        --suppressions-list=scripts/cppcheck.supp --inline-suppr --error-exitcode=1
fi
if [ "$check" = all ] || [ "$check" = tidy ]; then
    sources '*.cpp' | xargs -P "$(nproc)" -n 1 clang-tidy -p build-gcc --quiet
fi
