"""The steps of the forge's workflows, looked at and run without a forge. What scripts/check-workflows.sh starts.

    workflow_steps.py check          everything that can be seen without running anything; exit code 1 when something is wrong
    workflow_steps.py run [long]     runs the steps of the jobs in Debian containers, in a clone; says which it leaves out, and why
"""

import itertools
import json
import os
import pathlib
import re
import subprocess
import sys
import tempfile
from dataclasses import dataclass, field

import yaml

WORKFLOWS = pathlib.Path(".github/workflows")
DEBIAN = "debian:12"
# What a step is left out for: its words, the reason, and whether `run long` runs it nevertheless.
LEFT_OUT = [
    (r"^gh ", "needs the forge", False),
    (r"^scripts/check-workflows\.sh", "is what runs these steps", False),
    (r"^\./test\.sh|^\./lint\.sh", "takes a quarter of an hour and more: run it by itself", True),
    (r"^scripts/check-reproducible\.sh|^scripts/build-release\.sh", "compiles everything: run it by itself", True),
    (r"cpack", "packages what the step before it builds", True),
    (r"^tests/fuzz/run\.sh", "fuzzes for hours: run it by itself", True),
]
CONTEXT = {"github.server_url": "https://192.0.2.1", "github.repository": "somebody/orvantis-importer", "github.token": "none",
           "github.sha": "0" * 40, "github.ref": "refs/heads/main"}


@dataclass
class Step:
    workflow: str
    job: str
    name: str
    words: str
    shell: str
    container: str
    environment: dict = field(default_factory=dict)

    def __str__(self):
        return f"{self.workflow}, {self.job}: {self.name}"


def expressions_filled_in(text, context):
    """As the forge puts in what `${{ }}` names; what is not known here becomes the word `value`."""
    return re.sub(r"\$\{\{\s*(.*?)\s*\}\}", lambda found: str(context.get(found[1], "value")), str(text))


def combinations(job):
    """What a job's matrix makes of it: a context each."""
    matrix = job.get("strategy", {}).get("matrix", {})
    for values in itertools.product(*matrix.values()):
        yield {**CONTEXT, **{f"matrix.{key}": value for key, value in zip(matrix, values)}}


def workflows():
    return {path.name: yaml.safe_load(path.read_text()) for path in sorted(WORKFLOWS.glob("*.yml"))}


def steps():
    """Each that is a command, once for each value of a matrix that it names."""
    seen = set()
    for workflow, content in workflows().items():
        for name, job in content["jobs"].items():
            shell = job.get("defaults", {}).get("run", {}).get("shell", "sh")
            for context in combinations(job):
                for step in (each for each in job["steps"] if "run" in each):
                    words = expressions_filled_in(step["run"], context).strip()
                    if (workflow, name, words) in seen:
                        continue
                    seen.add((workflow, name, words))
                    yield Step(workflow, name, expressions_filled_in(step.get("name", words), context), words,
                               step.get("shell", shell), job.get("container", ""),
                               {key: expressions_filled_in(value, context) for key, value in step.get("env", {}).items()})


def problems_of_step(step):
    if step.shell == "pwsh":
        return
    said = subprocess.run(["shellcheck", "--shell=sh", "--severity=warning", "--exclude=SC2164", "-"], input=step.words, text=True,
                          capture_output=True)
    if said.returncode:
        yield said.stdout
    for started in re.findall(r"(?:^|[\s;&|(])((?:\./|\.ci/|scripts/|tests/)[\w/.-]+)", step.words):
        if not os.access(started, os.X_OK) or not pathlib.Path(started).is_file():
            yield f"there is no {started}, or it cannot be started"


