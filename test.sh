#!/bin/sh
# All tests, from a fresh clone on Debian 12: installs packages, builds the Windows plug-in and the native sanitizer
# builds, and runs every test of each. Ends with one line that counts them.
#
#   ./test.sh            everything
#   ./test.sh windows    only the Windows build under Wine
#   ./test.sh asan       only the native build with AddressSanitizer and UndefinedBehaviorSanitizer
#   ./test.sh tsan       only the concurrency tests under ThreadSanitizer
set -eu
cd "$(dirname "$0")"
what="${1:-all}"
jobs="$(nproc)"

scripts/install-packages.sh

results="build/test-results"
mkdir -p "$results"
rm -f "$results"/*.log
failed=0

# run NAME PRESET TARGET CTEST-ARGUMENTS...: configures, builds and tests one preset; a failure does not stop the others.
run() {
    name="$1"; preset="$2"; target="$3"; shift 3
    echo "== $name: build"
    cmake --preset "$preset" >"$results/$name-configure.log" || { cat "$results/$name-configure.log"; failed=1; return; }
    cmake --build --preset "$preset" -j "$jobs" --target "$target" >"$results/$name-build.log" 2>&1 || {
        tail -n 60 "$results/$name-build.log"; failed=1; return; }
    echo "== $name: test"
    ctest --preset "$preset" -j "$jobs" --output-junit "$PWD/$results/$name.xml" "$@" >"$results/$name.log" 2>&1 || failed=1
    if ! grep -q '^100% tests passed' "$results/$name.log"; then
        failed=1
        grep -v ' Passed ' "$results/$name.log" | tail -n 200
    fi
    grep -E 'tests passed|Total Test time|tests failed out of' "$results/$name.log" || true
}

case "$what" in all | windows) run windows windows-mingw all ;; esac
case "$what" in all | asan) run asan linux-asan all ;; esac
case "$what" in all | tsan) run tsan linux-tsan concurrency_tests -L concurrency ;; esac

# One line for people and for CI: counts over all builds.
python3 - "$results" <<'PY'
import glob, sys, xml.etree.ElementTree as tree
passed = failed = skipped = 0
for path in glob.glob(sys.argv[1] + "/*.xml"):
    suite = tree.parse(path).getroot()
    tests, bad = int(suite.get("tests", 0)), int(suite.get("failures", 0))
    none = int(suite.get("skipped", 0)) + int(suite.get("disabled", 0))
    passed += tests - bad - none
    failed += bad
    skipped += none
print(f"Results and logs: {sys.argv[1]}/")
print(f"{passed} passed, {failed} failed, {skipped} skipped")
sys.exit(1 if failed or not passed else 0)
PY
exit "$failed"
