#!/bin/sh
# Shows that published packages are what the sources of their tag make, and nothing else: rebuilds the tag, puts the published
# signatures onto what came out, and compares every package byte for byte. No key is needed.
#
#   scripts/verify-release.sh PACKAGES SIGNATURES TAG             rebuilds the tag of this repository
#   scripts/verify-release.sh PACKAGES SIGNATURES --built BUILD   compares with a build folder that is there already
#
# SIGNATURES are the files NAME.p7 of the release; a folder without any stands for a release that was not signed.
# ORVANTIS_SIGN_CA names a file with the certificates (PEM) that signatures and time stamps must lead to; without it, those that
# the system trusts. Exit code 1: something differs, or a signature is not valid.
set -eu
script="$(realpath "$0")"
here="$(dirname "$script")"
. "$here/common.sh"
help_or_go_on "$@"
[ "$#" -ge 3 ] || wrong_usage "verify-release.sh: packages, signatures and a tag are needed, ${1:-nothing} is not enough"
packages="$(realpath "$1")"
signatures="$(realpath "$2")"
work="$(mktemp -d)"
# The tool depends on the name of its folder, so every release is built in this one.
folder=/tmp/orvantis-release
owned=""
trap 'rm -rf "$work" $owned' EXIT
trap 'exit 130' INT TERM
if [ -n "$(find "$signatures" -name '*.p7')" ]; then
    ca="${ORVANTIS_SIGN_CA:-/etc/ssl/certs/ca-certificates.crt}"
    for file in "$packages"/*.exe "$packages"/*.msi; do
        if osslsigncode verify -CAfile "$ca" -TSA-CAfile "$ca" -in "$file" >"$work/log" 2>&1; then
            echo "signature valid: $(basename "$file")"
        else
            cat "$work/log"
            echo "signature NOT valid: $(basename "$file")"
            exit 1
        fi
    done
fi
if [ "$3" = --built ]; then
    build="$(realpath "${4:?--built needs a folder}")"
else
    "$here/build-release.sh" "$3" "$folder"
    owned="$folder"
    build="$folder/build/windows-clang"
    SOURCE_DATE_EPOCH="$(git -C "$here" log -1 --format=%ct "$3")"
    export SOURCE_DATE_EPOCH
fi

failed=0
cp -r "$signatures" "$work/signatures"
mkdir "$work/packages"
if [ -n "$(find "$signatures" -name '*.p7')" ]; then
    # No key: what has no signature in the release must not get one.
    ORVANTIS_SIGN_MODULE="" ORVANTIS_SIGN_KEY="" "$here/sign-release.sh" "$build" "$work/packages" "$work/signatures" >"$work/log" 2>&1 || {
        cat "$work/log"
        echo "The signatures do not fit what the sources make"
        exit 1
    }
else
    (cd "$build" && cpack --config CPackConfig.cmake -B "$work/packages" >"$work/log" 2>&1) || { cat "$work/log"; exit 1; }
fi

for file in "$packages"/ImporterOrvantis-*; do
    name="$(basename "$file")"
    if cmp "$file" "$work/packages/$name"; then
        echo "same: $name"
    else
        failed=1
    fi
done
[ "$failed" = 0 ] && echo "Verified: the packages are what the sources make"
exit "$failed"
