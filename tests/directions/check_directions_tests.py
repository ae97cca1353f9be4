#!/usr/bin/env python3
"""scripts/check-directions.py on copies of the project in which something is wrong."""

import os
import shutil
import subprocess
import sys
import tempfile
import unittest

PROJECT = os.path.abspath(os.path.join(os.path.dirname(__file__), "..", ".."))
ROOMS = ("bench", "cmake", "host", "packaging", "plugin", "scripts", "testbed", "tests", "tool")
TABLE = "scripts/directions.txt"


def all_but_sources(folder, names):
    return [name for name in names if name == "corpus" or
            not name.endswith((".h", ".cpp", ".in", ".rc", ".txt")) and not os.path.isdir(os.path.join(folder, name))]


class Directions(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        temporary = tempfile.TemporaryDirectory()
        cls.addClassCleanup(temporary.cleanup)
        cls.root = os.path.join(temporary.name, "copy")
        for room in ROOMS:
            shutil.copytree(os.path.join(PROJECT, room), os.path.join(cls.root, room), ignore=all_but_sources)
        os.mkdir(os.path.join(cls.root, "docs"))
        for text in ("README.md", "docs/architecture.md"):
            shutil.copy(os.path.join(PROJECT, text), os.path.join(cls.root, text))

    def read(self, name):
        with open(os.path.join(self.root, name), encoding="utf-8") as text:
            return text.read()

    def write(self, name, content):
        """Until the end of the test."""
        path = os.path.join(self.root, name)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        if os.path.exists(path):
            self.addCleanup(self.put, path, self.read(name))
        else:
            self.addCleanup(os.remove, path)
        self.put(path, content)

    @staticmethod
    def put(path, content):
        with open(path, "w", encoding="utf-8") as text:
            text.write(content)

    def change_row(self, folder, change):
        lines = self.read(TABLE).splitlines(keepends=True)
        at = next(i for i, line in enumerate(lines) if line.startswith(folder + ":"))
        lines[at] = change(lines[at])
        self.write(TABLE, "".join(lines))

    def check(self, *arguments):
        """Exit code and what was said."""
        done = subprocess.run([sys.executable, os.path.join(PROJECT, "scripts/check-directions.py"), "--root", self.root,
                               *arguments], capture_output=True, text=True, check=False)
        return done.returncode, done.stdout + done.stderr

    def assert_refused(self, *parts):
        code, said = self.check()
        self.assertEqual(code, 1, said)
        for part in parts:
            self.assertIn(part, said)

    def test_the_copy_is_clean(self):
        self.assertEqual(self.check(), (0, ""))

    def test_a_forbidden_include_is_named_with_its_place(self):
        name = "plugin/fileio/file.h"
        content = self.read(name)
        self.write(name, content + '#include "video/video_info.h"\n')
        line = content.count("\n") + 1
        self.assert_refused(f"{name}:{line}: plugin/fileio may not include plugin/video (video/video_info.h)")

    def test_other_ways_to_write_it_are_the_same(self):
        for text in ("#include <video/video_info.h>", "  #  include \"plugin/video/video_info.h\"",
                     '#include "../video/video_info.h"'):
            with self.subTest(text):
                self.write("plugin/fileio/planted.h", text + "\n")
                self.assert_refused("plugin/fileio/planted.h:1: plugin/fileio may not include plugin/video")

    def test_a_new_folder_needs_a_row(self):
        self.write("plugin/gadgets/gadget.h", "#pragma once\n")
        self.assert_refused(f"plugin/gadgets: has sources and no row in {TABLE}")

    def test_a_row_without_sources_has_to_go(self):
        self.write(TABLE, self.read(TABLE) + "plugin/gadgets:\n")
        self.assert_refused("plugin/gadgets has no sources")

    def test_an_arrow_that_nobody_uses_has_to_go(self):
        self.change_row("plugin/suites", lambda line: line.replace("plugin/diag", "plugin/diag plugin/fileio"))
        self.assert_refused("nothing in plugin/suites includes plugin/fileio")

    def test_no_arrow_runs_up(self):
        self.write("plugin/fileio/planted.h", '#include "video/video_info.h"\n')
        self.change_row("plugin/fileio", lambda line: line.replace("plugin/diag", "plugin/diag plugin/video"))
        self.assert_refused("plugin/fileio may include plugin/video, which does not stand above it")

    def test_an_include_of_nothing_is_refused(self):
        self.write("plugin/fileio/planted.h", '#include "fileio/no_such_file.h"\n')
        self.assert_refused("plugin/fileio/planted.h:1: fileio/no_such_file.h is no file of the project")

    def test_a_folder_has_one_row(self):
        self.write(TABLE, self.read(TABLE) + "plugin/diag:\n")
        self.assert_refused("no row, or a second one: plugin/diag:")

    def test_stale_diagrams_are_told_and_drawn(self):
        self.write("plugin/suites/planted.h", '#include "fileio/file.h"\n')
        self.change_row("plugin/suites", lambda line: line.replace("plugin/diag", "plugin/diag plugin/fileio"))
        self.assert_refused("README.md: the diagram 'plugin' differs", "docs/architecture.md: the diagram 'plugin' differs")
        for drawn in ("README.md", "docs/architecture.md"):
            self.write(drawn, self.read(drawn))
        self.assertEqual(self.check("--write"), (0, ""))
        self.assertIn("suites --> fileio", self.read("README.md"))
        self.assertEqual(self.check(), (0, ""))

    def test_an_edited_diagram_is_told(self):
        self.write("README.md", self.read("README.md").replace("async --> importer", "async --> entry"))
        self.assert_refused("README.md: the diagram 'plugin' differs")

    def test_a_diagram_without_its_marks_is_told(self):
        self.write("README.md", self.read("README.md").replace("<!-- directions: plugin -->", ""))
        self.assert_refused("README.md: the marks of the diagram 'plugin' are gone")

    def test_todays_includes_can_be_printed_as_a_table(self):
        self.write("plugin/fileio/planted.h", '#include "video/video_info.h"\n')
        code, said = self.check("--actual")
        self.assertEqual(code, 0)
        self.assertIn("plugin/fileio: plugin/diag plugin/video | the only door to the disk\n", said)


if __name__ == "__main__":
    unittest.main()
