#!/bin/sh
# Makes small AVI clips with several independent muxers, and beside each one CLIP.json: what ffprobe lists of its streams
# and packets. Tests compare the reader's chunk lists with those listings.
#
#     make_clips.sh FOLDER
#
# Needs ffmpeg and ffprobe (package ffmpeg), lqt_transcode (quicktime-utils), dvgrab, mencoder. FOLDER is filled once; a
# further call does nothing unless this script has changed.
set -eu

out=${1:?usage: make_clips.sh FOLDER}
case $out in
    /*) ;;
    *) out=$PWD/$out ;;
esac
stamp=$(cksum < "$0" | cut -d' ' -f1)
mkdir -p "$(dirname "$out")"
exec 9> "$out.lock"
flock 9 # several builds share one folder
if [ -f "$out/complete-$stamp" ]; then
    exit 0
fi
for tool in ffmpeg ffprobe lqt_transcode dvgrab mencoder; do
    command -v "$tool" > /dev/null || { echo "make_clips.sh: $tool is not installed" >&2; exit 1; }
done

# No tool is to ask anybody, or to wait for anything but its own work.
exec < /dev/null
started=$(date +%s)
made() {
    echo "$(($(date +%s) - started)) s: $1"
}

# attempt CLIP SECONDS COMMAND...: a program that may hang or fail for reasons of its own (dvgrab's threads sometimes wait for
# each other for ever). What it could not make is listed in not_made.txt, and the tests that read the clips report it.
attempt() {
    clip=$1
    seconds=$2
    shift 2
    for try in 1 2 3 4 5; do
        if timeout -k 5 "$seconds" "$@" > "$work/$clip.log" 2>&1; then
            rm -f "$work/$clip.log"
            return 0
        fi
        echo "attempt $try to make $clip failed: $*"
        tail -n 5 "$work/$clip.log"
    done
    echo "$clip" >> "$work/not_made.txt"
    rm -f "$work/$clip"
    return 1
}

# Made aside and moved into place at the end: an interrupted run leaves nothing that looks complete.
work=$out.making
rm -rf "$work"
mkdir -p "$work"
cd "$work"
mkdir source

ff() {
    ffmpeg -nostdin -v error -y "$@"
}
# Moving pictures: size, rate, seconds.
pictures() {
    echo "-f lavfi -i testsrc=size=$1:rate=$2:duration=$3"
}
tone() {
    echo "-f lavfi -i sine=frequency=440:sample_rate=$1:duration=$2"
}

# Sets fccHandler and biCompression of the video stream. Both stand at fixed distances from codes that headers hold first.
patch_code() {
    for place in vids:4 strf:24; do
        at=$(LC_ALL=C grep -abo -m1 "${place%:*}" "$1" | head -n1 | cut -d: -f1)
        printf '%s' "$2" | dd of="$1" bs=1 seek=$((at + ${place#*:})) conv=notrunc status=none
    done
}

# Raw pictures in each layout under each code, as ffmpeg muxes them: legacy index, no OpenDML.
raw() {
    # shellcheck disable=SC2046
    ff $(pictures 36x22 25 0.2) $(tone 48000 0.2) -c:v rawvideo -strict unofficial -pix_fmt "$2" -vtag "$1" \
        -c:a pcm_s16le -ac 2 "raw_$1.avi"
}
raw O8RA gbrap
raw O8RG gbrp
raw O8YA yuva444p
raw O8Y4 yuv444p
raw O8Y2 yuv422p
raw O8Y0 yuv420p
raw O8G0 gray
raw O0RA gbrap10le
raw O0RG gbrp10le
raw O0Y4 yuv444p10le
raw O0Y2 yuv422p10le
raw O0Y0 yuv420p10le
raw O0G0 gray10le
raw O2RA gbrap12le
raw O2RG gbrp12le
raw O4RG gbrp14le

# Payloads of varying, often odd size, and formats with bytes behind the fixed header.
coded() {
    # shellcheck disable=SC2046
    ff $(pictures 33x27 25 0.4) -c:v "$1" -strict unofficial -pix_fmt "$2" -vtag O8RG "coded_$1.avi"
}
coded huffyuv rgb24
coded ffvhuff gbrp
coded mjpeg yuvj444p

# Repeated frames: zero-byte chunks.
# shellcheck disable=SC2046
ff $(pictures 32x24 25 1.2) $(tone 44100 1.2) -vf "select='not(mod(n\,3))'" -fps_mode passthrough -c:v rawvideo \
    -strict unofficial -pix_fmt yuv420p -vtag O8Y0 -c:a pcm_s16le repeated.avi

# Sound: sample formats, rates, channels, several streams, none.
sound() {
    name=$1
    codec=$2
    channels=$3
    rate=$4
    # shellcheck disable=SC2046
    ff $(pictures 32x24 25 0.4) $(tone "$rate" 0.4) -c:v rawvideo -strict unofficial -pix_fmt gray -vtag O8G0 \
        -c:a "$codec" -ac "$channels" "sound_$name.avi"
}
sound u8_mono pcm_u8 1 22050
sound s16_stereo pcm_s16le 2 44100
sound s24_stereo pcm_s24le 2 48000
sound s32_stereo pcm_s32le 2 96000
sound f32_stereo pcm_f32le 2 48000
sound s16_six pcm_s16le 6 48000
# shellcheck disable=SC2046
ff $(pictures 32x24 25 0.4) $(tone 48000 0.4) $(tone 32000 0.3) $(tone 8000 0.4) -map 0 -map 1 -map 2 -map 3 -c:v rawvideo \
    -strict unofficial -pix_fmt gray -vtag O8G0 -c:a pcm_s16le sound_three.avi
# shellcheck disable=SC2046
ff $(pictures 32x24 25 0.4) -c:v rawvideo -strict unofficial -pix_fmt gray -vtag O8G0 sound_none.avi
# shellcheck disable=SC2046
ff $(pictures 32x24 25 0.4) $(tone 48000 0.4) -map 1 -map 0 -c:v rawvideo -strict unofficial -pix_fmt gray -vtag O8G0 \
    -c:a pcm_s16le sound_first.avi

# Frame rates, from time-lapse to slow motion.
for rate in 1/200 15/2 24000/1001 24 25 30000/1001 30 50 60000/1001 60 240; do
    ff -f lavfi -i "testsrc=size=32x24:rate=$rate" -frames:v 4 -c:v rawvideo -strict unofficial -pix_fmt gray -vtag O8G0 \
        "rate_$(echo "$rate" | tr / _).avi"
done

made "clips by ffmpeg"

# OpenDML by others. Their codes are set afterwards, because they know only their own codecs.
# shellcheck disable=SC2046
ff $(pictures 64x48 25 0.8) $(tone 48000 0.8) -c:v rawvideo -pix_fmt rgb24 -c:a pcm_s16le source/plain.mov
if attempt opendml_lqt.avi 20 lqt_transcode -f avi_odml -vc raw -ac sowt source/plain.mov opendml_lqt.avi; then
    patch_code opendml_lqt.avi O8RG
fi
made "OpenDML by lqt_transcode"

# shellcheck disable=SC2046
ff $(pictures 720x576 25 0.4) $(tone 48000 0.4) -ac 2 -target pal-dv source/dv.dv
# It may also end before it has written all it read.
# shellcheck disable=SC2016
if attempt opendml_dvgrab.avi 10 sh -c 'rm -f source/dv-*.avi
    dvgrab -format dv2 -opendml -size 0 -input source/dv.dv source/dv- &&
    ffprobe -v error -count_packets -select_streams v -show_entries stream=nb_read_packets -of csv=p=0 source/dv-001.avi |
        grep -qx 10'; then
    mv source/dv-001.avi opendml_dvgrab.avi
    patch_code opendml_dvgrab.avi O8Y0
fi
made "OpenDML by dvgrab"

# mencoder repeats frames as zero-byte chunks when the output is faster.
# shellcheck disable=SC2046
ff $(pictures 64x48 25 0.8) $(tone 48000 0.8) -c:v rawvideo -pix_fmt yuv420p -c:a pcm_s16le source/plain.avi
attempt mencoder.avi 20 mencoder source/plain.avi -of avi -ovc raw -ffourcc O8Y0 -oac pcm -o mencoder.avi || true
attempt mencoder_repeated.avi 20 mencoder source/plain.avi -of avi -ovc raw -ffourcc O8Y0 -oac pcm -ofps 50 \
    -o mencoder_repeated.avi || true
made "clips by mencoder"

# Large enough for ffmpeg to go on in a second RIFF form, which needs more than 1 GiB.
attempt opendml_ffmpeg_large.avi 150 ffmpeg -nostdin -v error -y -f lavfi -i color=black:size=1920x1080:rate=25 -frames:v 180 \
    -c:v rawvideo -strict unofficial -pix_fmt gbrp -vtag O8RG opendml_ffmpeg_large.avi || true
made "large OpenDML by ffmpeg"

rm -rf source
for clip in *.avi; do
    ffprobe -v error -show_streams -show_packets -of json "$clip" > "$clip.json"
done
made "listings of their packets"

cd /
rm -rf "$out"
mv "$work" "$out"
: > "$out/complete-$stamp"
