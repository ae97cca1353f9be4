#!/bin/sh
# Signs a release: the plug-in and the tool in BUILD, then the packages that are made of them. The signatures alone go into
# SIGNATURES, so that others can put them onto what they build themselves (scripts/verify-release.sh).
#
#   scripts/sign-release.sh BUILD PACKAGES SIGNATURES
#
# BUILD is a build folder (build/windows-clang) with the target release_files built. Which key signs is told as for
# scripts/sign-file.sh; with all signatures in SIGNATURES already, no key is needed.
set -eu
script="$(realpath "$0")"
here="$(dirname "$script")"
. "$here/common.sh"
help_or_go_on "$@"
[ "$#" = 3 ] || wrong_usage "sign-release.sh: three folders are needed, the argument ${1:-} is not enough"
build="$(realpath "$1")"
mkdir -p "$2" "$3"
packages="$(realpath "$2")"
ORVANTIS_SIGNATURES="$(realpath "$3")"
export ORVANTIS_SIGNATURES
# Packaging signs in folders of its own.
for name in ORVANTIS_SIGN_MODULE ORVANTIS_SIGN_PIN ORVANTIS_SIGN_CERTS ORVANTIS_SIGN_CA; do
    eval "value=\${$name:-}"
    [ -z "$value" ] || export "$name=$(realpath "$value")"
done

# What the build made stays as it was, for the next one.
work="$(mktemp -d)"
kept="$work/kept"
mkdir "$kept"
restore() {
    for file in "$kept"/*; do
        [ ! -e "$file" ] || cp -p "$file" "$build/release/"
    done
    rm -rf "$work"
}
trap restore EXIT
trap 'exit 130' INT TERM
for name in ImporterOrvantis.prm importer_host.exe; do
    cp -p "$build/release/$name" "$kept/"
    "$here/sign-file.sh" "$build/release/$name"
    touch -r "$kept/$name" "$build/release/$name"
done

# Packaging calls it for the uninstaller, the installer and the MSI package before it writes their checksums.
(cd "$build" && ORVANTIS_SIGN_PROGRAM="$here/sign-file.sh" cpack --config CPackConfig.cmake -B "$packages" >"$work/log" 2>&1) || {
    cat "$work/log" >&2
    exit 1
}
rm -rf "$packages/_CPack_Packages"
echo "Signed packages: $packages"
