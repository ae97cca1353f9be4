#!/bin/sh
# Which lines and branches of the plug-in do the native tests run? Prints them by folder and writes a page that shows every
# line: build/coverage/page/index.html. Exit code 1 when a test fails, when a branch of plugin/audio, async, avi, importer or
# video never runs and no reason stands at its line, or when a reason stands where every branch runs. docs/testing.md says more.
#
#   ./coverage.sh              everything: builds the preset linux-coverage and runs its tests
#   ./coverage.sh avi_tests    only what these programs run
#   ./coverage.sh --again      judges what the last run counted
set -eu
script="$(realpath "$0")"
cd "$(dirname "$script")"
. scripts/common.sh
help_or_go_on "$@"
for argument in "$@"; do
    case "$argument" in
        --again) ;;
        -*) wrong_usage "coverage.sh: unknown argument: $argument" ;;
        *) grep -rqsw "NAME $argument" tests || wrong_usage "coverage.sh: there is no test program $argument" ;;
    esac
done
ORVANTIS_EXTRA_PACKAGES="" scripts/install-packages.sh

# Configured anew, so that all programs that there are by now are asked for.
cmake --preset linux-coverage >/dev/null
# shellcheck disable=SC2046 # a list of words on purpose
cmake --build --preset linux-coverage --target $(python3 scripts/mutation/build_graph.py build/linux-coverage) -- --quiet
exec python3 scripts/coverage/coverage.py "$@"
