"""scripts/workflow_steps.py finds what is wrong with workflows, and runs their steps: in copies with one thing changed."""

import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

import settings

SCRIPT = settings.SOURCE_DIR / "scripts/workflow_steps.py"
RELEASE = ".github/workflows/release.yml"
STEPS = """# UNRUN
name: Small
permissions:
  contents: read
jobs:
  small:
    container: debian:12
    strategy:
      matrix:
        word: [one, two]
    steps:
      - uses: actions/checkout@v4
      - name: Say ${{ matrix.word }}
        env: { PLACE: "${{ github.server_url }}" }
        run: test "$PLACE $GITHUB_REF_NAME" = "https://192.0.2.1 v3.2.1" && echo ${{ matrix.word }} >>"$RUNNER_TEMP/said"
      - name: It was said
        run: test "$(cat "$RUNNER_TEMP/said")" = one && test ! -e changed
      - name: Tests
        run: ./test.sh
  windows:
    steps:
      - name: Elsewhere
        run: exit 1
"""


def steps(folder, *words):
    return subprocess.run([sys.executable, "-B", SCRIPT, *words], cwd=folder, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)


class WorkflowTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="a forge's ")
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def test_workflows_have_nothing_wrong(self):
        result = steps(settings.SOURCE_DIR, "check")
        self.assertEqual((result.returncode, result.stdout.strip()), (0, ""))

    def test_what_is_wrong_is_found(self):
        for name in (".github", ".devcontainer", ".ci", "scripts"):
            shutil.copytree(settings.SOURCE_DIR / name, self.folder / name, ignore=shutil.ignore_patterns("corpus"))
        for name in ("test.sh", "lint.sh"):
            shutil.copy(settings.SOURCE_DIR / name, self.folder)
        self.assertEqual(steps(self.folder, "check").returncode, 0)
        for file, old, new, said in (
            (RELEASE, "actions/checkout@v4", "somebody/checkout@v4",
             "release.yml: build: may write to the repository, and hands that to somebody/checkout@v4"),
            (RELEASE, "actions/checkout@v4", "actions/checkout@main",
             "release.yml: build: actions/checkout@main names neither a version nor a commit"),
            (RELEASE, "permissions:\n  contents: read", "permissions:\n  contents: write",
             "release.yml: its jobs may do more than read unless they say so themselves"),
            (RELEASE, "UNRUN", "Run", "release.yml: does not say that it has not run on a forge"),
            (RELEASE, "./test.sh &&", "./tests.sh &&", "there is no ./tests.sh, or it cannot be started"),
            (RELEASE, "rm -rf \"$GITHUB_WORKSPACE/", "rm -rf $x/\"$(", "release.yml, build: Packages: "),
            (".github/workflows/nightly.yml", "run: .ci/nightly", "run: .ci/weekly", "there is no .ci/weekly"),
            (".devcontainer/Dockerfile", "scripts/common.sh ", "", ".devcontainer: install-packages.sh does not work with what is copied"),
        ):
            path = self.folder / file
            text = path.read_text()
            self.assertIn(old, text)
            path.write_text(text.replace(old, new, 1))
            result = steps(self.folder, "check")
            self.assertEqual(result.returncode, 1, said)
            self.assertIn(said, result.stdout)
            path.write_text(text)

    def repository(self, text):
        workflow = self.folder / ".github/workflows/small.yml"
        workflow.parent.mkdir(parents=True)
        workflow.write_text(text)
        (self.folder / "CMakeLists.txt").write_text("project(Small\n    VERSION 3.2.1\n")
        for words in (["init", "-q"], ["add", "-A"], ["-c", "user.name=a", "-c", "user.email=a@localhost", "commit", "-qm", "a"]):
            subprocess.run(["git", "-C", self.folder, *words], check=True)
        (self.folder / "changed").touch()

    def test_steps_run_in_a_clone_and_those_left_out_are_told(self):
        self.repository(STEPS)
        result = steps(self.folder, "run")
        self.assertEqual(result.stdout.splitlines(), [
            "ran: small.yml, small: Say one", "ran: small.yml, small: It was said",
            "left out: small.yml, small: Tests (takes a quarter of an hour and more: run it by itself)",
            "ran: small.yml, small: Say two", "left out: small.yml, windows: Elsewhere (needs Windows)",
            "3 ran, 2 left out, 0 FAILED"])
        self.assertEqual(result.returncode, 0)

    def test_step_that_fails_is_told_with_what_it_said(self):
        self.repository(STEPS.replace("name: Tests\n        run: ./test.sh", "name: Tests\n        run: echo why; false"))
        result = steps(self.folder, "run")
        self.assertEqual(result.returncode, 1)
        self.assertIn("FAILED: small.yml, small: Tests\nwhy\n", result.stdout)


if __name__ == "__main__":
    unittest.main()
