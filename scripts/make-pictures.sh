#!/bin/sh
# Makes pictures in docs/ from the demo's clip. Run demo.sh first.
set -eu
cd "$(dirname "$0")/.."

subburn() {
    build/environment/run build/bin/subburn "$@"
}

mkdir -p docs
ffmpeg -v error -y -ss 14.5 -i demo/dusk.mp4 -frames:v 1 -compression_level 100 docs/before.png
subburn --overwrite --subtitles scripts/demo.srt --quiet --snapshot 14.5 demo/dusk.mp4 docs/after.png
subburn --overwrite --subtitles scripts/demo.ass --quiet --snapshot 2 demo/dusk.mp4 docs/ass.png

# The first cue as a DVD subtitle.
sed '/^$/q' scripts/demo.srt >demo/disc.srt
build/environment/run scripts/make-vobsub.sh demo/disc.srt demo/disc.idx
subburn --overwrite --subtitles demo/disc.idx --quiet --snapshot 2 demo/dusk.mp4 docs/vobsub.png

# A film with a subtitle track: SubRip in Matroska.
ffmpeg -v error -y -i demo/dusk.mp4 -i scripts/demo.srt -map 0 -map 1 -c copy -metadata:s:s:0 language=mul demo/dusk.mkv
subburn --list demo/dusk.mkv
subburn --overwrite --quiet --color gold --snapshot 7 demo/dusk.mkv docs/matroska.png
