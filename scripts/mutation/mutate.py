#!/usr/bin/env python3
"""Changes the plug-in's sources in small ways and looks whether the tests notice: see mutate.sh and docs/mutation.md."""
import argparse
import collections
import copy
import concurrent.futures
import dataclasses
import functools
import hashlib
import itertools
import json
import os
import pathlib
import queue
import random
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
from trial import Originals, Outcome, Trials

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
BUILD = ROOT / "build/linux-mutation"
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
    parser.add_argument("--known", action="store_true")
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


@functools.cache
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
        with concurrent.futures.ThreadPoolExecutor(max_workers=jobs) as pool:
            for waiting in [pool.submit(at_once.record, program) for program in graph.tested_programs()]:
                waiting.result()
    except RuntimeError as problem:
        raise SystemExit(f"mutate.sh: {problem}") from problem
    print(f"{len(at_once.numbers)} of {len(mutants)} mutants in one build", flush=True)
    return at_once


def try_thoroughly(trials, at_once, mutant, text, shown, quick):
    """Of a mutant that the quick tests did not kill."""
    outcome = at_once.try_mutant(mutant, quick, shown) if at_once else None
    if outcome is None:
        return trials.try_mutant(mutant, text, shown)
    if outcome.verdict == "survived":
        if at_once.is_worked_out(mutant):
            outcome = trials.try_mutant(mutant, text, shown)
        elif trials.is_same_code(mutant, text):
            outcome.verdict = "equal"
    return outcome


class Progress:
    def __init__(self, count):
        self.count, self.done, self.lock, self.verdicts = count, 0, threading.Lock(), collections.Counter()

    def put_off(self, mutant):
        with self.lock:
            print(f"no quick test sees {mutant.file}:{mutant.line} {mutant.kind}: {mutant.before}  ->  {mutant.after}",
                  flush=True)

    def tell(self, mutant, outcome):
        with self.lock:
            self.done += 1
            self.verdicts[outcome.verdict] += 1
            by = f" by {outcome.program} {outcome.test}" if outcome.program else ""
            print(f"[{self.done}/{self.count}] {mutant.file}:{mutant.line} {mutant.kind}: {outcome.verdict}{by}"
                  f" ({outcome.seconds:.1f} s)", flush=True)
            if outcome.verdict in ("survived", "explained"):
                print(f"    - {mutant.before}\n    + {mutant.after}", flush=True)


def folder_of(mutant):
    return mutant.file.split("/")[1]


def result_of(mutant, outcome):
    return {"id": mutant.id(), "file": mutant.file, "function": mutant.function, "line": mutant.line, "kind": mutant.kind,
            "before": mutant.before, "after": mutant.after, "number": mutant.number, "verdict": outcome.verdict,
            "program": outcome.program, "test": outcome.test, "seconds": round(outcome.seconds, 2)}


def try_all(graph, mutants, history, jobs, listed, keep, kept, fresh, at_once=None):
    """First those of a folder with the quick tests, which kill nearly all of them, then the others with what takes long."""
    progress, originals, spent = Progress(len(mutants)), Originals(), collections.Counter()
    texts = {source: (ROOT / source).read_bytes() for source in {mutant.file for mutant in mutants}}
    # What an earlier run put off is not shown to the quick tests alone again.
    put_off = {mutant for mutant in mutants if not fresh and (kept.of(mutant) or {}).get("verdict") == "undecided"}
    together = [mutant for mutant in mutants if at_once and mutant in at_once.numbers and mutant not in put_off]
    workers = []
    for number in range(jobs):
        trials = Trials(graph, STATE / f"worker-{number}", history, originals)
        mine = copy.copy(at_once)
        if mine:
            mine.trials = trials
        workers.append((trials, mine))

    def work(worker, waiting, attempt):
        while True:
            try:
                mutant = waiting.get_nowait()
            except queue.Empty:
                return
            outcome = attempt(*worker, mutant)
            spent[mutant] += outcome.seconds
            outcome.seconds = spent[mutant]
            if outcome.verdict == "survived":
                if attempt is quickly:
                    progress.put_off(mutant)
                    kept.add(mutant, Outcome("undecided"))
                    continue
                if mutant.key() in listed:
                    outcome.verdict = "explained"
            decided.add(mutant)
            progress.tell(mutant, outcome)
            keep(mutant, outcome)
            if progress.done % 20 == 0:
                history.save()

    shown = {mutant: {} if fresh else kept.shown_to(mutant) for mutant in mutants}

    def quickly(_, together, mutant):
        return together.try_mutant(mutant, quick=True, shown=shown[mutant])

    def thoroughly(trials, together, mutant):
        quick = None if mutant in put_off else False
        return try_thoroughly(trials, together, mutant, texts[mutant.file], shown[mutant], quick)

    decided = set()
    # Folder by folder, so that a run that is ended has some whole.
    folders = list(dict.fromkeys(folder_of(mutant) for mutant in mutants))
    for folder, (some, attempt) in itertools.product(folders, ((together, quickly), (mutants, thoroughly))):
        waiting = queue.Queue()
        for mutant in some:
            if folder_of(mutant) == folder and mutant not in decided:
                waiting.put(mutant)
        print(f"{folder}: {waiting.qsize()} mutants {attempt.__name__}", flush=True)
        with concurrent.futures.ThreadPoolExecutor(max_workers=jobs) as pool:
            for future in [pool.submit(work, worker, waiting, attempt) for worker in workers]:
                future.result()
        history.save()


