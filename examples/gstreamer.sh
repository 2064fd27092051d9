#!/bin/sh
# Plays a video with subtitles, with the GStreamer element `subtitleburn`.
# usage: gstreamer.sh VIDEO SUBTITLES [ELEMENT...]
#   ELEMENT:  end of the pipeline, as for gst-launch-1.0, instead of a window; for example
#             x264enc ! matroskamux ! filesink location=subtitled.mkv
set -eu
if [ $# -lt 2 ]; then
    echo "usage: gstreamer.sh VIDEO SUBTITLES [ELEMENT...]" >&2
    exit 2
fi
video=$1
subtitles=$2
shift 2
[ $# -gt 0 ] || set -- autovideosink

gst-launch-1.0 filesrc location="$video" ! decodebin ! subtitleburn location="$subtitles" ! "$@"
