#!/bin/sh
# The main job, start to finish: builds the plug-in, opens a clip through it as the host does, and writes its pictures
# and its sound to demo-out/.
#
#   ./demo.sh             makes four clips with ffmpeg and shows each
#   ./demo.sh FILE.avi    shows that clip
#
# The first run takes about 10 minutes on 2 cores, most of them for the packages it installs; later ones less than one.
# Only folders that an earlier run has made are replaced.
set -eu
script="$(realpath "$0")"
root="$(dirname "$script")"
. "$root/scripts/common.sh"
help_or_go_on "$@"
[ $# -le 1 ] || wrong_usage "demo.sh: one clip at most"

out="$root/demo-out"
made_mark=".made-by-demo"   # lies in each folder that this script has made, and may therefore replace

clip=""
if [ $# -eq 1 ]; then
    [ -e "$1" ] || { echo "demo.sh: there is no file $1" >&2; exit 1; }
    [ -f "$1" ] || { echo "demo.sh: $1 is no file; name one AVI clip" >&2; exit 1; }
    [ -r "$1" ] || { echo "demo.sh: $1 cannot be read" >&2; exit 1; }
    clip="$(realpath "$1")"
fi

# results_of CLIP: the folder of a clip's results.
results_of() {
    name="$(basename "$1")"
    echo "$out/${name%.[aA][vV][iI]}"
}

# check_results CLIP: nothing of the user's may lie where the results go.
check_results() {
    dir="$(results_of "$1")"
    [ -e "$dir" ] || return 0
    [ -f "$dir/$made_mark" ] || {
        echo "demo.sh: the results would replace $dir, which no earlier run has made; move it away first" >&2; exit 1; }
    case "$1" in
        "$dir"/*) echo "demo.sh: $1 lies in the folder that its results would replace; move it first" >&2; exit 1 ;;
    esac
}
[ -z "$clip" ] || check_results "$clip"

cd "$root"
scripts/install-packages.sh

mkdir -p build
cmake --preset windows-clang >build/demo-configure.log || { cat build/demo-configure.log; exit 1; }
build_with_progress build/demo-build.log "Build of the plug-in and the tool (3 minutes at first)" \
    cmake --build --preset windows-clang -j "$(nproc)" --target ImporterOrvantis orvantis_common64 importer_host

host="build/windows-clang/wine-run build/windows-clang/bin/importer_host.exe"

# make_clip NAME TAG PIXEL-FORMAT AUDIO-ARGUMENTS...: two seconds of a moving test picture and a tone.
make_clip() {
    name="$1"; tag="$2"; pixels="$3"; shift 3
    ffmpeg -v error -y -f lavfi -i "testsrc2=size=480x270:rate=25:duration=2" "$@" -shortest \
        -c:v rawvideo -strict unofficial -pix_fmt "$pixels" -vtag "$tag" "$out/clips/$name.avi"
}

# show FILE: everything the plug-in says of one clip, two dozen of its frames, a contact sheet, its sound, how the
# asynchronous importer plays it when host and codec each need 4 ms for a frame, and a page with all of it.
show() {
    check_results "$1"
    dir="$(results_of "$1")"
    rm -rf "$dir"
    mkdir -p "$dir"
    : >"$dir/$made_mark"
    echo "== $(basename "$1")"
    $host info "$1" >"$dir/info.txt" || { cat "$dir/info.txt"; return 1; }
    sed -n '/^file:/,$p' "$dir/info.txt"
    frames="$(sed -n 's/^ *frames: //p' "$dir/info.txt" | head -n 1)"
    if [ "${frames:-0}" -gt 0 ]; then
        last=$((frames - 1))
        $host frames "$1" --range "0:$last:$((frames / 24 + 1))" --out "$dir/frames" --sheet "$dir/contact-sheet.png"
        $host async "$1" --range "0:$((last < 199 ? last : 199))" --ahead 8 --work-us 4000 --decode-us 4000
    fi
    if grep -q '^ *sampleFrames:' "$dir/info.txt"; then
        $host audio "$1" --stream 0 --out "$dir/sound.wav" --waveform "$dir/waveform.png"
    fi
    $host report "$1" --out "$dir" >/dev/null
    pages="$pages  $dir/$(basename "$1").html
"
}
pages=""

if [ -n "$clip" ]; then
    show "$clip"
else
    echo "== Clips"
    mkdir -p "$out/clips"
    stereo="-f lavfi -i aevalsrc=exprs=0.5*sin(2*PI*440*t)|0.5*sin(2*PI*660*t):s=48000:d=2"
    six="-f lavfi -i aevalsrc=exprs=0.4*sin(2*PI*220*t)|0.4*sin(2*PI*330*t)|0.4*sin(2*PI*440*t)|0.4*sin(2*PI*55*t)|0.4*sin(2*PI*550*t)|0.4*sin(2*PI*660*t):c=5.1:s=48000:d=2"
    # shellcheck disable=SC2086 # words on purpose
    {
        make_clip rgb-8bit O8RG gbrp $stereo -c:a pcm_s16le
        make_clip yuv422-8bit O8Y2 yuv422p $six -c:a pcm_s24le
        make_clip yuv422-10bit O0Y2 yuv422p10le $stereo -c:a pcm_f32le
        make_clip rgba-8bit O8RA gbrap $stereo -c:a pcm_u8 -vf "format=gbrap,geq=r='r(X,Y)':g='g(X,Y)':b='b(X,Y)':a='255*X/W'"
    }
    for each in rgb-8bit rgba-8bit yuv422-10bit yuv422-8bit; do show "$out/clips/$each.avi"; done
fi
echo "Pictures and sound are in $out/. Everything about a clip on one page:"
printf '%s' "$pages"
