"""What the scripts do before and around their work: which files they replace, what they say, what they refuse.

Each test copies the scripts into a folder of its own and puts stand-ins for the programs that they start first on the
path. A stand-in writes its name and arguments into a list of calls.
"""

import os
import pathlib
import re
import shutil
import stat
import subprocess
import tempfile
import unittest

SOURCE = pathlib.Path(os.environ["ORVANTIS_SOURCE_DIR"])
SCRIPTS = ["demo.sh", "test.sh", "bench.sh", "lint.sh", "mutate.sh", "coverage.sh", ".ci/nightly", "tests/fuzz/run.sh",
           "tests/museum/seeds.sh", "scripts/check-reproducible.sh", "scripts/install-packages.sh", "scripts/sign-file.sh",
           "scripts/sign-release.sh", "scripts/verify-release.sh", "scripts/build-release.sh",
           "scripts/check-workflows.sh", "scripts/set-home-url.sh", "scripts/pin-actions.sh"]

RECORD = '#!/bin/sh\necho "$(basename "$0") $*" >>"$CALLS"\n'
# Prints what ninja prints, so that the progress can be seen.
CMAKE = RECORD + """
case "$*" in
    *--build*) i=1; while [ $i -le 100 ]; do echo "[$i/100] Building thing $i"; i=$((i + 1)); done ;;
esac
exit ${CMAKE_EXIT:-0}
"""
FFMPEG = RECORD + 'for last in "$@"; do :; done\necho made >"$last"\n'
HOST = RECORD + """
case "$2" in
    info) printf 'file: %s\\nframes: 2\\n' "$3" ;;
    report) shift 3; echo page >"$2/page.html" ;;
esac
"""


class Folder(unittest.TestCase):
    """A copy of the scripts with stand-ins on the path."""

    def setUp(self):
        self.root = pathlib.Path(tempfile.mkdtemp())
        self.addCleanup(shutil.rmtree, self.root)
        for script in SCRIPTS + ["scripts/common.sh"]:
            target = self.root / script
            target.parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(SOURCE / script, target)
        self.bin = self.root / "stand-ins"
        self.bin.mkdir()
        self.calls = self.root / "calls"
        self.calls.write_text("")
        self.program("cmake", CMAKE)
        self.program("ffmpeg", FFMPEG)
        self.program("dpkg-query", RECORD + 'echo "install ok installed"\n')
        for name in ("apt-get", "ctest", "clang-format-16", "run-clang-tidy", "cppcheck", "git", "sudo"):
            self.program(name, RECORD)
        (self.root / "build/windows-clang").mkdir(parents=True)
        self.program("wine-run", HOST, self.root / "build/windows-clang")

    def program(self, name, text, folder=None):
        path = (folder or self.bin) / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text)
        path.chmod(path.stat().st_mode | stat.S_IXUSR)

    def run_script(self, script, *arguments, **environment):
        return subprocess.run([self.root / script, *arguments], cwd=self.root, capture_output=True, text=True,
                              stdin=subprocess.DEVNULL, env={
                                  "PATH": f"{self.bin}:/usr/bin:/bin", "HOME": str(self.root),
                                  "CALLS": str(self.calls), **environment})

    def called(self):
        return self.calls.read_text()


class Usage(Folder):
    def test_help_prints_the_usage_and_does_nothing_else(self):
        for script in SCRIPTS:
            for word in ("--help", "-h"):
                with self.subTest(script=script, word=word):
                    run = self.run_script(script, word)
                    self.assertEqual(run.returncode, 0, run.stderr)
                    self.assertIn(pathlib.Path(script).name, run.stdout)
                    self.assertEqual(self.called(), "")

    def test_an_argument_that_means_nothing_is_named_and_nothing_is_done(self):
        for script in SCRIPTS:
            if script == "demo.sh":
                continue
            with self.subTest(script=script):
                run = self.run_script(script, "WRONG")
                self.assertEqual(run.returncode, 2)
                self.assertIn("WRONG", run.stderr)
                self.assertEqual(self.called(), "")


