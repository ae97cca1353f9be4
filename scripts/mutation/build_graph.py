#!/usr/bin/env python3
"""What the build of the native tests says about itself: how files are compiled, which programs have them, how programs run.

All of it is read from Ninja. Nothing in the build folder is written. As a program it prints what the tests of the plug-in
need to have built: build_graph.py BUILD-FOLDER.
"""
import collections
import dataclasses
import hashlib
import os
import pathlib
import re
import shlex
import subprocess
import sys

# Begins the only test of a program that names none.
WHOLE = "whole program "
# The rings that test the plug-in: those of the tool and of the test bed see it only in passing.
RINGS = ("unit", "integration", "faults", "fuzz")


@dataclasses.dataclass
class Program:
    name: str                 # in bin/
    link: list                # the command, run in the build folder
    runs: list = dataclasses.field(default_factory=list)   # (environment, arguments), one after the other
    passed: list = dataclasses.field(default_factory=list)   # the files that say that it passed
    apart: str = ""           # tests that need a process of their own each
    loads_plugin: bool = False
    children: list = dataclasses.field(default_factory=list)  # programs that it starts, in bin/


def included_by(unity):
    return [pathlib.Path(path) for path in re.findall(r'^#include "(.*)"', unity.read_text(), re.MULTILINE)]


