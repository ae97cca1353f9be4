#!/bin/sh
# Runs a test program for the target `quick` and makes the file PASSED when all went well; else shows what was said.
#   QUICK_FILTER=... QUICK_APART=... QUICK_WITHOUT=... run-quick-test.sh PASSED PROGRAM ARGUMENT...
# QUICK_FILTER chooses from the program's tests, QUICK_WITHOUT names some to leave out; each test that QUICK_APART names runs in a
# process of its own.
set -eu
passed="$1"
shift
log="${passed%.passed}.log"
mkdir -p "${passed%/*}"
rm -f "$passed"
# Tests write and remove many small files.
[ ! -w /dev/shm ] || export TMPDIR=/dev/shm

run() {
    "$@" >"$log" 2>&1 && return 0
    grep -vE '^\[ +(RUN|OK) ' "$log" | tail -n 100
    echo "All of it: $log"
    exit 1
}

if [ -n "${QUICK_APART:-}" ]; then
    # The list has the suites at the margin, ended by a dot, and their tests indented.
    "$1" --gtest_list_tests --gtest_filter="$QUICK_APART" |
        sed 's/ *#.*//' | awk '/^[^ ].*[.]$/ { suite = $1 } /^  / { print suite $1 }' >"$log.apart"
    while read -r test; do
        run "$@" "--gtest_filter=$test"
    done <"$log.apart"
    rm "$log.apart"
    run "$@" "--gtest_filter=${QUICK_FILTER:-*}-$QUICK_APART:${QUICK_WITHOUT:-}"
elif [ -n "${QUICK_FILTER:-}${QUICK_WITHOUT:-}" ]; then
    run "$@" "--gtest_filter=${QUICK_FILTER:-*}-${QUICK_WITHOUT:-}"
else
    run "$@"
fi
touch "$passed"