class Nightly(Folder):
    STEPS = ["everything", "gcc", "mutation", "coverage", "schedules", "proofs", "fuzzing", "sessions",
             "validation", "reproducible"]

    def setUp(self):
        super().setUp()
        for name in ("test.sh", "mutate.sh", "coverage.sh", "schedules.sh", "prove.sh"):
            self.program(name, RECORD, self.root)
        self.program("run.sh", RECORD, self.root / "tests/fuzz")
        self.program("check.sh", RECORD, self.root / "tests/fuzz/service")
        self.program("seeds.sh", RECORD, self.root / "tests/museum")
        for name in ("install-packages.sh", "check-reproducible.sh"):
            self.program(name, RECORD, self.root / "scripts")
        (self.root / "build/linux-quick/bin").mkdir(parents=True)
        self.program("importer_host", RECORD, self.root / "build/linux-quick/bin")
        self.program("wine-run", RECORD, self.root / "build/windows-clang")

    def results(self, run):
        lines = run.stdout[run.stdout.index("=== results"):].splitlines()[1:]
        return {line.split()[0]: line.split()[1] for line in lines}

    def test_every_step_is_run_and_listed(self):
        run = self.run_script(".ci/nightly", NIGHTLY_SEED="7")
        self.assertEqual(run.returncode, 0, run.stderr)
        self.assertEqual(self.results(run), {step: "passed" for step in self.STEPS})
        self.assertEqual([call for call in self.called().splitlines() if not call.startswith(("cmake", "install"))], [
            "test.sh everything", "test.sh gcc", "mutate.sh --sample 200 --seed 7", "coverage.sh ", "schedules.sh ",
            "schedules.sh --planted", "prove.sh ", "check.sh ", "run.sh 30",
            "importer_host soak --sessions 200000 --seed 7",
            "wine-run build/windows-clang/bin/importer_host.exe soak --sessions 2000 --seed 7", "seeds.sh 100 7",
            "check-reproducible.sh "])

    def test_a_step_that_fails_is_listed_and_stops_no_other(self):
        for program, folder, step in (("mutate.sh", ".", "mutation"), ("prove.sh", ".", "proofs"),
                                      ("run.sh", "tests/fuzz", "fuzzing"),
                                      ("seeds.sh", "tests/museum", "validation"),
                                      ("importer_host", "build/linux-quick/bin", "sessions"),
                                      ("wine-run", "build/windows-clang", "sessions")):
            with self.subTest(program=program):
                self.program(program, RECORD + "exit 3\n", self.root / folder)
                run = self.run_script(".ci/nightly")
                self.assertEqual(run.returncode, 1)
                expected = {name: "passed" for name in self.STEPS}
                expected[step] = "FAILED"
                self.assertEqual(self.results(run), expected)
                self.program(program, RECORD, self.root / folder)

    def test_steps_can_be_chosen(self):
        run = self.run_script(".ci/nightly", "proofs", "coverage")
        self.assertEqual(run.returncode, 0, run.stderr)
        self.assertEqual(self.results(run), {"proofs": "passed", "coverage": "passed"})
        self.assertEqual(self.called(), "prove.sh \ncoverage.sh \n")

    def test_the_workflow_runs_the_same_steps(self):
        workflow = (SOURCE / ".github/workflows/nightly.yml").read_text()
        self.assertIn(f"step: [{', '.join(self.STEPS)}]", workflow)
        self.assertIn("run: .ci/nightly ${{ matrix.step }}", workflow)


