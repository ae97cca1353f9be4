#!/bin/sh
# Nothing is reported of our own plug-in that is not true: `importer_host validate` at level 10 with many seeds, natively and
# under Wine, with clips of the tool's own making and with such that ffmpeg has muxed.
#
#   tests/museum/seeds.sh [SEEDS [FIRST]]    100 seeds from 1 on; a fifth of them with ffmpeg's clips
#
# Exit code 1 when a check failed that should not, or did not that should.
set -eu
script="$(realpath "$0")"
cd "$(dirname "$script")/../.."
. scripts/common.sh
help_or_go_on "$@"
[ $# -le 2 ] || wrong_usage "seeds.sh: too many words"
seeds="${1:-100}"
first="${2:-1}"
case "$seeds$first" in
    *[!0-9]* | 0*) wrong_usage "seeds.sh: no number of seeds: $*" ;;
esac

scripts/install-packages.sh
for preset in linux-quick windows-clang; do
    cmake --preset "$preset" >/dev/null
    cmake --build --preset "$preset" --target importer_host ImporterOrvantis orvantis_common64
done

clips="build/real-clips/validation"
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

failed=0
# validate_with ABOUT RUN SEEDS CLIP...: at level 10, its result in a line of its own.
validate_with() {
    about="$1"; run="$2"; count="$3"; shift 3
    begun="$(date +%s)"
    # shellcheck disable=SC2086 # words on purpose
    if $run validate "$plugin" "$@" --level 10 --seed "$first" --repeat "$count" >"$clips/output" 2>&1; then
        result="$(tail -n 1 "$clips/output")"
    else
        cat "$clips/output"
        result="$(tail -n 1 "$clips/output")"
        failed=1
    fi
    echo "$about, $count seeds from $first, $(($(date +%s) - begun)) s: $result"
}
muxed="$clips/rgb-8bit.avi $clips/yuv422-10bit.avi $clips/yuv420-8bit.avi"
part=$(((seeds + 4) / 5))
native="build/linux-quick/bin/importer_host"
wine="build/windows-clang/wine-run build/windows-clang/bin/importer_host.exe"
plugin="build/linux-quick/bin/ImporterOrvantis.prm"
validate_with "native, clips of its own" "$native" "$seeds"
# shellcheck disable=SC2086
validate_with "native, clips by ffmpeg" "$native" "$part" $muxed

# Behind 8-bit sound this plug-in gives the lowest level for silence, and is told so: the report is true.
"$native" validate "$plugin" "$clips/sound-8bit.avi" --level 10 --seed "$first" >"$clips/output" 2>&1 || true
if [ "$(grep '^[A-Z][A-Z-]*  *[a-z]*\.' "$clips/output")" != "FAILED    sound.past-end" ]; then
    cat "$clips/output"
    failed=1
fi

plugin="build/windows-clang/bin/ImporterOrvantis.prm"
validate_with "Wine, clips of its own" "$wine" "$seeds"
# shellcheck disable=SC2086
validate_with "Wine, clips by ffmpeg" "$wine" "$part" $muxed
exit "$failed"
