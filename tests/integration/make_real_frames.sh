#!/bin/sh
# Makes, in the folder given, one clip with ffmpeg for every coded type and size, and beside each what ffmpeg itself makes
# of the same pictures in every layout that it shares with the host and that it reaches without loss:
#   NAME.avi            the clip
#   NAME.<format>.raw   its frames in a host layout, rows from the top, unpadded
#   NAME.planar.raw     its frames as the encoder was given them
#   clips.txt           NAME TAG WIDTH HEIGHT FRAMES, one line a clip
set -eu
mkdir -p "$1"
cd "$1"
out=.  # without blanks, since commands are put together from it
frames=4
: >"$out/clips.tmp"

# clip NAME TAG PIXEL-FORMAT WIDTH HEIGHT [TO:HOST-FORMAT ...]: converted unscaled, so that only the layout changes. All by one
# start of the program, which takes longer than its work.
clip() {
    name="$1"; tag="$2"; pixels="$3"; width="$4"; height="$5"; shift 5
    ffmpeg -nostdin -v error -y -f lavfi -i "testsrc2=size=128x96:rate=25,format=gbrp,noise=alls=60:allf=t:all_seed=7,crop=$width:$height:8:8:exact=1" \
        -frames:v "$frames" -f rawvideo -pix_fmt "$pixels" "$out/$name.planar.raw"
    conversions=""
    for target in "$@"; do
        case "$target" in v210:*) layout="-c:v v210" ;; *) layout="-pix_fmt ${target%%:*}" ;; esac
        conversions="$conversions -sws_flags accurate_rnd+full_chroma_int $layout -f rawvideo $out/$name.${target##*:}.raw"
    done
    # shellcheck disable=SC2086 # words on purpose
    ffmpeg -nostdin -v error -y -f rawvideo -pix_fmt "$pixels" -video_size "${width}x${height}" -framerate 25 \
        -i "$out/$name.planar.raw" -c:v rawvideo -strict unofficial -pix_fmt "$pixels" -vtag "$tag" "$out/$name.avi" $conversions
    echo "$name $tag $width $height $frames" >>"$out/clips.tmp"
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
    if [ $((w % 6)) -eq 0 ]; then words="v210:v210"; else words=""; fi
    # shellcheck disable=SC2086
    clip "yuv422-10-$size" O0Y2 yuv422p10le "$w" "$h" $words
    [ -z "$words" ] || cp "$out/yuv422-10-$size.v210.raw" "$out/yuv422-10-$size.v211.raw"
done
mv "$out/clips.tmp" "$out/clips.txt"
