#!/bin/sh
# Counts the instructions of 100 steady frames and of 100 lookups, which do not depend on the load of the machine, and
# compares them with bench/instructions.txt. Fails if one of the counts is over 5 % higher.
# usage: instructions.sh [--update]
#   --update  writes the counts into that file instead
set -eu
cd "$(dirname "$0")/.."

known=bench/instructions.txt
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

# The C library is not counted, since its memcpy() depends on the processor. Valgrind supports AVX2, but not AVX-512.
if ! grep -qw avx2 /proc/cpuinfo; then
    echo "no AVX2: the known counts do not apply"
    exit 0
fi

scripts/build-bench.sh steady

# count WORK: prints the instructions in the functions of bench/steady.cpp whose names begin with Counted
count() {
    QT_HASH_SEED=0 build-gcc/environment/run valgrind -q --tool=callgrind --toggle-collect='Counted*' \
        --callgrind-out-file="$folder/$1" build-gcc/bin/steady "$1"
    callgrind_annotate --threshold=100 --show-percs=no "$folder/$1" | awk '
        $1 ~ /^[0-9,]+$/ && /\[.*\]$/ && !/\/libc\.so/ { gsub(",", "", $1); sum += $1 }
        END { print sum + 0 }'
}

for work in frame lookup; do
    echo "$work $(count $work)"
done >"$folder/counts"

if [ "${1:-}" = --update ]; then
    cp "$folder/counts" "$known"
fi
awk '
    NR == FNR { known[$1] = $2; next }
    {
        good = $2 > 0 && $2 <= known[$1] * 1.05
        if (!good)
            bad = 1
        printf "%s: %d instructions, %d known: %.3f%s\n", $1, $2, known[$1], $2 / known[$1], good ? "" : ", too many"
    }
    END { exit bad }' "$known" "$folder/counts"
