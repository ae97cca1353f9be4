"""Which mutants are found in a source, letter by letter."""
import pathlib
import tempfile
import unittest

import scripts_path  # noqa: F401
from source_mutants import find_mutants, joined, other_text


def mutants_of(text):
    with tempfile.TemporaryDirectory() as folder:
        path = pathlib.Path(folder) / "a.cpp"
        path.write_text(text)
        return find_mutants("plugin/x/a.cpp", path, ["-x", "c++", "-std=c++20"])


def edits(text, kind=None):
    """[(kind, line after the edit)] of all lines of a text."""
    return [(mutant.kind, mutant.after) for mutant in mutants_of(text) if kind in (None, mutant.kind)]


class Kinds(unittest.TestCase):
    def test_a_relation_moves_its_bound_and_turns_round(self):
        self.assertEqual(edits("bool f(int a, int b) { return a < b; }"), [
            ("relation", "bool f(int a, int b) { return a <= b; }"), ("relation", "bool f(int a, int b) { return a >= b; }")])
        self.assertEqual(edits("bool f(int a, int b) { return a == b; }"), [("relation", "bool f(int a, int b) { return a != b; }")])

    def test_a_relation_of_a_class_is_one_too(self):
        text = "struct S { int i; bool operator==(const S&) const = default; };\nbool f(S a, S b) { return a == b; }"
        self.assertEqual(edits(text), [("relation", "bool f(S a, S b) { return a != b; }")])

    def test_the_smaller_of_two_becomes_the_larger(self):
        text = "namespace std { int min(int, int); int max(int, int); }\nint f(int a) { return std::min(a, 7); }"
        self.assertEqual(edits(text), [("relation", "int f(int a) { return std::max(a, 7); }"),
                                       ("constant", "int f(int a) { return std::min(a, 6); }"),
                                       ("constant", "int f(int a) { return std::min(a, 8); }")])

    def test_arithmetic(self):
        for operator, other in (("+", "-"), ("-", "+"), ("*", "/"), ("/", "*"), ("%", "*"), ("&", "|"), ("|", "&"), ("^", "|"),
                                ("<<", ">>"), (">>", "<<")):
            with self.subTest(operator=operator):
                self.assertEqual(edits(f"int f(int a, int b) {{ return a {operator} b; }}"),
                                 [("arithmetic", f"int f(int a, int b) {{ return a {other} b; }}")])
        self.assertEqual(edits("int f(int a) { return -a; }"), [("arithmetic", "int f(int a) { return a; }")])

    def test_assignments_and_steps_are_changed_and_removed(self):
        self.assertEqual(edits("void f(int& a, int b) { a += b; }"), [
            ("statement", "void f(int& a, int b) { ; }"), ("arithmetic", "void f(int& a, int b) { a -= b; }")])
        self.assertEqual(edits("void f(int& a) { ++a; }"), [
            ("arithmetic", "void f(int& a) { --a; }"), ("statement", "void f(int& a) { ; }")])

    def test_constants_move_by_one_and_never_below_zero(self):
        self.assertEqual(edits("constexpr unsigned k = 16U;"), [("constant", "constexpr unsigned k = 15U;"),
                                                                ("constant", "constexpr unsigned k = 17U;")])
        self.assertEqual(edits("constexpr int k = 0x10;"), [("constant", "constexpr int k = 15;"),
                                                            ("constant", "constexpr int k = 17;")])
        self.assertEqual(edits("constexpr int k = 0;"), [("constant", "constexpr int k = 1;")])
        self.assertEqual(edits("constexpr int k = 1'000;"), [("constant", "constexpr int k = 1001;"),
                                                             ("constant", "constexpr int k = 999;")])
        self.assertEqual(edits("constexpr bool k = true;"), [("constant", "constexpr bool k = false;")])
        self.assertEqual(edits("constexpr double k = 0.5;"), [("constant", "constexpr double k = (0.5 + 1);")])
        self.assertEqual(edits("constexpr char k = 'a';"), [("constant", "constexpr char k = 'b';")])

    def test_what_the_compiler_holds_and_the_size_of_an_array_stay(self):
        self.assertEqual(edits("static_assert(sizeof(int) == 4);\nint a[3];"), [])

    def test_conditions_are_negated_once(self):
        self.assertEqual(edits("void g();\nvoid f(bool a) { if (a) g(); }"), [
            ("condition", "void f(bool a) { if (!(a)) g(); }"), ("statement", "void f(bool a) { if (a) ; }")])
        self.assertEqual(edits("int f(bool a, int b, int c) { return a ? b : c; }"),
                         [("condition", "int f(bool a, int b, int c) { return !(a) ? b : c; }")])
        # A relation has a negation of its own, and so has "not".
        self.assertEqual(edits("void f(int a, int b) { while (a < b) {} }"), [
            ("relation", "void f(int a, int b) { while (a <= b) {} }"), ("relation", "void f(int a, int b) { while (a >= b) {} }")])
        self.assertEqual(edits("void f(bool a) { if (!a) {} }"), [("condition", "void f(bool a) { if (a) {} }")])

    def test_and_becomes_or(self):
        self.assertEqual(edits("bool f(bool a, bool b) { return a && b; }"), [
            ("condition", "bool f(bool a, bool b) { return a || b; }")])

    def test_statements_go(self):
        text = "void g(int);\nvoid f(int a) {\n  g(a);\n  for (;;) {\n    break;\n  }\n}"
        self.assertEqual(edits(text), [("statement", ";"), ("statement", ";")])

    def test_a_statement_over_several_lines_leaves_the_lines_behind_it_where_they_are(self):
        text = b"void g(int, int);\nvoid f(int a, int b) {\n  g(a,\n    b);\n}\n"
        mutant = next(one for one in mutants_of(text.decode()) if one.kind == "statement")
        self.assertEqual((mutant.before, mutant.after), ("g(a, b);", ";"))
        self.assertEqual(mutant.apply(text), b"void g(int, int);\nvoid f(int a, int b) {\n  \n;\n}\n")

    def test_a_lock_goes(self):
        text = "namespace std { struct mutex {}; struct lock_guard { lock_guard(mutex&); }; }\n" \
               "std::mutex m;\nvoid f() { const std::lock_guard lock(m); }\nvoid g(int a) { const int lock = a; }"
        self.assertEqual(edits(text), [("lock", "void f() { ; }")])

    def test_arguments_of_one_type_change_places(self):
        text = "void g(int, int, long);\nvoid f(int a, int b, long c) { g(a, b, c); }"
        self.assertEqual(edits(text, "arguments"), [("arguments", "void f(int a, int b, long c) { g(b, a, c); }")])
        self.assertEqual(edits("void g(int, int);\nvoid f(int a) { g(a, a); }", "arguments"), [])

    def test_texts(self):
        self.assertEqual(other_text('"stream: %d"'), '"Xtream: %d"')
        self.assertEqual(other_text('"%lld ms"'), '"%lld Xs"')
        self.assertEqual(other_text(r'"\n%s"'), r'"\n%s~"')
        self.assertEqual(other_text('"Xa"'), '"Ya"')
        self.assertEqual(other_text('""'), '"~"')

    def test_what_a_macro_writes_stays(self):
        self.assertEqual(edits("#define LESS(a, b) ((a) < (b))\nbool f(int a, int b) { return LESS(a, b); }"), [])

    def test_a_source_that_is_none_is_refused(self):
        with self.assertRaisesRegex(ValueError, "plugin/x/a.cpp: .*expected"):
            mutants_of("int f( {")


