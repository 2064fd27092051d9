#!/bin/sh
# Installs missing packages, builds, makes a short clip and burns subtitles into it. The results are in demo/.
set -eu
cd "$(dirname "$0")/.."

scripts/install-packages.sh --demo
cmake --preset demo >/dev/null
cmake --build --preset demo --target subtitle subburn

subburn() {
    build/environment/run build/bin/subburn "$@"
}

mkdir -p demo
[ -f demo/dusk.mp4 ] || scripts/make-clip.sh demo/dusk.mp4
subburn --overwrite --subtitles scripts/demo.srt demo/dusk.mp4 demo/dusk-subtitled.mp4
subburn --overwrite --subtitles scripts/demo.srt --quiet --snapshot 14.5 demo/dusk.mp4 demo/dusk-subtitled.png

echo
echo "The video:   demo/dusk-subtitled.mp4"
echo "One frame:   demo/dusk-subtitled.png"
