#!/usr/bin/env python3
"""Changes the plug-in's sources in small ways and looks whether the tests notice: see mutate.sh and docs/mutation.md."""
import argparse
import collections
import copy
import concurrent.futures
import dataclasses
import hashlib
import json
import os
import pathlib
import queue
import random
import re
import subprocess
import sys
import threading

import explained
import processes
import table
from at_once import AtOnce
from build_graph import BuildGraph
from history import History
from source_mutants import Mutant, find_mutants, joined
from trial import Originals, Trials

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
BUILD = ROOT / "build/linux-quick"
STATE = ROOT / "build/mutation"
EXPLAINED = ROOT / "tests/mutation/explained.txt"
DOCUMENT = ROOT / "docs/mutation.md"
# Decided without tests, or by them for good, as long as the file is the same. Survivors are tried again: tests may be new.
KINDS = ("relation", "arithmetic", "constant", "condition", "statement", "lock", "arguments", "text")
LASTING = ("killed", "timeout", "invalid", "equal")
# From so many on a build that has all mutants costs less than one for each.
AT_ONCE_FROM = 60


def arguments_of(arguments=None):
    parser = argparse.ArgumentParser(prog="mutate.sh", add_help=False)
    parser.add_argument("places", nargs="*")
    parser.add_argument("--sample", type=int)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--kind", choices=KINDS)
    parser.add_argument("--explained", action="store_true")
    parser.add_argument("--fresh", action="store_true")
    parser.add_argument("--list", action="store_true")
    parser.add_argument("--docs", action="store_true")
    parser.add_argument("--build", type=pathlib.Path, default=BUILD)
    parser.add_argument("--jobs", type=int, default=1)
    options = parser.parse_args(arguments)
    if options.jobs < 1 or (options.sample is not None and options.sample < 1):
        parser.error("numbers begin at 1")
    return options


def chosen_files(places, sources):
    """The sources that the names given stand for: avi, plugin/avi or plugin/avi/avi_index.cpp."""
    if not places:
        return sources
    found = []
    for place in places:
        name = place.rstrip("/")
        name = name if name.startswith("plugin/") else f"plugin/{name}"
        inside = [source for source in sources if source == name or source.startswith(name + "/")]
        if not inside:
            raise SystemExit(f"mutate.sh: the native build has no plug-in source {place}")
        found += inside
    return list(dict.fromkeys(found))


def parse_arguments(graph, source, resources):
    """What libclang has to know to read a file: the include folders and definitions of its build."""
    user = source if source in graph.compile else sorted(graph.dependencies[source])[0]
    words = next(words for name, words in sorted(graph.compile[user].items()))
    return ["-x", "c++", "-std=c++20", "-w", "-resource-dir", resources,
            *(word for word in words if word.startswith(("-I", "-D")))]


def cached_mutants(source, arguments, library):
    """Reading a file takes a second, most of it for its headers: what was found is kept while file and finder are the same."""
    finder = pathlib.Path(__file__).with_name("source_mutants.py").read_bytes()
    cache = STATE / "found" / hashlib.sha1(finder + source.encode() + (ROOT / source).read_bytes()).hexdigest()
    if cache.exists():
        return [Mutant(**{**fields, "body": tuple(fields["body"])}) for fields in json.loads(cache.read_text())]
    mutants = find_mutants(source, ROOT / source, arguments, library)
    cache.parent.mkdir(exist_ok=True)
    cache.write_text(json.dumps([dataclasses.asdict(mutant) for mutant in mutants]))
    return mutants


def all_mutants(graph, sources):
    """Of each file."""
    resources = subprocess.run(["clang", "-print-resource-dir"], check=True, capture_output=True, text=True).stdout.strip()
    # Debian's bindings name no version; the library they were made for has the compiler's.
    library = next(iter(sorted(pathlib.Path("/usr/lib/llvm-14/lib").glob("libclang-14.so.1"))), None)
    with concurrent.futures.ProcessPoolExecutor(max_workers=os.cpu_count()) as pool:
        waiting = [(source, pool.submit(cached_mutants, source, parse_arguments(graph, source, resources),
                                        str(library) if library else None)) for source in sources]
        return {source: future.result() for source, future in waiting}


def content(source):
    """The same for the same code, whatever its comments."""
    return hashlib.sha1(joined((ROOT / source).read_bytes()).encode()).hexdigest()


