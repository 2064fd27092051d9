#!/bin/sh
# Shows that opening a file takes time in proportion to its size, whatever it holds: the time and the memory for each byte
# at four sizes, each twice the one before. Fails where the time for a byte grows.
# usage: growth.sh [--quick] [KIND]
#   --quick  an eighth of the sizes
#   KIND     only the kinds of content whose names begin so
set -eu
cd "$(dirname "$0")/.."
scripts/build-bench.sh growth
build-gcc/environment/run build-gcc/bin/growth "$@"
