#!/bin/bash
# Builds subburn in build-gcc, burns clips of three sizes with it and with FFmpeg's subtitles filter in turn, and prints
# a table with the ratio of subburn's time to FFmpeg's, for the same encoder, preset and threads.
# usage: bench-subburn.sh [--quick] [--document]
#   --quick     one round, for a rough result
#   --document  also puts the table into docs/performance.md
set -eu
cd "$(dirname "$0")/.."

rounds=9
document=
for option in "$@"; do
    case $option in
    --quick) rounds=1 ;;
    --document) document=docs/performance.md ;;
    *)
        sed -n '4,6s/^# //p' "$0" >&2
        exit 2
        ;;
    esac
done

scripts/build-bench.sh subburn
# In memory unless TMPDIR is set, so that no disk is measured. Raw video of 2160p needs 1.3 GB.
folder=$(mktemp -d -p "${TMPDIR:-/dev/shm}")
trap 'rm -rf "$folder"' EXIT
frames=100
for second in 0 2; do
    printf '%d\n00:00:0%d,040 --> 00:00:0%d,960\n' $((second / 2 + 1)) "$second" $((second + 1))
    printf 'Good evening, for the %dth time.\nThe hills are quiet.\n\n' "$second"
done >"$folder/text.srt"

# timed NAME COMMAND...: prints NAME with real, user and system time in seconds
TIMEFORMAT='%R %U %S'
timed() {
    local name=$1 times
    shift
    times=$({ time build-gcc/environment/run "$@" >/dev/null 2>"$folder/log" </dev/null; } 2>&1) || {
        cat "$folder/log" >&2
        exit 1
    }
    echo "$name $times"
    rm "$folder/out.nut"
}

# burn PROGRAM HEIGHT ENCODER
burn() {
    local clip="$folder/$2.mp4" preset=()
    [ "$3" != libx264 ] || preset=(preset veryfast)
    if [ "$1" = ffmpeg ]; then
        timed "$2 $3 $1" ffmpeg -nostdin -v error -i "$clip" \
            -vf "subtitles=$folder/text.srt:force_style='FontName=DejaVu Sans'" \
            -c:v "$3" ${preset:+"-${preset[0]}" "${preset[1]}"} "$folder/out.nut"
    else
        # This size is that of the text that FFmpeg's filter draws, whose lines are an 18th of the height.
        timed "$2 $3 $1" build-gcc/bin/subburn --overwrite --quiet --subtitles "$folder/text.srt" --font 'DejaVu Sans' \
            --size $(($2 / 24)) --codec "$3" ${preset:+"--${preset[0]}" "${preset[1]}"} "$clip" "$folder/out.nut"
    fi
}

for height in 720 1080 2160; do
    ffmpeg -nostdin -v error -f lavfi -i "testsrc2=s=$((height * 16 / 9))x$height:r=25" -frames:v $frames \
        -pix_fmt yuv420p -c:v libx264 -preset veryfast "$folder/$height.mp4"
done
for round in $(seq $rounds); do
    for height in 720 1080 2160; do
        for encoder in libx264 rawvideo; do
            order='ffmpeg subburn'
            [ $((round % 2)) = 0 ] || order='subburn ffmpeg'
            for program in $order; do
                burn "$program" "$height" "$encoder"
            done
        done
    done
done >"$folder/times"

processor="$(sed -n 's/^model name[^:]*: //p' /proc/cpuinfo | head -n 1), $(nproc) cores"
awk -v processor="$processor" -v frames=$frames -v rounds=$rounds '
    function median(kind, name,    list, count, i, j, value) {
        count = split(samples[name, kind], list)
        for (i = 2; i <= count; ++i) {
            value = list[i] + 0
            for (j = i - 1; j > 0 && list[j] + 0 > value; --j)
                list[j + 1] = list[j]
            list[j + 1] = value
        }
        return (list[int((count + 1) / 2)] + list[int(count / 2) + 1]) / 2
    }
    function cell(kind, work,    own, other) {
        own = median(kind, work " subburn")
        other = median(kind, work " ffmpeg")
        met = met && own <= other
        return sprintf("%.1f ms; ffmpeg %.1f ms: **%.2f**", own / frames * 1000, other / frames * 1000, own / other)
    }
    {
        samples[$1 " " $2 " " $3, "wall"] = samples[$1 " " $2 " " $3, "wall"] " " $4
        samples[$1 " " $2 " " $3, "processor"] = samples[$1 " " $2 " " $3, "processor"] " " $5 + $6
        if (!(($1, $2) in seen)) {
            seen[$1, $2] = 1
            works[++workcount] = $1 " " $2
        }
    }
    END {
        print "| a frame of | processor time | time by the clock | both at most 1.0 × |"
        print "|---|---|---|---|"
        for (i = 1; i <= workcount; ++i) {
            split(works[i], work)
            met = 1
            print "| " work[1] "p, " work[2] " | " cell("processor", works[i]) " | " cell("wall", works[i]) " | " (met ? "met" : "missed") " |"
        }
        print "\n" processor "; medians of " rounds " rounds of " frames " frames."
    }' "$folder/times" | tee "$folder/table"

[ -n "$document" ] || exit 0
awk -v table="$folder/table" '
    /^<!-- end of subburn -->/ { skip = 0 }
    !skip
    /^<!-- subburn: written/ {
        while ((getline line <table) > 0)
            print line
        skip = 1
    }' "$document" >"$folder/page"
cat "$folder/page" >"$document"
