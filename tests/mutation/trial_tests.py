"""Mutants tried for real, in a project of four small files that is built as the plug-in's tests are."""
import pathlib
import shutil
import subprocess
import tempfile
import unittest

import scripts_path  # noqa: F401
import at_once
import processes
from build_graph import BuildGraph
from history import History
from source_mutants import find_mutants
from trial import Originals, Trials

SOURCE = """#include "x/a.h"
int twice(int a) {
    int b = a + a;
    if (a < 0) b = 2 * a;
    return b;
}
int steps(int a) {
    int n = 0;
    for (volatile bool on = true; on && a != 0; a -= 2) on = true, ++n;
    return n;
}
"""
HEADER = """#pragma once
int twice(int a);
int steps(int a);
inline int same(int a) { return a + 1 - 1; }
__attribute__((noinline)) inline int half(int a) { return a / 2; }
constexpr int rest(int a) { return a % 3; }
static_assert(rest(5) == 2, "");
"""
OTHER = """#include "x/a.h"
int other(int a) { return same(a) * 3; }
int halfOf(int a) { return half(a); }
int restOf(int a) { return rest(a); }
"""
TEST = """#include "x/a.h"
int other(int a);
int restOf(int a);
#include <cstdio>
int main() {
    if (half(8) != 4 || restOf(2) != 2) return 5;
    if (twice(3) != 6 || steps(4) != 2) { std::puts("[  FAILED  ] Twice.IsTwice"); return 1; }
    return other(5) == 15 ? 0 : 3;
}
"""
BUILD = """rule cc
  command = clang++ -I{root}/plugin -O1 -MD -MF $out.d -o $out -c $in
  depfile = $out.d
  deps = gcc
rule ar
  command = llvm-ar qc $out $in && true
rule link
  command = : && clang++ -fuse-ld=lld $in -o $out $libraries && :
rule test
  command = cd {build} && cmake -E env NAME=value QUICK_FILTER= QUICK_APART= QUICK_WITHOUT=Slow.* sh run-quick-test.sh {build}/quick/a_tests.passed {build}/bin/a_tests
build plugin/a.o: cc {root}/plugin/x/a.cpp
build plugin/b.o: cc {root}/plugin/x/b.cpp
build tests/unit/t.o: cc {root}/tests/unit/t.cpp
build plugin/libx.a: ar plugin/a.o plugin/b.o
build bin/a_tests: link tests/unit/t.o | plugin/libx.a
  libraries = plugin/libx.a
build quick/a_tests.passed: test bin/a_tests
build quick_all: phony quick/a_tests.passed
"""


class Programs(unittest.TestCase):
    def run_shell(self, words, **limits):
        return processes.run(["sh", "-c", words], "/", **limits)

    def test_threads_that_all_wait_are_not_waited_for(self):
        ended = self.run_shell("sleep 1000", idle_seconds=0.5)
        self.assertTrue(ended.timed_out)

    def test_who_works_now_and_then_is_not_idle(self):
        ended = self.run_shell("for i in 1 2 3 4; do sleep 0.4; cat /proc/*/stat; cat /proc/*/stat; done >/dev/null 2>&1; exit 3",
                               idle_seconds=1.5)
        self.assertEqual((ended.timed_out, ended.code), (False, 3))

    def test_a_signal_at_the_limit_of_one_test_is_a_limit(self):
        self.assertTrue(self.run_shell("kill -PROF $$").timed_out)
        self.assertFalse(self.run_shell("kill -SEGV $$").timed_out)


