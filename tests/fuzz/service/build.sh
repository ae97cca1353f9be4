#!/bin/bash -eu
# Builds the fuzz targets as a fuzzing service asks: compilers and flags come in CC, CXX, CFLAGS and CXXFLAGS, the engine in
# LIB_FUZZING_ENGINE, the sources lie in $SRC/ImporterOrvantis, what is in between goes to $WORK, programs, seeds,
# dictionaries and options to $OUT. differential_fuzzer is left out: $OUT has no libavformat to load.
source_folder=$SRC/ImporterOrvantis
build=$WORK/orvantis
seeds=$WORK/orvantis-seeds
targets="parse_fuzzer session_fuzzer stream_format_fuzzer frame_rate_fuzzer rescue_fuzzer"

# The project's own sanitizers stay away: those of the service are in the flags.
cmake -S "$source_folder" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DBUILD_TESTING=OFF \
    -DORVANTIS_FUZZ=ON -DORVANTIS_FUZZING_ENGINE="$LIB_FUZZING_ENGINE"
# shellcheck disable=SC2086 # a list of words on purpose
cmake --build "$build" --target make_seeds $targets

rm -rf "$seeds"
mkdir -p "$seeds"
"$build/bin/make_seeds" "$seeds"
for target in $targets; do
    cp "$build/bin/$target" "$OUT/"
    case $target in
        frame_rate_fuzzer) max_len=32 ;;
        stream_format_fuzzer) max_len=400 ;;
        *) max_len=16384 ;;
    esac
    printf '[libfuzzer]\nmax_len = %s\ntimeout = 60\nrss_limit_mb = 2500\n' "$max_len" >"$OUT/$target.options"
    corpus=$seeds/$target
    mkdir -p "$corpus"
    cp "$source_folder/tests/fuzz/corpus/$target/"* "$corpus/"
    case $target in
        frame_rate_fuzzer | stream_format_fuzzer) ;;
        *) cp "$source_folder/tests/fuzz/regressions/"*.avi "$corpus/" ;;
    esac
    [ "$target" = frame_rate_fuzzer ] || cp "$source_folder/tests/fuzz/avi.dict" "$OUT/$target.dict"
    rm -f "$OUT/${target}_seed_corpus.zip"
    (cd "$corpus" && python3 -m zipfile -c "$OUT/${target}_seed_corpus.zip" ./*)
done
