#!/bin/sh
# Checks the layout of all C and C++ files, then lints what the configuration gcc of test.sh has compiled.
# usage: lint.sh [format|tidy]
set -eu
cd "$(dirname "$0")/.."

sources() {
    git ls-files -- "$@"
}
check=${1:-all}
if [ "$check" != tidy ]; then
    sources '*.h' '*.c' '*.cpp' | xargs clang-format --dry-run --Werror
fi
if [ "$check" != format ]; then
    sources '*.cpp' | xargs -P "$(nproc)" -n 4 clang-tidy -p build-gcc --quiet
fi
