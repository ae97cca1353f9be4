#!/bin/sh
# Clips that ffmpeg has muxed, for our own plug-in to be validated with. Nothing to do when they are there.
#
#   make_clips.sh FOLDER    rgb-8bit.avi, yuv422-10bit.avi, yuv420-8bit.avi, and sound-8bit.avi with 8-bit sound
set -eu
clips="$1"
[ -e "$clips/made" ] && exit 0
mkdir -p "$clips"

# make_clip NAME TAG PIXEL-FORMAT SOUND-CODER
make_clip() {
    ffmpeg -nostdin -v error -y -f lavfi -i "testsrc2=size=192x108:rate=25:duration=1" \
        -f lavfi -i "aevalsrc=exprs=0.5*sin(2*PI*440*t)|0.5*sin(2*PI*660*t):s=48000:d=1" \
        -c:v rawvideo -strict unofficial -pix_fmt "$3" -vtag "$2" -c:a "$4" "$clips/$1.avi"
}
make_clip rgb-8bit O8RG gbrp pcm_s16le
make_clip yuv422-10bit O0Y2 yuv422p10le pcm_f32le
make_clip yuv420-8bit O8Y0 yuv420p pcm_s24le
make_clip sound-8bit O8RG gbrp pcm_u8
touch "$clips/made"
