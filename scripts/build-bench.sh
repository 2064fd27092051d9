#!/bin/sh
# Installs missing packages and builds targets of the benchmarks in build-gcc.
# usage: build-bench.sh TARGET...
set -eu
cd "$(dirname "$0")/.."
scripts/install-packages.sh
cmake --preset release -DSUBTITLE_BENCH=ON >/dev/null
cmake --build --preset release --target "$@"
