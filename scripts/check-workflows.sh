#!/bin/sh
# The files of the forge, as far as they can be checked here: YAML by yamllint, workflows, issue templates and the dependency bot's
# settings by their schemas, every script and every step of the workflows that is shell by shellcheck, that what the steps start is in
# the repository and knows the words that it gets, that the container to develop in installs what the scripts install, and that no
# job hands the right to write to an action of others.
#
#   scripts/check-workflows.sh                  checks
#   scripts/check-workflows.sh --run            runs the steps of the jobs in Debian containers, too, in a clone of the last commit,
#                                               and tells which it leaves out, and why
#   scripts/check-workflows.sh --run long       those that take hours, too
#   scripts/check-workflows.sh --run long PART  of all steps, those in whose name or job or workflow PART is: "release.yml"
set -eu
script="$(realpath "$0")"
cd "$(dirname "$script")/.."
. scripts/common.sh
help_or_go_on "$@"
case "$*" in
    "" | --run | "--run long" | "--run long "?*) ;;
    *) wrong_usage "check-workflows.sh: unknown arguments: $*" ;;
esac
ORVANTIS_EXTRA_PACKAGES="yamllint shellcheck python3-yaml python3-jsonschema" scripts/install-packages.sh

echo "== yamllint"
yamllint --strict .github
echo "== shellcheck"
git ls-files -z '*.sh' | xargs -0 shellcheck --severity=warning --exclude=SC2045,SC2154
echo "== steps of the workflows"
# The distribution's own, which has what the packages bring.
/usr/bin/python3 -B scripts/workflow_steps.py check
echo "Workflows are clean."
[ "$#" != 0 ] || exit 0
shift
echo "== running the steps"
/usr/bin/python3 -B scripts/workflow_steps.py run "$@"
