#!/usr/bin/env python3
"""Runs the native tests of the plug-in, counted, and holds its folders to their limits: see coverage.sh."""
import argparse
import collections
import json
import os
import pathlib
import shutil
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
sys.path.insert(0, str(ROOT / "scripts/mutation"))

from branches import branches_of, judge, reasons_in  # noqa: E402
from build_graph import BuildGraph  # noqa: E402

BUILD = ROOT / "build/linux-coverage"
OUT = ROOT / "build/coverage"
# Every branch of these runs, or a reason stands at its line.
LIMITED = ("audio", "async", "avi", "importer", "video")


def run_tests(graph, names):
    """Runs the programs, as many at a time as there are processors, each leaving its counts behind."""
    raw = OUT / "raw"
    shutil.rmtree(OUT, ignore_errors=True)
    raw.mkdir(parents=True)
    commands = []
    for program in graph.tested_programs():
        if names and program.name not in names:
            continue
        runs = list(program.runs)
        if program.apart:
            runs += [(program.runs[0][0], [f"--gtest_filter={test}"]) for test in graph.tests_of(program, program.apart)]
        for environment, arguments in runs:
            arguments = [word for word in arguments if word != "--gtest_fail_fast"]
            commands.append((program, environment, arguments))
    failed, running = [], []

    def reap():
        ended, status = os.wait()
        program, process, log = next(one for one in running if one[1].pid == ended)
        running.remove((program, process, log))
        process.returncode = os.waitstatus_to_exitcode(status)
        if process.returncode != 0:
            failed.append(program.name)
            print(f"{program.name} failed: {log}", file=sys.stderr)

    for number, (program, environment, arguments) in enumerate(commands):
        log = OUT / f"{number}-{program.name}.log"
        scratch = OUT / f"scratch-{number}"
        scratch.mkdir()
        # %m: one file for each program and module, into which every process adds its counts.
        environment = {**os.environ, **environment, "TMPDIR": str(scratch),
                       "LLVM_PROFILE_FILE": f"{raw}/{program.name}-%m.profraw"}
        with log.open("w") as output:
            running.append((program, subprocess.Popen([graph.build / "bin" / program.name, *arguments], cwd=scratch,
                                                      env=environment, stdout=output, stderr=subprocess.STDOUT), log))
        if len(running) >= (os.cpu_count() or 1):
            reap()
    while running:
        reap()
    for scratch in OUT.glob("scratch-*"):
        shutil.rmtree(scratch, ignore_errors=True)
    return failed


def export(graph, names):
    """What was counted, of the plug-in's files."""
    profile = OUT / "all.profdata"
    subprocess.run(["llvm-profdata", "merge", "-sparse", "-o", profile, *sorted((OUT / "raw").glob("*.profraw"))], check=True)
    programs = [f"bin/{program.name}" for program in graph.tested_programs() if not names or program.name in names]
    objects = ["bin/ImporterOrvantis.prm"] + [name for name in programs if has_plugin(graph, name)]
    words = [str(graph.build / objects[0])]
    words += [word for name in objects[1:] for word in ("-object", str(graph.build / name))]
    words += ["-instr-profile", str(profile)]
    words += ["-ignore-filename-regex", "_posix\\.(cpp|h)$|/build/|/usr/|/tests/|/testbed/|/host/"]
    text = subprocess.run(["llvm-cov", "export", *words], check=True, capture_output=True, text=True).stdout
    subprocess.run(["llvm-cov", "show", "-format=html", "-show-branches=count", "-output-dir", OUT / "page", *words], check=True,
                   capture_output=True)
    return json.loads(text)


def has_plugin(graph, name):
    return any(member.startswith("plugin/") for word in graph.links[name]
               for member in [word, *graph.archives.get(word, ())] if member.endswith(".o"))


def main():
    parser = argparse.ArgumentParser(prog="coverage.sh", add_help=False)
    parser.add_argument("programs", nargs="*")
    parser.add_argument("--again", action="store_true")
    options = parser.parse_args()
    graph = BuildGraph(BUILD, ROOT)
    known = {program.name for program in graph.tested_programs()}
    for name in options.programs:
        if name not in known:
            raise SystemExit(f"coverage.sh: no test program of the plug-in: {name}")
    failed = [] if options.again else run_tests(graph, options.programs)
    return report(export(graph, options.programs), failed)


def report(exported, failed=()):
    lines, branches, problems = collections.defaultdict(lambda: [0, 0]), collections.defaultdict(lambda: [0, 0, 0]), []
    for data in exported["data"]:
        for file in data["files"]:
            folder = folder_of(file["filename"])
            if folder:
                lines[folder][0] += file["summary"]["lines"]["covered"]
                lines[folder][1] += file["summary"]["lines"]["count"]
    found = branches_of(exported)
    for source in sorted(path for kind in ("*.cpp", "*.h") for path in (ROOT / "plugin").rglob(kind)):
        folder, name = folder_of(str(source)), str(source)
        wrong, explained = judge(found.get(name, []), reasons_in(source.read_text(encoding="utf-8")))
        if not folder:
            continue
        branches[folder][0] += sum(2 - len(branch.missing()) for branch in found.get(name, []))
        branches[folder][1] += 2 * len(found.get(name, []))
        branches[folder][2] += explained
        if folder in LIMITED:
            problems += [f"{source.relative_to(ROOT)}:{line}: {words}" for line, words in wrong]
    print(f"{'folder':10} {'lines':>16} {'branches':>16}  without, explained")
    for folder in sorted(branches):
        (ran, all_lines), (taken, all_branches, explained) = lines[folder], branches[folder]
        print(f"{folder:10} {ran:5} of {all_lines:5} {taken:8} of {all_branches:5}  {all_branches - taken}, {explained}"
              f"{'' if folder in LIMITED else '  (no limit)'}")
    (OUT / "summary.json").write_text(json.dumps({"lines": lines, "branches": branches, "problems": problems}, indent=1))
    print(f"{(OUT / 'page/index.html').relative_to(ROOT)} shows every line")
    for problem in problems:
        print(problem, file=sys.stderr)
    if failed:
        print(f"tests failed: {', '.join(failed)}", file=sys.stderr)
    return 1 if problems or failed else 0


def folder_of(name):
    path = pathlib.Path(name)
    if not path.is_relative_to(ROOT / "plugin") or path.stem.endswith(("_posix", "_win32")):
        return None
    return path.relative_to(ROOT / "plugin").parts[0]


if __name__ == "__main__":
    sys.exit(main())
