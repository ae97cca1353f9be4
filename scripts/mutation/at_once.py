"""All mutants in one build: each function's body stands there once for each of its mutants, and a number in the environment
says which of them runs. So a mutant costs neither a compiler nor a linker, and which tests reach its function is known.

Mutants that cannot be had so are left to trial.py: those outside functions' bodies, and those that do not compile together.
"""
import collections
import concurrent.futures
import hashlib
import pathlib
import re
import shutil
import threading

from trial import Outcome, failed_test, plain_compile, processor_limit

HERE = pathlib.Path(__file__).resolve().parent
# Tests that take no longer than this, in seconds, are asked first.
QUICK = 0.02


def with_all(text, mutants, numbers, functions, path):
    """The source `text` with the bodies of all `mutants` of it. `numbers`: of each mutant; `functions`: {body: its number}."""
    bodies = collections.defaultdict(list)
    for mutant in mutants:
        bodies[tuple(mutant.body)].append(mutant)
    parts, done = [f'#include "{HERE}/at_once.h"\n#line 1 "{path}"\n'.encode()], 0
    for start, end in sorted(bodies):
        line = text.count(b"\n", 0, start) + 1
        # What the compiler works out runs as it is.
        parts += [text[done:start], "{ switch (__builtin_is_constant_evaluated() ? 0 : mutants_at_once::at("
                  f"{functions[start, end]})) {{".encode()]
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


