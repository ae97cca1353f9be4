#!/bin/sh
# Shows that the released plug-in and its symbols depend on the sources and nothing else: builds them from scratch, without
# compiler cache, in folders of different names, and compares the files byte by byte. Looks for the folders' names in the
# files, too. (The tool depends on its folder's name: compilers name a lambda by its path.)
#
#   scripts/check-reproducible.sh                    two builds of the last commit
#   scripts/check-reproducible.sh --against FOLDER   one build of the working tree, compared with a build folder made earlier
set -eu
script="$(realpath "$0")"
. "$(dirname "$script")/common.sh"
help_or_go_on "$@"
preset=windows-clang
against=""
case "${1:-}" in
    "") ;;
    --against) against="$(realpath "${2:?--against needs a folder}")" ;;
    *) wrong_usage "check-reproducible.sh: unknown argument: $1" ;;
esac
cd "$(dirname "$script")/.."

commit="$(git rev-parse HEAD)"
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
trap 'exit 130' INT TERM
export CCACHE_DISABLE=1

files="release/ImporterOrvantis.prm symbols/ImporterOrvantis.pdb"

# build SOURCE BUILD: SOURCE/... -> the released plug-in and its symbols in BUILD
build() {
    cmake -S "$1" --preset "$preset" -B "$2" -DBUILD_TESTING=OFF -DORVANTIS_INSTALLER=OFF \
        -DCMAKE_C_COMPILER_LAUNCHER= -DCMAKE_CXX_COMPILER_LAUNCHER= >"$work/log" 2>&1 &&
        cmake --build "$2" -j "$(nproc)" --target release/ImporterOrvantis.prm >>"$work/log" 2>&1 ||
        { tail -n 40 "$work/log"; exit 1; }
}

# take BUILD FOLDER: copies what is compared out of BUILD.
take() {
    mkdir -p "$2"
    for file in $files; do
        cp "$1/$file" "$2/"
    done
}

echo "Building in $work/a"
mkdir -p "$work/a"
if [ -n "$against" ]; then
    git ls-files -z --cached --others --exclude-standard | xargs -0 sh -c \
        'for file; do [ ! -e "$file" ] || printf "%s\0" "$file"; done' sh | tar -c --null -T - | tar -x -C "$work/a"
else
    git archive "$commit" | tar -x -C "$work/a"
fi
build "$work/a" "$work/a/build"
take "$work/a/build" "$work/one"

if [ -n "$against" ]; then
    take "$against" "$work/two"
else
    # Everything that should not matter is different: folder, place of the build folder, time, time zone, locale.
    elsewhere="$work/some other, much longer name/sources"
    echo "Building in $elsewhere"
    mkdir -p "$elsewhere"
    git archive "$commit" | tar -x -C "$elsewhere"
    ( TZ=Pacific/Chatham LC_ALL=C build "$elsewhere" "$work/output of the second build" )
    take "$work/output of the second build" "$work/two"
fi

failed=0
cd "$work"
sha256sum one/* two/*
for file in one/*; do
    cmp "$file" "two/${file#one/}" || failed=1
done
for folder in "$work" "$OLDPWD" "$HOME/"; do
    if grep -laF "$folder" one/* two/*; then
        echo "These files name the folder $folder"
        failed=1
    fi
done
[ "$failed" = 0 ] && echo "Reproducible"
exit "$failed"
