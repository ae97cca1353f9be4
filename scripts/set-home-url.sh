#!/bin/sh
# Says where the repository is on its forge, below which releases are published: writes the address into packaging/home-url.txt,
# which packages, manifests and the release workflow read, and into the link of the issue templates.
#
#   scripts/set-home-url.sh https://FORGE/OWNER/NAME
set -eu
script="$(realpath "$0")"
cd "$(dirname "$script")/.."
. scripts/common.sh
help_or_go_on "$@"
[ "$#" = 1 ] || wrong_usage "set-home-url.sh: one address is needed"
wrong_address() { wrong_usage "set-home-url.sh: no address that packages can be fetched from: $1"; }
case "$1" in https://*) ;; *) wrong_address "$1" ;; esac
# The same rules as for packaging.
cmake "-Dhome_url=$1" -P packaging/home_url.cmake >/dev/null 2>&1 || wrong_address "$1"
old="$(cat packaging/home-url.txt)"
printf '%s\n' "$1" >packaging/home-url.txt
# Only the link: everything else in the file stays as it is.
awk -v old="$old" -v new="$1" '{ at = index($0, "url: " old "/") }
    at { $0 = substr($0, 1, at + 4) new substr($0, at + 5 + length(old)) }
    { print }' .github/ISSUE_TEMPLATE/config.yml >.github/ISSUE_TEMPLATE/config.yml.new
mv .github/ISSUE_TEMPLATE/config.yml.new .github/ISSUE_TEMPLATE/config.yml
echo "packaging/home-url.txt and .github/ISSUE_TEMPLATE/config.yml name $1"
