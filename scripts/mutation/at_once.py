"""All mutants in one build: each function's body stands there once for each of its mutants, and a number in the environment
says which of them runs. So a mutant costs neither a compiler nor a linker, and which tests reach its function is known.

Mutants that cannot be had so are left to trial.py: those outside functions' bodies, and those that do not compile together.
"""
import collections
import concurrent.futures
import hashlib
import json
import os
import pathlib
import re
import shutil
import threading

from processes import CLOCK
from trial import Outcome, failed_test, plain_compile, processor_limit, without_cache

HERE = pathlib.Path(__file__).resolve().parent
# Tests that take no longer than this, in seconds, are asked first.
QUICK = 0.02


def with_all(text, mutants, numbers, functions, path, worked_out=()):
    """The source `text` with the bodies of all `mutants` of it. `numbers`: of each mutant; `functions`: {body: its number}.
    What is worked out by the compiler runs there as it is."""
    bodies = collections.defaultdict(list)
    for mutant in mutants:
        bodies[tuple(mutant.body)].append(mutant)
    parts, done = [f'#include "{HERE}/at_once.h"\n#line 1 "{path}"\n'.encode()], 0
    for start, end in sorted(bodies):
        line = text.count(b"\n", 0, start) + 1
        function = functions[start, end]
        chosen = f"mutants_at_once::at({function})"
        if function in worked_out:
            chosen = f"__builtin_is_constant_evaluated() ? 0 : {chosen}"
        parts += [text[done:start], f"{{ switch ({chosen}) {{".encode()]
        for mutant in bodies[start, end]:
            changed = mutant.apply(text)
            body = changed[start:end + len(changed) - len(text)]
            parts.append(f'\ncase {numbers[mutant]}:\n#line {line} "mutant-{numbers[mutant]}"\n'.encode() + body + b" break;")
        parts.append(f'\ndefault:\n#line {line} "{path}"\n'.encode() + text[start:end] + b" } }")
        done = end
    return b"".join([*parts, text[done:]])


def blamed(output):
    """The numbers of the mutants that the compiler's errors are about; None for an error about none."""
    found, about = set(), None
    for line in output.splitlines():
        if re.search(r":\d+:\d+: (fatal )?error: ", line):
            if about is not None:
                found |= about or {None}
            about = set()
        if about is not None:
            about |= {int(number) for number in re.findall(r"\bmutant-(\d+):\d+", line)}
    return found | (about or {None}) if about is not None else found


def worked_out(output):
    """Where functions begin, (path, line), that the compiler had to work out and could not, since a mutant may be chosen."""
    return {(path, int(line)) for path, line in
            re.findall(r"^(\S+?):(\d+):\d+: note: non-constexpr function 'at' cannot be used", output, re.M)}


