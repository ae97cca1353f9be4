"""One mutant at a time: compiled, linked into the programs that have its file, and shown to their tests."""
import dataclasses
import filecmp
import os
import pathlib
import re
import shutil
import threading

import processes
from build_graph import WHOLE

# A mutant's programs get this many times what the unchanged ones took, and some seconds.
PATIENCE = 8


@dataclasses.dataclass
class Outcome:
    verdict: str          # killed, timeout, survived, equal (the same machine code), invalid (does not compile)
    program: str = ""     # by which it was killed
    test: str = ""
    seconds: float = 0.0  # of the processor


class Originals:
    """The unchanged files, compiled as their mutants are; shared by all that try mutants."""

    def __init__(self):
        self.lock, self.made = threading.Lock(), {}


class Trials:
    """Tries mutants in a folder of its own; the user's files and the build are only read."""

    def __init__(self, graph, folder, history, originals):
        self.graph, self.folder, self.history, self.originals = graph, pathlib.Path(folder), history, originals
        shutil.rmtree(self.folder, ignore_errors=True)
        self.bin = self.folder / "bin"
        self.bin.mkdir(parents=True)
        # Programs look for others beside themselves.
        for program in sorted((graph.build / "bin").iterdir()):
            (self.bin / program.name).symlink_to(program)
        self.sees = {}          # (source, link, objects) -> whether the program takes anything from the source
        self.seconds = 0.0

    def run(self, words, folder, **limits):
        ended = processes.run(words, folder, **limits)
        self.seconds += ended.seconds
        return ended

    # Compiling.

    def compile(self, source, text, place, with_tests=True, everywhere=True):
        """Compiles the file with `text` in its place; {object in the build: path}, or None if that fails. Of a file that is
        compiled beside tests, too, those objects only `with_tests`; of a header `everywhere` or for its own folder."""
        folder = self.folder / place / source.replace("/", "-")
        shutil.rmtree(folder, ignore_errors=True)
        copy = folder / pathlib.Path(source).relative_to("plugin")
        copy.parent.mkdir(parents=True)
        copy.write_bytes(text)
        made = {}
        for number, (name, words) in enumerate(sorted(self.graph.objects_of(source, everywhere).items())):
            if "/Unity/" in name and not with_tests:
                continue
            output = folder / f"{number}.o"
            words = plain_compile(words, self.graph.root, folder, output)
            # Optimised, so that mutants which are the same program are the same code. What is compiled with tests has the
            # options of their precompiled header.
            words += ["-w"] if "/Unity/" in name else ["-w", "-O2", "-g0"]
            if self.run(words, self.graph.build, environment=without_cache()).code != 0:
                return None
            made[name] = str(output)
        return made

    def is_equal(self, source, made):
        with self.originals.lock:
            original = self.originals.made.get(source)
            if original is None:
                text = (self.graph.root / source).read_bytes()
                original = self.compile(source, text, "original", with_tests=False)
                if original is None:
                    raise RuntimeError(f"{source} does not compile")
                self.originals.made[source] = original
            # What is compiled beside tests is the same file as another object has.
            alone = [name for name in made if "/Unity/" not in name]
            return bool(alone) and all(filecmp.cmp(original[name], made[name], shallow=False) for name in alone)

    def is_same_code(self, mutant, text):
        made = self.compile(mutant.file, mutant.apply(text), "mutant", with_tests=False)
        return made is not None and self.is_equal(mutant.file, made)

    # Linking and testing.

    def link(self, name, words, source, made):
        """Links a program of the mutant into the folder; whether it has any of it."""
        if self.sees.get((source, name, len(made))) is False:
            return False
        target = self.bin / name
        output = self.folder / f"{name}.linked"
        words = self.graph.link_with(words, made, str(output), inline=source.endswith(".h"))
        if words is None:
            self.sees[source, name, len(made)] = False
            return False
        ended = self.run(words, self.graph.build)
        if ended.code != 0:
            output.unlink(missing_ok=True)
            raise LookupError(ended.output)
        seen = any(path in ended.output for path in made.values())
        self.sees[source, name, len(made)] = seen
        target.unlink(missing_ok=True)
        if seen:
            output.rename(target)
        else:
            output.unlink()
            target.symlink_to(self.graph.build / "bin" / name)
        return seen

    def restore(self):
        for program in self.bin.iterdir():
            if not program.is_symlink():
                program.unlink()
                program.symlink_to(self.graph.build / "bin" / program.name)

    def try_mutant(self, mutant, text, shown=None):
        """Tests that are `shown`, {program: names}, are left out."""
        self.seconds = 0.0
        outcome = self.judge(mutant, text, shown or {})
        outcome.seconds = self.seconds
        return outcome

    def judge(self, mutant, text, shown):
        """Nearly all of a header are killed in the files of its folder, which are fewer to compile than all that have it."""
        few, all_of_them = (self.graph.objects_of(mutant.file, everywhere) for everywhere in (False, True))
        outcome = self.judge_in(mutant, text, shown, everywhere=False) if few else Outcome("invalid")
        if outcome.verdict in ("survived", "equal") and len(few) < len(all_of_them):
            outcome = self.judge_in(mutant, text, shown, everywhere=True)
        return outcome

    def judge_in(self, mutant, text, shown, everywhere):
        made = self.compile(mutant.file, mutant.apply(text), "mutant", everywhere=everywhere)
        if made is None:
            return Outcome("invalid")
        try:
            return self.test(mutant.file, made, shown)
        except LookupError:
            return Outcome("invalid")  # does not link
        finally:
            self.restore()

    def test(self, source, made, shown):
        plugin_linked = compared = False
        tests = self.graph.tests() if shown else {}
        for program in self.history.in_order(source, self.graph.tested_programs()):
            only = None
            if program.name in shown:
                only = tests[program.name] - shown[program.name]
                if not only:
                    continue
                if any(name.startswith(WHOLE) for name in only):
                    only = None
            if program.loads_plugin:
                if not plugin_linked:
                    plugin_linked = True
                    has_plugin = self.link("ImporterOrvantis.prm", self.graph.links["bin/ImporterOrvantis.prm"], source, made)
                seen = has_plugin
            else:
                seen = self.link(program.name, program.link, source, made)
                for child in program.children:
                    seen = self.link(child, self.graph.links[f"bin/{child}"], source, made) or seen
            if not seen:
                continue
            before = self.seconds
            killed = self.run_program(program, only=only)
            self.history.note(source, program.name, killed is not None, self.seconds - before)
            if killed:
                return killed
            # Most mutants fall to the first program; of the others it is asked whether they differ at all.
            if not compared:
                compared = True
                if self.is_equal(source, made):
                    return Outcome("equal")
        return Outcome("survived" if compared or not self.is_equal(source, made) else "equal")

    def run_program(self, program, clock=None, only=None):
        """The outcome by which the program, or `only` those tests of it, kills a mutant, or None."""
        clock = clock or self.history.clock_seconds(program.name)
        processor = processor_limit(self.history.processor_seconds(program.name))
        for arguments, environment in self.runs(program, only):
            scratch = self.folder / "scratch"
            shutil.rmtree(scratch, ignore_errors=True)
            scratch.mkdir()
            ended = self.run([str(self.bin / program.name), *arguments], scratch,
                             environment=self.environment(scratch, environment),
                             processor_seconds=processor, clock_seconds=clock)
            if ended.timed_out:
                return Outcome("timeout", program.name)
            if ended.code != 0:
                return Outcome("killed", program.name, failed_test(ended) or f"exit code {ended.code}")
        return None

    def runs(self, program, only=None):
        apart = set(self.graph.tests_of(program, program.apart)) if program.apart else set()
        for environment, arguments in program.runs:
            if only and any("gtest" in argument for argument in arguments):
                arguments = ["--gtest_fail_fast", f"--gtest_filter={':'.join(sorted(only - apart))}"]
            yield arguments, environment
        for test in sorted(apart if only is None else apart & only):
            yield [f"--gtest_filter={test}"], program.runs[0][0]

    def environment(self, scratch, extra):
        # Of long rows of equal cases the samples of every day, which see nearly as much in a third of the time.
        return {"PATH": os.environ["PATH"], "HOME": str(scratch), "TMPDIR": str(scratch), "ORVANTIS_TEST_SAMPLE": "1", **extra,
                "ORVANTIS_PLUGIN": str(self.bin / "ImporterOrvantis.prm")}


