#!/bin/sh
# Makes docs/hdr-unmapped.png and docs/hdr-mapped.png: a PQ frame with white text at 10,000 cd/m2 and at 203, both
# tone-mapped to standard range in the same way. Run demo.sh first.
# usage: make-hdr-pictures.sh
#   BUILD: environment variable, build folder to use instead of build
set -eu
cd "$(dirname "$0")/.."
build=${BUILD:-build}
size=960x540
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cmake --build "$build" --target subtitleframe >/dev/null

# A frame of the demo's clip, with white at 203 cd/m2, and the sun, which is clipped in standard range, at 1,600.
ffmpeg -nostdin -v error -ss 2 -i demo/dusk.mp4 -frames:v 1 -vf "scale=$size:flags=area,\
zscale=matrixin=709:transferin=709:primariesin=709:rangein=limited:transfer=linear:npl=203,format=gbrpf32le,\
geq=r='r(X,Y)*(1+7*pow(r(X,Y),4))':g='g(X,Y)*(1+7*pow(r(X,Y),4))':b='b(X,Y)*(1+7*pow(r(X,Y),4))',\
zscale=matrix=2020_ncl:transfer=smpte2084:primaries=2020:range=limited:npl=203,format=yuv420p10le" \
    -f rawvideo "$folder/frame.yuv"

printf '00:00:00,000 --> 00:00:05,000\nThe hills are quiet,\nand the light goes slowly.\n' >"$folder/cue.srt"

# picture NAME TRANSFER: makes a picture that shows what the frame with the subtitle looks like: a tenth of the light is
# scattered, as in an eye, and 10,000 cd/m2 becomes white.
picture() {
    "$build/environment/run" scripts/burn-frame.py "$build/bin/libsubtitleframe.so" "$folder/cue.srt" 2000 \
        ${size%x*} ${size#*x} "$2" <"$folder/frame.yuv" >"$folder/burnt.yuv"
    ffmpeg -nostdin -v error -y -f rawvideo -pix_fmt yuv420p10le -s $size -i "$folder/burnt.yuv" -filter_complex "\
setparams=range=tv:color_primaries=bt2020:color_trc=smpte2084:colorspace=bt2020nc,\
zscale=transfer=linear:npl=100,format=gbrpf32le,\
split=3[seen][near][far];[near]gblur=sigma=7[near];[far]gblur=sigma=40[far];\
[near][far]blend=all_expr='0.6*A+0.4*B'[scattered];[seen][scattered]blend=all_expr='0.9*A+0.1*B',\
zscale=primaries=709,tonemap=reinhard:param=0.45:desat=0:peak=100,zscale=transfer=iec61966-2-1:dither=none,format=rgb24" \
        -frames:v 1 -compression_level 100 "docs/$1.png"
}
picture hdr-unmapped 0
picture hdr-mapped 16