class AtOnce:
    """The programs that have all of the `mutants`, made in `folder`."""

    def __init__(self, graph, folder, history, trials, texts):
        self.graph, self.folder, self.history, self.trials, self.texts = graph, pathlib.Path(folder), history, trials, texts
        self.numbers, self.mutants, self.functions, self.lock = {}, {}, {}, threading.Lock()
        self.worked_out = set()      # numbers of functions that the compiler has the results of, at least of some calls
        self.tests = graph.tests()   # {program: names}
        self.apart = {program.name: set(graph.tests_of(program, program.apart)) for program in graph.tested_programs()
                      if program.apart}
        self.reach = {}       # function -> {program: [(test, seconds)] or None for the whole program}
        self.killers = collections.defaultdict(collections.Counter)   # function -> (program, test)

    # Building.

    def build(self, mutants, jobs=1, tell=print):
        eligible = [mutant for mutant in mutants if mutant.body and self.graph.objects_of(mutant.file)]
        refused = self.noted("refused")
        for number, mutant in enumerate(eligible, 1):
            self.functions.setdefault((mutant.file, tuple(mutant.body)), len(self.functions))
            if self.name_of(mutant) not in refused:
                self.numbers[mutant], self.mutants[number] = number, mutant
        objects = {}
        for source in {mutant.file for mutant in self.numbers}:
            objects.update(self.graph.objects_of(source))
        shutil.rmtree(self.folder / "sources", ignore_errors=True)
        known = self.noted("worked-out")
        self.worked_out = {number for function, number in self.functions.items() if self.name_of_function(function) in known}
        self.write_sources({mutant.file for mutant in self.numbers})
        # Again, as long as a header lost mutants behind a file that had been compiled with it.
        before = None
        while before != (before := (len(self.numbers), len(self.worked_out))):
            with concurrent.futures.ThreadPoolExecutor(max_workers=jobs) as pool:
                for waiting in [pool.submit(self.compile, name, words, tell) for name, words in sorted(objects.items())]:
                    waiting.result()
        self.link(objects)

    # What earlier runs found out: which mutants do not compile beside the others, what the compiler works out.

    def name_of(self, mutant):
        return f"{mutant.id()} {hashlib.sha1(self.texts[mutant.file]).hexdigest()}"

    def name_of_function(self, function):
        return f"{function[0]} {function[1][0]} {hashlib.sha1(self.texts[function[0]]).hexdigest()}"

    def noted(self, what):
        path = self.folder / what
        return set(path.read_text().splitlines()) if path.exists() else set()

    def note_down(self, what, names):
        with (self.folder / what).open("a") as out:
            out.writelines(f"{name}\n" for name in names)

    def write_sources(self, sources):
        by_file = collections.defaultdict(list)
        for mutant in self.numbers:
            by_file[mutant.file].append(mutant)
        for source in sources:
            functions = {body: number for (file, body), number in self.functions.items() if file == source}
            path = self.folder / "sources" / pathlib.Path(source).relative_to("plugin")
            path.parent.mkdir(parents=True, exist_ok=True)
            fresh = path.with_suffix(".fresh")
            fresh.write_bytes(with_all(self.texts[source], by_file[source], self.numbers, functions,
                                       self.graph.root / source, self.worked_out))
            fresh.replace(path)

    def object_path(self, name):
        return self.folder / "objects" / name

    def compile(self, name, words, tell):
        """Compiles one object, unless it is there already, without the mutants that do not compile."""
        while output := self.compile_once(name, words):
            if self.note_worked_out(output):
                continue
            problems = blamed(output) or {None}
            with self.lock:
                dropped = [self.mutants.pop(number) for number in problems if number in self.mutants]
                # Those of a header may have been dropped for another object meanwhile.
                if not dropped and problems == {None}:
                    raise RuntimeError(f"mutants at once do not compile: {output}")
                if not dropped:
                    continue
                for mutant in dropped:
                    self.numbers.pop(mutant)
                self.note_down("refused", map(self.name_of, dropped))
                self.write_sources({mutant.file for mutant in dropped})
                tell(f"{name}: {len(dropped)} mutants do not compile beside the others")

    def note_worked_out(self, output):
        """Whether the failure was about functions that the compiler works out, which are written anew then."""
        begin = {}
        for function in self.functions:
            source, (start, _) = function
            line = self.texts[source].count(b"\n", 0, start) + 1
            begin.setdefault((str(self.graph.root / source), line), []).append(function)
        with self.lock:
            about = {function for place in worked_out(output) for function in begin.get(place, ())}
            found = {function for function in about if self.functions[function] not in self.worked_out}
            self.worked_out |= {self.functions[function] for function in found}
            self.note_down("worked-out", map(self.name_of_function, found))
            self.write_sources({source for source, _ in found})
        return bool(about)

    def compile_once(self, name, words):
        """What the compiler has to say against it, or "" if it is made."""
        sources, output = self.folder / "sources", self.object_path(name)
        output.parent.mkdir(parents=True, exist_ok=True)
        words = plain_compile(words, self.graph.root, sources, output)
        words += ["-w", "-Wno-invalid-constexpr", "-ferror-limit=0"]
        compiled = {source for source, commands in self.graph.compile.items() if name in commands}
        included = {header for header, users in self.graph.dependencies.items() if users & compiled}
        # What was compiled from the same sources is kept.
        state = hashlib.sha1(repr(words).encode())
        with self.lock:
            for path in [HERE / "at_once.h", *(sources / pathlib.Path(source).relative_to("plugin")
                                               for source in sorted(compiled | included))]:
                if path.exists():
                    state.update(path.read_bytes())
        note = output.with_suffix(".state")
        if output.exists() and note.exists() and note.read_text() == state.hexdigest():
            return ""
        ended = self.trials.run(words, self.graph.build, environment=without_cache())
        if ended.code == 0:
            note.write_text(state.hexdigest())
            return ""
        return ended.output or "no reason told"

    def link(self, objects):
        made = {name: str(self.object_path(name)) for name in objects}
        archives = {}
        for archive, members in self.graph.archives.items():
            if any(member in made for member in members):
                path = self.folder / "archives" / archive
                path.parent.mkdir(parents=True, exist_ok=True)
                path.unlink(missing_ok=True)
                self.must(["llvm-ar", "qcT", path, *(made.get(member, self.graph.build / member) for member in members)])
                archives[archive] = str(path)
        bin_folder = self.folder / "bin"
        for folder in (bin_folder, self.folder / "linked"):
            folder.mkdir(exist_ok=True)
        for program in sorted((self.graph.build / "bin").iterdir()):
            if not os.path.lexists(bin_folder / program.name):
                (bin_folder / program.name).symlink_to(program)
        listener = None
        tests = self.graph.tested_programs()
        names = {"ImporterOrvantis.prm"} & {pathlib.Path(name).name for name in self.graph.links}
        for name in sorted({program.name for program in tests} | {child for program in tests for child in program.children}
                           | names):
            words = [made.get(word) or archives.get(word, word) for word in self.graph.links[f"bin/{name}"]]
            if words == self.graph.links[f"bin/{name}"]:
                continue
            at = words.index("-o")
            words[at + 1] = str(bin_folder / name)
            # What was linked from the same files is kept.
            state, note = self.state_of(words, archives, made), self.folder / "linked" / name
            if not (bin_folder / name).is_symlink() and note.exists() and note.read_text() == state:
                continue
            (bin_folder / name).unlink(missing_ok=True)
            note.unlink(missing_ok=True)
            taken = self.taken_from(archives, made, self.must([words[0], "-Wl,--trace", *words[1:]]))
            if any("libgtest.a" in word for word in words) and name != "ImporterOrvantis.prm":
                listener = listener or self.make_listener()
                words.insert(1, str(listener))
            # Ahead of the tests, so that inline functions of headers are taken from there.
            self.must([words[0], *taken, *words[1:]])
            note.write_text(state)

    def state_of(self, words, archives, made):
        """Of all files that a link has."""
        members = {path: [made.get(member, member) for member in self.graph.archives[archive]]
                   for archive, path in archives.items()}
        listed = [HERE / "at_once_listener.cpp", HERE / "at_once.h"]
        for word in words[:words.index("-o")] + words[words.index("-o") + 2:]:
            listed += members.get(word) or [word]
        paths = [self.graph.build / path for path in listed]
        return hashlib.sha1(repr([words, [(str(path), path.stat().st_size, path.stat().st_mtime_ns)
                                          for path in paths if path.is_file()]]).encode()).hexdigest()

    def taken_from(self, archives, made, told):
        """The objects with mutants that a link takes from archives, as the linker tells it."""
        by_name = {(path, pathlib.Path(member).name): made[member] for archive, path in archives.items()
                   for member in self.graph.archives[archive] if member in made}
        return [by_name[path, pathlib.Path(member).name] for path, member in re.findall(r"^(\S+\.a)\((\S+)\)$", told, re.M)
                if (path, pathlib.Path(member).name) in by_name]

    def make_listener(self):
        made = self.folder / "listener.o"
        self.must(["clang++", "-std=c++20", "-O1", "-isystem", "/usr/src/googletest/googletest/include", "-c",
                   HERE / "at_once_listener.cpp", "-o", made])
        return made

    def must(self, words):
        ended = self.trials.run([str(word) for word in words], self.graph.build)
        if ended.code != 0:
            raise RuntimeError(f"{' '.join(map(str, words))}\n{ended.output}")
        return ended.output

    # Which tests reach which function.

    def is_worked_out(self, mutant):
        """Whether the compiler had its function's results, so that it has to be compiled by itself."""
        return self.functions[mutant.file, tuple(mutant.body)] in self.worked_out

    def record(self, program):
        """Runs a program without a mutant, unless an earlier run did; raises RuntimeError when a test fails."""
        state = hashlib.sha1(repr([list(self.functions), program.runs, program.apart]).encode())
        for name in (program.name, *program.children, *["ImporterOrvantis.prm"][:program.loads_plugin]):
            state.update((self.folder / "bin" / name).read_bytes())
        kept = self.folder / "reach" / f"{program.name}-{state.hexdigest()}"
        if not kept.exists():
            kept.parent.mkdir(exist_ok=True)
            reach = self.recorded(program)
            kept.write_text(json.dumps(reach))
        for function, tests in json.loads(kept.read_text()).items():
            self.reach.setdefault(int(function), {})[program.name] = tests and [tuple(test) for test in tests]

    def recorded(self, program):
        """{function: [(test, seconds)] or None for all of the program}"""
        map_file, tests_file = (self.folder / f"{what}-{program.name}" for what in ("reached", "tests"))
        reach, spent = {}, 0.0
        for arguments, environment in self.trials.runs(program):
            # Some tests compare processor times, which a busy machine can spoil.
            for _ in range(3):
                map_file.write_bytes(bytes(max(1, len(self.functions))))
                tests_file.write_bytes(b"")
                ended = self.start(program, arguments, environment, 900, 1800, {
                    "MUTANT_FUNCTIONS_REACHED": str(map_file), "MUTANT_FUNCTIONS": str(len(self.functions)),
                    "MUTANT_TESTS_REACH": str(tests_file)})
                if ended.code == 0:
                    break
            if ended.code != 0:
                raise RuntimeError(f"{program.name} fails without any mutant: {failed_test(ended)}")
            spent += ended.seconds
            seconds, between = {}, collections.defaultdict(set)
            lines = [line.split() for line in tests_file.read_text().splitlines()]
            for index, (name, microseconds, *functions) in enumerate(lines):
                if name == "-":
                    # A fixture of the suite that begins or of the one that ended.
                    suites = {line[0].split(".")[0] for line in lines[max(0, index - 1):index + 2]} - {"-"}
                    for function in map(int, functions):
                        between[function] |= suites
                    continue
                seconds[name] = int(microseconds) / 1e6
                for function in map(int, functions):
                    reach.setdefault(function, {})[name] = seconds[name]
            for function, suites in between.items():
                reach.setdefault(function, {}).update({name: seconds[name] for name in seconds if name.split(".")[0] in suites})
            # What stands there still: of programs without GoogleTest all, of others what comes at the end of any test.
            for function, byte in enumerate(map_file.read_bytes()):
                if byte:
                    reach.setdefault(function, {})
        if program.name not in self.history.seconds:
            self.history.note_time(program.name, spent)
        return {function: list(tests.items()) or None for function, tests in reach.items()}

    def start(self, program, arguments, environment, processor, clock, extra):
        scratch = self.folder / f"scratch-{self.trials.folder.name}-{program.name}"
        shutil.rmtree(scratch, ignore_errors=True)
        scratch.mkdir()
        environment = {**self.trials.environment(scratch, environment), **extra}
        if (self.folder / "bin/ImporterOrvantis.prm").exists():
            environment["ORVANTIS_PLUGIN"] = str(self.folder / "bin/ImporterOrvantis.prm")
        return self.trials.run([str(self.folder / "bin" / program.name), *arguments], scratch, environment=environment,
                               processor_seconds=processor, clock_seconds=clock)

    # One mutant.

    def try_mutant(self, mutant, quick=None, shown=None):
        """The outcome, "survived" if no test that reaches its function fails, or None when it is not among these.

        quick: True for the quick tests only, False for the others, None for all. Tests that are `shown` are left out."""
        if mutant not in self.numbers:
            return None
        self.trials.seconds = 0.0
        function = self.functions[mutant.file, tuple(mutant.body)]
        outcome = Outcome("survived")
        for program, tests, seconds in self.rounds(mutant, function, quick, shown or {}):
            before = self.trials.seconds
            killed = self.run_tests(mutant, program, tests, seconds)
            self.history.note(mutant.file, program.name, killed is not None, self.trials.seconds - before)
            if killed is not None:
                outcome = killed
                if killed.verdict == "killed":
                    self.killers[function][program.name, killed.test] += 1
                break
        outcome.seconds = self.trials.seconds
        return outcome

    def rounds(self, mutant, function, wanted, shown):
        """(program, tests or None for all, the seconds of each): first tests that killed others of this function, then quick
        ones of each program, then the others."""
        by_name = {program.name: program for program in self.graph.tested_programs()}
        reach = {}
        for name, tests in self.reach.get(function, {}).items():
            known = shown.get(name, ())
            if tests is not None:
                tests = [(test, time) for test, time in tests if test not in known]
            if tests or (tests is None and not self.tests.get(name, {name}) <= set(known)):
                reach[name] = tests
        favourites = collections.defaultdict(list)
        for (name, test), _ in self.killers[function].most_common():
            time = dict(reach.get(name) or []).get(test)
            if time is not None and wanted in (None, time <= QUICK) and sum(map(len, favourites.values())) < 4:
                favourites[name].append(test)
        for name, tests in favourites.items():
            times = dict(reach[name])
            yield by_name[name], tests, [times[test] for test in tests]
        ordered = self.history.in_order(mutant.file, [by_name[name] for name in reach])
        slow = []
        for program in ordered:
            tests = reach[program.name]
            asked = favourites.get(program.name, [])
            if tests is None:
                slow.append((program, None, [self.history.processor_seconds(program.name)]))
                continue
            quick = [(test, time) for test, time in tests if time <= QUICK and test not in asked]
            rest = [(test, time) for test, time in tests if time > QUICK and test not in asked]
            if quick and wanted is not False:
                yield program, [test for test, _ in quick], [time for _, time in quick]
            if rest:
                slow.append((program, [test for test, _ in rest], [time for _, time in rest]))
        if wanted is not True:
            yield from sorted(slow, key=lambda one: sum(one[2]))

    def run_tests(self, mutant, program, tests, seconds):
        """`seconds`: of each of the tests."""
        limits = {"MUTANT_CHOSEN": str(self.numbers[mutant])}
        runs = list(self.trials.runs(program))
        if tests is not None:
            environment = runs[0][1]
            together = [test for test in tests if test not in self.apart.get(program.name, ())]
            alone = [[test] for test in tests if test not in together]
            runs = [(["--gtest_fail_fast", f"--gtest_filter={':'.join(names)}"], environment)
                    for names in [together, *alone] if names]
            limits["MUTANT_TEST_SECONDS"] = str(processor_limit(max(seconds)))
        for arguments, environment in runs:
            ended = self.start(program, arguments, environment, processor_limit(sum(seconds)), CLOCK, limits)
            if ended.timed_out:
                return Outcome("timeout", program.name)
            if ended.code != 0:
                return Outcome("killed", program.name, failed_test(ended) or f"exit code {ended.code}")
        return None
