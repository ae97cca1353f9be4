#!/bin/sh
# Runs the plug-in's asynchronous and pinning code, as it ships, through all schedules of its threads with a few preemptions,
# natively and deterministically: docs/schedules.md. Exit code 1 when one of them does something wrong.
#
#   ./schedules.sh [SCENARIO...] [--preemptions N] [--jobs N]   all, with up to 3 preemptions: about 3 minutes
#   ./schedules.sh --replay SCENARIO:NUMBER                     one schedule again, every step of it printed
#   ./schedules.sh --replay SCENARIO:CHOICES                    the same, by the choices that a finding names
#   ./schedules.sh --planted                                    plants races in copies of the sources; each has to be found
#   ./schedules.sh --self-test                                  little programs of which the findings and counts are known
#   ./schedules.sh --list                                       the scenarios
set -eu
script="$(realpath "$0")"
cd "$(dirname "$script")"
. scripts/common.sh
help_or_go_on "$@"

preset=linux-quick
program="build/$preset/bin/schedules"
log=build/schedules-build.log

# build TARGET: quietly, unless it fails.
build() {
    mkdir -p build
    { cmake --preset "$preset" && cmake --build --preset "$preset" --target "$1"; } >"$log" 2>&1 || {
        tail -n 60 "$log"
        echo "The whole log: $log" >&2
        exit 2
    }
}

if [ "${1:-}" != --planted ]; then
    build schedules
    for argument in "$@"; do
        case "$argument" in --jobs | --replay | --self-test | --list) exec "$program" "$@" ;; esac
    done
    exec "$program" --jobs "$(nproc)" "$@"
fi

[ $# -eq 1 ] || wrong_usage "schedules.sh: --planted stands alone"
build schedules_planted
missed=0
for patch in tests/schedules/planted/*.patch; do
    name="$(basename "$patch" .patch)"
    scenario="$(sed -n 's/^Scenario: //p' "$patch")"
    finding="$(sed -n 's/^Finding: //p' "$patch")"
    if said="$("build/$preset/planted/schedules_$name" "$scenario" --expect "$finding")"; then
        echo "$name in $scenario:"
        echo "$said" | sed -n '/ FOUND /,/^  again/{/^  again/!p}'
    else
        missed=$((missed + 1))
        echo "$name in $scenario: MISSED"
        echo "$said"
    fi
done
echo "$(find tests/schedules/planted -name '*.patch' | wc -l) planted races, $missed missed"
[ "$missed" -eq 0 ]
