#!/bin/sh
# Makes, in the folder given, clips of two independent muxers with every kind of sound, and beside each what ffmpeg itself
# extracts from it:
#   NAME.avi          the clip
#   NAME.N.pcm        the bytes of its audio stream number N (from 0), as coded
#   clips.txt         NAME STREAM SAMPLE-KIND CHANNELS RATE CHANNEL-MASK(hex; 0 = none), one line a stream
# SAMPLE-KIND is u8, s16, s24, s32 or f32.
set -eu
out="$1"
mkdir -p "$out"
: >"$out/clips.tmp"

# A sound in which every channel differs and every sample counts: tones with a hash of noise on top.
# sound CHANNELS RATE SECONDS SEED LAYOUT
sound() {
    expressions=""
    c=0
    while [ "$c" -lt "$1" ]; do
        expressions="$expressions${expressions:+|}0.5*sin(2*PI*$((110 * (c + 1)))*t)+0.4*(random($((c + $4)))-0.5)"
        c=$((c + 1))
    done
    echo "aevalsrc=exprs=$expressions:s=$2:d=$3:c=$5"
}

# extract NAME STREAM KIND: ffmpeg's own reading of the stream.
extract() {
    case "$3" in u8) f=u8 c=pcm_u8 ;; s16) f=s16le c=pcm_s16le ;; s24) f=s24le c=pcm_s24le ;;
        s32) f=s32le c=pcm_s32le ;; f32) f=f32le c=pcm_f32le ;; esac
    ffmpeg -nostdin -v error -y -i "$out/$1.avi" -map "0:a:$2" -c:a "$c" -f "$f" "$out/$1.$2.pcm"
}

video="testsrc2=size=32x16:rate=25:duration=1.2"
coder() { case "$1" in u8) echo pcm_u8 ;; f32) echo pcm_f32le ;; *) echo "pcm_${1}le" ;; esac; }

# one KIND CHANNELS RATE LAYOUT MASK CHUNK-FRAMES: a clip with one stream, in chunks of that many sample frames.
one() {
    name="$1-$2ch-$3"
    ffmpeg -nostdin -v error -y -f lavfi -i "$video" -f lavfi -i "$(sound "$2" "$3" 1.2 3 "$4")" \
        -af "asetnsamples=n=$6:p=0" -c:v rawvideo -strict unofficial -pix_fmt gbrp -vtag O8RG \
        -c:a "$(coder "$1")" "$out/$name.avi"
    extract "$name" 0 "$1"
    echo "$name 0 $1 $2 $3 $5" >>"$out/clips.tmp"
}

one u8 1 8000 mono 0 333
one u8 2 22050 stereo 0 777
one s16 1 44100 mono 0 1024
one s16 2 48000 stereo 0 1601
one s16 6 48000 5.1 3f 911
one s24 2 48000 stereo 3 1920
one s24 3 48000 2.1 b 500
one s32 2 96000 stereo 3 4001
one s32 4 48000 4.0 107 1234
one f32 1 48000 mono 4 1000
one f32 2 44100 stereo 3 1471
one f32 6 48000 "5.1(side)" 60f 1024
one f32 8 48000 7.1 63f 1777

# Several streams of different kinds in one file.
ffmpeg -nostdin -v error -y -f lavfi -i "$video" \
    -f lavfi -i "$(sound 2 48000 1.2 11 stereo)" -f lavfi -i "$(sound 1 44100 0.7 12 mono)" \
    -f lavfi -i "$(sound 6 48000 1.2 13 5.1)" -map 0:v -map 1:a -map 2:a -map 3:a \
    -c:v rawvideo -strict unofficial -pix_fmt gbrp -vtag O8RG \
    -c:a:0 pcm_s16le -c:a:1 pcm_u8 -c:a:2 pcm_f32le "$out/several.avi"
extract several 0 s16; extract several 1 u8; extract several 2 f32
{ echo "several 0 s16 2 48000 0"; echo "several 1 u8 1 44100 0"; echo "several 2 f32 6 48000 3f"; } >>"$out/clips.tmp"

# The other muxer: MPlayer's encoder, from pictures and sound of ours.
ffmpeg -nostdin -v error -y -f lavfi -i "$video" -f lavfi -i "$(sound 2 48000 1.2 21 stereo)" \
    -c:v rawvideo -pix_fmt yuv420p -c:a pcm_s16le "$out/source.avi"
mencoder -really-quiet "$out/source.avi" -ovc raw -vf format=i420 -ffourcc O8Y0 -oac pcm -o "$out/mencoder.avi" \
    >/dev/null 2>&1
extract mencoder 0 s16
echo "mencoder 0 s16 2 48000 0" >>"$out/clips.tmp"

# OpenDML, from a third: libquicktime writes the old format code, which is replaced by ours.
lqt_transcode -f avi_odml -vc raw -ac sowt "$out/source.avi" "$out/opendml.avi" >/dev/null 2>&1
python3 - "$out/opendml.avi" <<'PY'
import sys
path = sys.argv[1]
data = bytearray(open(path, "rb").read())
strh = data.index(b"vids")
strf = data.index(b"strf", strh)
data[strh + 4:strh + 8] = b"O8RG"            # fccHandler
data[strf + 8 + 16:strf + 8 + 20] = b"O8RG"  # biCompression
open(path, "wb").write(data)
PY
extract opendml 0 s16
echo "opendml 0 s16 2 48000 0" >>"$out/clips.tmp"

# Sound that is not PCM, alone and beside PCM.
for codec in libmp3lame ac3; do
    ffmpeg -nostdin -v error -y -f lavfi -i "$video" -f lavfi -i "$(sound 2 48000 1.2 31 stereo)" \
        -c:v rawvideo -strict unofficial -pix_fmt gbrp -vtag O8RG -c:a "$codec" "$out/compressed-$codec.avi"
done
ffmpeg -nostdin -v error -y -f lavfi -i "$video" -f lavfi -i "$(sound 2 48000 1.2 32 stereo)" \
    -map 0:v -map 1:a -map 1:a -c:v rawvideo -strict unofficial -pix_fmt gbrp -vtag O8RG \
    -c:a:0 ac3 -c:a:1 pcm_s16le "$out/compressed-first.avi"
extract compressed-first 1 s16
rm -f "$out/source.avi"
mv "$out/clips.tmp" "$out/clips.txt"
