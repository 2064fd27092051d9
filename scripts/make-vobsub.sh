#!/bin/sh
# Makes a VobSub pair for PAL, light grey with a dark grey outline, from the text of a SubRip file: authors DVD
# subtitles and extracts them. The file must be UTF-8, with cues in order of time.
# usage: make-vobsub.sh TEXT.srt OUTPUT.idx
set -eu
output=$2
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

sed '1s/^\xEF\xBB\xBF//' "$1" >"$folder/text.srt"
start=$(awk -F '[:, ]' '/-->/ { print (($1 * 60 + $2) * 60 + $3) * 1000 + $4; exit }' "$folder/text.srt")
length=$(awk -F '[:, ]' '/-->/ { end = ($6 * 60 + $7) * 60 + $8 } END { print end + 2 }' "$folder/text.srt")

# Named relative to the folder, since the folder's own path might contain special characters of XML.
ln -s "$(fc-match -f '%{file}' 'DejaVu Sans')" "$folder/font.ttf"
cat >"$folder/text.xml" <<'END'
<subpictures format="PAL"><stream>
  <textsub filename="text.srt" characterset="UTF-8" font="./font.ttf" fontsize="34"
    fill-color="rgba(240,240,240,255)" outline-color="rgba(48,48,48,255)" outline-thickness="2"
    horizontal-alignment="center" vertical-alignment="bottom" aspect="16:9"/>
</stream></subpictures>
END
ffmpeg -nostdin -v error -f lavfi -i "color=c=gray:s=720x576:r=25:d=$length" -target pal-dvd "$folder/video.mpg"
(cd "$folder" && spumux -m dvd text.xml <video.mpg >disc.mpg 2>log) || {
    cat "$folder/log" >&2
    exit 1
}

# A program stream has neither size nor palette, which a DVD stores elsewhere, so they are added here. spumux numbers
# the outline's colour 0 and the text's 1.
ffmpeg -nostdin -v error -i "$folder/disc.mpg" -map 0:s -c copy "$folder/bare.mkv"
mkvextract -q "$folder/bare.mkv" tracks "0:$folder/bare.idx"
black='000000, 000000, 000000, 000000, 000000, 000000, 000000'
sed -i "s/^langidx:/size: 720x576\npalette: 303030, f0f0f0, $black, $black\n&/" "$folder/bare.idx"

# Times in the stream begin with its first picture, so they are shifted to the first cue's.
mkvmerge -q -o "$folder/film.mkv" --sync "0:$start" --language 0:en "$folder/bare.idx"
mkvextract -q "$folder/film.mkv" tracks "0:$output"
