#!/bin/sh
# Installs what building and testing on Debian 12 needs. Does nothing when all of it is there.
#
#   scripts/install-packages.sh            installs (root, or a user with sudo)
#   scripts/install-packages.sh --list     only prints the names of the packages
#
# ORVANTIS_EXTRA_PACKAGES names further packages that the caller needs.
set -eu
script="$(realpath "$0")"
. "$(dirname "$script")/common.sh"
help_or_go_on "$@"

packages="cmake ninja-build ccache
g++-mingw-w64-x86-64-posix mingw-w64-tools wine wine64
clang lld clang-16 lld-16 clang-tidy clang-format-16 libclang-rt-14-dev llvm cppcheck
googletest libcli11-dev nlohmann-json3-dev libstb-dev
ffmpeg quicktime-utils mencoder dvgrab
python3 python3-clang-14 nsis wixl
${ORVANTIS_EXTRA_PACKAGES:-}"

case "${1:-}" in
    "") ;;
    --list) printf '%s\n' $packages; exit 0 ;;
    *) wrong_usage "install-packages.sh: unknown argument: $1" ;;
esac

missing=""
for package in $packages; do
    dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || missing="$missing $package"
done
[ -n "$missing" ] || exit 0

as_root=""
if [ "$(id -u)" != 0 ]; then
    if ! command -v sudo >/dev/null 2>&1; then
        {
            echo "These packages are missing, and there is no sudo to install them with:"
            echo "   $missing"
            echo "Have an administrator run:"
            echo "    apt-get update && apt-get install --no-install-recommends$missing"
        } >&2
        exit 1
    fi
    as_root="sudo"
fi

echo "== Packages to install:$missing"
$as_root env DEBIAN_FRONTEND=noninteractive apt-get update -qq
# shellcheck disable=SC2086 # a list of words on purpose
$as_root env LC_ALL=C apt-get install --assume-no --no-install-recommends $missing 2>/dev/null |
    sed -n 's/^Need to get \(.*\) of archives\.$/   \1 to fetch (all of them on a fresh machine: about 2.7 GB with what they need)/p;
        s/^After this operation, \(.*\) of additional disk space will be used\.$/   \1 on the disk/p'
# shellcheck disable=SC2086
$as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends $missing >/dev/null
echo "   installed"
