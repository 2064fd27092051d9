#!/bin/sh
# Draws many frames with subtitles of all formats and prints memory in use and open files. Fails if either grows.
# usage: longrun.sh [FRAMES]
#   FRAMES  1000000 by default; with less than 400000, the first quarter does not have every file at every size
set -eu
cd "$(dirname "$0")/.."
scripts/build-bench.sh longrun
build-gcc/environment/run build-gcc/bin/longrun "$@"
