#!/bin/sh
# The tests, from a fresh clone on Debian 12: installs packages, builds the Windows plug-in and the native sanitizer builds,
# and runs the tests of each. Ends with one line that counts them.
#
#   ./test.sh              everything but the packages: windows, asan and tsan
#   ./test.sh windows      only the Windows build that is released, under Wine
#   ./test.sh asan         only the native build with AddressSanitizer and UndefinedBehaviorSanitizer
#   ./test.sh tsan         only the concurrency tests under ThreadSanitizer
#   ./test.sh packaging    the packages: made, installed, upgraded, removed, signed, rebuilt elsewhere to the same bytes
#   ./test.sh gcc          the same tests, compiled by the other compiler
#   ./test.sh everything   what .ci/nightly runs of these: also the tests labelled nightly, and all cases of long rows
#   ./test.sh quick        while you edit: natively, without sanitizers, the tests that see what changed since the last time
#   ./test.sh quick all    the same with the tool's tests, the schedules, the fuzz corpora and clips of other programs
#   ./test.sh golden       no test: writes the texts of tests/golden anew, for you to read in `git diff` before you keep them
#
# Without an argument it takes ten minutes on 2 idle cores with an empty compiler cache, packaging 9 minutes more.
set -eu
script="$(realpath "$0")"
cd "$(dirname "$script")"
. scripts/common.sh
help_or_go_on "$@"
what="${1:-all}"
case "$what" in
    all | windows | asan | tsan | everything | packaging | gcc | quick | golden) ;;
    *) wrong_usage "test.sh: unknown argument: $what" ;;
esac
[ $# -lt 2 ] || [ "$*" = "quick all" ] || wrong_usage "test.sh: unknown arguments: $*"
# See tests/support/thorough.h.
case "$what" in
    everything) export ORVANTIS_TEST_EVERYTHING=1 ;;
    quick) export ORVANTIS_TEST_SAMPLE=quick ;;
    *) export ORVANTIS_TEST_SAMPLE=1 ;;
esac
jobs="$(nproc)"
# Programs under Wine wait for its server half of the time.
wine_jobs="$((jobs * 2))"

# No results, no counts: what changed is built, what it can break is run, and what fails is shown.
if [ "$what" = quick ]; then
    ORVANTIS_EXTRA_PACKAGES="" scripts/install-packages.sh
    begun="$(date +%s)"
    [ -e build/linux-quick/build.ninja ] || cmake --preset linux-quick >/dev/null
    mkdir -p build/linux-quick/quick
    touch build/linux-quick/quick/begun
    failed=0
    target="quick${2:+_all}"
    # All of them, whatever fails.
    cmake --build --preset linux-quick -j "$((jobs + 1))" --target "$target" -- -k 0 --quiet || failed=1
    ran="$(find build/linux-quick/quick -name '*.log' -newer build/linux-quick/quick/begun | wc -l)"
    [ "$failed" = 0 ] && verdict="all passed" || verdict="FAILED"
    there="$(ninja -C build/linux-quick -t commands "$target" | grep -c run-quick-test.sh)"
    echo "quick: $ran of $there test programs had to run, $verdict, $(($(date +%s) - begun)) s"
    exit "$failed"
fi

if [ "$what" = golden ]; then
    ORVANTIS_EXTRA_PACKAGES="" scripts/install-packages.sh
    [ -e build/linux-quick/build.ninja ] || cmake --preset linux-quick >/dev/null
    cmake --build --preset linux-quick -j "$jobs" --target log_tests -- --quiet
    ORVANTIS_WRITE_GOLDEN=1 build/linux-quick/bin/log_tests --gtest_brief=1
    git --no-pager diff --stat -- tests/golden
    exit 0
fi

# The browser shows the tool's report page; without it that test is skipped. npm fetches what checks the page for
# accessibility; it may be there without the package.
browser_packages="chromium"
command -v npm >/dev/null || browser_packages="chromium npm"
extra_packages="${ORVANTIS_EXTRA_PACKAGES-$browser_packages}"
# A software token and what signs by it, and what reads packages, bills of materials and manifests.
[ "$what" != packaging ] || extra_packages="$extra_packages osslsigncode softhsm2 libengine-pkcs11-openssl openssl msitools
    python3-jsonschema python3-yaml shellcheck"
ORVANTIS_EXTRA_PACKAGES="$extra_packages" scripts/install-packages.sh

results="build/test-results"
rm -rf "$results"
mkdir -p "$results"
failed=0

# build NAME PRESET TARGET: configures and builds one preset.
build() {
    name="$1"; preset="$2"; target="$3"
    cmake --preset "$preset" >"$results/$name-configure.log" 2>&1 || { cat "$results/$name-configure.log"; return 1; }
    build_with_progress "$results/$name-build.log" "$name: build (up to 5 minutes when nothing is cached)" \
        cmake --build --preset "$preset" -j "$jobs" --target "$target" || return 1
}

