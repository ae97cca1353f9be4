#!/bin/sh
# Makes, in the folder given, small clips of every coded type with every kind of sound, and beside each the list of hashes
# that ffmpeg makes of the same pictures, which it knows by no code in AVI files, and of the clip's own sound:
#   NAME.avi            the clip
#   NAME.avi.framemd5   the list of "ffmpeg -f framemd5"
#   clips.txt           NAME TAG PIXEL-FORMAT, one line a clip
set -eu
out="$1"
making="$out.making"
mkdir -p "$(dirname "$out")"
exec 9>"$out.lock"
flock 9 # several builds share one folder
[ ! -e "$out/clips.txt" ] || exit 0
rm -rf "$making"
mkdir -p "$making"

# clip NAME TAG PIXEL-FORMAT SIZE RATE SAMPLES CHANNELS CHUNK-FRAMES
clip() {
    pictures="-f rawvideo -pix_fmt $3 -video_size $4 -framerate $5 -i $making/planar.raw"
    ffmpeg -nostdin -v error -y -f lavfi \
        -i "testsrc2=size=128x96:rate=$5,format=gbrp,noise=alls=60:allf=t:all_seed=7,crop=${4%x*}:${4#*x}:8:8:exact=1" \
        -t 0.15 -f rawvideo -pix_fmt "$3" "$making/planar.raw"
    # shellcheck disable=SC2086 # words on purpose
    ffmpeg -nostdin -v error -y $pictures \
        -f lavfi -i "aevalsrc=0.5*sin(2*PI*440*t)+0.4*(random(1)-0.5)|0.3*(random(2)-0.5):s=48000:c=stereo" \
        -af "asetnsamples=n=$8:p=0" -t 0.15 -c:v rawvideo -strict unofficial -vtag "$2" -c:a "$6" -ac "$7" "$making/$1.avi"
    # shellcheck disable=SC2086
    ffmpeg -nostdin -v error -y $pictures -i "$making/$1.avi" -map 0:v -map 1:a -vf setsar=1 -c:v rawvideo -c:a "$6" \
        -f framemd5 "$making/$1.avi.framemd5"
    echo "$1 $2 $3" >>"$making/clips.tmp"
}

i=0
for type in O8RG:gbrp O8RA:gbrap O8Y4:yuv444p O8YA:yuva444p O8Y2:yuv422p O8Y0:yuv420p O8G0:gray O0RG:gbrp10le \
    O0RA:gbrap10le O0Y2:yuv422p10le O0Y0:yuv420p10le O0G0:gray10le O2RG:gbrp12le O2RA:gbrap12le O4RG:gbrp14le; do
    case $((i % 5)) in
        0) sound="pcm_s16le 2 1601" ;; 1) sound="pcm_s24le 2 1024" ;; 2) sound="pcm_f32le 2 777" ;;
        3) sound="pcm_u8 1 900" ;; 4) sound="pcm_s16le 1 3000" ;;
    esac
    # shellcheck disable=SC2086 # words on purpose
    clip "${type%%:*}" "${type%%:*}" "${type##*:}" 33x17 25 $sound
    i=$((i + 1))
done
clip ntsc O8Y2 yuv422p 32x18 30000/1001 pcm_s16le 2 1601
clip half O8G0 gray 1x1 15/2 pcm_s16le 1 1024
clip even O0Y2 yuv422p10le 48x16 60 pcm_s24le 2 800
rm -f "$making/planar.raw"
mv "$making/clips.tmp" "$making/clips.txt"
rm -rf "$out"
mv "$making" "$out"