class Packages(Folder):
    def missing(self, name):
        self.program("dpkg-query", f'#!/bin/sh\nfor last in "$@"; do :; done\n'
                                   f'[ "$last" = {name} ] || echo "install ok installed"\n')

    def test_without_root_and_sudo_the_user_is_told_what_to_install(self):
        self.missing("nsis")
        self.program("id", "#!/bin/sh\necho 1000\n")
        (self.bin / "sudo").unlink()
        # Nothing but the stand-ins and what the script itself needs.
        for name in ("sh", "sed", "grep", "dirname", "realpath", "cat"):
            os.symlink(shutil.which(name), self.bin / name)
        run = self.run_script("scripts/install-packages.sh", PATH=str(self.bin))
        self.assertEqual(run.returncode, 1)
        self.assertIn("apt-get install --no-install-recommends nsis", run.stderr)
        self.assertNotIn("apt-get", self.called())

    def test_says_how_much_there_is_to_fetch_before_fetching_it(self):
        self.missing("nsis")
        self.program("apt-get", RECORD + """
case "$*" in *--assume-no*) echo "Need to get 3,141 kB of archives."; exit 1 ;; esac
""")
        run = self.run_script("scripts/install-packages.sh")
        self.assertEqual(run.returncode, 0, run.stderr)
        self.assertIn("3,141 kB to fetch", run.stdout)
        self.assertIn("install -y -qq --no-install-recommends nsis", self.called())


class QuickTest(Folder):
    def run_test(self, **environment):
        """What the program was started with, once for each time."""
        program = self.root / "x_tests"
        program.write_text(RECORD + 'case "$*" in *--gtest_list_tests*) printf "A.\\n  x\\nB.\\n  y  # T\\n" ;; esac\nexit $EXIT\n')
        program.chmod(0o755)
        self.calls.write_text("")
        self.passed = self.root / "quick/x_tests.passed"
        return subprocess.run(["sh", SOURCE / "cmake/run-quick-test.sh", self.passed, program, "--flag"], text=True,
                              stdout=subprocess.PIPE, env={"PATH": os.environ["PATH"], "CALLS": str(self.calls), "EXIT": "0",
                                                           **environment})

    def test_everything_unless_told_otherwise(self):
        self.run_test(QUICK_FILTER="", QUICK_APART="", QUICK_WITHOUT="")
        self.assertEqual(self.calls.read_text(), "x_tests --flag\n")
        self.assertTrue(self.passed.exists())

    def test_what_is_chosen_without_what_is_left_out(self):
        for environment, filters in ((dict(QUICK_FILTER="A.*"), "A.*-"), (dict(QUICK_WITHOUT="B.y"), "*-B.y"),
                                     (dict(QUICK_FILTER="A.*", QUICK_WITHOUT="A.x"), "A.*-A.x")):
            self.run_test(**environment)
            self.assertEqual(self.calls.read_text(), f"x_tests --flag --gtest_filter={filters}\n")

    def test_each_of_those_apart_by_itself_then_the_others(self):
        self.run_test(QUICK_APART="?.?", QUICK_WITHOUT="C.*")
        self.assertEqual(self.calls.read_text().splitlines(), [
            "x_tests --gtest_list_tests --gtest_filter=?.?", "x_tests --flag --gtest_filter=A.x", "x_tests --flag --gtest_filter=B.y",
            "x_tests --flag --gtest_filter=*-?.?:C.*"])

    def test_a_failure_is_no_pass(self):
        result = self.run_test(EXIT="1")
        self.assertEqual((result.returncode, self.passed.exists()), (1, False))
        self.assertIn("All of it: ", result.stdout)


