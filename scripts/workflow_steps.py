"""The steps of the forge's workflows, looked at and run without a forge. What scripts/check-workflows.sh starts.

    workflow_steps.py check             everything that can be seen without running anything; exit code 1 when something is wrong
    workflow_steps.py table             writes into docs/workflows.md which steps are run here, and why the others are not
    workflow_steps.py run [long] [PART] runs the steps of the jobs in Debian containers, in a clone; says which it leaves out, and why.
                                        PART: only steps whose workflow, job and name contain it

What a step is left out for stands in the workflow, as a comment above the step or its job: `# UNRUN: reason`, or `# LONG: reason` for
what `run long` runs.
"""

import itertools
import json
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import time
from dataclasses import dataclass, field

import yaml

ROOT = pathlib.Path(__file__).resolve().parent.parent
sys.path.insert(0, str(ROOT / "tests/packaging"))
import schema_check

WORKFLOWS = pathlib.Path(".github/workflows")
HOME = pathlib.Path("packaging/home-url.txt")
PAGE = pathlib.Path("docs/workflows.md")
DEBIAN = "debian:12"
SERVER, REPOSITORY = "https://192.0.2.1", "somebody/orvantis-importer"
CONTEXT = {"github.server_url": SERVER, "github.repository": REPOSITORY, "github.token": "none", "github.sha": "0" * 40,
           "github.ref": "refs/heads/main"}
# Enough to see that a step of the night does its work.
SHORT_NIGHT = {"NIGHTLY_MUTANTS": "2", "NIGHTLY_FUZZ_MINUTES": "1", "NIGHTLY_SESSIONS": "500", "NIGHTLY_WINE_SESSIONS": "10"}
# Machines and rights that the schema, which is of 2022, does not know yet.
NEWER_MACHINES = {"ubuntu-24.04": "ubuntu-22.04"}
NEWER_RIGHTS = ["attestations"]
# What a container file may do: words that install, and those that clean up, which are not run.
INSTALLS = r"""(?:[A-Z_]+="[^"`$]*" )?(?:apt-get|/tmp/scripts/install-packages\.sh|rm)(?: [^;|&<>`$]*)?"""
SCHEMAS = {
    "dependabot.yml": "dependabot-2.0.schema.json",
    "ISSUE_TEMPLATE/bug.yml": "github-issue-forms.schema.json",
    "ISSUE_TEMPLATE/config.yml": "github-issue-config.schema.json",
}


@dataclass
class Step:
    workflow: str
    job: str
    number: int
    name: str
    words: str
    shell: str
    container: str
    unrun: str
    long: str
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


def marks(text):
    """The comments above jobs and steps: (job, number of the step or None) -> the words after UNRUN and LONG."""
    lines = text.splitlines()

    def above(line):
        first = line
        while first > 0 and lines[first - 1].strip().startswith("#"):
            first -= 1
        comment = " ".join(each.strip().lstrip("# ") for each in lines[first:line])
        return {kind: reason.strip() for kind, reason in re.findall(r"(UNRUN|LONG): (.*?)(?=UNRUN: |LONG: |$)", comment)}

    found = {}
    jobs = next(value for key, value in yaml.compose(text).value if key.value == "jobs")
    for job, content in jobs.value:
        found[job.value, None] = above(job.start_mark.line)
        steps_of_job = next(value for key, value in content.value if key.value == "steps")
        for number, step in enumerate(steps_of_job.value):
            found[job.value, number] = above(step.start_mark.line)
    return found


def steps():
    """Each that is a command, once for each value of a matrix that it names."""
    seen = set()
    for workflow, content in workflows().items():
        marked = marks((WORKFLOWS / workflow).read_text())
        for name, job in content["jobs"].items():
            shell = job.get("defaults", {}).get("run", {}).get("shell", "sh")
            for context in combinations(job):
                for number, step in enumerate(job["steps"]):
                    if "run" not in step:
                        continue
                    words = expressions_filled_in(step["run"], context).strip()
                    if (workflow, name, words) in seen:
                        continue
                    seen.add((workflow, name, words))
                    mark = {**marked[name, None], **marked[name, number]}
                    yield Step(workflow, name, number, expressions_filled_in(step.get("name", words), context), words,
                               step.get("shell", shell), job.get("container", ""), mark.get("UNRUN", ""), mark.get("LONG", ""),
                               {key: expressions_filled_in(value, context) for key, value in step.get("env", {}).items()})


