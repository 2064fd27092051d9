#!/bin/sh
# Compares what hosts bind to (exported C functions, data and records of both libraries) with api/libsubtitle.abi and
# frames/libsubtitleframe.abi. Fails if anything changed. (A test compares the lists of all exported symbols.)
# usage: abi.sh [--update]
#   --update: stores the current interface in these two files instead
set -eu
cd "$(dirname "$0")/.."

scripts/install-packages.sh abigail-tools
cmake --preset abi >/dev/null
cmake --build --preset abi --target subtitle subtitleframe

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

# describe LIBRARY HEADER...: prints the interface, without types that are not declared in the given headers
describe() {
    library=$1
    shift
    rm -rf "$folder/headers"
    mkdir "$folder/headers"
    cp "$@" "$folder/headers"
    abidw --suppressions api/libsubtitle.abignore --headers-dir "$folder/headers" --drop-private-types \
        --type-id-style hash --no-corpus-path --no-comp-dir-path --no-show-locs --exported-interfaces-only \
        --no-elf-needed "build-abi/bin/$library.so"
}
describe libsubtitle api/libsubtitle.h vobsub/subtitledecoder.h vobsub/psstream.h >"$folder/libsubtitle.abi"
describe libsubtitleframe frames/libsubtitleframe.h >"$folder/libsubtitleframe.abi"
if [ "${1:-}" = --update ]; then
    cp "$folder/libsubtitle.abi" api/libsubtitle.abi
    cp "$folder/libsubtitleframe.abi" frames/libsubtitleframe.abi
    exit
fi
abidiff --suppressions api/libsubtitle.abignore api/libsubtitle.abi "$folder/libsubtitle.abi"
abidiff --suppressions api/libsubtitle.abignore frames/libsubtitleframe.abi "$folder/libsubtitleframe.abi"
