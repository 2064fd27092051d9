#!/bin/sh
# Shows many frames with subtitles of all formats and prints the memory in use and the open files on the way. Fails where
# either grows.
# usage: longrun.sh [FRAMES]
#   FRAMES  1000000 where it is left out; with less than 400000 the first quarter has not seen all
set -eu
cd "$(dirname "$0")/.."
scripts/build-bench.sh longrun
build-gcc/environment/run build-gcc/bin/longrun "$@"
