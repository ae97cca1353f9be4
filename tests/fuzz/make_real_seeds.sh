#!/bin/sh
# Adds a few tiny clips of a real muxer to the seeds: make_real_seeds.sh FOLDER (of make_seeds). Needs ffmpeg.
set -eu
out=${1:?usage: make_real_seeds.sh FOLDER}
ff() {
    ffmpeg -nostdin -v error -y -f lavfi -i testsrc=size=16x8:rate=25:duration=0.12 "$@"
}
raw() {
    tag=$1
    layout=$2
    shift 2
    for target in parse_fuzzer session_fuzzer rescue_fuzzer; do
        ff "$@" -c:v rawvideo -strict unofficial -pix_fmt "$layout" -vtag "$tag" -fflags +bitexact "$out/$target/real-$tag-$#.avi"
    done
}
raw O8Y2 yuv422p
raw O8RA gbrap
raw O0Y2 yuv422p10le
raw O8Y0 yuv420p -r 30000/1001
raw O8Y2 yuv422p -f lavfi -i sine=sample_rate=8000:duration=0.12 -c:a pcm_s16le -ac 2
raw O8G0 gray -f lavfi -i sine=sample_rate=8000:duration=0.12 -c:a pcm_f32le
raw O0RG gbrp10le -r 1/200 -frames:v 2
for target in parse_fuzzer session_fuzzer rescue_fuzzer; do
    ff -c:v mjpeg "$out/$target/real-foreign.avi"
    find "$out/$target" -name 'real-*' -size +20k -exec rm {} +
done
