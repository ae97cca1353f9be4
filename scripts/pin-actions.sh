#!/bin/sh
# Names the actions of the workflows by commit instead of by version: asks the forge which commit each version is, and writes it with
# the version beside it. What is named by a commit stays. Whoever can move a version's tag can then change nothing here.
#
#   scripts/pin-actions.sh [FORGE]     FORGE is https://github.com, or what `git ls-remote FORGE/OWNER/NAME` takes otherwise
#
# Exit code 1, and nothing is changed, when a version is not there.
set -eu
script="$(realpath "$0")"
cd "$(dirname "$script")/.."
. scripts/common.sh
help_or_go_on "$@"
[ "$#" -le 1 ] || wrong_usage "pin-actions.sh: one forge at most"
forge="${1:-https://github.com}"
case "$forge" in */*) ;; *) wrong_usage "pin-actions.sh: no forge: $forge" ;; esac
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
trap 'exit 130' INT TERM

sed -n 's/^ *\(- \)\{0,1\}uses: \([^ @]*@v[0-9.]*\) *$/\2/p' .github/workflows/*.yml | sort -u >"$work/used"
failed=0
while IFS=@ read -r action version; do
    # Of an action in a folder of its repository, the first two words are the repository.
    repository="$(echo "$action" | cut -d / -f 1,2)"
    # An annotated tag is an object of its own: the commit is what it leads to, `^{}`, told after it.
    commit="$(git ls-remote "$forge/$repository" "refs/tags/$version" "refs/tags/$version^{}" | tail -n 1 | cut -f 1)" || commit=""
    if [ "${#commit}" != 40 ]; then
        echo "pin-actions.sh: $forge/$repository has no version $version, or cannot be asked" >&2
        failed=1
        continue
    fi
    printf 's|^\\( *\\(- \\)\\{0,1\\}uses: %s\\)@%s *$|\\1@%s # %s|\n' "$action" "$version" "$commit" "$version" >>"$work/changes"
    echo "$action@$version is $commit"
done <"$work/used"
[ "$failed" = 0 ] || exit 1
[ ! -e "$work/changes" ] || sed -i -f "$work/changes" .github/workflows/*.yml
