#!/bin/sh
# Makes a clip of 16 seconds, 1920x1080: a pan across hills at dusk, with the sound of wind.
# usage: make-clip.sh OUTPUT
set -eu
output=$1
still=$(mktemp --suffix=.png)
trap 'rm -f "$still"' EXIT

# Ridges from far to near. Each hides those behind it; nearer ones are darker.
ridge1='790-70*sin(X/230)-36*sin(X/97+1)-11*sin(X/31)'
ridge2='890-76*sin(X/290+2)-40*sin(X/113+0.5)-12*sin(X/37+2)'
ridge3='1000-64*sin(X/350+4)-30*sin(X/131+1)-9*sin(X/29)'
ridge4='1120-46*sin(X/430+1)-20*sin(X/71+3)-5*sin(X/17)'
sun='hypot(X-1500,Y-600)'

# channel SKY GLOW DISC FAR NEAR: prints a colour channel, whose ridges range from FAR to NEAR, with mist at their feet
channel() {
    far=$4
    near=$5
    step="($far-$near)/3"
    printf '%s' "if(gt(Y,$ridge4),$near,\
if(gt(Y,$ridge3),$near+$step+0.10*(Y-($ridge3)),\
if(gt(Y,$ridge2),$near+2*$step+0.14*(Y-($ridge2)),\
if(gt(Y,$ridge1),$far+0.18*(Y-($ridge1)),\
clip($1+$2*exp(-pow($sun/620,2))+$3*clip(74-$sun,0,1),0,255)))))"
}
red=$(channel '58+150*pow(Y/H,1.2)' 120 90 128 16)
green=$(channel '46+84*Y/H' 92 120 84 14)
blue=$(channel '96+46*sin(3*Y/H)-40*Y/H' 40 110 112 30)

ffmpeg -v error -y -f lavfi -i "color=s=2304x1296,format=gbrp,geq=r='$red':g='$green':b='$blue'" -frames:v 1 "$still"
ffmpeg -v error -y -loop 1 -framerate 25 -i "$still" -f lavfi -i 'anoisesrc=c=brown:a=0.08:r=48000' -t 16 \
    -vf "crop=1920:1080:x='192+192*sin(2*PI*t/32-PI/2)':y=170,format=yuv420p" \
    -colorspace bt709 -color_primaries bt709 -color_trc bt709 -color_range tv \
    -c:v libx264 -preset veryfast -crf 18 -c:a aac -b:a 96k -metadata title='Dusk' "$output"
