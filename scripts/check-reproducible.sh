#!/bin/sh
# Shows that the released files and their symbols depend on the sources and nothing else: builds the last commit twice from
# scratch, without compiler cache, in folders of different names, and compares the files byte by byte. Looks for the folders' names
# in the files, too.
#
#   scripts/check-reproducible.sh
set -eu
script="$(realpath "$0")"
. "$(dirname "$script")/common.sh"
help_or_go_on "$@"
[ "$#" = 0 ] || wrong_usage "check-reproducible.sh: unknown argument: $1"
cd "$(dirname "$script")/.."
source="$PWD"

commit="$(git rev-parse HEAD)"
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
trap 'exit 130' INT TERM
export CCACHE_DISABLE=1

files="release/ImporterOrvantis.prm symbols/ImporterOrvantis.pdb release/importer_host.exe symbols/importer_host.pdb
    bin/setup_actions.dll packaging/importer_test_host/liborvantis_simhost.a"

# build SOURCE BUILD FOLDER: the commit, unpacked into SOURCE and built in BUILD -> what is compared in FOLDER
build() {
    echo "Building in $1"
    mkdir -p "$1" "$3"
    git archive "$commit" | tar -x -C "$1"
    cmake -S "$1" --preset windows-clang -B "$2" -DBUILD_TESTING=OFF -DCMAKE_C_COMPILER_LAUNCHER= -DCMAKE_CXX_COMPILER_LAUNCHER= \
        >"$work/log" 2>&1 &&
        cmake --build "$2" -j "$(nproc)" --target release_files >>"$work/log" 2>&1 || { tail -n 40 "$work/log"; exit 1; }
    for file in $files; do
        cp "$2/$file" "$3/"
    done
}

build "$work/a" "$work/a/build" "$work/one"
# Everything that should not matter is different: folder, place of the build folder, time, time zone, locale.
( TZ=Pacific/Chatham LC_ALL=C build "$work/some other, much longer name/sources" "$work/output of the second build" "$work/two" )

failed=0
cd "$work"
sha256sum one/* two/*
for file in one/*; do
    cmp "$file" "two/${file#one/}" || failed=1
done
for folder in "$work" "$source" "$HOME/"; do
    if grep -laF "$folder" one/* two/*; then
        echo "These files name the folder $folder"
        failed=1
    fi
done
[ "$failed" = 0 ] && echo "Reproducible"
exit "$failed"
