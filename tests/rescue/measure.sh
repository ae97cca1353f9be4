#!/bin/sh
# Measures how much of cut-off clips a rescue brings back, beside ffmpeg and mencoder on the same cuts, and writes the table
# into docs/rescue.md. Clips are those of the tests, which are made first if they are not there.
#
#     tests/rescue/measure.sh [CUTS [CUTS-PER-CLIP]]
#
# CUTS (10000) go through the three programs, a second each three of them; CUTS-PER-CLIP (10000) through the search alone.
# What is done is kept in build/rescue-measure and not done again, so that a run that was ended goes on, and one with more cuts
# adds to it; programs that have changed begin anew.
set -eu
cd "$(dirname "$0")/../.."
cuts=${1:-10000}
per_clip=${2:-10000}
build=build/linux-quick
cmake --preset linux-quick > /dev/null
cmake --build --preset linux-quick --target rescue_measure importer_host > /dev/null
sh tests/clips/make_clips.sh build/clips > /dev/null
test -e build/real-clips/frames/clips.txt || sh tests/integration/make_real_frames.sh build/real-clips/frames
test -e build/real-clips/audio/clips.txt || sh tests/integration/make_real_audio.sh build/real-clips/audio
set -- build/clips/*.avi build/real-clips/frames/*.avi build/real-clips/audio/*.avi

# Programs and clips of their own name: counts of others are not added to.
done=build/rescue-measure/$(cat "$build/bin/rescue_measure" "$build/bin/importer_host" "$@" | cksum | tr ' ' -)
mkdir -p "$done"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# Runs a command whose output is kept, once.
once() {
    kept=$1
    shift
    test -e "$kept" || { "$@" > "$kept.part" || true; mv "$kept.part" "$kept"; }
}

# Every JOBS-th block of cuts, every JOBS-th clip.
share() {
    job=$1
    shift
    first=$((job * block))
    while [ "$first" -lt "$cuts" ]; do
        last=$((first + block < cuts ? first + block : cuts))
        once "$done/tools.$first-$last.txt" "$build/bin/rescue_measure" tools "$first" "$last" "$work/$job" "$@"
        first=$((first + jobs * block))
    done
    number=0
    for clip in "$@"; do
        number=$((number + 1))
        if [ $((number % jobs)) -eq "$job" ]; then
            once "$done/scan.$per_clip.$number.txt" "$build/bin/rescue_measure" scan "$per_clip" "$clip"
        fi
    done
}

block=250
jobs=$(nproc)
job=0
while [ "$job" -lt "$jobs" ]; do
    share "$job" "$@" &
    job=$((job + 1))
done
wait
first=0
while [ "$first" -lt "$cuts" ]; do
    last=$((first + block < cuts ? first + block : cuts))
    cat "$done/tools.$first-$last.txt"
    first=$last
done > "$work/tools.txt"
python3 tests/rescue/write_table.py docs/rescue.md "$work/tools.txt" "$done/scan.$per_clip".*.txt
