"""What a developer meets who opens the sources or breaks a test: an editor that understands every file, a failure that
names its recipe, and no hundred tests that passed around the one that failed.
"""

import fnmatch
import json
import os
import pathlib
import re
import shlex
import subprocess
import unittest

SOURCE = pathlib.Path(os.environ["ORVANTIS_SOURCE_DIR"])
BUILD = pathlib.Path(os.environ["ORVANTIS_BINARY_DIR"])


class CompileCommands(unittest.TestCase):
    """Language servers look for compile_commands.json in the folders above a file."""

    def editors_command(self, source):
        """The command for a file as an editor takes it: without what .clangd removes."""
        removed = re.search(r"Remove: \[(.*)\]", (SOURCE / ".clangd").read_text()).group(1)
        patterns = [word.strip().strip('"') for word in removed.split(",")]
        for entry in json.loads((SOURCE / "compile_commands.json").read_text()):
            if entry["file"] == str(SOURCE / source):
                words = shlex.split(entry["command"])
                kept = [word for word in words if not any(fnmatch.fnmatchcase(word, pattern) for pattern in patterns)]
                del kept[kept.index("-o"):kept.index("-o") + 2]
                return kept, entry["directory"]
        raise AssertionError(f"no command for {source}")

    def test_a_build_puts_them_where_editors_look(self):
        link = SOURCE / "compile_commands.json"
        self.assertTrue(link.exists(), "made by every build by clang")
        self.assertIn("build", link.resolve().relative_to(SOURCE.resolve()).parts)

    def test_an_editor_understands_plugin_tool_and_tests(self):
        for source in ("plugin/avi/frame_chunk.cpp", "tests/unit/avi/chunk_list_tests.cpp"):
            with self.subTest(source=source):
                command, folder = self.editors_command(source)
                # Of another compiler than the editor's own.
                self.assertFalse([word for word in command if word == "-include-pch" or word.endswith(".pch")])
                run = subprocess.run([*command, "-fsyntax-only"], cwd=folder, capture_output=True, text=True)
                self.assertEqual(run.returncode, 0, run.stderr[:2000])


class Recipes(unittest.TestCase):
    """An assertion that fires when a table grows sends its reader to CONTRIBUTING.md."""

    RECIPE = re.compile(r'CONTRIBUTING\.md, \\"How do I add \.\.\.\\"(?:, ([a-z ]+))?')
    # Where a table's size, or its list of names, is held.
    PLACES = {
        "tests/unit/host/pixel_formats_tests.cpp": "a host pixel format",
        "tests/unit/host/names_tests.cpp": None,
        "tests/unit/host/codes_tests.cpp": "a selector that the importer answers",
        "tests/unit/video/format_tables_tests.cpp": "a host pixel format",
        "tests/unit/audio/sample_type_tests.cpp": "an audio format",
        "tests/support/fake_codec/fake_codec.cpp": "a function of the codec library",
        "tests/integration/artefact_tests.cpp": "a function of the codec library",
        "tests/testbed/simhost/suites_tests.cpp": "a suite of the host",
        "tests/testbed/standin/tables_tests.cpp": "a coded type",
        "testbed/standin/output_layouts.cpp": "a host pixel format",
    }

    def test_every_table_names_its_recipe(self):
        for place, recipe in self.PLACES.items():
            with self.subTest(place=place):
                self.assertIn(recipe or "", [name for name in self.RECIPE.findall((SOURCE / place).read_text())])

    def test_every_recipe_that_is_named_stands_there(self):
        text = (SOURCE / "CONTRIBUTING.md").read_text()
        self.assertIn("\n## How do I add ...\n", text)
        recipes = [name.lower() for name in re.findall(r"^\*\*([^*]+)\*\*", text, re.MULTILINE)]
        for place in self.PLACES:
            for name in self.RECIPE.findall((SOURCE / place).read_text()):
                with self.subTest(place=place, name=name):
                    self.assertTrue(any(recipe.startswith(name) for recipe in recipes), name)


class Failures(unittest.TestCase):
    def test_a_program_that_fails_shows_what_failed_and_nothing_else(self):
        listing = subprocess.run(["ctest", "--show-only=json-v1"], cwd=BUILD, capture_output=True, text=True, check=True)
        programs = [test for test in json.loads(listing.stdout)["tests"]
                    if any(word.startswith("--gtest_output") for word in test.get("command", []))]
        self.assertGreater(len(programs), 0)
        environment = {}
        for test in programs:
            values = {item["name"]: item["value"] for item in test["properties"]}
            environment = dict(pair.split("=", 1) for pair in values.get("ENVIRONMENT", []))
            self.assertEqual(environment.get("GTEST_BRIEF"), "1", test["name"])
        # One of two tests fails; the environment is that of the last program, with all tests in one part.
        environment |= {"GTEST_TOTAL_SHARDS": "1", "GTEST_SHARD_INDEX": "0"}
        run = subprocess.run([BUILD / "bin" / "failing_example"], capture_output=True, text=True,
                             env={**os.environ, **environment})
        self.assertEqual(run.returncode, 1)
        self.assertIn("this one says what was wrong", run.stdout)
        self.assertIn("FailingExample.Fails", run.stdout)
        self.assertNotIn("FailingExample.Passes", run.stdout)
        self.assertNotIn("[       OK ]", run.stdout)
        self.assertLess(len(run.stdout.splitlines()), 12, run.stdout)


if __name__ == "__main__":
    unittest.main()