def usage(script):
    """The comment that opens a script of ours, or what stands in for it."""
    lines = itertools.takewhile(lambda line: line.startswith("#") or not line, pathlib.Path(script).read_text().splitlines())
    return "\n".join(lines)


def problems_of_cmake(words):
    """Presets and variables of a step that the project does not have: all that can be seen of a step for Windows."""
    presets = json.loads(pathlib.Path("CMakePresets.json").read_text())
    for program, mode, name in re.findall(r"\b(cmake|ctest)(?: --(build|workflow))? --preset ([\w-]+)", words):
        kind = f"{mode or ('configure' if program == 'cmake' else 'test')}Presets"
        if name not in (each["name"] for each in presets[kind]):
            yield f"there is no `{name}` among the {kind}"
    project = "".join(path.read_text() for path in [pathlib.Path("CMakeLists.txt"), *pathlib.Path("cmake").glob("*.cmake")])
    for name in re.findall(r"-D((?!CMAKE_)\w+)=", words):
        if not re.search(rf"\b{name.removesuffix('_include_dir')}\b", project):
            yield f"the project knows no variable {name}"


def problems_of_step(step):
    yield from problems_of_cmake(step.words)
    if step.container != DEBIAN and not step.unrun:
        yield "is in no Debian container, and no comment `# UNRUN: reason` says why nobody runs it"
    if step.shell == "pwsh":
        return
    for started, words in re.findall(r"(?:^|[\s;&|(])((?:\./|\.ci/|scripts/|tests/)[\w/.-]+)([^;&|)\n]*)", step.words):
        if not os.access(started, os.X_OK) or not pathlib.Path(started).is_file():
            yield f"there is no {started}, or it cannot be started"
            continue
        for word in re.findall(r"(?<=\s)-?-?[a-z][a-z-]*(?=\s|$)", words):
            if not re.search(rf"(?<![\w-]){re.escape(word)}(?![\w-])", usage(started)):
                yield f"{started} does not say what `{word}` means"


def problems_of_shell(all_steps):
    """Of all steps at once: starting shellcheck is most of what it costs."""
    with tempfile.TemporaryDirectory() as name:
        files = {}
        for number, step in enumerate(each for each in all_steps if each.shell != "pwsh"):
            files[f"{name}/{number}"] = step
            pathlib.Path(name, str(number)).write_text(step.words + "\n")
        said = subprocess.run(["shellcheck", "--shell=sh", "--severity=warning", "--exclude=SC2164", "--format=gcc", *files],
                              capture_output=True, text=True)
        for file, problem in re.findall(r"(?m)^(\S+?):(.*)$", said.stdout):
            yield f"{files[file]}: {problem}"
        if said.returncode not in (0, 1):
            yield f"shellcheck: {said.stderr}"


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
        job["runs-on"] = NEWER_MACHINES.get(job["runs-on"], job["runs-on"])
        job["permissions"] = {right: how for right, how in job.get("permissions", {}).items() if right not in NEWER_RIGHTS}
    # YAML takes the word `on` for a truth value.
    content["on"] = content.pop(True, None)
    yield from schema_check.problems(content, "github-workflow.schema.json")


def problems_of_templates():
    for name, schema in SCHEMAS.items():
        content = yaml.safe_load((WORKFLOWS.parent / name).read_text())
        for problem in schema_check.problems(content, schema):
            yield f"{name}: {problem}"
    home = HOME.read_text().strip()
    for link in yaml.safe_load((WORKFLOWS.parent / "ISSUE_TEMPLATE/config.yml").read_text())["contact_links"]:
        if not link["url"].startswith(home + "/"):
            yield f"ISSUE_TEMPLATE/config.yml: {link['url']} is not below {home}: scripts/set-home-url.sh sets both"


