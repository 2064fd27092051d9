#!/bin/sh
# Prints a table of the functions in which the library's main tasks spend their time, or nothing if perf is not
# installed. Called by bench.sh, which builds the benchmarks first.
set -eu
cd "$(dirname "$0")/.."

command -v perf >/dev/null || exit 0
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

# profile WORK BENCHMARK OPTIONS...: prints a line of the table. The first 2.5 seconds, in which files and frames are
# made, are not recorded. Functions below 3 % are added up.
profile() {
    work=$1
    filter=$2
    shift 2
    build-gcc/environment/run perf record -q -e cpu-clock -F 5000 -D 2500 -o "$folder/data" \
        build-gcc/bin/subtitle_bench --benchmark_filter="^$filter(/iter|\$)" "$@" >/dev/null 2>"$folder/log" || {
        cat "$folder/log" >&2
        exit 1
    }
    perf report -i "$folder/data" --stdio --no-children -g none --sort dso,sym -t ';' 2>/dev/null |
        awk -F ';' -v work="$work" '
            /^ *[0-9.]+%/ {
                gsub(/ +$/, "", $2)
                name = substr($3, 5)
                sub(/^\(anonymous namespace\)::/, "", name)
                sub(/\.so\..*/, "", $2)
                if ($2 ~ /^\[/)
                    name = "kernel"
                else if (name ~ /^0x/ || $1 + 0 < 3)
                    name = "others in " $2
                else
                    name = "`" name "`"
                share[name] += $1
            }
            END {
                for (name in share)
                    if (share[name] >= 3)
                        printf "%s;%s;%.0f\n", work, name, share[name]
            }' | sort -t ';' -k 3,3nr | head -n 8 |
        awk -F ';' '{ line = line (NR > 1 ? ", " : "") $2 " " $3 " %"; work = $1 } END { print "| " work " | " line " |" }'
}

echo '| work | where its time goes |'
echo '|---|---|'
profile 'steady frame, 1080p' SteadyText/1920/1080/255 --benchmark_min_time=4
profile 'frame on which the cue changes, 1080p' TextChange/1920/1080/0 --benchmark_repetitions=300
profile 'frame on which a bitmap changes, 1080p' PictureChange/1920/1080 --benchmark_repetitions=60
profile 'open 1,500 cues, SRT' OpenSrt/1500 --benchmark_min_time=4
profile 'open 1,500 cues, ASS' OpenAss/1500 --benchmark_min_time=4
