"""Which branches count as run, and which reasons are accepted."""
import unittest

import scripts_path  # noqa: F401
from branches import branches_of, judge, reasons_in


def function(branches, regions=(), name="a.cpp"):
    return {"filenames": [name], "branches": list(branches), "regions": list(regions)}


def exported(*functions):
    return {"data": [{"functions": list(functions)}]}


class Branches(unittest.TestCase):
    def test_both_outcomes_of_a_condition_are_counted(self):
        (branch,) = branches_of(exported(function([[3, 9, 3, 14, 2, 0, 0, 0, 4]])))["a.cpp"]
        self.assertEqual((branch.line, branch.column, branch.true, branch.false), (3, 9, 2, 0))
        self.assertEqual(branch.missing(), ["false"])

    def test_what_one_compiled_copy_of_a_function_does_all_of_them_can(self):
        (branch,) = branches_of(exported(function([[3, 9, 3, 14, 2, 0, 0, 0, 4]]), function([[3, 9, 3, 14, 0, 5, 0, 0, 4]])))["a.cpp"]
        self.assertEqual(branch.missing(), [])

    def test_a_condition_that_the_compiler_knows_is_none(self):
        running = [1, 1, 9, 2, 7, 0, 0, 0]
        dead = [2, 5, 4, 6, 0, 0, 0, 0]
        folded = [[3, 9, 3, 14, 0, 0, 0, 0, 4]]
        self.assertEqual(branches_of(exported(function(folded, [running]))), {})
        # In code that never ran it is one that never ran.
        (branch,) = branches_of(exported(function(folded, [running, dead])))["a.cpp"]
        self.assertEqual(branch.missing(), ["true", "false"])


class Reasons(unittest.TestCase):
    NEVER_FALSE = [[3, 9, 3, 14, 2, 0, 0, 0, 4]]

    def judged(self, source, branches=NEVER_FALSE):
        return judge(branches_of(exported(function(branches))).get("a.cpp", []), reasons_in(source))

    def test_without_a_reason_it_is_a_problem(self):
        self.assertEqual(self.judged("\n\nif (a)\n"), ([(3, "column 9: the condition is never false")], 0))

    def test_a_reason_on_the_line_or_on_the_lines_above_it(self):
        self.assertEqual(self.judged("\n\nif (a)  // not covered: only under a full moon\n"), ([], 1))
        self.assertEqual(self.judged("\n// not covered: only under a full moon\nif (a)\n"), ([], 1))
        self.assertEqual(self.judged("// not covered: only under a full moon,\n// which is rare\nif (a)\n"), ([], 1))

    def test_a_reason_for_one_outcome_is_none_for_the_other(self):
        self.assertEqual(self.judged("\n\nif (a)  // not covered when false: it is not\n"), ([], 1))
        self.assertEqual(self.judged("\n\nif (a)  // not covered when true: it is not\n")[0], [
            (3, "a reason where every branch runs"), (3, "column 9: the condition is never false")])

    def test_a_reason_that_is_none_is_none(self):
        self.assertEqual(len(self.judged("\n\nif (a)  // not covered:\n")[0]), 1)

    def test_what_threads_decide_may_run_and_may_not(self):
        source = "\n\nif (a)  // not always covered: two threads have to meet\n"
        self.assertEqual(self.judged(source), ([], 1))
        self.assertEqual(self.judged(source, [[3, 9, 3, 14, 2, 1, 0, 0, 4]]), ([], 0))

    def test_a_reason_has_to_go_when_the_branch_runs(self):
        self.assertEqual(self.judged("\n\nif (a)  // not covered: no\n", [[3, 9, 3, 14, 2, 1, 0, 0, 4]]),
                         ([(3, "a reason where every branch runs")], 0))
        self.assertEqual(self.judged("int i;  // not covered: no\n", [])[0], [(1, "a reason where every branch runs")])


if __name__ == "__main__":
    unittest.main()
