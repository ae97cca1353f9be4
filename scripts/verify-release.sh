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
for folder in "$packages" "$signatures"; do
    [ -d "$folder" ] || wrong_usage "verify-release.sh: there is no folder $folder"
done
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
trap 'exit 130' INT TERM

# The packages, and what goes with them.
published="$(cd "$packages" && find . -type f \( -path './ImporterOrvantis-*' -o -path './importer-validator-*' -o \
    -path './manifests/*' \) | sort)"
[ -n "$published" ] || wrong_usage "verify-release.sh: no packages are in $packages"
signed=""
[ -z "$(find "$signatures" -name '*.p7')" ] || signed=yes

if [ -n "$signed" ]; then
    ORVANTIS_EXTRA_PACKAGES="osslsigncode" "$here/install-packages.sh"
    ca="${ORVANTIS_SIGN_CA:-/etc/ssl/certs/ca-certificates.crt}"
    for file in "$packages"/*.exe "$packages"/*.msi; do
        [ -e "$file" ] || continue
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
    "$here/build-release.sh" "$3" "$work/sources"
    build="$work/sources/build/windows-clang"
    SOURCE_DATE_EPOCH="$(git -C "$here" log -1 --format=%ct "$3")"
    export SOURCE_DATE_EPOCH
fi

# Who built, and where the repository is, is what the statement of origin claims: no rebuild can tell. The same claims again, so
# that everything else in it is compared.
unset ORVANTIS_BUILDER ORVANTIS_HOME_URL
for statement in "$packages"/ImporterOrvantis-*.intoto.json; do
    [ -e "$statement" ] || continue
    python3 - "$statement" >"$work/claims" <<'PY'
import json, sys
predicate = json.load(open(sys.argv[1], encoding="utf-8"))["predicate"]
print(predicate["runDetails"]["builder"]["id"])
print(next((each["uri"].removeprefix("git+") for each in predicate["buildDefinition"]["resolvedDependencies"]
            if each.get("uri", "").startswith("git+")), ""))
PY
    ORVANTIS_BUILDER="$(sed -n 1p "$work/claims")"
    ORVANTIS_HOME_URL="$(sed -n 2p "$work/claims")"
    echo "claimed, not verified: built by $ORVANTIS_BUILDER${ORVANTIS_HOME_URL:+ from $ORVANTIS_HOME_URL}"
    export ORVANTIS_BUILDER ORVANTIS_HOME_URL
done

failed=0
cp -r "$signatures" "$work/signatures"
mkdir "$work/packages"
if [ -n "$signed" ]; then
    # No key: what has no signature in the release must not get one.
    ORVANTIS_SIGN_MODULE="" ORVANTIS_SIGN_KEY="" "$here/sign-release.sh" "$build" "$work/packages" "$work/signatures" \
        >"$work/log" 2>&1 || {
        cat "$work/log"
        echo "The signatures do not fit what the sources make"
        exit 1
    }
else
    (cd "$build" && cpack --config CPackConfig.cmake -B "$work/packages" >"$work/log" 2>&1) || { cat "$work/log"; exit 1; }
    rm -rf "$work/packages/_CPack_Packages"
fi

while IFS= read -r name; do
    if cmp -s "$packages/$name" "$work/packages/$name"; then
        echo "same: ${name#./}"
    else
        echo "NOT what the sources make: ${name#./}"
        failed=1
        # Texts tell why: another compiler, for example.
        case "$name" in *.json | *.yaml) diff "$packages/$name" "$work/packages/$name" | head -n 20 ;; esac
    fi
done <<EOF
$published
EOF
(cd "$work/packages" && find . -type f | sort) >"$work/made"
while IFS= read -r name; do
    [ -e "$packages/$name" ] || echo "not there to be compared: ${name#./}"
done <"$work/made"
[ "$failed" = 0 ] && echo "Verified: the packages are what the sources make"
exit "$failed"
