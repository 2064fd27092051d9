#!/bin/bash
# Burns subtitles into a video with the programs ffmpeg and subburn; the sound is copied unchanged. subburn can do that
# alone. The pipe is for those who want ffmpeg's filters, devices or options before or after it.
# usage: pipe.sh VIDEO SUBTITLES OUTPUT [OPTION...]
#   OPTION:  ffmpeg option for the output, such as -c:v libx265
#   SUBBURN: environment variable, path of the program to use instead of the one in PATH
set -euo pipefail
if [ $# -lt 3 ]; then
    echo "usage: pipe.sh VIDEO SUBTITLES OUTPUT [OPTION...]" >&2
    exit 2
fi
video=$1
subtitles=$2
output=$3
shift 3

probe() {
    ffprobe -v error -select_streams v:0 -show_entries "stream=$1" -of csv=p=0:s=x "$video" | head -n 1
}
size=$(probe width,height)
rate=$(probe r_frame_rate)

# Frames in a pipe have no times, so they need a constant rate. Without -noautorotate, ffmpeg would turn a turned video.
ffmpeg -nostdin -v error -noautorotate -i "$video" -map 0:v:0 -fps_mode cfr -r "$rate" -f rawvideo -pix_fmt rgb24 - |
    "${SUBBURN:-subburn}" --quiet --subtitles "$subtitles" --pipe "$size@$rate" |
    ffmpeg -v error -y -f rawvideo -pixel_format rgb24 -video_size "$size" -framerate "$rate" -i - -i "$video" \
        -map 0:v -map 1:a? -map_metadata 1 -c:a copy "$@" "$output"