def plain_compile(words, root, folder, output):
    """The command that compiles to `output` what `folder` has in place of the plug-in's files. Warnings are for others."""
    words = list(words)
    at = words.index("-c") + 1
    compiled = pathlib.Path(words[at])
    copies = {root / "plugin" / copy.relative_to(folder): copy for copy in folder.rglob("*.cpp")}
    if "/Unity/" in str(compiled):
        text = compiled.read_text()
        for original, copy in copies.items():
            text = text.replace(f'"{original}"', f'"{copy}"')
        joined = pathlib.Path(f"{output}.joined.cpp")
        joined.write_text(text)
        words[at] = str(joined)
    else:
        words[at] = str(copies.get(compiled, compiled))
    words[words.index("-o") + 1] = str(output)
    for option in ("-MT", "-MF"):
        if option in words:
            index = words.index(option)
            del words[index:index + 2]
    words = [word for word in words if word not in ("-MD", "-Werror") and not word.startswith("-W")]
    # A changed header comes first.
    words.insert(next(index for index, word in enumerate(words) if word.startswith("-I")), f"-I{folder}")
    return words


def processor_limit(seconds):
    return max(2, int(PATIENCE * seconds) + 2)


def failed_test(ended):
    """The test that failed, or in which the program ended; "" if it says none."""
    found = re.search(r"\[  FAILED  \] (\S+)", ended.output) or re.search(r"\[ RUN      \] (\S+)(?!.*\[ RUN )", ended.output, re.S)
    return found[1].rstrip(",") if found else ""


def without_cache():
    # A mutant is compiled once.
    return {**os.environ, "CCACHE_DISABLE": "1"}