class BuildGraph:
    def __init__(self, build, root):
        self.build, self.root = pathlib.Path(build), pathlib.Path(root)
        self.compile, self.links, self.programs, self.archives = {}, {}, {}, {}
        self.listed, self.listed_tests = {}, {}
        for line in self.ninja("-t", "commands", "quick_all").splitlines():
            self.read_command(line)
        for program in self.programs.values():
            program.link = self.links[f"bin/{program.name}"]
            program.loads_plugin = any("liborvantis_integration_support.a" in word for word in program.link)
        self.read_children()
        self.dependencies = self.read_dependencies()

    def ninja(self, *arguments):
        return subprocess.run(["ninja", "-C", self.build, "--quiet", *arguments], check=True, capture_output=True,
                              text=True).stdout

    def read_command(self, line):
        if "run-quick-test.sh" in line:
            self.read_run(shlex.split(line.split(" && ", 1)[1]))
        elif " -c " in line and " -o " in line:
            words = shlex.split(line)
            source = pathlib.Path(words[words.index("-c") + 1])
            # Of several files that are compiled as one, each.
            sources = included_by(source) if "/Unity/" in str(source) else [source]
            for source in sources:
                if source.is_relative_to(self.root / "plugin"):
                    self.compile.setdefault(str(source.relative_to(self.root)), {})[words[words.index("-o") + 1]] = words
        elif match := re.search(r"\bllvm-ar\S* qc (\S+) +(.*?) &&|\bar\S* qc (\S+) +(.*?) &&", line):
            archive, members = (match[1], match[2]) if match[1] else (match[3], match[4])
            self.archives[archive] = [word for word in shlex.split(members) if word.endswith(".o")]
        elif line.startswith(": && ") and " -o " in line:
            words = shlex.split(line[5:].rsplit(" && ", 1)[0])
            self.links[words[words.index("-o") + 1]] = words

    def read_run(self, words):
        script = next(index for index, word in enumerate(words) if word.endswith("run-quick-test.sh"))
        program = pathlib.Path(words[script + 2])
        folder = pathlib.Path(words[script + 1])
        environment = dict(word.split("=", 1) for word in words[3:script - 1])
        apart, chosen = environment.pop("QUICK_APART", ""), environment.pop("QUICK_FILTER", "")
        environment.pop("QUICK_WITHOUT", "")  # what takes long is asked, too, if last
        # The parts of a program are all run, so they need not be parts.
        for name in ("GTEST_TOTAL_SHARDS", "GTEST_SHARD_INDEX", "ORVANTIS_TEST_HANG_SECONDS"):
            environment.pop(name, None)
        known = self.programs.setdefault(program.name, Program(program.name, []))
        known.apart = apart
        known.passed.append(f"quick/{folder.name}")
        arguments = words[script + 3:]
        if not folder.name.startswith("fuzz_replay."):
            arguments = ["--gtest_fail_fast", f"--gtest_filter={chosen or '*'}{'-' + apart if apart else ''}"]
        if (environment, arguments) not in known.runs:
            known.runs.append((environment, arguments))

    def read_dependencies(self):
        """Of each header of the plug-in the sources of the plug-in that include it."""
        users, objects = collections.defaultdict(set), {}
        for source, commands in self.compile.items():
            for name in commands:
                objects[name] = source
        for block in self.ninja("-t", "deps").split("\n\n"):
            lines = block.splitlines()
            source = objects.get(lines[0].split(":")[0]) if lines else None
            for line in lines[1:] if source else []:
                path = pathlib.Path(os.path.normpath(self.build / line.strip()))
                if path.is_relative_to(self.root / "plugin") and path.suffix == ".h":
                    users[str(path.relative_to(self.root))].add(source)
        return users

    def read_children(self):
        """A program that starts another one has it built, but does not link it."""
        program = None
        for line in self.ninja("-t", "query", *(f"bin/{name}" for name in self.programs)).splitlines():
            if not line.startswith(" "):
                program = self.programs[line.rstrip(":").removeprefix("bin/")]
            elif match := re.fullmatch(r" +\|\| bin/(\S+)", line):
                if f"bin/{match[1]}" in self.links and not match[1].endswith(".prm"):
                    program.children.append(match[1])

    def tested_in(self, program):
        """Whether a program belongs to the rings that test the plug-in."""
        objects = " ".join(word for word in program.link if word.endswith(".o"))
        return any(f"tests/{ring}/" in objects for ring in RINGS)

    def sources(self):
        """The plug-in's files that the native build has, headers of theirs included."""
        return sorted(set(self.compile) | set(self.dependencies))

    def objects_of(self, source, everywhere=True):
        """The objects that change with a file: its own, or, of a header, those of the files that include it, or, unless
        `everywhere`, those of its own folder (of all that do, when none of its folder does)."""
        users = [source] if source in self.compile else sorted(self.dependencies.get(source, ()))
        if not everywhere:
            users = [user for user in users if pathlib.Path(user).parent == pathlib.Path(source).parent] or users
        return {name: words for user in users for name, words in self.compile[user].items()}

    def link_with(self, link, objects, output, inline=False):
        """The link command with changed objects, {name in the build folder: path}, or None when it has none of them.

        What stands in an archive comes first instead, to be taken when it is asked for, and the archive's is not taken any
        more. With `inline` it is taken in any case, and the inline functions of the program from there, too. The linker is
        asked to name what it takes."""
        ahead, words, found = [], [], False
        for word in link:
            if word in objects:
                words.append(objects[word])
                found = True
                continue
            words.append(word)
            for member in self.archives.get(word, ()):
                if member in objects and objects[member] not in ahead:
                    ahead.append(objects[member])
                    found = True
        if not found:
            return None
        at = words.index("-o")
        words[at + 1] = output
        if ahead and not inline:
            ahead = ["-Wl,--start-lib", *ahead, "-Wl,--end-lib"]
        return words[:1] + ["-Wl,--trace", *ahead] + words[1:]

    def tested_programs(self):
        return [program for program in self.programs.values() if self.tested_in(program)]

    def targets(self):
        """What has to be built before the programs can run: they, what they start and load, and the files that they read."""
        programs = self.tested_programs()
        made = self.ninja("-t", "query", *(passed for program in programs for passed in program.passed))
        fixtures = {match[1] for line in made.splitlines() if (match := re.fullmatch(r" +\|? ?(quick/\S+\.made)", line))}
        return sorted({f"bin/{name}" for program in programs for name in [program.name, *program.children]} | fixtures)

    def tests(self):
        """{program: the names of its tests}. A program that does not tell has one, called by what it holds."""
        found = self.listed_tests
        for program in self.tested_programs() if not found else ():
            # Those that are run, which may be part of them.
            filters = [argument.partition("=")[2] for _, arguments in program.runs for argument in arguments
                       if argument.startswith("--gtest_filter=")] + [program.apart] * bool(program.apart)
            content = (self.build / "bin" / program.name).read_bytes()
            found[program.name] = {test for chosen in filters for test in self.tests_of(program, chosen)} \
                or {WHOLE + hashlib.sha1(content).hexdigest()}
        return found

    def tests_of(self, program, pattern):
        """The tests of a program that the GoogleTest filter names, as it lies there when it is first asked."""
        if (program.name, pattern) in self.listed:
            return self.listed[program.name, pattern]
        # A program that counts what it runs would leave its counts in the folder it is started in.
        listing = subprocess.run([self.build / "bin" / program.name, "--gtest_list_tests", f"--gtest_filter={pattern}"],
                                 check=True, capture_output=True, text=True,
                                 env={**os.environ, "LLVM_PROFILE_FILE": os.devnull}).stdout
        suite, tests = "", []
        for line in listing.splitlines():
            name = line.split("#")[0].rstrip()
            if re.fullmatch(r"\S+\.", name):
                suite = name
            elif name.startswith("  "):
                tests.append(suite + name.strip())
        self.listed[program.name, pattern] = tests
        return tests


if __name__ == "__main__":
    print(*BuildGraph(pathlib.Path(sys.argv[1]).resolve(), pathlib.Path(__file__).resolve().parent.parent.parent).targets())
