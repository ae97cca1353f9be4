#!/bin/sh
# Puts an Authenticode signature onto a program, library, installer or MSI package, in place.
#
#   scripts/sign-file.sh FILE [NAME]
#
# The signature is kept apart, too: as NAME.p7 in the folder ORVANTIS_SIGNATURES (without NAME: that of the file). One that lies
# there already is attached instead of a new one being made, which needs no key. A new one needs a key behind PKCS#11, so that no
# key is ever a file:
#
#   ORVANTIS_SIGN_MODULE   library of the token or security module, for example /usr/lib/softhsm/libsofthsm2.so
#   ORVANTIS_SIGN_KEY      the key's PKCS#11 address: "pkcs11:token=release;object=signing"
#   ORVANTIS_SIGN_PIN      file with the token's PIN
#   ORVANTIS_SIGN_CERTS    file with the certificate and those that it was issued by, PEM
#   ORVANTIS_SIGN_TSA      address of a time-stamp authority (RFC 3161): signatures outlive the certificate
#
# ORVANTIS_SIGN_CA names a file with the certificates (PEM) that signature and time stamp must lead to; without it, those that the
# system trusts.
set -eu
script="$(realpath "$0")"
. "$(dirname "$script")/common.sh"
help_or_go_on "$@"
case "$#" in 1 | 2) ;; *) wrong_usage "sign-file.sh: one file is needed" ;; esac
[ -f "$1" ] || wrong_usage "sign-file.sh: there is no file $1"
file="$(realpath "$1")"
signature="${ORVANTIS_SIGNATURES:?names no folder}/$(basename "${2:-$file}").p7"
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
trap 'exit 130' INT TERM

# quietly COMMAND...: what it says is shown only when it fails.
quietly() {
    "$@" >"$work/said" 2>&1 || { cat "$work/said" >&2; echo "sign-file.sh: $file was not signed" >&2; exit 1; }
}

if [ ! -e "$signature" ]; then
    quietly osslsigncode sign -pkcs11module "${ORVANTIS_SIGN_MODULE:?}" -readpass "${ORVANTIS_SIGN_PIN:?}" \
        -key "${ORVANTIS_SIGN_KEY:?}" -certs "${ORVANTIS_SIGN_CERTS:?}" -h sha256 -ts "${ORVANTIS_SIGN_TSA:?}" \
        -n "Orvantis importer" -in "$file" -out "$work/signed"
    quietly osslsigncode extract-signature -in "$work/signed" -out "$work/signature"
    mkdir -p "$(dirname "$signature")"
    mv "$work/signature" "$signature"
fi
quietly osslsigncode attach-signature -sigin "$signature" -in "$file" -out "$work/attached" \
    ${ORVANTIS_SIGN_CA:+-CAfile "$ORVANTIS_SIGN_CA" -TSA-CAfile "$ORVANTIS_SIGN_CA"}
cat "$work/attached" >"$file"