def measure_programs(graph, trials, history):
    """Every program once with the plug-in as it is: its time, and that it passes."""
    for program in graph.tested_programs():
        if program.name in history.seconds:
            continue
        trials.seconds = 0.0
        outcome = trials.run_program(program, clock=600)
        if outcome is not None:
            raise SystemExit(f"mutate.sh: {program.name} fails without any mutant: {outcome.test}")
        history.note_time(program.name, trials.seconds)


def build_at_once(graph, mutants, history, jobs):
    """The programs that have all of the mutants, and which of their tests reach which."""
    trials = Trials(graph, STATE / "worker-0", history, Originals())
    texts = {source: (ROOT / source).read_bytes() for source in {mutant.file for mutant in mutants}}
    at_once = AtOnce(graph, STATE / "at-once", history, trials, texts)
    try:
        at_once.build(mutants, jobs)
        for program in graph.tested_programs():
            trials.seconds = 0.0
            at_once.record(program)
            if program.name not in history.seconds:
                history.note_time(program.name, trials.seconds)
    except RuntimeError as problem:
        raise SystemExit(f"mutate.sh: {problem}") from problem
    print(f"{len(at_once.numbers)} of {len(mutants)} mutants in one build", flush=True)
    return at_once


def runs_when_compiled(mutant, text):
    """Whether the compiler may have the function's results already."""
    head = text[:mutant.body[0]]
    return re.search(rb"\bconst(expr|eval)\b", head[max(head.rfind(b";"), head.rfind(b"}")) + 1:]) is not None


def try_one(trials, at_once, mutant, text):
    outcome = at_once.try_mutant(mutant) if at_once else None
    if outcome is None:
        return trials.try_mutant(mutant, text)
    if outcome.verdict == "survived":
        # Tests have the inline functions of headers from their own objects.
        if mutant.file.endswith(".h") or runs_when_compiled(mutant, text):
            outcome = trials.try_mutant(mutant, text)
        elif trials.is_same_code(mutant, text):
            outcome.verdict = "equal"
    return outcome


class Progress:
    def __init__(self, count):
        self.count, self.done, self.lock, self.verdicts = count, 0, threading.Lock(), collections.Counter()

    def tell(self, mutant, outcome):
        with self.lock:
            self.done += 1
            self.verdicts[outcome.verdict] += 1
            by = f" by {outcome.program} {outcome.test}" if outcome.program else ""
            print(f"[{self.done}/{self.count}] {mutant.file}:{mutant.line} {mutant.kind}: {outcome.verdict}{by}"
                  f" ({outcome.seconds:.1f} s)", flush=True)
            if outcome.verdict in ("survived", "explained"):
                print(f"    - {mutant.before}\n    + {mutant.after}", flush=True)


def result_of(mutant, outcome):
    return {"id": mutant.id(), "file": mutant.file, "function": mutant.function, "line": mutant.line, "kind": mutant.kind,
            "before": mutant.before, "after": mutant.after, "number": mutant.number, "verdict": outcome.verdict,
            "program": outcome.program, "test": outcome.test, "seconds": round(outcome.seconds, 2)}


def try_all(graph, mutants, history, jobs, listed, keep, at_once=None):
    progress, waiting, originals = Progress(len(mutants)), queue.Queue(), Originals()
    for mutant in mutants:
        waiting.put(mutant)
    texts = {source: (ROOT / source).read_bytes() for source in {mutant.file for mutant in mutants}}

    def work(number):
        trials = Trials(graph, STATE / f"worker-{number}", history, originals)
        mine = copy.copy(at_once)
        if mine:
            mine.trials = trials
        while True:
            try:
                mutant = waiting.get_nowait()
            except queue.Empty:
                return
            outcome = try_one(trials, mine, mutant, texts[mutant.file])
            if outcome.verdict == "survived" and mutant.key() in listed:
                outcome.verdict = "explained"
            progress.tell(mutant, outcome)
            keep(mutant, outcome)
            history.save()

    with concurrent.futures.ThreadPoolExecutor(max_workers=jobs) as pool:
        for future in [pool.submit(work, number) for number in range(jobs)]:
            future.result()


