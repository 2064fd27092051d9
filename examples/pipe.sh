#!/bin/bash
# Burns subtitles into a video with the programs ffmpeg and subburn; the sound is copied as it is. What subburn does by
# itself goes this way where filters, devices or options of ffmpeg's are wanted on either side.
# usage: pipe.sh VIDEO SUBTITLES OUTPUT [OPTION...]
#   OPTION:  of ffmpeg, for the output, such as -c:v libx265
#   SUBBURN: from the environment, the program's file instead of the one in PATH
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

# Frames in a pipe have no times, so they must come at an even rate; and ffmpeg would turn those of a turned video.
ffmpeg -nostdin -v error -noautorotate -i "$video" -map 0:v:0 -fps_mode cfr -r "$rate" -f rawvideo -pix_fmt rgb24 - |
    "${SUBBURN:-subburn}" --quiet --subtitles "$subtitles" --pipe "$size@$rate" |
    ffmpeg -v error -y -f rawvideo -pixel_format rgb24 -video_size "$size" -framerate "$rate" -i - -i "$video" \
        -map 0:v -map 1:a? -map_metadata 1 -c:a copy "$@" "$output"
