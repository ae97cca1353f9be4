#!/bin/sh
# Makes, in the folder given, one clip with ffmpeg for every coded type and size, and beside each what ffmpeg itself makes
# of the same pictures in every layout that it shares with the host and that it reaches without loss:
#   NAME.avi            the clip
#   NAME.<format>.raw   its frames in a host layout, rows from the top, unpadded
#   NAME.planar.raw     its frames as the encoder was given them
#   clips.txt           NAME TAG WIDTH HEIGHT FRAMES, one line a clip
set -eu
out="$1"
frames=4
mkdir -p "$out"
: >"$out/clips.tmp"

# convert NAME WIDTH HEIGHT FROM TO HOST-FORMAT: unscaled, so that only the layout changes.
convert_layout() {
    ffmpeg -nostdin -v error -y -f rawvideo -pix_fmt "$4" -video_size "$2x$3" -i "$out/$1.planar.raw" \
        -sws_flags accurate_rnd+full_chroma_int -f rawvideo -pix_fmt "$5" "$out/$1.$6.raw"
}

# clip NAME TAG PIXEL-FORMAT WIDTH HEIGHT [TO:HOST-FORMAT ...]
clip() {
    name="$1"; tag="$2"; pixels="$3"; width="$4"; height="$5"; shift 5
    ffmpeg -nostdin -v error -y -f lavfi -i "testsrc2=size=128x96:rate=25,format=gbrp,noise=alls=60:allf=t:all_seed=7,crop=$width:$height:8:8:exact=1" \
        -frames:v "$frames" -f rawvideo -pix_fmt "$pixels" "$out/$name.planar.raw"
    ffmpeg -nostdin -v error -y -f rawvideo -pix_fmt "$pixels" -video_size "${width}x${height}" -framerate 25 \
        -i "$out/$name.planar.raw" -c:v rawvideo -strict unofficial -pix_fmt "$pixels" -vtag "$tag" "$out/$name.avi"
    for target in "$@"; do convert_layout "$name" "$width" "$height" "$pixels" "${target%%:*}" "${target##*:}"; done
    echo "$name $tag $width $height $frames" >>"$out/clips.tmp"
}

v210() { # NAME WIDTH HEIGHT
    ffmpeg -nostdin -v error -y -f rawvideo -pix_fmt yuv422p10le -video_size "$2x$3" -i "$out/$1.planar.raw" \
        -c:v v210 -f rawvideo "$out/$1.v210.raw"
    cp "$out/$1.v210.raw" "$out/$1.v211.raw"
}

for size in 96x54 33x17 1x1; do
    w="${size%x*}"; h="${size#*x}"
    # shellcheck disable=SC2086 # words on purpose
    {
        clip "rgb8-$size" O8RG gbrp "$w" "$h" bgra:bgra argb:argb
        clip "rgba8-$size" O8RA gbrap "$w" "$h" bgra:bgra argb:argb
        clip "yuv444-$size" O8Y4 yuv444p "$w" "$h"
        clip "yuva444-$size" O8YA yuva444p "$w" "$h"
        clip "grey8-$size" O8G0 gray "$w" "$h"
        clip "rgb10-$size" O0RG gbrp10le "$w" "$h"
        clip "rgba10-$size" O0RA gbrap10le "$w" "$h"
        clip "yuv444-10-$size" O0Y4 yuv444p10le "$w" "$h"
        clip "grey10-$size" O0G0 gray10le "$w" "$h"
        clip "rgb12-$size" O2RG gbrp12le "$w" "$h"
        clip "rgba12-$size" O2RA gbrap12le "$w" "$h"
        clip "rgb14-$size" O4RG gbrp14le "$w" "$h"
        clip "yuv420-10-$size" O0Y0 yuv420p10le "$w" "$h"
    }
    # ffmpeg's packed 4:2:2 layouts hold whole pairs of pixels, so its conversions serve for even widths.
    if [ $((w % 2)) -eq 0 ]; then
        packed="yuyv422:yuy2 yuyv422:yuy3 uyvy422:uyvy uyvy422:uyv7"
    else
        packed=""
    fi
    # shellcheck disable=SC2086
    clip "yuv422-$size" O8Y2 yuv422p "$w" "$h" $packed
    clip "yuv420-$size" O8Y0 yuv420p "$w" "$h"
    clip "yuv422-10-$size" O0Y2 yuv422p10le "$w" "$h"
    [ $((w % 6)) -ne 0 ] || v210 "yuv422-10-$size" "$w" "$h"
done
mv "$out/clips.tmp" "$out/clips.txt"