def problems_of_workflow(text, content):
    if "UNRUN" not in text:
        yield "does not say that it has not run on a forge"
    if content.get("permissions") != {"contents": "read"}:
        yield "its jobs may do more than read unless they say so themselves"
    for name, job in content["jobs"].items():
        writes = {**content.get("permissions", {}), **job.get("permissions", {})}.get("contents") == "write"
        for used in (step["uses"] for step in job["steps"] if "uses" in step):
            action, _, version = used.partition("@")
            pinned = re.fullmatch(r"[0-9a-f]{40}", version)
            if not pinned and not re.fullmatch(r"v\d+(\.\d+)*", version):
                yield f"{name}: {used} names neither a version nor a commit"
            # Whoever can move a tag of an action can write what this job can.
            if writes and not pinned and not action.startswith(("actions/", "github/")):
                yield f"{name}: may write to the repository, and hands that to {used}"


def problems_of_container():
    folder = pathlib.Path(".devcontainer")
    json.loads((folder / "devcontainer.json").read_text())
    recipe = (folder / "Dockerfile").read_text()
    copied = [name for line in re.findall(r"(?m)^COPY (.*)$", recipe) for name in line.split()[:-1]]
    with tempfile.TemporaryDirectory() as name:
        for file in map(pathlib.Path, copied):
            if not file.is_file():
                yield f"there is no {file}"
                continue
            (pathlib.Path(name) / file.name).write_bytes(file.read_bytes())
        script = pathlib.Path(name) / "install-packages.sh"
        listed = subprocess.run(["sh", script, "--list"], capture_output=True, text=True)
        if listed.returncode or "ninja-build" not in listed.stdout.split():
            yield f"install-packages.sh does not work with what is copied: {listed.stderr}"


def check():
    found = []
    for name, content in workflows().items():
        found += [f"{name}: {problem}" for problem in problems_of_workflow((WORKFLOWS / name).read_text(), content)]
    for step in steps():
        found += [f"{step}: {problem}" for problem in problems_of_step(step)]
    found += [f".devcontainer: {problem}" for problem in problems_of_container()]
    print("\n".join(found))
    return 1 if found else 0


def reason_against(step, long):
    if step.container != DEBIAN:
        return "needs Windows"
    for pattern, reason, may_be_long in LEFT_OUT:
        if re.search(pattern, step.words, re.MULTILINE) and not (long and may_be_long):
            return reason
    if step.words.startswith("apt-get") and os.geteuid() != 0:
        return "needs an administrator"
    return None


def scratch(folder):
    """A clone of the last commit with its release's tag, and the environment in which the forge runs steps."""
    clone = folder / "clone"
    subprocess.run(["git", "clone", "--quiet", ".", clone], check=True)
    version = re.search(r"(?m)^    VERSION ([0-9.]+)$", pathlib.Path("CMakeLists.txt").read_text()).group(1)
    subprocess.run(["git", "-C", clone, "tag", "--force", f"v{version}"], check=True, capture_output=True)
    for name in ("home", "temp"):
        (folder / name).mkdir()
    return clone, {**os.environ, "HOME": str(folder / "home"), "CI": "true", "GITHUB_WORKSPACE": str(clone),
                   "GITHUB_REF_NAME": f"v{version}", "RUNNER_TEMP": str(folder / "temp")}


def run(long):
    counts = {"ran": 0, "left out": 0, "FAILED": 0}
    with tempfile.TemporaryDirectory() as name:
        clone, environment = scratch(pathlib.Path(name))
        for step in steps():
            reason = reason_against(step, long)
            if reason:
                counts["left out"] += 1
                print(f"left out: {step} ({reason})")
                continue
            result = subprocess.run(["sh", "-e", "-c", step.words], cwd=clone, env={**environment, **step.environment},
                                    stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
            word = "FAILED" if result.returncode else "ran"
            counts[word] += 1
            print(f"{word}: {step}")
            if result.returncode:
                print(result.stdout)
    print(", ".join(f"{count} {word}" for word, count in counts.items()))
    return 1 if counts["FAILED"] else 0


if __name__ == "__main__":
    what = sys.argv[1:]
    sys.exit(check() if what == ["check"] else run("long" in what))