class Names(unittest.TestCase):
    TEXT = "namespace n { struct S { int f(int a) { return a + 1; } }; }\n"

    def test_functions_are_told_by_their_full_names(self):
        self.assertEqual({mutant.function for mutant in mutants_of(self.TEXT)}, {"n::S::f"})

    def test_lines_and_comments_that_come_and_go_change_no_name(self):
        text = "// a\n\n" + self.TEXT.replace(" }; }", " }; }  // b")
        self.assertEqual([mutant.id() for mutant in mutants_of(self.TEXT)], [mutant.id() for mutant in mutants_of(text)])
        self.assertNotEqual([mutant.line for mutant in mutants_of(self.TEXT)], [mutant.line for mutant in mutants_of(text)])

    def test_mutants_that_read_alike_are_numbered(self):
        text = "void g();\nvoid f() {\n  g();\n  g();\n}\n"
        self.assertEqual([(mutant.line, mutant.number) for mutant in mutants_of(text)], [(3, 1), (4, 2)])

    def test_no_two_have_one_name(self):
        found = mutants_of("bool f(int a) { return a < 1 && a < 1; }")
        self.assertEqual(len({mutant.id() for mutant in found}), len(found))

    def test_a_text_with_slashes_is_no_comment(self):
        self.assertEqual(joined(b'  g("a // b");  // c\n  h();'), 'g("a // b"); h();')


if __name__ == "__main__":
    unittest.main()
