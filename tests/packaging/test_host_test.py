"""The validator as authors of other importers get it: the sample and a program of their own, in a folder outside this project,
built against the installed package alone.

Environment: ORVANTIS_BUILD_DIR, ORVANTIS_SOURCE_DIR, ORVANTIS_VERSION; ORVANTIS_CONFIGURE, arguments that make CMake use the
same compiler, one a line; ORVANTIS_PACKAGES where the package comes out of the zip, otherwise it is installed."""

import os
import pathlib
import re
import shutil
import subprocess
import tempfile
import time
import unittest
import zipfile

BUILD_DIR = pathlib.Path(os.environ["ORVANTIS_BUILD_DIR"])
SOURCE_DIR = pathlib.Path(os.environ["ORVANTIS_SOURCE_DIR"])
CONFIGURE = os.environ["ORVANTIS_CONFIGURE"].splitlines()
PACKAGES = os.environ.get("ORVANTIS_PACKAGES")
ZIP_NAME = f"importer-validator-{os.environ['ORVANTIS_VERSION']}-win64"


def run(*command):
    """What a command wrote; a failure shows it."""
    done = subprocess.run(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
    if done.returncode != 0:
        raise AssertionError(f"{command}: exit code {done.returncode}\n{done.stdout}")
    return done.stdout


class TestHostPackageTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="importer test host ")
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.assertFalse(self.folder.is_relative_to(SOURCE_DIR))
        if PACKAGES:
            with zipfile.ZipFile(pathlib.Path(PACKAGES) / f"{ZIP_NAME}.zip") as archive:
                archive.extractall(self.folder)
            self.prefix = self.folder / ZIP_NAME
        else:
            self.prefix = self.folder / "installed"
            run("cmake", "--install", BUILD_DIR, "--component", "validator", "--prefix", self.prefix)
        # Named, since a toolchain for another system looks for packages below that system's root only.
        [config] = self.prefix.rglob("ImporterTestHostConfig.cmake")
        self.config = config.parent
        self.project = self.folder / "my importer"
        shutil.copytree(self.prefix / "share/importer-test-host/sample", self.project)

    def build(self, project, *arguments):
        build = project / "build"
        run("cmake", "-S", project, "-B", build, "-G", "Ninja", f"-DImporterTestHost_DIR={self.config}", *CONFIGURE, *arguments)
        run("cmake", "--build", build)
        return build

    def test_sample_is_built_validated_and_played_outside(self):
        build = self.build(self.project)
        begun = time.monotonic()
        output = run("ctest", "--test-dir", build, "--verbose")
        self.assertLess(time.monotonic() - begun, 60, "seconds for level 5")
        self.assertRegex(output, r"(?m)^1: SUCCESS: ")
        self.assertTrue((build / "SampleImporter.validation.xml").is_file())

        user = self.folder / "user"
        shutil.copytree(SOURCE_DIR / "tests/packaging/test_host_user", user)
        user_build = self.build(user, f"-DPLAYED_MODULE={build / 'SampleImporter.prm'}")
        played = run("ctest", "--test-dir", user_build, "--verbose")
        self.assertIn("1: 1 streams, 9 frames, 5000 sample frames, 0 differences", played)

        # The same sample with one rule broken: the test fails and names it.
        source = self.project / "sample_importer.cpp"
        text = source.read_text()
        self.assertIn("*reference = host::kInvalidFileRef;", text)
        source.write_text(text.replace("*reference = host::kInvalidFileRef;", "*reference = 5;"))
        run("cmake", "--build", build)
        broken = subprocess.run(["ctest", "--test-dir", build, "--verbose"], stdin=subprocess.DEVNULL,
                                stdout=subprocess.PIPE, text=True)
        self.assertNotEqual(broken.returncode, 0)
        self.assertRegex(broken.stdout, r"(?m)^1: FAILURE: ")
        self.assertIn("files.reference-cleared", broken.stdout)

    def test_config_refuses_what_it_does_not_know(self):
        lists = self.project / "CMakeLists.txt"
        text = lists.read_text()
        lists.write_text(re.sub("TARGET SampleImporter LEVEL", "TARGET SampleImporter LEVLE", text))
        with self.assertRaisesRegex(AssertionError, "'LEVLE;5' *is none of these"):
            self.build(self.project)


if __name__ == "__main__":
    unittest.main()
