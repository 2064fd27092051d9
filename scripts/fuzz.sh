#!/bin/bash
# Builds the fuzzers in build-fuzz and runs each, starting from its stored inputs. Fails if one finds something.
# usage: fuzz.sh [--cpu-minutes N | --seconds N | --merge] [TARGET...]
#   --cpu-minutes N  run each for N minutes of user and system time; 1 by default
#   --seconds N      the same in seconds
#   --merge          do not fuzz, but copy those new inputs that reach new code to fuzz/corpus
#   TARGET           such as srt_fuzz; all by default
# New inputs are in build-fuzz/corpus/TARGET, inputs that reproduce findings in build-fuzz/findings/TARGET.
set -eu
cd "$(dirname "$0")/.."

usage() {
    sed -n '3,8s/^# //p' "$0" >&2
    exit 2
}
seconds=60
merge=
case ${1:-} in
--cpu-minutes)
    seconds=$((${2:?} * 60))
    shift 2
    ;;
--seconds)
    seconds=$((${2:?}))
    shift 2
    ;;
--merge)
    merge=1
    shift
    ;;
-*) usage ;;
esac
# shellcheck disable=SC2046 # one word per target
[ $# -gt 0 ] || set -- $(basename -s .cpp fuzz/*_fuzz.cpp)
for target in "$@"; do
    [ -f "fuzz/$target.cpp" ] || usage
done

scripts/install-packages.sh
cmake --preset fuzz >/dev/null
cmake --build --preset fuzz --target "$@"

# In memory if possible, since every input is written to a file.
folder=$(mktemp -d -p "$(if [ -w /dev/shm ]; then echo /dev/shm; else echo /tmp; fi)")
trap 'rm -rf "$folder"' EXIT
ticks=$(getconf CLK_TCK)

# Largest size of an input. Longer ones would only take more time.
longest() {
    case $1 in
    idx_fuzz | stream_fuzz) echo 12000 ;;
    *) echo 4096 ;;
    esac
}

# In megabytes. FFmpeg's parsers allocate the size that a header gives, but touch only as much as data follows.
largest_allocation() {
    case $1 in
    container_fuzz | frame_fuzz) echo 2100 ;;
    *) echo 512 ;;
    esac
}

# fuzzer TARGET OPTIONS...
fuzzer() {
    local target=$1
    shift
    mkdir -p "$folder/$target" "build-fuzz/corpus/$target" "build-fuzz/findings/$target"
    TMPDIR=$folder/$target exec build-fuzz/environment/run build-fuzz/bin/"$target" \
        -timeout=25 -report_slow_units=25 -rss_limit_mb=1024 \
        -malloc_limit_mb="$(largest_allocation "$target")" -max_len="$(longest "$target")" \
        -artifact_prefix="build-fuzz/findings/$target/" "$@"
}

# The user and system time of a process, in seconds.
cpu_seconds() {
    local stat=
    read -r stat 2>/dev/null <"/proc/$1/stat" || :
    # shellcheck disable=SC2086 # one word per field
    set -- ${stat##*) }
    echo $(((${12:-0} + ${13:-0}) / ticks))
}

reproducer_in() {
    sed -n 's/.*Test unit written to //p' "$1" | tail -n 1
}

# report TARGET CPU-SECONDS STATUS
report() {
    local target=$1 spent=$2 status=$3 log=$folder/$1.log runs coverage reproducer
    runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log" | awk '{ sum += $1 } END { print sum + 0 }')
    coverage=$(sed -n 's/.* cov: \([0-9]*\) ft: \([0-9]*\) .*/\1 edges, \2 features/p' "$log" | tail -n 1)
    reproducer=$(reproducer_in "$log")
    printf '%-15s %8s inputs, %5s CPU seconds, coverage: %s, findings: %s\n' \
        "$target" "$runs" "$spent" "${coverage:-none}" "$([ -z "$reproducer" ] && echo 0 || echo 1)"
    [ "$status" != 0 ] || return 0
    touch "$folder/$target.failed"
    echo "$target ended with status $status"
    sed -n '/ERROR: \|runtime error\|does not hold/,$p' "$log" | head -n 60
    [ -n "$reproducer" ] || return 0
    echo "reproduce: build-fuzz/environment/run build-fuzz/bin/$target $reproducer"
    echo "keep:      cp $reproducer fuzz/findings/$target/SPEAKING-NAME, which scripts/test.sh replays from then on"
}

# was_only_delayed TARGET LOG STATUS: whether a timeout was caused by the machine being suspended, as the fuzzer
# measures real time. If so, removes the reproducer, which runs in time now.
was_only_delayed() {
    local reproducer
    reproducer=$(reproducer_in "$2")
    [ "$3" = 70 ] && [ -n "$reproducer" ] && (fuzzer "$1" "$reproducer" >/dev/null 2>&1) && rm "$reproducer" &&
        sed -i '/Test unit written to /d' "$2"
}

run() {
    local target=$1 log=$folder/$1.log before=0 spent=0 used status process
    local dictionary=fuzz/$target.dict
    while [ "$spent" -lt "$seconds" ]; do
        fuzzer "$target" -print_final_stats=1 -dict="$dictionary" "build-fuzz/corpus/$target" "fuzz/corpus/$target" \
            2>>"$log" &
        process=$!
        while kill -0 $process 2>/dev/null; do
            sleep 1
            used=$((before + $(cpu_seconds $process)))
            [ "$used" -lt "$spent" ] || spent=$used
            # The fuzzer then ends after the current input and prints its statistics.
            [ "$spent" -lt "$seconds" ] || kill -USR1 $process 2>/dev/null || :
        done
        before=$spent
        status=0
        wait $process || status=$?
        [ $status != 0 ] || continue
        was_only_delayed "$target" "$log" $status || break
        status=0
    done
    report "$target" "$spent" $status
}

if [ -n "$merge" ]; then
    for target in "$@"; do
        (fuzzer "$target" -merge=1 -use_counters=0 "fuzz/corpus/$target" "build-fuzz/corpus/$target" 2>&1 | tail -n 1)
    done
    exit 0
fi
for target in "$@"; do
    while [ "$(jobs -rp | wc -l)" -ge "$(nproc)" ]; do
        sleep 1
    done
    run "$target" &
done
wait
! ls "$folder"/*.failed >/dev/null 2>&1