class WineRun(Folder):
    """The wrapper that starts Windows programs, with a Wine in which the first BROKEN systems start no program."""

    def setUp(self):
        super().setUp()
        text = (SOURCE / "cmake/wine-run.in").read_text()
        for name, path in (("SOURCE", self.root), ("BINARY", self.root / "build/windows-clang")):
            text = text.replace(f"@CMAKE_{name}_DIR@", str(path))
        self.program("wine-run", text, self.root / "build/windows-clang")
        self.program("wineserver", RECORD + """
case "$1" in
    -k0) [ -e "$WINEPREFIX/server" ] ;;
    -p600) mkdir -p "$WINEPREFIX"; touch "$WINEPREFIX/server" ;;
    -k) rm -f "$WINEPREFIX/server" ;;
esac
""")
        self.program("wineboot", RECORD + 'touch "$WINEPREFIX/made"\n')
        self.program("wine", RECORD + """
[ "$1" = cmd ] || exit 0
[ "$(grep -c "^wineboot" "$CALLS")" -gt "${BROKEN:-0}" ] && exit 0
echo "wine: could not load kernel32.dll"
exit 53
""")
        self.prefix = self.root / "build/wineprefix"

    def start(self, *arguments, **environment):
        return self.run_script("build/windows-clang/wine-run", *(arguments or ("a.exe",)), **environment)

    def test_makes_its_system_once(self):
        for _ in range(2):
            self.assertEqual(self.start("a.exe", "one").returncode, 0)
        self.assertEqual(self.called().splitlines(), [
            "wineserver -p600", "wineboot -i", "wine cmd /c exit 0", "wine a.exe one", "wineserver -k0", "wine a.exe one"])

    def test_a_system_that_starts_no_program_is_made_again(self):
        run = self.start(BROKEN="2")
        self.assertEqual(run.returncode, 0, run.stderr)
        self.assertEqual(self.called().count("wineboot -i"), 3)
        self.assertTrue(self.called().endswith("wine a.exe\n"))

    def test_a_system_left_half_made_is_made_again(self):
        self.prefix.mkdir(parents=True)
        (self.prefix / "server").touch()
        (self.prefix / "half").touch()
        self.assertEqual(self.start(BROKEN="1").returncode, 0)
        self.assertFalse((self.prefix / "half").exists())

    def test_says_what_wine_said_when_no_system_can_be_made(self):
        run = self.start(BROKEN="9")
        self.assertEqual(run.returncode, 125)
        self.assertIn(f"no program starts under Wine in {self.prefix}", run.stderr)
        self.assertIn("wine: could not load kernel32.dll", run.stderr)
        self.assertNotIn("a.exe", self.called())

    def test_a_system_of_the_users_choice_is_never_removed(self):
        mine = self.root / "mine"
        mine.mkdir()
        (mine / "precious").touch()
        self.assertEqual(self.start(WINEPREFIX=str(mine), BROKEN="9").returncode, 125)
        self.assertTrue((mine / "precious").exists())


