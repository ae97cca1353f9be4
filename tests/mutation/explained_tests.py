"""The list of explained mutants: how it is read, and what is wrong with one."""
import pathlib
import tempfile
import unittest

import scripts_path
import explained
import table
from source_mutants import Mutant

GOOD = """# About nothing.
plugin/x/a.cpp n::f
- if (a < b) g();
+ if (a <= b) g();
= `a` is never `b`,
= as its caller says.

plugin/x/a.cpp n::f #2
- g();
+ ;
= It does nothing.
"""


class List(unittest.TestCase):
    def read(self, text):
        with tempfile.TemporaryDirectory() as folder:
            path = pathlib.Path(folder) / "explained.txt"
            path.write_text(text)
            return explained.read(path)

    def test_entries_are_read_with_their_reasons(self):
        first, second = self.read(GOOD)
        self.assertEqual(first.key(), ("plugin/x/a.cpp", "n::f", "if (a < b) g();", "if (a <= b) g();", 1))
        self.assertEqual(first.reason, "`a` is never `b`, as its caller says.")
        self.assertEqual(second.key(), ("plugin/x/a.cpp", "n::f", "g();", ";", 2))

    def test_what_a_run_prints_can_be_copied_into_it(self):
        mutant = Mutant("plugin/x/a.cpp", "n::f", "statement", 9, 100, 4, "", "g();", ";", 2)
        (entry,) = self.read(explained.text(mutant, "It does nothing."))
        self.assertEqual(entry.key(), mutant.key())

    def test_says_where_it_is_wrong(self):
        for text, problem in (
                (GOOD.replace("= It does nothing.\n", ""), "explained.txt:8: no reason"),
                (GOOD.replace("+ ;\n", ""), "explained.txt:10: out of its place"),
                (GOOD.replace("n::f #2", "n::f here too"), r"explained.txt:8: expected: FILE FUNCTION \[#NUMBER\]"),
                (GOOD + GOOD, "explained.txt:13: the same as in line 2")):
            with self.subTest(problem=problem), self.assertRaisesRegex(ValueError, problem):
                self.read(text)

    def test_a_conversion_is_a_function_with_a_blank(self):
        (entry,) = self.read("plugin/a.h a::B::operator bool\n- old\n+ new\n= nobody asks\n")
        self.assertEqual((entry.function, entry.number), ("a::B::operator bool", 1))

    def test_that_of_the_plugin_is_sound(self):
        for entry in explained.read(scripts_path.SOURCE / "tests/mutation/explained.txt"):
            self.assertTrue((scripts_path.SOURCE / entry.file).exists(), f"line {entry.line}: {entry.file}")
            self.assertGreater(len(entry.reason), 10, f"line {entry.line}")


class Table(unittest.TestCase):
    def test_adds_up_by_folder(self):
        results = [{"file": "plugin/avi/a.cpp", "verdict": verdict}
                   for verdict in ("killed", "killed", "timeout", "survived", "explained", "undecided", "equal", "invalid")]
        results.append({"file": "plugin/diag/b.cpp", "verdict": "killed"})
        rows = table.table(results, {"avi": 40, "diag": 2}).splitlines()
        self.assertEqual(rows[2:], ["| avi | 40 | 7 | 1 | 3 | 1 | 1 | 1 | 1 | 60.0 % |",
                                    "| diag | 2 | 1 | 0 | 1 | 0 | 0 | 0 | 0 | 100.0 % |",
                                    "| all | 42 | 8 | 1 | 4 | 1 | 1 | 1 | 1 | 66.7 % |"])

    def test_what_is_not_all_does_not_look_like_it(self):
        self.assertEqual(table.percent(9999, 10000), "99.9 %")
        self.assertEqual(table.percent(1, 1), "100.0 %")


if __name__ == "__main__":
    unittest.main()
