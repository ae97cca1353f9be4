#!/bin/sh
# Builds the files of a release from a clean copy of a tag or commit of this repository.
#
#   scripts/build-release.sh TAG FOLDER    FOLDER must not exist; the build is in FOLDER/build/windows-clang
#
# What comes out is the same in every folder, of the same versions of the distribution's packages.
set -eu
script="$(realpath "$0")"
here="$(dirname "$script")"
. "$here/common.sh"
help_or_go_on "$@"
[ "$#" = 2 ] || wrong_usage "build-release.sh: a tag and a folder are needed, ${1:-nothing} is not enough"
[ ! -e "$2" ] || { echo "build-release.sh: $2 exists" >&2; exit 2; }
commit="$(git -C "$here" rev-parse --quiet --verify "$1^{commit}")" ||
    { echo "build-release.sh: there is no $1 in this repository" >&2; exit 2; }
"$here/install-packages.sh"
# With its history: packages carry the commit's date, and say which commit they come from.
git clone --quiet "$(git -C "$here" rev-parse --show-toplevel)" "$2"
folder="$(realpath "$2")"
cd "$folder"
git checkout --quiet --detach "$commit"
# What a search path of the linker's would add is recorded in the symbols; options of the builder's own are not the sources'.
unset LIBRARY_PATH CPATH C_INCLUDE_PATH CPLUS_INCLUDE_PATH CFLAGS CXXFLAGS LDFLAGS RCFLAGS
cmake --preset windows-clang -DBUILD_TESTING=OFF -DCMAKE_C_COMPILER_LAUNCHER= -DCMAKE_CXX_COMPILER_LAUNCHER= >configure.log 2>&1 ||
    { tail -n 40 configure.log; exit 1; }
cmake --build --preset windows-clang -j "$(nproc)" --target release_files >build.log 2>&1 || { tail -n 40 build.log; exit 1; }
echo "Built: $folder/build/windows-clang"
