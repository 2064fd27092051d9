#!/bin/sh
# Checks that opening a file takes time in proportion to its size, whatever its content: prints time and memory per byte
# at four sizes, each twice the previous one. Fails if the time per byte grows.
# usage: growth.sh [--quick] [KIND]
#   --quick  an eighth of the sizes
#   KIND     only the kinds of content whose names begin with this
set -eu
cd "$(dirname "$0")/.."
scripts/build-bench.sh growth
build-gcc/environment/run build-gcc/bin/growth "$@"
