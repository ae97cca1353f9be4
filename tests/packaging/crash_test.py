"""A crash in an importer becomes the line of its source: a throw-away importer, the released tool for its host, a minidump by
the system's own writer, and scripts/symbolize.sh with nothing but the symbols."""

import os
import re
import subprocess
import tempfile
import unittest

import settings

DUMP = settings.BUILD_DIR / "crash.dmp"  # made by make_crash.py
CRASH_STORE = settings.BUILD_DIR / "crash-symbol-store"
SOURCE = "tests/packaging/crash/crash_importer.cpp"


def line_that_says(comment):
    lines = (settings.SOURCE_DIR / SOURCE).read_text().splitlines()
    return 1 + next(index for index, line in enumerate(lines) if line.endswith(f"// {comment}"))


def symbolize(*arguments):
    return subprocess.run([settings.SOURCE_DIR / "scripts/symbolize.sh", *map(str, arguments)], capture_output=True, text=True)


class CrashTest(unittest.TestCase):
    def test_dump_tells_the_line_and_the_calls_that_led_to_it(self):
        result = symbolize("--symbols", CRASH_STORE, "--symbols", settings.SYMBOLS, DUMP)
        self.assertEqual(result.returncode, 0, result.stderr)
        lines = result.stdout.splitlines()
        self.assertRegex(lines[0], r"^access violation, writing address 0x0 \(0xc0000005\) in thread \d+$")
        for number, (function, comment) in enumerate([("crash::writeSample", "the crash"),
                                                      ("crash::fillFrame", "calls the crash"),
                                                      ("xImportEntry", "calls what calls it")]):
            self.assertRegex(lines[1 + number],
                             rf"^   {number:2}  {function}\b.*  {SOURCE}:{line_that_says(comment)}  \[crash_importer\.prm\+0x")
        self.assertRegex(result.stdout, r"(?m)^    \d+  .*testbed/simhost/\w+\.cpp:\d+", "the host that called it")
        self.assertRegex(result.stdout, r"(?m) tool/main\.cpp:\d+", "the host's own beginning")

    def test_place_in_a_log_or_an_event_tells_the_line(self):
        place = re.search(r"\[crash_importer\.prm\+(0x[0-9a-f]+)\]", symbolize("--symbols", CRASH_STORE, DUMP).stdout).group(1)
        expected = f"{SOURCE}:{line_that_says('the crash')}"
        with tempfile.NamedTemporaryFile(suffix=".txt") as file:
            for text in (f"called from crash_importer.prm+{place}\n",
                         "Faulting module name: crash_importer.prm, version: 0.0.0.0, time stamp: 0x0\r\n"
                         f"Exception code: 0xc0000005\r\nFault offset: {place}\r\n"):
                for encoding in ("utf-8", "utf-16"):
                    open(file.name, "wb").write(text.encode(encoding))
                    result = symbolize("--symbols", CRASH_STORE, file.name)
                    self.assertEqual((result.returncode, result.stderr), (0, ""))
                    self.assertIn(expected, result.stdout)
        result = symbolize("--symbols", CRASH_STORE, f"crash_importer.prm+{place}")
        self.assertIn(expected, result.stdout)

    def test_symbols_of_another_build_are_not_believed(self):
        with tempfile.TemporaryDirectory() as store:
            pdb = next(CRASH_STORE.glob("crash_importer.pdb/*/*"))
            image = next(CRASH_STORE.glob("crash_importer.prm/*/*"))
            for file, key in ((pdb, "0" * 32 + "1"), (image, image.parent.name)):
                os.makedirs(f"{store}/{file.name}/{key}")
                os.link(file, f"{store}/{file.name}/{key}/{file.name}")
            result = symbolize("--symbols", store, DUMP)
        self.assertEqual(result.returncode, 1)
        self.assertRegex(result.stdout, r"\n    0  crash_importer\.prm\+0x[0-9a-f]+\n")
        self.assertNotIn(SOURCE, result.stdout)
        self.assertRegex(result.stdout, r"No symbols of this importer_host\.exe \([0-9A-F]{8}[0-9a-f]+\)")

    def test_what_is_no_dump_is_refused(self):
        with tempfile.NamedTemporaryFile() as file:
            for data in (b"", b"MDMP", b"MDMP" + b"\xff" * 60, b"nothing of interest"):
                open(file.name, "wb").write(data)
                result = symbolize("--symbols", CRASH_STORE, file.name)
                self.assertEqual((result.returncode, result.stdout), (2, ""), data)
                self.assertTrue(result.stderr.startswith("symbolize.sh: "), result.stderr)


if __name__ == "__main__":
    unittest.main()
