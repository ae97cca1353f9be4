#!/bin/sh
# All benchmarks, from a fresh clone on Debian 12: installs packages, builds the native benchmarks and the Windows
# plug-in, measures both, prints a table of ratios and writes docs/performance.md with its plot. Ends with one line that
# counts the ratios reached. Needs about 1.5 GB of free memory; its files take 300 MB below build/ and go away again.
#
#   ./bench.sh            all of it, about 4 minutes once built; nothing else should run meanwhile
set -eu
script="$(realpath "$0")"
cd "$(dirname "$script")"
. scripts/common.sh
help_or_go_on "$@"
[ $# -eq 0 ] || wrong_usage "bench.sh: unknown argument: $1"

ORVANTIS_EXTRA_PACKAGES="libbenchmark-dev libavformat-dev pkg-config mkvtoolnix
gstreamer1.0-plugins-base-apps gstreamer1.0-plugins-good" scripts/install-packages.sh

results="build/bench-results"
files="build/bench-files"
rm -rf "$results" "$files"
mkdir -p "$results" "$files"
trap 'rm -rf "$files"' EXIT
trap 'exit 1' INT TERM

# build PRESET TARGETS...
build() {
    preset="$1"; shift
    echo "== build $preset"
    cmake --preset "$preset" >"$results/$preset.log"
    cmake --build --preset "$preset" --target "$@" >>"$results/$preset.log" 2>&1 || { tail -n 40 "$results/$preset.log"; exit 1; }
}
build linux-bench orvantis_bench make_bench_files
build windows-clang ImporterOrvantis orvantis_common64 importer_host opening_once

build/linux-bench/bin/make_bench_files "$files"
python3 bench/report.py --native build/linux-bench --windows build/windows-clang --files "$files" --results "$results" \
    --docs docs