# check NAME PRESET CTEST-ARGUMENTS...: runs the tests of a preset; a failure does not stop the others.
check() {
    name="$1"; preset="$2"; shift 2
    case "$preset" in windows-*) test_jobs="$wine_jobs" ;; *) test_jobs="$jobs" ;; esac
    rm -rf "build/$preset/test-results"
    mkdir -p "build/$preset/test-results"
    echo "== $name: test"
    ctest --preset "$preset" -j "$test_jobs" --output-junit "$PWD/$results/$name.xml" "$@" >"$results/$name.log" 2>&1 || failed=1
    if ! grep -q '^100% tests passed' "$results/$name.log"; then
        failed=1
        grep -vE ' Passed |^ +Start |^\[ +(RUN|OK) ' "$results/$name.log" | tail -n 200
    fi
    # What passed when it was repeated has failed before.
    sed -n 's|^ *[0-9]*/[0-9]* Test *#[0-9]*: \([^ ]*\) .*\*\*\*\([A-Z][a-z]*\).*|   \2 at first or for good: \1|p' \
        "$results/$name.log"
    grep -E 'tests passed|Total Test time' "$results/$name.log" || true
    # Of each GoogleTest program, its own listing of its tests.
    mv "build/$preset/test-results" "$results/$name"
}

# run NAME PRESET TARGET CTEST-ARGUMENTS...: both.
run() {
    name="$1"; preset="$2"; target="$3"; shift 3
    build "$name" "$preset" "$target" || { failed=1; return 0; }
    check "$name" "$preset" "$@"
}

# Of every day: see orvantis_nightly in cmake/OrvantisTesting.cmake.
target=everyday
windows_tests="-LE packaging|nightly"
asan_tests="$windows_tests"
tsan_tests="-L concurrency"
if [ "$what" = everything ]; then
    target=all
    windows_tests="-LE packaging"
    asan_tests=""
fi
# shellcheck disable=SC2086 # lists of words on purpose
case "$what" in
    all | everything)
        windows=0 native=0
        build windows windows-clang "$target" || windows=1
        # The native builds take what the tests under Wine leave of the processors.
        (
            sh -c 'renice -n 19 -p $PPID' >/dev/null
            build asan linux-asan "$target" && build tsan linux-tsan concurrency_tests
        ) &
        if [ "$windows" = 0 ]; then check windows windows-clang $windows_tests; else failed=1; fi
        wait $! || native=1
        if [ "$native" = 0 ]; then
            # Tests of threads wait more than they work: the two fill the processors together. What one says comes last.
            (failed=0; check tsan linux-tsan $tsan_tests; exit "$failed") >"$results/tsan-said.log" 2>&1 &
            check asan linux-asan $asan_tests
            wait $! || failed=1
            cat "$results/tsan-said.log"
        else
            failed=1
        fi
        ;;
    windows) run windows windows-clang "$target" $windows_tests ;;
    asan) run asan linux-asan "$target" $asan_tests ;;
    tsan) run tsan linux-tsan concurrency_tests $tsan_tests ;;
    # They take turns on one Wine system, beside two more builds: on a busy machine a program there may fail to start.
    packaging) wine_jobs="$jobs"; run packaging windows-clang packaging_test_files -L packaging --repeat until-pass:2 ;;
    gcc) run gcc windows-mingw all -LE packaging ;;
esac

# One line for people and for CI: the tests of all builds. A CTest test that is a GoogleTest program counts as the tests in it.
python3 - "$results" <<'PY'
import glob, os, sys, xml.etree.ElementTree as tree
passed = failed = skipped = 0
for path in sorted(glob.glob(sys.argv[1] + "/*.xml")):
    inside = path[:-4]
    for case in tree.parse(path).getroot().iter("testcase"):
        listing = os.path.join(inside, case.get("name") + ".xml")
        good, none = case.get("status") == "run", case.get("status") in ("notrun", "disabled")
        if good and os.path.exists(listing):
            suite = tree.parse(listing).getroot()
            without = [test for test in suite.iter("testcase") if test.find("skipped") is not None]
            skipped += len(without)
            passed += int(suite.get("tests")) - len(without)
            for test in without:
                print(f"skipped: {case.get('name')} {test.get('classname')}.{test.get('name')}")
        elif none:
            skipped += 1
            print(f"skipped: {case.get('name')}")
        else:
            passed += good
            failed += not good
print(f"Results and logs: {sys.argv[1]}/")
print(f"{passed} passed, {failed} failed, {skipped} skipped")
sys.exit(1 if failed or not passed else 0)
PY
exit "$failed"
