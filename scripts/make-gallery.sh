#!/bin/sh
# Makes the pictures of docs/gallery.md in docs/gallery/, from the demo's clip. Run demo.sh first.
# usage: make-gallery.sh
#   SUBBURN: environment variable, program to use instead of build/bin/subburn
set -eu
cd "$(dirname "$0")/.."
subburn=$(realpath "${SUBBURN:-build/bin/subburn}")
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
mkdir -p docs/gallery
rm -f docs/gallery/*

# clip SIZE: makes the demo's clip in another size, with one frame per second
clip() {
    [ -f "$folder/$1.mkv" ] || ffmpeg -nostdin -v error -i demo/dusk.mp4 -an -r 1 -vf "scale=$1:flags=lanczos" \
        -c:v libx264 -preset veryfast -crf 10 "$folder/$1.mkv"
}

# picture NAME SIZE OPTIONS...: makes a picture of the frame at second 2 with a subtitle
picture() {
    name=$1
    size=$2
    shift 2
    clip "$size"
    build/environment/run "$subburn" --overwrite --quiet "$@" --snapshot 2 "$folder/$size.mkv" "$folder/picture.png"
    ffmpeg -nostdin -v error -y -i "$folder/picture.png" -pix_fmt yuvj444p -q:v 3 "docs/gallery/$name.jpg"
}

# cue NAME TEXT: writes a SubRip file with one cue
cue() {
    printf '1\n00:00:01,000 --> 00:00:05,000\n%b\n' "$2" >"$folder/$1.srt"
}

cue plain 'The hills are quiet,\nand the light goes slowly.'
small=960x540

for size in 854x480 1280x720 1920x1080 3840x2160; do
    picture "size-$size" "$size" --subtitles "$folder/plain.srt"
done

# Formats.
picture format-srt $small --subtitles "$folder/plain.srt"
picture format-ass $small --subtitles scripts/demo.ass
build/environment/run scripts/make-vobsub.sh "$folder/plain.srt" "$folder/disc.idx"
picture format-vobsub $small --subtitles "$folder/disc.idx"
ffmpeg -nostdin -v error -i "$folder/plain.srt" -c:s webvtt "$folder/plain.vtt"
picture format-webvtt $small --subtitles "$folder/plain.vtt"
ffmpeg -nostdin -v error -i "$folder/$small.mkv" -i "$folder/plain.srt" -map 0 -map 1 -c:v copy -c:s mov_text "$folder/film.mp4"
picture format-mp4 $small --subtitles "$folder/film.mp4"
ffmpeg -nostdin -v error -i "$folder/$small.mkv" -i scripts/demo.ass -map 0 -map 1 -c copy "$folder/film.mkv"
picture format-matroska $small --subtitles "$folder/film.mkv"

# Scripts.
cue cyrillic 'Солнце село за холмы,\nи свет уходит.'
cue greek 'Ο ήλιος έδυσε πίσω\nαπό τους λόφους.'
cue arabic 'الشمس تغيب خلف التلال\nوالمساء هادئ'
cue hebrew 'השמש שקעה מאחורי הגבעות,\nוהערב שקט.'
cue chinese '夕阳无限好，\n只是近黄昏。'
cue japanese '山は暮れて\n野は黄昏の薄かな'
cue korean '해가 언덕 너머로 지고\n저녁은 고요하다.'
cue emoji 'Good night 🌙\nand sleep well 🦉'
for script in cyrillic greek arabic hebrew chinese japanese korean emoji; do
    picture "script-$script" $small --subtitles "$folder/$script.srt"
done

# Settings, one at a time.
plain="--subtitles $folder/plain.srt"
# shellcheck disable=SC2086 # $plain is several words
{
    picture set-font $small $plain --font 'DejaVu Serif'
    picture set-size $small $plain --size 44
    picture set-bold $small $plain --bold
    picture set-italic $small $plain --italic
    picture set-color $small $plain --color gold
    picture set-outline $small $plain --color '#202020' --outline-color white
    picture set-outline-hidden $small $plain --outline-color black
    picture set-opacity $small $plain --opacity 150
    picture set-position $small $plain --position 12
}

# Lines wider than the frame are wrapped.
cue long 'A line that is far too long for the frame that it is to be shown in is wrapped between its words, and all lines of it are centred.'
picture wrapped $small --subtitles "$folder/long.srt"
