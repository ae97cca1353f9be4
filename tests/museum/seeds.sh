#!/bin/sh
# Nothing is reported of our own plug-in that is not true: `importer_host validate` at level 10 with many seeds, natively and
# under Wine, with clips of the tool's own making and with such that ffmpeg has muxed.
#
#   tests/museum/seeds.sh [SEEDS [FIRST]]    100 seeds from 1 on; a fifth of them with ffmpeg's clips
#
# A line for each ten seeds, as they end. Exit code 1 when a check failed that should not, or did not that should.
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
tests/museum/make_clips.sh "$clips"

failed=0
# validate_with ABOUT RUN SEEDS CLIP...: at level 10, ten seeds at a time, the result of each ten in a line.
validate_with() {
    about="$1"; run="$2"; count="$3"; shift 3
    seed="$first"
    while [ "$seed" -lt $((first + count)) ]; do
        part=$((first + count - seed))
        [ "$part" -le 10 ] || part=10
        begun="$(date +%s)"
        # shellcheck disable=SC2086 # words on purpose
        $run validate "$plugin" "$@" --level 10 --seed "$seed" --repeat "$part" >"$clips/output" 2>&1 || true
        result="$(tail -n 1 "$clips/output")"
        # A warning is a report, too.
        case "$result" in
            *warning*) reported=1 ;;
            "SUCCESS: "*) reported=0 ;;
            *) reported=1 ;;
        esac
        if [ "$reported" = 1 ]; then
            cat "$clips/output"
            failed=1
        fi
        echo "$about, $part seeds from $seed, $(($(date +%s) - begun)) s: $result"
        seed=$((seed + part))
    done
}
muxed="$clips/rgb-8bit.avi $clips/yuv422-10bit.avi $clips/yuv420-8bit.avi"
fifth=$(((seeds + 4) / 5))
native="build/linux-quick/bin/importer_host"
wine="build/windows-clang/wine-run build/windows-clang/bin/importer_host.exe"
plugin="build/linux-quick/bin/ImporterOrvantis.prm"
validate_with "native, clips of its own" "$native" "$seeds"
# shellcheck disable=SC2086
validate_with "native, clips by ffmpeg" "$native" "$fifth" $muxed

# Behind 8-bit sound this plug-in gives the lowest level for silence, and is told so: the report is true.
"$native" validate "$plugin" "$clips/sound-8bit.avi" --level 10 --seed "$first" >"$clips/output" 2>&1 || true
if [ "$(grep '^[A-Z][A-Z-]*  *[a-z]*\.' "$clips/output")" != "FAILED    sound.past-end" ]; then
    cat "$clips/output"
    failed=1
fi

plugin="build/windows-clang/bin/ImporterOrvantis.prm"
validate_with "Wine, clips of its own" "$wine" "$seeds"
# shellcheck disable=SC2086
validate_with "Wine, clips by ffmpeg" "$wine" "$fifth" $muxed
exit "$failed"
