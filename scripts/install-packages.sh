#!/bin/sh
# Installs what building and testing on Debian 12 needs. Does nothing when all of it is there.
set -eu
packages="cmake ninja-build ccache
g++-mingw-w64-x86-64-posix mingw-w64-tools wine wine64
clang lld clang-tidy clang-format libclang-rt-14-dev llvm cppcheck
googletest libcli11-dev nlohmann-json3-dev libstb-dev
ffmpeg quicktime-utils mencoder dvgrab
python3 python3-pefile nsis
${ORVANTIS_EXTRA_PACKAGES:-}"

missing=""
for package in $packages; do
    dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || missing="$missing $package"
done
[ -n "$missing" ] || exit 0

echo "Installing:$missing"
as_root=""
[ "$(id -u)" = 0 ] || as_root="sudo"
$as_root env DEBIAN_FRONTEND=noninteractive apt-get update -qq
# shellcheck disable=SC2086 # a list of words on purpose
$as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends $missing >/dev/null
