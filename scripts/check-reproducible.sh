#!/bin/sh
# Shows that the released plug-in depends on the sources and nothing else: builds it from scratch, without compiler cache,
# in folders of different names, and compares the files byte by byte. Looks for the folders' names in the file, too.
#
#   scripts/check-reproducible.sh                  two builds of the last commit
#   scripts/check-reproducible.sh --against FILE   one build of the working tree, compared with a plug-in made earlier
set -eu
script="$(realpath "$0")"
. "$(dirname "$script")/common.sh"
help_or_go_on "$@"
preset=windows-mingw
against=""
case "${1:-}" in
    "") ;;
    --against) against="$(realpath "${2:?--against needs a file}")" ;;
    *) wrong_usage "check-reproducible.sh: unknown argument: $1" ;;
esac
cd "$(dirname "$script")/.."

commit="$(git rev-parse HEAD)"
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
trap 'exit 130' INT TERM
export CCACHE_DISABLE=1

# build SOURCE BUILD: SOURCE/... -> BUILD/release/ImporterOrvantis.prm
build() {
    cmake -S "$1" --preset "$preset" -B "$2" -DBUILD_TESTING=OFF -DORVANTIS_INSTALLER=OFF \
        -DCMAKE_C_COMPILER_LAUNCHER= -DCMAKE_CXX_COMPILER_LAUNCHER= >"$work/log" 2>&1 &&
        cmake --build "$2" -j "$(nproc)" --target release/ImporterOrvantis.prm >>"$work/log" 2>&1 ||
        { tail -n 40 "$work/log"; exit 1; }
}

first="$work/one/ImporterOrvantis.prm"
second="$work/two/ImporterOrvantis.prm"
mkdir -p "$work/one" "$work/two"

echo "Building in $work/a"
mkdir -p "$work/a"
if [ -n "$against" ]; then
    git ls-files -z --cached --others --exclude-standard | xargs -0 sh -c \
        'for file; do [ ! -e "$file" ] || printf "%s\0" "$file"; done' sh | tar -c --null -T - | tar -x -C "$work/a"
else
    git archive "$commit" | tar -x -C "$work/a"
fi
build "$work/a" "$work/a/build"
cp "$work/a/build/release/ImporterOrvantis.prm" "$first"

if [ -n "$against" ]; then
    cp "$against" "$second"
else
    # Everything that should not matter is different: folder, place of the build folder, time, time zone, locale.
    elsewhere="$work/some other, much longer name/sources"
    echo "Building in $elsewhere"
    mkdir -p "$elsewhere"
    git archive "$commit" | tar -x -C "$elsewhere"
    ( TZ=Pacific/Chatham LC_ALL=C build "$elsewhere" "$work/output of the second build" )
    cp "$work/output of the second build/release/ImporterOrvantis.prm" "$second"
fi

sha256sum "$first" "$second" | sed "s,$work/,,"
failed=0
cmp "$first" "$second" || failed=1
for folder in "$work" "$PWD" "$HOME"; do
    if grep -qaF "$folder" "$first" "$second"; then
        echo "The plug-in names the folder $folder"
        failed=1
    fi
done
[ "$failed" = 0 ] && echo "Reproducible"
exit "$failed"
