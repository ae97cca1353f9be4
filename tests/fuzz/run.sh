#!/bin/sh
# Goes on fuzzing: run.sh MINUTES [target...], each target in turn at low priority (by default all but differential_fuzzer,
# which needs libavformat-dev). Builds with the
# preset linux-fuzz into build/linux-fuzz (FUZZ_BUILD names another folder). What is found lies in build/fuzz/<target>:
# `corpus` grows from run to run, `crashes` has the inputs that broke something. FUZZ_JOBS processes at once, 1 by default.
#
#     run.sh --merge    takes what the corpora have gained into tests/fuzz/corpus, minimised
set -eu

script=$(realpath "$0")
here=$(dirname "$script")
root=$(cd "$here/../.." && pwd)
. "$root/scripts/common.sh"
help_or_go_on "$@"
build=${FUZZ_BUILD:-$root/build/linux-fuzz}
work=${FUZZ_WORK:-$root/build/fuzz}
all="parse_fuzzer session_fuzzer stream_format_fuzzer frame_rate_fuzzer rescue_fuzzer"

[ $# -ge 1 ] || wrong_usage "run.sh: for how many minutes?"
minutes=$1
shift
case $minutes in
    --merge) ;;
    *[!0-9]*) wrong_usage "run.sh: no number of minutes: $minutes" ;;
esac
targets=${*:-$all}
for target in $targets; do
    case " $all differential_fuzzer " in
        *" $target "*) ;;
        *) wrong_usage "run.sh: unknown target: $target" ;;
    esac
done

# No input has to be longer to reach everything; short ones run faster.
max_len() {
    case $1 in
        frame_rate_fuzzer) echo 32 ;;
        stream_format_fuzzer) echo 400 ;;
        *) echo 16384 ;;
    esac
}

(cd "$root" && cmake --preset linux-fuzz -B "$build" > /dev/null)
# shellcheck disable=SC2086
cmake --build "$build" --target make_seeds $targets -- -j2

if [ "$minutes" = --merge ]; then
    for target in $targets; do
        fresh=$(mktemp -d)
        "$build/bin/$target" -merge=1 -max_len="$(max_len "$target")" "$fresh" "$here/corpus/$target" \
            "$work/$target/corpus" 2>&1 | tail -n 3
        # Smallest first, as many as a repository bears.
        rm -rf "$here/corpus/$target"
        mkdir -p "$here/corpus/$target"
        bytes=0
        count=0
        for file in $(ls -Sr "$fresh"); do
            size=$(wc -c < "$fresh/$file")
            bytes=$((bytes + size))
            count=$((count + 1))
            if [ "$count" -gt 290 ] || [ "$bytes" -gt 900000 ]; then break; fi
            cp "$fresh/$file" "$here/corpus/$target/$file"
        done
        rm -rf "$fresh"
        echo "$target: $(ls "$here/corpus/$target" | wc -l) files kept"
    done
    exit 0
fi

seeds=$work/seeds
mkdir -p "$seeds"
"$build/bin/make_seeds" "$seeds"
if command -v ffmpeg > /dev/null; then
    "$here/make_real_seeds.sh" "$seeds"
fi

found=0
for target in $targets; do
    mkdir -p "$work/$target/corpus" "$work/$target/crashes"
    # What is compared with libavformat are clips, as the parser's are.
    from=$target
    [ "$target" != differential_fuzzer ] || from=parse_fuzzer
    inputs="$work/$target/corpus $seeds/$from"
    if [ -d "$here/corpus/$target" ]; then inputs="$inputs $here/corpus/$target"; fi
    dict=
    case $target in
        frame_rate_fuzzer) ;;
        *) dict=-dict=$here/avi.dict ;;
    esac
    jobs=
    if [ "${FUZZ_JOBS:-1}" -gt 1 ]; then jobs="-fork=$FUZZ_JOBS -ignore_crashes=1"; fi
    # shellcheck disable=SC2086
    nice -n 19 "$build/bin/$target" -max_total_time=$((minutes * 60)) -max_len="$(max_len "$target")" -timeout=60 \
        -rss_limit_mb=2500 -print_final_stats=1 $dict $jobs -artifact_prefix="$work/$target/crashes/" $inputs \
        > "$work/$target/log" 2>&1 || true
    if ! grep -q "cov: " "$work/$target/log"; then
        found=1
        echo "$target: did not run, see $work/$target/log"
    fi
    grep -E "cov: " "$work/$target/log" | tail -n 1 | sed "s/^/$target: /" || true
    grep -E "stat::number_of_executed_units" "$work/$target/log" | sed "s/^/$target: /" || true
    crashes=$(find "$work/$target/crashes" -type f | wc -l)
    if [ "$crashes" -gt 0 ]; then
        found=1
        echo "$target: $crashes inputs in $work/$target/crashes, see $work/$target/log"
    fi
done
exit $found