def problems_of_night():
    """A step that the night has, and no machine of the forge."""
    wanted = re.search(r'(?m)^all="(.*)"$', pathlib.Path(".ci/nightly").read_text()).group(1).split()
    there = [step for job in workflows()["nightly.yml"]["jobs"].values() for step in job["strategy"]["matrix"]["step"]]
    if there != wanted:
        yield f"nightly.yml: has the steps {' '.join(there)}, and .ci/nightly {' '.join(wanted)}"


def problems_of_container():
    """Each RUN of the recipe is run where nothing is installed, with an apt-get that only writes down what it is asked for."""
    folder = pathlib.Path(".devcontainer")
    settings = json.loads((folder / "devcontainer.json").read_text())
    recipe = (folder / "Dockerfile").read_text().replace("\\\n", " ")
    if not re.search(rf"(?m)^FROM {DEBIAN}$", recipe):
        yield f"is not made from {DEBIAN}, which the scripts are for"
    preset = re.fullmatch(r"cmake --preset (\S+)", settings.get("postCreateCommand", ""))
    if not preset or f'"name": "{preset[1]}"' not in pathlib.Path("CMakePresets.json").read_text():
        yield f"postCreateCommand configures no preset: {settings.get('postCreateCommand')}"
    with tempfile.TemporaryDirectory() as name:
        root = pathlib.Path(name)
        (root / "bin").mkdir()
        for program, words in (("apt-get", f'echo "$@" >>"{root}/asked"'), ("dpkg-query", "exit 1"), ("rm", "")):
            (root / "bin" / program).write_text(f"#!/bin/sh\n{words}\n")
            (root / "bin" / program).chmod(0o755)
        for words in re.findall(r"(?m)^COPY (.*)$", recipe):
            *files, place = words.split()
            (root / place.lstrip("/")).mkdir(parents=True, exist_ok=True)
            for file in map(pathlib.Path, files):
                if not file.is_file():
                    yield f"there is no {file}"
                    continue
                copy = root / place.lstrip("/") / file.name
                copy.write_bytes(file.read_bytes())
                copy.chmod(file.stat().st_mode)
        for words in re.findall(r"(?m)^RUN (.*)$", recipe):
            # What is run here must be harmless to this machine.
            other = [each for each in words.split(" && ") if not re.fullmatch(INSTALLS, each.strip())]
            if other:
                yield f"RUN {' && '.join(other)}: is no installing of packages"
                continue
            said = subprocess.run(["sh", "-ec", words.replace("/tmp/scripts/", f"{root}/tmp/scripts/")], capture_output=True, text=True,
                                  env={"PATH": f"{root}/bin:/usr/bin:/bin"})
            if said.returncode:
                yield f"RUN {words} fails: {said.stdout}{said.stderr}".strip()
        asked = {word for line in (root / "asked").read_text().splitlines() if line.startswith("install -y") for word in line.split()}
    listed = subprocess.run(["sh", "scripts/install-packages.sh", "--list"], capture_output=True, text=True, check=True,
                            env={"PATH": "/usr/bin:/bin"}).stdout.split()
    missing = sorted(set(listed) - asked)
    if missing:
        yield f"lacks packages that scripts/install-packages.sh installs: {' '.join(missing)}"


def table():
    """A row for each step of each workflow: whether it is run here."""
    rows = ["| Workflow, job | Step | Run without a forge |", "|---|---|---|"]
    run_here = {}
    for step in steps():
        said = f"no: {step.unrun}" if step.unrun else f"`--run long`: {step.long}" if step.long else "`--run`"
        run_here[step.workflow, step.job, step.number] = said
    for workflow, content in workflows().items():
        for name, job in content["jobs"].items():
            for number, step in enumerate(job["steps"]):
                said = run_here.get((workflow, name, number), "no: an action is the forge's")
                title = re.sub(r"\$\{\{\s*(?:matrix\.(\w+))?.*?\}\}", r"‹\1›", step.get("name") or step.get("uses", ""))
                rows.append(f"| {workflow}, {name} | {title} | {said} |")
    return "\n".join(rows) + "\n"