class MutantsOfASmallProject(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.root = pathlib.Path(tempfile.mkdtemp())
        cls.addClassCleanup(shutil.rmtree, cls.root)
        build = cls.root / "build"
        for name, text in (("plugin/x/a.cpp", SOURCE), ("plugin/x/a.h", HEADER), ("plugin/x/b.cpp", OTHER),
                           ("tests/unit/t.cpp", TEST), ("build/build.ninja", BUILD.format(root=cls.root, build=build))):
            path = cls.root / name
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text(text)
        subprocess.run(["ninja", "-C", build, "--quiet", "bin/a_tests"], check=True)
        cls.graph = BuildGraph(build, cls.root)
        history = History(cls.root / "history.json")
        history.seconds["a_tests"] = [0.01, 0.01]
        cls.before = cls.everything()
        cls.trials = Trials(cls.graph, cls.root / "trials", history, Originals())

    @classmethod
    def everything(cls):
        return {path: path.read_bytes() for folder in ("plugin", "tests", "build")
                for path in sorted((cls.root / folder).rglob("*")) if path.is_file()}

    def outcome(self, source, after):
        path = self.root / source
        found = find_mutants(source, path, ["-x", "c++", f"-I{self.root}/plugin"])
        (mutant,) = [one for one in found if one.after == after]
        return self.trials.try_mutant(mutant, path.read_bytes())

    def test_what_quick_leaves_out_of_a_program_is_asked_here(self):
        self.assertEqual(self.graph.programs["a_tests"].runs, [({"NAME": "value"}, ["--gtest_fail_fast", "--gtest_filter=*"])])

    def test_one_that_a_test_sees_is_killed_by_it(self):
        outcome = self.outcome("plugin/x/a.cpp", "int b = a - a;")
        self.assertEqual((outcome.verdict, outcome.program, outcome.test), ("killed", "a_tests", "Twice.IsTwice"))
        self.assertGreater(outcome.seconds, 0)

    def test_one_that_no_test_sees_survives(self):
        self.assertEqual(self.outcome("plugin/x/a.cpp", "if (a < 0) b = 3 * a;").verdict, "survived")

    def test_one_that_is_the_same_machine_code_is_told(self):
        self.assertEqual(self.outcome("plugin/x/a.cpp", "if (a <= 0) b = 2 * a;").verdict, "equal")

    def test_one_that_does_not_compile_is_not_counted(self):
        path = self.root / "plugin/x/a.cpp"
        mutant = find_mutants("plugin/x/a.cpp", path, ["-x", "c++", f"-I{self.root}/plugin"])[0]
        self.assertEqual(self.trials.try_mutant(mutant.__class__(**{**mutant.__dict__, "replacement": ") no C++ ("}),
                                                path.read_bytes()).verdict, "invalid")

    def test_one_that_never_ends_is_ended(self):
        outcome = self.outcome("plugin/x/a.cpp", "for (volatile bool on = true; on || a != 0; a -= 2) on = true, ++n;")
        self.assertEqual((outcome.verdict, outcome.program), ("timeout", "a_tests"))

    def test_one_in_a_header_reaches_every_file_that_includes_it(self):
        outcome = self.outcome("plugin/x/a.h", "inline int same(int a) { return a - 1 - 1; }")
        self.assertEqual((outcome.verdict, outcome.test), ("killed", "exit code 3"))

    def all_at_once(self, changed=lambda mutants: mutants, folder="at-once"):
        found = {source: changed(find_mutants(source, self.root / source, ["-x", "c++", f"-I{self.root}/plugin"]))
                 for source in ("plugin/x/a.cpp", "plugin/x/a.h")}
        texts = {source: (self.root / source).read_bytes() for source in found}
        built = at_once.AtOnce(self.graph, self.root / folder, self.trials.history, self.trials, texts)
        self.told = []
        built.build([mutant for mutants in found.values() for mutant in mutants], tell=self.told.append)
        for program in self.graph.tested_programs():
            built.record(program)
        return built, found

    def test_all_in_one_build_are_told_apart(self):
        built, found = self.all_at_once()
        outcomes = {mutant.after: built.try_mutant(mutant) for mutants in found.values() for mutant in mutants
                    if "return a" not in mutant.after and "on" not in mutant.after}
        self.assertEqual((outcomes["int b = a - a;"].verdict, outcomes["int b = a - a;"].test), ("killed", "Twice.IsTwice"))
        self.assertEqual(outcomes["if (a < 0) b = 3 * a;"].verdict, "survived")
        self.assertEqual(outcomes["if (a <= 0) b = 2 * a;"].verdict, "survived")
        self.assertEqual(outcomes["int n = 1;"].verdict, "killed")
        self.assertEqual(self.everything(), self.before)

    def test_what_does_not_compile_beside_the_others_is_left_out(self):
        def spoilt(mutants):
            return [mutants[0].__class__(**{**mutants[0].__dict__, "replacement": ") no C++ ("}), *mutants[1:]]
        built, found = self.all_at_once(spoilt, "beside")
        self.assertEqual(self.told, ["plugin/a.o: 2 mutants do not compile beside the others"])  # one of the header
        self.assertIsNone(built.try_mutant(found["plugin/x/a.cpp"][0]))
        self.assertEqual([mutant.after for mutant in found["plugin/x/a.cpp"][1:] if mutant not in built.numbers], [])

    def test_what_did_not_compile_beside_the_others_is_not_tried_so_again(self):
        def spoilt(mutants):
            return [mutants[0].__class__(**{**mutants[0].__dict__, "replacement": ") no C++ at all ("}), *mutants[1:]]
        first, found = self.all_at_once(spoilt, "again")
        again, _ = self.all_at_once(spoilt, "again")
        self.assertEqual(self.told, [])
        self.assertEqual({mutant.after: number for mutant, number in again.numbers.items()},
                         {mutant.after: number for mutant, number in first.numbers.items()})
        self.assertIsNone(again.try_mutant(found["plugin/x/a.cpp"][0]))

    def test_a_survivor_is_shown_new_tests_only(self):
        built, found = self.all_at_once()
        mutant = next(one for one in found["plugin/x/a.cpp"] if one.after == "int b = a - a;")
        text = (self.root / mutant.file).read_bytes()
        for shown, verdict in ((self.graph.tests(), "survived"), ({"a_tests": {"whole program as it was before"}}, "killed")):
            self.assertEqual(built.try_mutant(mutant, shown=shown).verdict, verdict)
            self.assertEqual(self.trials.try_mutant(mutant, text, shown).verdict, verdict)

    def test_inline_functions_of_headers_are_not_those_of_the_tests(self):
        built, found = self.all_at_once()
        mutant = next(one for one in found["plugin/x/a.h"] if "a * 2" in one.after)
        self.assertEqual(built.try_mutant(mutant).verdict, "killed")

    def test_what_the_compiler_works_out_is_known(self):
        built, found = self.all_at_once(folder="worked-out")
        for again in (False, True):
            with self.subTest(again=again):
                self.assertEqual({mutant.after for mutants in found.values() for mutant in mutants
                                  if mutant in built.numbers and built.is_worked_out(mutant)},
                                 {"constexpr int rest(int a) { return a * 3; }", "constexpr int rest(int a) { return a % 4; }",
                                  "constexpr int rest(int a) { return a % 2; }"})
                self.assertEqual(self.told, [])
            built, found = self.all_at_once(folder="worked-out")
        mutant = next(one for one in found["plugin/x/a.h"] if "a % 4" in one.after)
        self.assertEqual(built.try_mutant(mutant).verdict, "survived")
        mutant = next(one for one in found["plugin/x/a.h"] if "a * 3" in one.after)
        self.assertEqual(built.try_mutant(mutant).verdict, "killed")

    def test_what_no_test_reaches_survives_without_a_run(self):
        built, found = self.all_at_once()
        built.reach.clear()
        outcome = built.try_mutant(next(one for one in found["plugin/x/a.cpp"] if one.after == "int b = a - a;"))
        self.assertEqual((outcome.verdict, outcome.seconds), ("survived", 0.0))

    def test_nothing_but_its_own_folder_is_written(self):
        self.outcome("plugin/x/a.cpp", "int b = a - a;")
        self.assertEqual(self.everything(), self.before)


if __name__ == "__main__":
    unittest.main()
