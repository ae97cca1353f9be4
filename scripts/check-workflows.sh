#!/bin/sh
# The files of the forge, as far as they can be checked here: YAML by yamllint, every script and every step of the workflows that
# is shell by shellcheck, and that what the steps start is in the repository.
#
#   scripts/check-workflows.sh
set -eu
script="$(realpath "$0")"
cd "$(dirname "$script")/.."
. scripts/common.sh
help_or_go_on "$@"
[ "$#" = 0 ] || wrong_usage "check-workflows.sh: unknown argument: $1"
ORVANTIS_EXTRA_PACKAGES="yamllint shellcheck" scripts/install-packages.sh

echo "== yamllint"
yamllint --strict .github
echo "== shellcheck"
git ls-files -z '*.sh' | xargs -0 shellcheck --severity=warning --exclude=SC2045,SC2154
echo "== steps of the workflows"
/usr/bin/python3 - <<'PY'
import json, pathlib, re, subprocess, sys, yaml
bad = 0
for path in sorted(pathlib.Path(".github/workflows").glob("*.yml")):
    jobs = yaml.safe_load(path.read_text())["jobs"]
    for name, job in jobs.items():
        shell = job.get("defaults", {}).get("run", {}).get("shell", "bash")
        for step in job["steps"]:
            words = step.get("run")
            if words is None or step.get("shell", shell) == "pwsh":
                continue
            words = re.sub(r"\$\{\{.*?\}\}", "value", words)
            said = subprocess.run(["shellcheck", "--shell=sh", "--severity=warning", "--exclude=SC2164", "-"], input=words, text=True, capture_output=True)
            if said.returncode:
                bad += 1
                print(f"{path}, {name}: {words}\n{said.stdout}")
            for started in re.findall(r"(?:^|\s)(\./[\w/.-]+|scripts/[\w/.-]+)", words):
                if not pathlib.Path(started).is_file():
                    bad += 1
                    print(f"{path}, {name}: there is no {started}")
for path in pathlib.Path(".devcontainer").glob("*.json"):
    json.loads(path.read_text())
sys.exit(1 if bad else 0)
PY
echo "Workflows are clean."
