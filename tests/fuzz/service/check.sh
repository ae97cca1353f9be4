#!/bin/bash
# Builds the targets by build.sh as a fuzzing service does, but here and without its image, and looks at what came out: every
# target there, with seeds, dictionary and options, and each runs for some seconds without a find.
#
#   tests/fuzz/service/check.sh [SECONDS]   10 seconds each
set -euo pipefail
script="$(realpath "$0")"
root="$(cd "$(dirname "$script")/../../.." && pwd)"
. "$root/scripts/common.sh"
help_or_go_on "$@"
seconds="${1:-10}"
[[ "$seconds" =~ ^[1-9][0-9]*$ ]] || wrong_usage "check.sh: no number of seconds: $seconds"

folder="$root/build/fuzz-service"
export SRC="$folder/src" WORK="$folder/work" OUT="$folder/out"
rm -rf "$SRC" "$OUT"
mkdir -p "$SRC" "$WORK" "$OUT"
ln -s "$root" "$SRC/ImporterOrvantis"
export CC="${CC:-clang}" CXX="${CXX:-clang++}" LIB_FUZZING_ENGINE="${LIB_FUZZING_ENGINE:--fsanitize=fuzzer}"
flags="-O1 -fno-omit-frame-pointer -gline-tables-only -fsanitize=address -fsanitize-address-use-after-scope"
flags="$flags -fsanitize=fuzzer-no-link -DFUZZING_BUILD_MODE_UNSAFE_FOR_PRODUCTION"
export CFLAGS="${CFLAGS:-$flags}" CXXFLAGS="${CXXFLAGS:-$flags}"
bash -eu "$root/tests/fuzz/service/build.sh" >"$folder/build.log" 2>&1 || { tail -n 60 "$folder/build.log"; exit 1; }

problems=0
problem() {
    echo "$*"
    problems=$((problems + 1))
}
# What is documented in docs/fuzzing.md, but for the target that needs a library of the system.
for source in "$root"/tests/fuzz/*_fuzzer.cpp; do
    target="$(basename "$source" .cpp)"
    [ "$target" != differential_fuzzer ] || continue
    [ -x "$OUT/$target" ] || { problem "$target: not built"; continue; }
    [ -s "$OUT/$target.options" ] || problem "$target: no options"
    [ "$target" = frame_rate_fuzzer ] || [ -s "$OUT/$target.dict" ] || problem "$target: no dictionary"
    seeds="$folder/seeds/$target"
    rm -rf "$seeds" "$folder/scratch"
    mkdir -p "$seeds" "$folder/scratch"
    python3 -m zipfile -e "$OUT/${target}_seed_corpus.zip" "$seeds" || { problem "$target: no seeds"; continue; }
    dictionary=()
    [ ! -e "$OUT/$target.dict" ] || dictionary=("-dict=$OUT/$target.dict")
    # As the service starts it: somewhere else, with nothing of the build beside it.
    if (cd "$folder/scratch" && "$OUT/$target" -max_total_time="$seconds" -timeout=60 -rss_limit_mb=2500 \
        -max_len="$(sed -n 's/^max_len = //p' "$OUT/$target.options")" -print_final_stats=1 \
        "${dictionary[@]}" "$seeds") >"$folder/$target.log" 2>&1; then
        runs="$(sed -n 's/^stat::number_of_executed_units: *//p' "$folder/$target.log")"
        [ "${runs:-0}" -gt 0 ] || problem "$target: has not run, see $folder/$target.log"
        echo "$target: $(find "$seeds" -type f | wc -l) inputs then, ${runs:-no} runs," \
            "$(sed -n 's/.* cov: \([0-9]*\) .*/\1/p' "$folder/$target.log" | tail -n 1) edges"
    else
        problem "$target: ended with an error, see $folder/$target.log"
        tail -n 20 "$folder/$target.log"
    fi
done
[ "$problems" -eq 0 ]
