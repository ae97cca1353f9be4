#!/bin/sh
# Measures how much of cut-off clips a rescue brings back, beside ffmpeg and mencoder on the same cuts, and writes the table
# into docs/rescue.md. Clips are those of the tests, which are made first if they are not there.
#
#     tests/rescue/measure.sh [CUTS [CUTS-PER-CLIP]]
#
# CUTS (10000) go through the three programs, a second each three of them; CUTS-PER-CLIP (10000) through the search alone.
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

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
set -- build/clips/*.avi build/real-clips/frames/*.avi build/real-clips/audio/*.avi
"$build/bin/rescue_measure" scan "$per_clip" "$@" > "$work/scan.txt" || true
jobs=$(nproc)
job=0
while [ "$job" -lt "$jobs" ]; do
    first=$((cuts * job / jobs))
    job=$((job + 1))
    "$build/bin/rescue_measure" tools "$first" "$((cuts * job / jobs))" "$work/$job" "$@" > "$work/tools.$job.txt" &
done
wait
python3 tests/rescue/write_table.py docs/rescue.md "$work"/*.txt
