#!/bin/sh
# Builds the benchmarks in build-gcc, runs them and prints a table of ratios of this library's times to its peers'.
# usage: bench.sh [--quick] [--document]
#   --quick     one short repetition, for a rough result
#   --document  also puts the table into docs/performance.md, and a profile if perf is installed
set -eu
cd "$(dirname "$0")/.."

repetitions=9
time=0.2
processes=15
document=
for option in "$@"; do
    case $option in
    --quick)
        repetitions=1
        time=0.05
        processes=3
        ;;
    --document) document=docs/performance.md ;;
    *)
        sed -n '3,5s/^# //p' "$0" >&2
        exit 2
        ;;
    esac
done

scripts/build-bench.sh subtitle_bench firsttext

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
# Repetitions are interleaved at random, so that a slow moment of the machine does not affect only one benchmark.
build-gcc/environment/run build-gcc/bin/subtitle_bench \
    --benchmark_min_time=$time --benchmark_repetitions=$repetitions --benchmark_enable_random_interleaving=true \
    --benchmark_out_format=json --benchmark_out="$folder/times.json" \
    >/dev/null 2>"$folder/log" || {
    cat "$folder/log" >&2
    exit 1
}
for player in library libass; do
    for _ in $(seq $processes); do
        build-gcc/environment/run build-gcc/bin/firsttext text $player
        build-gcc/environment/run build-gcc/bin/firsttext start $player
    done
    build-gcc/environment/run build-gcc/bin/firsttext memory $player
done >"$folder/firsttext"

if [ -n "$document" ]; then
    scripts/profile.sh >"$folder/profile" || : >"$folder/profile" # not needed for the table
    set -- "$document" "$folder/profile"
else
    set --
fi
python3 scripts/bench-table.py "$folder/times.json" "$folder/firsttext" "$@"
