#!/bin/sh
# Makes a gallery of frame sizes, formats, scripts and settings in demo/gallery/, from the demo's clip. Open index.html
# there with a browser. Run demo.sh first.
# usage: make-gallery.sh
#   SUBBURN: environment variable, program to use instead of build/bin/subburn
set -eu
cd "$(dirname "$0")/.."
subburn=$(realpath "${SUBBURN:-build/bin/subburn}")
gallery=demo/gallery
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
rm -rf $gallery
mkdir -p $gallery

# page HTML: adds a line to the page
page() {
    printf '%s\n' "$1" >>$gallery/index.html
}

# section TITLE TEXT
section() {
    page "<h2>$1</h2><p>$2</p>"
}

# clip SIZE: makes the demo's clip in another size, with one frame per second
clip() {
    [ -f "$folder/$1.mkv" ] || ffmpeg -nostdin -v error -i demo/dusk.mp4 -an -r 1 -vf "scale=$1:flags=lanczos" \
        -c:v libx264 -preset veryfast -crf 10 "$folder/$1.mkv"
}

# picture NAME SIZE CAPTION OPTIONS...: makes a picture of the frame at second 2 with a subtitle
picture() {
    name=$1
    size=$2
    caption=$3
    shift 3
    clip "$size"
    build/environment/run "$subburn" --overwrite --quiet "$@" --snapshot 2 "$folder/$size.mkv" "$folder/picture.png"
    ffmpeg -nostdin -v error -y -i "$folder/picture.png" -pix_fmt yuvj444p -q:v 3 "$gallery/$name.jpg"
    page "<figure><a href='$name.jpg'><img src='$name.jpg' alt=''></a><figcaption>$caption</figcaption></figure>"
}

# cue NAME TEXT: writes a SubRip file with one cue
cue() {
    printf '1\n00:00:01,000 --> 00:00:05,000\n%b\n' "$2" >"$folder/$1.srt"
}

cue plain 'The hills are quiet,\nand the light goes slowly.'
small=960x540
plain="--subtitles $folder/plain.srt"

page '<!DOCTYPE html><html lang="en"><meta charset="utf-8"><title>libsubtitle: gallery</title>'
page '<style>body{font-family:sans-serif;margin:2em auto;max-width:80em}figure{display:inline-block;width:47%;margin:1%}
img{width:100%}figcaption{margin-top:.3em}</style>'
page '<h1>Gallery</h1><p>Frames of the demo clip with subtitles, as <code>subburn</code> burns them.</p>'

# shellcheck disable=SC2086 # $plain is several words
{
    section 'Frame sizes' 'The same cue with default settings. Text and outline grow with the frame. Click a picture for its full size.'
    for size in 854x480 1280x720 1920x1080 3840x2160; do
        picture "size-$size" $size $size $plain
    done

    section 'Formats' 'Anything else that FFmpeg opens is read as well.'
    picture format-srt $small 'SubRip' $plain
    picture format-ass $small 'ASS; tags are removed' --subtitles scripts/demo.ass
    build/environment/run scripts/make-vobsub.sh "$folder/plain.srt" "$folder/disc.idx"
    picture format-vobsub $small 'VobSub: a picture of 720x576, as on the disc' --subtitles "$folder/disc.idx"
    ffmpeg -nostdin -v error -i "$folder/plain.srt" -c:s webvtt "$folder/plain.vtt"
    picture format-webvtt $small 'WebVTT' --subtitles "$folder/plain.vtt"
    ffmpeg -nostdin -v error -i "$folder/$small.mkv" -i "$folder/plain.srt" -map 0 -map 1 -c:v copy -c:s mov_text \
        "$folder/film.mp4"
    picture format-mp4 $small 'Text in MP4' --subtitles "$folder/film.mp4"
    ffmpeg -nostdin -v error -i "$folder/$small.mkv" -i scripts/demo.ass -map 0 -map 1 -c copy "$folder/film.mkv"
    picture format-matroska $small 'A script in Matroska' --subtitles "$folder/film.mkv"

    section 'Scripts' 'With the fonts of <code>scripts/install-packages.sh</code>. Characters that a font lacks are taken from others.'
    cue Cyrillic 'Солнце село за холмы,\nи свет уходит.'
    cue Greek 'Ο ήλιος έδυσε πίσω\nαπό τους λόφους.'
    cue Arabic 'الشمس تغيب خلف التلال\nوالمساء هادئ'
    cue Hebrew 'השמש שקעה מאחורי הגבעות,\nוהערב שקט.'
    cue Chinese '夕阳无限好，\n只是近黄昏。'
    cue Japanese '山は暮れて\n野は黄昏の薄かな'
    cue Korean '해가 언덕 너머로 지고\n저녁은 고요하다.'
    cue Emoji 'Good night 🌙\nand sleep well 🦉'
    for script in Cyrillic Greek Arabic Hebrew Chinese Japanese Korean Emoji; do
        picture "script-$script" $small $script --subtitles "$folder/$script.srt"
    done

    section 'Settings' 'One setting at a time.'
    picture set-font $small "<code>--font 'DejaVu Serif'</code>" $plain --font 'DejaVu Serif'
    picture set-size $small '<code>--size 44</code>' $plain --size 44
    picture set-bold $small '<code>--bold</code>' $plain --bold
    picture set-italic $small '<code>--italic</code>' $plain --italic
    picture set-color $small '<code>--color gold</code>' $plain --color gold
    picture set-outline $small "<code>--color '#202020' --outline-color white</code>" \
        $plain --color '#202020' --outline-color white
    picture set-outline-hidden $small '<code>--outline-color black</code>: pure black hides the outline' \
        $plain --outline-color black
    picture set-opacity $small '<code>--opacity 150</code>' $plain --opacity 150
    picture set-position $small '<code>--position 12</code>' $plain --position 12
    cue long 'A line that is far too long for the frame that it is to be shown in is wrapped between its words, and all lines of it are centred.'
    picture wrapped $small 'Lines wider than the frame are wrapped' --subtitles "$folder/long.srt"
    picture exact $small '<code>--exact</code>: the pixels of <code>ProcessSubtitleFrame()</code>' $plain --exact
}
echo "Open $gallery/index.html with a browser."
