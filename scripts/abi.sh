#!/bin/sh
# Compares what hosts bind to, the exported C functions, data and records, with api/libsubtitle.abi; fails when something
# changed. (The list of all exported symbols is compared by a test.)
# usage: abi.sh [--update]
#   --update: stores what is there now as the new record
set -eu
cd "$(dirname "$0")/.."

scripts/install-packages.sh abigail-tools
cmake -S . -B build-abi -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_C_COMPILER=gcc -DCMAKE_CXX_COMPILER=g++ \
    -DCMAKE_CXX_FLAGS="-ffile-prefix-map=$PWD=." -DSUBTITLE_TESTS=OFF -DSUBTITLE_BENCH=OFF >/dev/null
cmake --build build-abi --target subtitle

# Types that no installed header declares are no part of it.
headers=$(mktemp -d)
trap 'rm -rf "$headers"' EXIT
cp api/libsubtitle.h vobsub/subtitledecoder.h vobsub/psstream.h "$headers"
describe() {
    abidw --suppressions api/libsubtitle.abignore --headers-dir "$headers" --drop-private-types --type-id-style hash \
        --no-corpus-path --no-comp-dir-path --no-show-locs --exported-interfaces-only --no-elf-needed \
        build-abi/bin/libsubtitle.so
}
if [ "${1:-}" = --update ]; then
    describe >api/libsubtitle.abi
    exit
fi
describe >"$headers/now.abi"
abidiff --suppressions api/libsubtitle.abignore api/libsubtitle.abi "$headers/now.abi"
