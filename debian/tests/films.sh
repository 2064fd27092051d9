# Sourced by the tests that burn films of two grey frames, with one frame per second and a subtitle in the second.
set -eu
cd "$AUTOPKGTEST_TMP"
printf '1\n00:00:01,000 --> 00:00:02,000\nInstalled\n\n' >text.srt
ffmpeg -nostdin -v error -f lavfi -i color=gray:s=320x180:r=1:d=2,format=rgba -c:v ffv1 plain.mkv

# raw FILM OUTPUT [OPTION...]: writes the pixels of a film, which FFmpeg's options may change
raw() {
    film=$1
    output=$2
    shift 2
    ffmpeg -nostdin -v error -i "$film" "$@" -f rawvideo -pix_fmt rgba "$output"
}
raw plain.mkv plain

# burnt FILE: checks that of the raw film FILE the second frame differs from the plain one, and the first does not
burnt() {
    frame=$((320 * 180 * 4))
    [ "$(stat -c %s "$1")" = $((2 * frame)) ]
    cmp -n $frame plain "$1"
    ! cmp -s -i $frame plain "$1" || {
        echo "no subtitle in the second frame" >&2
        exit 1
    }
}
