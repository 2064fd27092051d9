#!/bin/sh
# Installs missing packages and builds targets of the benchmarks in build-gcc.
# usage: build-bench.sh TARGET...
set -eu
cd "$(dirname "$0")/.."
scripts/install-packages.sh
cmake -S . -B build-gcc -G Ninja -DCMAKE_BUILD_TYPE=Release -DSUBTITLE_BENCH=ON \
    -DCMAKE_C_COMPILER=gcc -DCMAKE_CXX_COMPILER=g++ >/dev/null
cmake --build build-gcc --target "$@"