class Kept:
    """Outcomes of earlier runs, one line of JSON each, with what the file held then and, of those that no test killed, the
    name of a file that has the tests."""

    def __init__(self, path):
        self.path, self.lock, self.results, self.shown = path, threading.Lock(), {}, {}
        for line in path.read_text().splitlines() if path.exists() else []:
            result = json.loads(line)
            self.results[result["id"]] = result

    def of(self, mutant):
        result = self.results.get(mutant.id())
        return result if result and result["content"] == content(mutant.file) else None

    def note_tests(self, tests):
        """{program: the names of its tests}, as they are in this run."""
        words = json.dumps({program: sorted(names) for program, names in sorted(tests.items())})
        self.now = hashlib.sha1(words.encode()).hexdigest()
        (self.path.parent / "shown").mkdir(exist_ok=True)
        (self.path.parent / "shown" / self.now).write_text(words)

    def shown_to(self, mutant):
        """The tests, {program: names}, that did not kill it in earlier runs."""
        name = (self.of(mutant) or {}).get("shown")
        with self.lock:
            path = self.path.parent / "shown" / (name or "none")
            if name not in self.shown:
                read = json.loads(path.read_text()) if path.exists() else {}
                self.shown[name] = {program: set(names) for program, names in read.items()}
            return self.shown[name]

    def add(self, mutant, outcome):
        result = {**result_of(mutant, outcome), "content": content(mutant.file)}
        if outcome.verdict in ("survived", "explained"):
            result["shown"] = self.now
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
        if old and (old["verdict"] in LASTING or options.known):
            if old["verdict"] in ("survived", "explained"):
                old = {**old, "verdict": "explained" if mutant.key() in listed else "survived"}
            results.append(old)
        elif options.known:
            continue
        else:
            to_try.append(mutant)
    if results:
        print(f"{len(results)} of {len(mutants)} mutants are known from earlier runs (--fresh tries them again)")

    at_once = None
    if len(to_try) >= AT_ONCE_FROM:
        at_once = build_at_once(graph, [mutant for source in sources for mutant in found[source]], history,
                                options.jobs)
        kept.note_tests(graph.tests())
    elif to_try:
        kept.note_tests(graph.tests())
        measure_programs(graph, Trials(graph, STATE / "worker-0", history, Originals()), history)

    def keep(mutant, outcome):
        kept.add(mutant, outcome)
        results.append(result_of(mutant, outcome))

    try_all(graph, to_try, history, options.jobs, listed, keep, kept, options.fresh, at_once)

    for result in results:
        key = (result["file"], result["function"], result["before"], result["after"], result["number"])
        if key in listed and result["verdict"] not in ("explained", "undecided"):
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
    undecided = sum(result["verdict"] == "undecided" for result in results)
    if undecided:
        problems.append(f"{undecided} mutants that quick tests do not see are not decided yet")
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