class Demo(Folder):
    def setUp(self):
        super().setUp()
        self.out = self.root / "demo-out"

    def test_makes_four_clips_and_replaces_its_own_results(self):
        for _ in range(2):
            run = self.run_script("demo.sh")
            self.assertEqual(run.returncode, 0, run.stderr)
            self.assertEqual({path.name for path in self.out.iterdir()},
                             {"clips", "rgb-8bit", "rgba-8bit", "yuv422-10bit", "yuv422-8bit"})
            # Of an earlier run nothing stays that this one did not make.
            self.assertFalse((self.out / "rgb-8bit/old").exists())
            (self.out / "rgb-8bit/old").write_text("old")

    def test_a_clip_among_the_demo_clips_is_shown_and_stays(self):
        clip = self.out / "clips/rgb-8bit.avi"
        clip.parent.mkdir(parents=True)
        clip.write_bytes(b"the clip")
        run = self.run_script("demo.sh", "demo-out/clips/rgb-8bit.avi")
        self.assertEqual(run.returncode, 0, run.stderr)
        self.assertEqual(clip.read_bytes(), b"the clip")
        self.assertTrue((self.out / "rgb-8bit/page.html").exists())

    def test_a_mistyped_name_costs_nothing(self):
        self.assertEqual(self.run_script("demo.sh").returncode, 0)
        before = sorted(path for path in self.out.rglob("*"))
        self.calls.write_text("")
        run = self.run_script("demo.sh", "clip-that-is-not-there.avi")
        self.assertEqual(run.returncode, 1)
        self.assertIn("there is no file clip-that-is-not-there.avi", run.stderr)
        self.assertEqual(sorted(path for path in self.out.rglob("*")), before)
        self.assertEqual(self.called(), "")

    def test_a_folder_is_no_clip(self):
        run = self.run_script("demo.sh", "scripts")
        self.assertEqual(run.returncode, 1)
        self.assertIn("is no file", run.stderr)
        self.assertEqual(self.called(), "")

    def test_a_folder_of_the_user_in_the_way_is_left_alone(self):
        clip = self.root / "mine.avi"
        clip.write_bytes(b"the clip")
        mine = self.out / "mine/holiday.txt"
        mine.parent.mkdir(parents=True)
        mine.write_text("mine")
        run = self.run_script("demo.sh", "mine.avi")
        self.assertEqual(run.returncode, 1)
        self.assertIn("would replace", run.stderr)
        self.assertEqual(mine.read_text(), "mine")
        self.assertEqual(self.called(), "")

    def test_a_clip_in_the_folder_that_its_results_replace_is_left_alone(self):
        (self.root / "mine.avi").write_bytes(b"the clip")
        self.assertEqual(self.run_script("demo.sh", "mine.avi").returncode, 0)
        clip = self.out / "mine/mine.avi"
        shutil.move(self.root / "mine.avi", clip)
        run = self.run_script("demo.sh", "demo-out/mine/mine.avi")
        self.assertEqual(run.returncode, 1)
        self.assertIn("lies in the folder", run.stderr)
        self.assertEqual(clip.read_bytes(), b"the clip")

    def test_tells_how_far_the_build_is(self):
        run = self.run_script("demo.sh")
        self.assertIn("   demo: 50 of 100 steps\n", run.stdout)
        self.assertEqual(len((self.root / "build/demo-build.log").read_text().splitlines()), 100)

    def test_a_failed_build_shows_the_end_of_its_log_and_keeps_the_last_results(self):
        self.assertEqual(self.run_script("demo.sh").returncode, 0)
        self.program("cmake", CMAKE.replace("exit ${CMAKE_EXIT:-0}", 'case "$*" in *--build*) exit 7 ;; esac'))
        run = self.run_script("demo.sh")
        self.assertEqual(run.returncode, 7)
        self.assertIn("[100/100] Building thing 100", run.stdout)
        self.assertTrue((self.out / "rgb-8bit/page.html").exists())


class FinishPage(unittest.TestCase):
    """The last page of setup has a window, which no test here clicks in: its check is held against the menu entry, whose
    command the tests of the packages read from the installed shortcut."""

    TEXT = (SOURCE / "packaging/installer.nsi").read_text()

    def function(self, name):
        return self.TEXT.split(f"\nFunction {name}\n")[1].split("\nFunctionEnd")[0]

    def test_the_check_is_on_the_finish_page(self):
        page = self.TEXT.split("!insertmacro MUI_PAGE_INSTFILES")[1].split("!insertmacro MUI_PAGE_FINISH")[0]
        for line in ("!define MUI_FINISHPAGE_RUN", "!define MUI_FINISHPAGE_RUN_FUNCTION checkComputer",
                     "!define MUI_PAGE_CUSTOMFUNCTION_SHOW showFinish"):
            self.assertIn(line, [text.strip() for text in page.splitlines()])

    def test_it_runs_what_the_menu_entry_runs(self):
        shortcut = re.search(r'CreateShortcut "\$\{MENU\}\\Check this computer.lnk" "([^"]+)" \'([^\']+)\'', self.TEXT)
        self.assertEqual(self.function("checkComputer").strip(), f"Exec '\"{shortcut[1]}\" {shortcut[2]}'")
        self.assertTrue(shortcut[2].endswith('doctor"'))

    def test_it_is_not_offered_without_the_tool(self):
        show = self.function("showFinish")
        self.assertIn("${IfNot} ${SectionIsSelected} ${sectionTool}", show)
        self.assertIn("${BM_SETCHECK} ${BST_UNCHECKED}", show)
        self.assertIn("ShowWindow $mui.FinishPage.Run ${SW_HIDE}", show)


if __name__ == "__main__":
    unittest.main()
