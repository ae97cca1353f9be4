#!/bin/sh
# Directions of includes, format and static analysis over the sources. Warnings are errors.
#
#   ./lint.sh            everything
#   ./lint.sh format     only directions and clang-format
#   ./lint.sh plugin     the plug-in's own folders only
set -eu
script="$(realpath "$0")"
cd "$(dirname "$script")"
. scripts/common.sh
help_or_go_on "$@"
what="${1:-all}"
case "$what" in
    all | format | plugin) ;;
    *) wrong_usage "lint.sh: unknown argument: $what" ;;
esac
scripts/install-packages.sh

echo "== directions"
scripts/check-directions.py

echo "== names of tests"
python3 scripts/check-test-names.py

echo "== clang-format"
git ls-files '*.h' '*.cpp' | xargs clang-format-16 --dry-run --Werror
[ "$what" != format ] || exit 0

# The clang build for Windows: its commands are clang's own, and it has the files that talk to Windows. clang-tidy is of another
# version than that compiler: it reads none of its precompiled headers, and does not know how it is told to write symbols.
database() {
    cmake --preset windows-clang -B "build/$1" -DORVANTIS_UNITY="$2" -DORVANTIS_PDB=OFF \
        -DCMAKE_DISABLE_PRECOMPILE_HEADERS=ON >/dev/null
}
# tidy WHAT DATABASE FILES [CHECKS]
tidy() {
    echo "== clang-tidy: $1"
    run-clang-tidy -quiet -j "$(nproc)" -p "build/$2" ${4:+"-checks=$4"} "$3" >build/clang-tidy.log 2>/dev/null || {
        grep -E 'error:|warning:' build/clang-tidy.log | sort -u
        failed=1
    }
}
failed=0
database windows-clang-lint OFF
tidy "the plug-in" windows-clang-lint "^$PWD/plugin/.*\.cpp$"
if [ "$what" = all ]; then
    # All others several files at a time, since most of the work is the standard library's headers. The static analyzer, which
    # looks into the files only that are named, takes each of the tool and of the test bed by itself; tests run under sanitizers.
    database windows-clang-lint-unity ON
    cp tests/.clang-tidy build/windows-clang-lint-unity/tests/
    tidy "tool, test bed and tests" windows-clang-lint-unity \
        "^$PWD/(build/windows-clang-lint-unity/)?(testbed|tool|tests)/.*\.c(pp|xx)$" '-clang-analyzer-*,-bugprone-suspicious-include'
    tidy "tool and test bed, static analyzer" windows-clang-lint "^$PWD/(testbed|tool)/.*\.cpp$" \
        '-*,clang-analyzer-*,-clang-analyzer-optin.performance.Padding'
fi

echo "== cppcheck"
cppcheck --quiet --project=build/windows-clang-lint/compile_commands.json --platform=win64 --std=c++20 \
    --enable=warning,performance,portability --inline-suppr --error-exitcode=1 -j "$(nproc)" \
    --suppress=missingInclude --suppress=missingIncludeSystem --suppress='*:*/googletest/*' \
    --file-filter="plugin/*" || failed=1
[ "$failed" = 0 ] || exit 1
echo "Lint is clean."
