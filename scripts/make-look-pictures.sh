#!/bin/sh
# Makes the pictures of the two looks in docs/: a cue at two sizes, enlarged four times, in the exact look, in the
# natural look and as libass draws it; a yellow DVD picture; five lines; two cues at once.
# usage: make-look-pictures.sh
#   BUILD: environment variable, build folder to use instead of build
set -eu
cd "$(dirname "$0")/.."
build=${BUILD:-build}
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cmake --build "$build" --target subtitleframe >/dev/null

# frame WIDTH HEIGHT: prints a raw rgb24 frame without a subtitle
frame() {
    ffmpeg -nostdin -v error -f lavfi -i "color=black:s=${1}x$2,format=gbrp,\
geq=r='60+100*X/W':g='90+60*Y/H':b='130-40*X/W'" -frames:v 1 -f rawvideo -pix_fmt rgb24 -
}

# burn NAME SUBTITLES MILLISECONDS WIDTH HEIGHT LOOK: makes a picture with a subtitle in the temporary folder
burn() {
    frame "$4" "$5" | "$build/environment/run" scripts/burn-look.py "$build/bin/libsubtitleframe.so" "$2" "$3" "$4" "$5" "$6" |
        ffmpeg -nostdin -v error -y -f rawvideo -pix_fmt rgb24 -s "${4}x$5" -i - "$folder/$1.png"
}

# join STACK OUTPUT FILTER NAME...: filters pictures of the temporary folder and joins them with the filter STACK
join() {
    stack=$1
    output=$2
    filter=$3
    shift 3
    inputs=
    chain=
    labels=
    for name in "$@"; do
        inputs="$inputs -i $folder/$name.png"
        number=$((${#labels} / 4))
        chain="${chain}[$number]${filter}[p$number];"
        labels="${labels}[p$number]"
    done
    # shellcheck disable=SC2086 # a list
    ffmpeg -nostdin -v error -y $inputs -filter_complex "$chain${labels}$stack=inputs=$#" -frames:v 1 \
        -compression_level 100 "docs/$output.png"
}

printf '00:00:00,000 --> 00:00:05,000\nShe said: Wait, 10 minutes?\nThen quietly, Åsa left.\n' >"$folder/cue.srt"
for size in 854x480 1920x1080; do
    width=${size%x*}
    height=${size#*x}
    # The text is a 14th of the frame's height, as the library's: libass takes a font's size from its ascent to its
    # descent.
    cat >"$folder/cue.ass" <<END
[Script Info]
ScriptType: v4.00+
PlayResX: $width
PlayResY: $height
ScaledBorderAndShadow: yes
[V4+ Styles]
Format: Name, Fontname, Fontsize, PrimaryColour, OutlineColour, BorderStyle, Outline, Shadow, Alignment, MarginV, Encoding
Style: Default,DejaVu Sans,$((height * 1164 / 14000)),&H00FFFFFF,&H000A0A0A,1,$(awk "BEGIN { print 2 * $height / 720 }"),0,2,$((height * 7 / 100)),0
[Events]
Format: Layer, Start, End, Style, Text
Dialogue: 0,0:00:00.00,0:01:00.00,Default,She said: Wait, 10 minutes?\\NThen quietly, Åsa left.
END
    burn exact "$folder/cue.srt" 1000 "$width" "$height" exact
    burn natural "$folder/cue.srt" 1000 "$width" "$height" natural
    frame "$width" "$height" | "$build/environment/run" ffmpeg -nostdin -v error -y -f rawvideo -pix_fmt rgb24 -s $size \
        -i - -vf "subtitles=$folder/cue.ass" "$folder/libass.png"
    crop="crop=$((height / 15 + 90)):$((height * 13 / 100)):$((width / 2 - 60)):$((height * 78 / 100)),scale=4*iw:4*ih:flags=neighbor"
    join hstack "look-$height" "$crop" exact natural libass
done

sed 's/^She said.*/The yellow text of a disc,/; s/^Then.*/with its outline/' "$folder/cue.srt" >"$folder/disc.srt"
"$build/environment/run" scripts/make-vobsub.sh "$folder/disc.srt" "$folder/disc.idx"
sed -i 's/^palette: 303030, f0f0f0/palette: 101010, f0e020/' "$folder/disc.idx"
burn discexact "$folder/disc.idx" 1000 1280 720 exact
burn discnatural "$folder/disc.idx" 1000 1280 720 natural
join vstack look-disc "crop=640:140:320:560" discexact discnatural

cat >"$folder/lines.srt" <<'END'
00:00:00,000 --> 00:00:05,000
Five lines
of one cue
stand on the place
of the lower edge
of two.

00:00:06,000 --> 00:00:09,000
The first in the file lies lowest,

00:00:06,000 --> 00:00:09,000
and what overlaps it
lies above.
END
burn fiveexact "$folder/lines.srt" 1000 854 480 exact
burn five "$folder/lines.srt" 1000 854 480 natural
join vstack look-lines "crop=640:300:107:180" fiveexact five
burn twoexact "$folder/lines.srt" 7000 854 480 exact
burn two "$folder/lines.srt" 7000 854 480 natural
join vstack look-cues "crop=640:200:107:280" twoexact two
