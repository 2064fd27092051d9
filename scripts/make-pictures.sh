#!/bin/sh
# Makes the pictures in docs/ from the demo's clip; run demo.sh first.
set -eu
cd "$(dirname "$0")/.."
mkdir -p docs
ffmpeg -v error -y -ss 14.5 -i demo/dusk.mp4 -frames:v 1 -compression_level 100 docs/before.png
build/bin/subburn --subtitles scripts/demo.srt --quiet --snapshot 14.5 demo/dusk.mp4 docs/after.png