class Kept:
    """Outcomes of earlier runs, one line of JSON each, with what the file held then."""

    def __init__(self, path):
        self.path, self.lock, self.results = path, threading.Lock(), {}
        for line in path.read_text().splitlines() if path.exists() else []:
            result = json.loads(line)
            self.results[result["id"]] = result

    def of(self, mutant):
        result = self.results.get(mutant.id())
        return result if result and result["content"] == content(mutant.file) else None

    def add(self, mutant, outcome):
        result = {**result_of(mutant, outcome), "content": content(mutant.file)}
        with self.lock, self.path.open("a") as out:
            self.results[result["id"]] = result
            out.write(json.dumps(result) + "\n")


def main():
    options = arguments_of()
    processes.end_all_when_ended()
    STATE.mkdir(parents=True, exist_ok=True)
    try:
        entries = explained.read(EXPLAINED)
    except ValueError as problem:
        raise SystemExit(f"mutate.sh: {problem}") from problem
    graph = BuildGraph(options.build.resolve(), ROOT)
    shipped = [source for source in graph.sources() if "_posix." not in source]
    sources = chosen_files(options.places, shipped)
    found = all_mutants(graph, sources)
    mutants = [mutant for source in sources for mutant in found[source]]
    if options.kind:
        mutants = [mutant for mutant in mutants if mutant.kind == options.kind]

    problems = []
    keys = {mutant.key() for mutants_of in found.values() for mutant in mutants_of}
    for entry in entries:
        if (entry.file in found or entry.file not in shipped) and entry.key() not in keys:
            problems.append(f"{EXPLAINED.name}:{entry.line}: there is no such mutant (any more): {entry.file} {entry.function}")
    listed = {entry.key(): entry for entry in entries}
    if options.explained:
        mutants = [mutant for mutant in mutants if mutant.key() in listed]
    existing = collections.Counter(mutant.file.split("/")[1] for mutant in mutants)
    if options.list:
        for mutant in mutants:
            print(f"{mutant.id()} {mutant.file}:{mutant.line} {mutant.kind} {mutant.function}\n    - {mutant.before}\n"
                  f"    + {mutant.after}")
        print(f"{len(mutants)} mutants")
        return report_problems(problems)
    if options.sample and options.sample < len(mutants):
        # Tried in this order: the beginning of a sample is a sample, too.
        mutants = random.Random(options.seed).sample(mutants, options.sample)

    kept = Kept(STATE / "outcomes.jsonl")
    history = History(STATE / "history.json")
    results, to_try = [], []
    for mutant in mutants:
        old = None if options.fresh else kept.of(mutant)
        if old and old["verdict"] in LASTING:
            results.append(old)
        else:
            to_try.append(mutant)
    if results:
        print(f"{len(results)} of {len(mutants)} mutants are known from earlier runs (--fresh tries them again)")

    at_once = None
    if len(to_try) >= AT_ONCE_FROM:
        at_once = build_at_once(graph, [mutant for source in sources for mutant in found[source]], history,
                                options.jobs)
    elif to_try:
        measure_programs(graph, Trials(graph, STATE / "worker-0", history, Originals()), history)

    def keep(mutant, outcome):
        kept.add(mutant, outcome)
        results.append(result_of(mutant, outcome))

    try_all(graph, to_try, history, options.jobs, listed, keep, at_once)

    for result in results:
        key = (result["file"], result["function"], result["before"], result["after"], result["number"])
        if key in listed and result["verdict"] != "explained":
            by = f" by {result['program']} {result['test']}" if result["program"] else ""
            problems.append(f"{EXPLAINED.name}:{listed[key].line}: explained, but {result['verdict']}{by}")
    results.sort(key=lambda result: (result["file"], result["line"], result["after"]))
    run = {"sample": options.sample, "seed": options.seed, "mutants": results}
    (STATE / "results.json").write_text(json.dumps(run, indent=1))
    words = table.table(results, existing)
    print(words)
    if options.docs:
        table.write_into(DOCUMENT, words)
    survivors = [result for result in results if result["verdict"] == "survived"]
    for result in survivors:
        problems.append(f"survived: {result['file']}:{result['line']} {result['function']}\n    - {result['before']}\n"
                        f"    + {result['after']}")
    spent = sum(result["seconds"] for result in results)
    print(f"{len(results)} mutants, {spent:.0f} s of the processor, {spent / max(1, len(results)):.1f} s each; "
          f"all of it: {(STATE / 'results.json').relative_to(ROOT)}")
    return report_problems(problems)


def report_problems(problems):
    for problem in problems:
        print(problem, file=sys.stderr)
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