class AtOnce:
    """The programs that have all of the `mutants`, made in `folder`."""

    def __init__(self, graph, folder, history, trials, texts):
        self.graph, self.folder, self.history, self.trials, self.texts = graph, pathlib.Path(folder), history, trials, texts
        self.numbers, self.mutants, self.functions, self.lock = {}, {}, {}, threading.Lock()
        self.reach = {}       # function -> {program: [(test, seconds)] or None for the whole program}
        self.killers = collections.defaultdict(collections.Counter)   # function -> (program, test)

    # Building.

    def build(self, mutants, jobs=1, tell=print):
        for mutant in mutants:
            if mutant.body and self.graph.objects_of(mutant.file):
                number = len(self.numbers) + 1
                self.numbers[mutant], self.mutants[number] = number, mutant
                self.functions.setdefault((mutant.file, tuple(mutant.body)), len(self.functions))
        objects = {}
        for source in {mutant.file for mutant in self.numbers}:
            objects.update(self.graph.objects_of(source))
        shutil.rmtree(self.folder / "sources", ignore_errors=True)
        self.write_sources({mutant.file for mutant in self.numbers})
        # Again, as long as a header lost mutants behind a file that had been compiled with it.
        before = None
        while before != len(self.numbers):
            before = len(self.numbers)
            with concurrent.futures.ThreadPoolExecutor(max_workers=jobs) as pool:
                for waiting in [pool.submit(self.compile, name, words, tell) for name, words in sorted(objects.items())]:
                    waiting.result()
        self.link(objects)

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
                                       self.graph.root / source))
            fresh.replace(path)

    def object_path(self, name):
        return self.folder / "objects" / name

    def compile(self, name, words, tell):
        """Compiles one object, unless it is there already, without the mutants that do not compile."""
        while problems := self.compile_once(name, words):
            with self.lock:
                dropped = [self.mutants.pop(number) for number in problems if number in self.mutants]
                if not dropped:
                    raise RuntimeError(f"mutants at once do not compile: {self.output}")
                for mutant in dropped:
                    self.numbers.pop(mutant)
                self.write_sources({mutant.file for mutant in dropped})
                tell(f"{name}: {len(dropped)} mutants do not compile beside the others")

    def compile_once(self, name, words):
        """The numbers of the mutants that do not compile."""
        sources, output = self.folder / "sources", self.object_path(name)
        output.parent.mkdir(parents=True, exist_ok=True)
        words = plain_compile(words, self.graph.root, sources, output)
        words += ["-w", "-ferror-limit=0"]
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
            return set()
        ended = self.trials.run(words, self.graph.build)
        if ended.code == 0:
            note.write_text(state.hexdigest())
            return set()
        self.output = ended.output
        return blamed(ended.output) or {None}

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
        shutil.rmtree(bin_folder, ignore_errors=True)
        bin_folder.mkdir()
        for program in sorted((self.graph.build / "bin").iterdir()):
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
            (bin_folder / name).unlink()
            words[at + 1] = str(bin_folder / name)
            if any("libgtest.a" in word for word in words) and name != "ImporterOrvantis.prm":
                listener = listener or self.make_listener()
                words.insert(1, str(listener))
            self.must(words)

    def make_listener(self):
        made = self.folder / "listener.o"
        self.must(["clang++", "-std=c++20", "-O1", "-isystem", "/usr/src/googletest/googletest/include", "-c",
                   HERE / "at_once_listener.cpp", "-o", made])
        return made

    def must(self, words):
        ended = self.trials.run([str(word) for word in words], self.graph.build)
        if ended.code != 0:
            raise RuntimeError(f"{' '.join(map(str, words))}\n{ended.output}")

    # Which tests reach which function.

    def record(self, program):
        """Runs a program without a mutant; raises RuntimeError when a test fails."""
        map_file, tests_file = self.folder / "reached", self.folder / "tests"
        for arguments, environment in self.trials.runs(program):
            map_file.write_bytes(bytes(max(1, len(self.functions))))
            tests_file.write_bytes(b"")
            ended = self.start(program, arguments, environment, 900, 1800, {
                "MUTANT_FUNCTIONS_REACHED": str(map_file), "MUTANT_FUNCTIONS": str(len(self.functions)),
                "MUTANT_TESTS_REACH": str(tests_file)})
            if ended.code != 0:
                raise RuntimeError(f"{program.name} fails without any mutant: {failed_test(ended)}")
            for line in tests_file.read_text().splitlines():
                name, microseconds, *functions = line.split()
                for function in map(int, functions):
                    self.note(function, program.name, None if name == "-" else (name, int(microseconds) / 1e6))
            # What stands there still: of programs without GoogleTest all, of others what threads did last.
            for function, byte in enumerate(map_file.read_bytes()):
                if byte:
                    self.note(function, program.name, None)

    def note(self, function, program, test):
        tests = self.reach.setdefault(function, {}).setdefault(program, [])
        if test is None:
            self.reach[function][program] = None
        elif tests is not None:
            tests.append(test)

    def start(self, program, arguments, environment, processor, clock, extra):
        scratch = self.folder / f"scratch-{self.trials.folder.name}"
        shutil.rmtree(scratch, ignore_errors=True)
        scratch.mkdir()
        environment = {**self.trials.environment(scratch, environment), **extra}
        if (self.folder / "bin/ImporterOrvantis.prm").exists():
            environment["ORVANTIS_PLUGIN"] = str(self.folder / "bin/ImporterOrvantis.prm")
        return self.trials.run([str(self.folder / "bin" / program.name), *arguments], scratch, environment=environment,
                               processor_seconds=processor, clock_seconds=clock)

    # One mutant.

    def try_mutant(self, mutant):
        """The outcome, "survived" if no test that reaches its function fails, or None when it is not among these."""
        if mutant not in self.numbers:
            return None
        self.trials.seconds = 0.0
        function = self.functions[mutant.file, tuple(mutant.body)]
        outcome = Outcome("survived")
        for program, tests, seconds in self.rounds(mutant, function):
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

    def rounds(self, mutant, function):
        """(program, tests or None for all, their seconds): first tests that killed others of this function, then quick ones
        of each program, then the others."""
        by_name = {program.name: program for program in self.graph.tested_programs()}
        reach = self.reach.get(function, {})
        favourites = collections.defaultdict(list)
        for (name, test), _ in self.killers[function].most_common(4):
            if any(test == known for known, _ in reach.get(name) or []):
                favourites[name].append(test)
        for name, tests in favourites.items():
            times = dict(reach[name])
            yield by_name[name], tests, sum(times[test] for test in tests)
        ordered = self.history.in_order(mutant.file, [by_name[name] for name in reach])
        slow = []
        for program in ordered:
            tests = reach[program.name]
            asked = favourites.get(program.name, [])
            if tests is None:
                slow.append((program, None, self.history.processor_seconds(program.name)))
                continue
            quick = [(test, time) for test, time in tests if time <= QUICK and test not in asked]
            rest = [(test, time) for test, time in tests if time > QUICK and test not in asked]
            if quick:
                yield program, [test for test, _ in quick], sum(time for _, time in quick)
            if rest:
                slow.append((program, [test for test, _ in rest], sum(time for _, time in rest)))
        yield from sorted(slow, key=lambda one: one[2])

    def run_tests(self, mutant, program, tests, seconds):
        clock = 20 + 20 * seconds
        runs = list(self.trials.runs(program))
        if tests is not None:
            runs = [(["--gtest_fail_fast", f"--gtest_filter={':'.join(tests)}"], runs[0][1])]
        for arguments, environment in runs:
            ended = self.start(program, arguments, environment, processor_limit(seconds), clock,
                               {"MUTANT_CHOSEN": str(self.numbers[mutant])})
            if ended.timed_out:
                return Outcome("timeout", program.name)
            if ended.code != 0:
                return Outcome("killed", program.name, failed_test(ended) or f"exit code {ended.code}")
        return None
