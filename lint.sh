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

case "$what" in plugin) folders="plugin" ;; *) folders="plugin|testbed|tool|tests" ;; esac

# The clang build for Windows: its commands are clang's own, and it has the files that talk to Windows.
echo "== clang-tidy"
# clang-tidy is of another version than that compiler: it reads none of its precompiled headers, and does not know how it is
# told to write symbols.
cmake --preset windows-clang -B build/windows-clang-lint -DORVANTIS_UNITY=OFF -DORVANTIS_PDB=OFF \
    -DCMAKE_DISABLE_PRECOMPILE_HEADERS=ON >/dev/null
run-clang-tidy -quiet -j "$(nproc)" -p build/windows-clang-lint "^$PWD/($folders)/" >build/clang-tidy.log 2>/dev/null || {
    grep -E 'error:|warning:' build/clang-tidy.log | sort -u
    exit 1
}

echo "== cppcheck"
cppcheck --quiet --project=build/windows-clang-lint/compile_commands.json --platform=win64 --std=c++20 \
    --enable=warning,performance,portability --inline-suppr --error-exitcode=1 -j "$(nproc)" \
    --suppress=missingInclude --suppress=missingIncludeSystem --suppress='*:*/googletest/*' \
    --file-filter="plugin/*"
echo "Lint is clean."
