"""scripts/workflow_steps.py finds what is wrong with workflows, and runs their steps: in copies with one thing changed. The scripts
of a repository's first day on a forge: scripts/set-home-url.sh, scripts/pin-actions.sh."""

import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

import settings

SCRIPT = settings.SOURCE_DIR / "scripts/workflow_steps.py"
RELEASE = ".github/workflows/release.yml"
DEBIAN = ".github/workflows/debian.yml"
WINDOWS = ".github/workflows/windows.yml"
CONTAINER = ".devcontainer/Dockerfile"
LINKS = ".github/ISSUE_TEMPLATE/config.yml"
# The forge's own once the project is there, and no place at all before.
HOME = (settings.SOURCE_DIR / "packaging/home-url.txt").read_text().strip()
ELSEWHERE = HOME[:HOME.rindex("/")] + "/another"
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
      # Compiles it all.
      # LONG: takes its time
      - name: Tests
        run: echo "$NIGHTLY_MUTANTS" >>"$RUNNER_TEMP/said"
  again:
    container: debian:12
    steps:
      - name: Once is enough
        run: test "$(cat "$RUNNER_TEMP/said")" = one && test ! -e changed
  # UNRUN: needs Windows
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

    def copy_of_repository(self):
        for name in (".github", ".devcontainer", ".ci", "scripts", "cmake"):
            shutil.copytree(settings.SOURCE_DIR / name, self.folder / name, ignore=shutil.ignore_patterns("corpus"))
        for name in ("test.sh", "lint.sh", "CMakeLists.txt", "CMakePresets.json", "docs/workflows.md", "packaging/home-url.txt",
                     "packaging/home_url.cmake"):
            (self.folder / name).parent.mkdir(exist_ok=True)
            shutil.copy(settings.SOURCE_DIR / name, self.folder / name)

    def test_what_is_wrong_is_found(self):
        self.copy_of_repository()
        result = steps(self.folder, "check")
        self.assertEqual((result.returncode, result.stdout.strip()), (0, ""))
        wrong = [
            (RELEASE, "actions/checkout@v4", "somebody/checkout@v4",
             "release.yml: build: may write to the repository, and hands that to somebody/checkout@v4"),
            (RELEASE, "actions/checkout@v4", "actions/checkout@main",
             "release.yml: build: actions/checkout@main names neither a version nor a commit"),
            (RELEASE, "permissions:\n  contents: read", "permissions:\n  contents: write",
             "release.yml: its jobs may do more than read unless they say so themselves"),
            (".github/workflows/scorecard.yml", "UNRUN", "Run", "scorecard.yml: does not say that it has not run on a forge"),
            (RELEASE, "run: ./test.sh\n", "run: ./tests.sh\n", "there is no ./tests.sh, or it cannot be started"),
            (RELEASE, "rm -rf \"$GITHUB_WORKSPACE/", "rm -rf $x/\"$(", "release.yml, build: Packages: "),
            (RELEASE, "timeout-minutes: 120", "timeout-minute: 120", "('timeout-minute' was unexpected)"),
            (RELEASE, "runs-on: ubuntu-24.04", "runs-on: debian", "release.yml: jobs/build/runs-on: "),
            (RELEASE, "./test.sh packaging", "./test.sh package", "./test.sh does not say what `package` means"),
            (DEBIAN, "\"packaging\"]", "\"packaging\", \"clang\"]", "./test.sh does not say what `clang` means"),
            (DEBIAN, "    container: debian:12\n", "", "debian.yml, test: git: is in no Debian container, and no comment"),
            (WINDOWS, "  # UNRUN: needs Windows and MSYS2\n", "",
             "windows.yml, msys2: Build: is in no Debian container, and no comment"),
            (WINDOWS, "--preset windows-msvc -D", "--preset windows-visual -D",
             "windows.yml, visual-studio: Configure: there is no `windows-visual` among the configurePresets"),
            (WINDOWS, "ctest --preset windows-msys2", "ctest --preset msys2", "there is no `msys2` among the testPresets"),
            (WINDOWS, "-Dorvantis_cli11_include", "-Dorvantis_cli12_include", "the project knows no variable orvantis_cli12_include_dir"),
            (".github/workflows/nightly.yml", "run: .ci/nightly", "run: .ci/weekly", "there is no .ci/weekly"),
            (".github/workflows/nightly.yml", "[everything, ", "[", "nightly.yml: has the steps gcc mutation"),
            (".github/dependabot.yml", "interval: monthly", "interval: yearly", "dependabot.yml: updates/0/schedule/interval: 'yearly' is not"),
            (".github/ISSUE_TEMPLATE/bug.yml", "type: textarea", "type: text", "ISSUE_TEMPLATE/bug.yml: body/1/type: 'text' is not"),
            (LINKS, "blank_issues_enabled: true", "blank_issues_enabled: maybe", "ISSUE_TEMPLATE/config.yml: blank_issues_enabled: "),
            (LINKS, HOME, ELSEWHERE, f"config.yml: {ELSEWHERE}/security/advisories/new is not below {HOME}: "),
            (CONTAINER, "scripts/common.sh ", "", ".devcontainer: RUN ORVANTIS_EXTRA_PACKAGES="),
            (CONTAINER, "/tmp/scripts/install-packages.sh &&", "apt-get install -y cmake ninja-build &&",
             ".devcontainer: lacks packages that scripts/install-packages.sh installs: "),
            (CONTAINER, "rm -rf", "touch /tmp/x && rm -rf", ".devcontainer: RUN touch /tmp/x: is no installing of packages"),
            (CONTAINER, "debian:12", "debian:11", ".devcontainer: is not made from debian:12"),
            (".devcontainer/devcontainer.json", "linux-quick", "linux-slow", ".devcontainer: postCreateCommand configures no preset"),
        ]
        # One of each file at a time: looking costs more than what is looked at.
        while wrong:
            now = {file: (old, new, said) for file, old, new, said in reversed(wrong)}
            wrong = [each for each in wrong if each[1:] != now[each[0]]]
            texts = {file: (self.folder / file).read_text() for file in now}
            for file, (old, new, _) in now.items():
                self.assertIn(old, texts[file])
                (self.folder / file).write_text(texts[file].replace(old, new, 1))
            result = steps(self.folder, "check")
            self.assertEqual(result.returncode, 1)
            for _, _, said in now.values():
                self.assertIn(said, result.stdout)
            for file, text in texts.items():
                (self.folder / file).write_text(text)

    def test_table_in_the_documents_is_of_the_workflows(self):
        self.copy_of_repository()
        path = self.folder / RELEASE
        path.write_text(path.read_text().replace("      # LONG: eight minutes\n", ""))
        result = steps(self.folder, "check")
        self.assertEqual(result.stdout.strip(), "docs/workflows.md: its table is not of these workflows: "
                                                "/usr/bin/python3 scripts/workflow_steps.py table")
        self.assertEqual(steps(self.folder, "table").returncode, 0)
        self.assertEqual(steps(self.folder, "check").stdout.strip(), "")

    def repository(self, text):
        workflow = self.folder / ".github/workflows/small.yml"
        workflow.parent.mkdir(parents=True)
        workflow.write_text(text)
        (self.folder / "CMakeLists.txt").write_text("project(Small\n    VERSION 3.2.1\n")
        for words in (["init", "-q"], ["add", "-A"], ["-c", "user.name=a", "-c", "user.email=a@localhost", "commit", "-qm", "a"]):
            subprocess.run(["git", "-C", self.folder, *words], check=True)
        (self.folder / "changed").touch()

    def test_steps_run_in_a_clone_once_and_those_left_out_are_told(self):
        self.repository(STEPS)
        result = steps(self.folder, "run")
        self.assertEqual(result.stdout.splitlines(), [
            "ran: small.yml, small: Say one", "ran: small.yml, small: It was said", "left out: small.yml, small: Tests (takes its time)",
            "ran: small.yml, small: Say two", "left out: small.yml, again: Once is enough (ran as small.yml, small: It was said)",
            "left out: small.yml, windows: Elsewhere (needs Windows)", "3 ran, 3 left out, 0 FAILED"])
        self.assertEqual(result.returncode, 0)

    def test_long_steps_run_when_asked_for_cut_short(self):
        self.repository(STEPS.replace("echo \"$NIGHTLY", "test \"$NIGHTLY_MUTANTS\" = 2 && echo \"$NIGHTLY"))
        result = steps(self.folder, "run", "long", "small:", "Tests")
        self.assertEqual([line.partition(" (")[0] for line in result.stdout.splitlines()],
                         ["ran: small.yml, small: Tests", "1 ran, 0 left out, 0 FAILED"])
        self.assertEqual((result.returncode, steps(self.folder, "run", "long", "nowhere").returncode), (0, 1))

    def test_step_that_fails_is_told_with_what_it_said(self):
        self.repository(STEPS.replace("run: exit 1", "run: echo why; false").replace("  # UNRUN: needs Windows\n", ""))
        result = steps(self.folder, "run")
        self.assertEqual(result.returncode, 1)
        self.assertIn("FAILED: small.yml, windows: Elsewhere\nwhy\n", result.stdout)

    def script(self, name, *words):
        """One of the copy's."""
        return subprocess.run([self.folder / "scripts" / name, *words], stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)

    def test_one_script_says_where_the_repository_is(self):
        self.copy_of_repository()
        before = (self.folder / LINKS).read_text()
        for home in ("https://192.0.2.1/somebody/importer&co", "https://192.0.2.2/else"):
            self.assertEqual(self.script("set-home-url.sh", home).returncode, 0)
            self.assertEqual((self.folder / "packaging/home-url.txt").read_text(), home + "\n")
            self.assertEqual((self.folder / LINKS).read_text(), before.replace(HOME, home))
            self.assertEqual(steps(self.folder, "check").stdout.strip(), "")
        for home in ("http://192.0.2.1/a", "https://example.com/a", "https://192.0.2.1/a/"):
            result = self.script("set-home-url.sh", home)
            self.assertEqual(result.returncode, 2)
            self.assertIn(f"set-home-url.sh: no address that packages can be fetched from: {home}", result.stdout)
            self.assertEqual((self.folder / "packaging/home-url.txt").read_text(), "https://192.0.2.2/else\n")

    def forge(self, *missing):
        """A folder with a repository of each action, and the commits of the versions that the workflows name."""
        commits = {}
        texts = "".join(path.read_text() for path in (self.folder / ".github/workflows").glob("*.yml"))
        for action, version in sorted(set(re.findall(r"uses: (\S+)@(v\S+)", texts)) - set(missing)):
            name = "/".join(action.split("/")[:2])
            git = ["git", "-C", self.folder / "forge" / name, "-c", "user.name=a", "-c", "user.email=a@localhost"]
            if not (self.folder / "forge" / name).exists():
                (self.folder / "forge" / name).mkdir(parents=True)
                subprocess.run([*git, "init", "-q"], check=True)
            subprocess.run([*git, "commit", "-q", "--allow-empty", "-m", version], check=True)
            subprocess.run([*git, "tag", *(["-a", "-m", "annotated"] if name.startswith("actions/") else []), version], check=True)
            commits[action, version] = subprocess.run([*git, "rev-parse", "HEAD"], check=True, capture_output=True, text=True).stdout.strip()
        return commits

    def test_actions_are_named_by_the_commits_that_the_forge_tells(self):
        self.copy_of_repository()
        commits = self.forge()
        self.assertGreater(len(commits), 4)
        workflow_files = list((self.folder / ".github/workflows").glob("*.yml"))
        expected = {path: path.read_text() for path in workflow_files}
        for (action, version), commit in commits.items():
            for path in workflow_files:
                expected[path] = re.sub(rf"(?m)(uses: {action})@{re.escape(version)}$", rf"\1@{commit} # {version}", expected[path])
        for _ in range(2):  # a second time changes nothing
            result = self.script("pin-actions.sh", self.folder / "forge")
            self.assertEqual(result.returncode, 0, result.stdout)
            self.assertEqual({path: path.read_text() for path in workflow_files}, expected)
        self.assertFalse(any(re.search(r"uses: \S+@v", text) for text in expected.values()))
        self.assertEqual(steps(self.folder, "table").returncode, 0)
        self.assertEqual(steps(self.folder, "check").stdout.strip(), "")

    def test_nothing_is_pinned_while_a_version_is_missing(self):
        self.copy_of_repository()
        self.forge(("actions/cache", "v4"))
        before = (self.folder / DEBIAN).read_text()
        result = self.script("pin-actions.sh", self.folder / "forge")
        self.assertEqual(result.returncode, 1)
        self.assertIn("actions/cache has no version v4, or cannot be asked", result.stdout)
        self.assertEqual((self.folder / DEBIAN).read_text(), before)


if __name__ == "__main__":
    unittest.main()