BEGIN, END = "<!-- steps of the workflows -->\n", "<!-- end of the steps -->\n"


def page_with_table():
    before, _, rest = PAGE.read_text().partition(BEGIN)
    return before + BEGIN + "\n" + table() + "\n" + END + rest.partition(END)[2]


def check():
    found = []
    for name, content in workflows().items():
        found += [f"{name}: {problem}" for problem in problems_of_workflow((WORKFLOWS / name).read_text(), content)]
    for step in steps():
        found += [f"{step}: {problem}" for problem in problems_of_step(step)]
    found += problems_of_shell(steps())
    found += problems_of_night()
    found += problems_of_templates()
    found += [f".devcontainer: {problem}" for problem in problems_of_container()]
    if PAGE.read_text() != page_with_table():
        found.append(f"{PAGE}: its table is not of these workflows: /usr/bin/python3 scripts/workflow_steps.py table")
    print("\n".join(found))
    return 1 if found else 0


def reason_against(step, long):
    if step.unrun:
        return step.unrun
    if step.long and not long:
        return step.long
    if step.words.startswith("apt-get") and os.geteuid() != 0:
        return "needs an administrator"
    return None


def scratch(folder):
    """A clone of the last commit with its release's tag, and the environment in which the forge runs steps."""
    clone = folder / "clone"
    subprocess.run(["git", "clone", "--quiet", ".", clone], check=True)
    git = ["git", "-C", clone, "-c", "user.name=Somebody", "-c", "user.email=somebody@localhost"]
    if (clone / "scripts/set-home-url.sh").exists():
        subprocess.run([clone / "scripts/set-home-url.sh", f"{SERVER}/{REPOSITORY}"], check=True, stdout=subprocess.DEVNULL)
        subprocess.run([*git, "commit", "--quiet", "-am", "Say where the repository is"], check=True)
    version = re.search(r"(?m)^    VERSION ([0-9.]+)$", pathlib.Path("CMakeLists.txt").read_text()).group(1)
    subprocess.run([*git, "tag", "--force", f"v{version}"], check=True, capture_output=True)
    for name in ("home", "temp"):
        (folder / name).mkdir()
    return clone, {**os.environ, **SHORT_NIGHT, "HOME": str(folder / "home"), "CI": "true", "GITHUB_WORKSPACE": str(clone),
                   "GITHUB_REF_NAME": f"v{version}", "RUNNER_TEMP": str(folder / "temp"), "GITHUB_SERVER_URL": SERVER,
                   "GITHUB_REPOSITORY": REPOSITORY}


def run(long, part):
    """Equal steps once: they do the same in every job."""
    counts = {"ran": 0, "left out": 0, "FAILED": 0}
    done = {}
    with tempfile.TemporaryDirectory() as name:
        clone, environment = scratch(pathlib.Path(name))
        for step in steps():
            if part not in str(step):
                continue
            reason = reason_against(step, long)
            key = (step.words, tuple(step.environment.items()))
            if reason or key in done:
                counts["left out"] += 1
                print(f"left out: {step} ({reason or f'ran as {done[key]}'})", flush=True)
                continue
            begun = time.monotonic()
            result = subprocess.run(["sh", "-e", "-c", step.words], cwd=clone, env={**environment, **step.environment},
                                    stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
            word = "FAILED" if result.returncode else "ran"
            counts[word] += 1
            print(f"{word}: {step}" + (f" ({time.monotonic() - begun:.0f} s)" if step.long else ""), flush=True)
            if result.returncode:
                print(result.stdout)
            else:
                done[key] = str(step)
    print(", ".join(f"{count} {word}" for word, count in counts.items()))
    return 1 if counts["FAILED"] or not (counts["ran"] + counts["left out"]) else 0


def main(what, *words):
    if what == "check":
        return check()
    if what == "table":
        PAGE.write_text(page_with_table())
        return 0
    long = words[:1] == ("long",)
    return run(long, " ".join(words[1:] if long else words))


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
