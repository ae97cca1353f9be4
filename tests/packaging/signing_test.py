"""A release that was signed with a throw-away key (make_signed.py), and verified by somebody without the key."""

import hashlib
import os
import pathlib
import re
import shutil
import subprocess
import tempfile
import unittest
import zipfile

import installer_test
import settings
import wine_prefix as wine

PACKAGES, SIGNATURES, AUTHORITY = (settings.SIGNED / name for name in ("packages", "signatures", "authority.pem"))
SIGNED = [settings.PLUGIN, settings.TOOL, "uninstall.exe", settings.SETUP.name, settings.MSI.name]


def run(*command, **environment):
    return subprocess.run([str(word) for word in command], capture_output=True, text=True, stdin=subprocess.DEVNULL,
                          env={**os.environ, **environment})


def verify(packages, signatures, *what, **environment):
    """Without a token and without a time-stamp authority."""
    return run(settings.SOURCE_DIR / "scripts/verify-release.sh", packages, signatures, *what, ORVANTIS_SIGN_CA=str(AUTHORITY),
               **environment)


def files_of(folder):
    return sorted(str(path.relative_to(folder)) for path in folder.rglob("*") if path.is_file())


class SignatureTest(unittest.TestCase):
    def check_signature(self, file):
        said = run("osslsigncode", "verify", "-CAfile", AUTHORITY, "-TSA-CAfile", AUTHORITY, "-in", file)
        self.assertEqual(said.returncode, 0, said.stdout + said.stderr)
        self.assertIn("CN=Throw-away signer", said.stdout)
        self.assertRegex(said.stdout, "Time ?stamp Server Signature verification: ok", "it outlives the certificate")

    def test_programs_and_packages_are_signed_and_time_stamped(self):
        self.assertEqual(sorted(each.name for each in SIGNATURES.iterdir()), sorted(f"{each}.p7" for each in SIGNED))
        for package in (settings.SETUP, settings.MSI):
            self.check_signature(PACKAGES / package.name)
        for package, folder in ((settings.PACKAGE, settings.TOP), (settings.VALIDATOR, settings.VALIDATOR_TOP + "bin/")):
            with tempfile.TemporaryDirectory() as unpacked, zipfile.ZipFile(PACKAGES / package.name) as archive:
                archive.extractall(unpacked)
                programs = [path for path in pathlib.Path(unpacked, folder).iterdir() if path.suffix in (".prm", ".exe")]
                self.assertGreater(len(programs), 0)
                for program in programs:
                    self.check_signature(program)

    def test_checksums_are_those_of_the_signed_packages(self):
        sums = sorted(PACKAGES.glob("*.sha256"))
        self.assertEqual([path.stem for path in sums], sorted(package.name for package in settings.PUBLISHED))
        for path in sums:
            digest = hashlib.sha256((PACKAGES / path.stem).read_bytes()).hexdigest()
            self.assertEqual(path.read_text(), f"{digest}  {path.stem}\n")


class InstalledSignatureTest(installer_test.InstallerTest):
    def test_uninstaller_that_setup_writes_is_signed_and_removes(self):
        self.install(folder=installer_test.OWN_FOLDER, setup=PACKAGES / settings.SETUP.name)
        SignatureTest.check_signature(self, wine.native(installer_test.OWN_FOLDER) / "uninstall.exe")
        self.uninstall(installer_test.OWN_FOLDER)
        self.assertNothingInstalled()


class VerifyTest(unittest.TestCase):
    """What strangers do. A clean copy is a repository of its own, with the sources as they are now and a tag on them."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="of a stranger, ")
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def tagged_copy(self, tag):
        copy = self.folder / "copy"
        subprocess.run(["git", "clone", "--quiet", settings.SOURCE_DIR, copy], check=True)
        git = ["git", "-C", str(copy), "-c", "user.name=Somebody", "-c", "user.email=somebody@localhost"]
        subprocess.run([*git, "rm", "-rq", "."], check=True)
        listed = subprocess.run(["git", "-C", settings.SOURCE_DIR, "ls-files", "-z", "--cached", "--others", "--exclude-standard"],
                                check=True, capture_output=True, text=True).stdout
        for name in filter(None, listed.split("\0")):
            if (settings.SOURCE_DIR / name).exists():
                (copy / name).parent.mkdir(parents=True, exist_ok=True)
                shutil.copy2(settings.SOURCE_DIR / name, copy / name, follow_symlinks=False)
        subprocess.run([*git, "add", "-A"], check=True)
        # The date that the packages under test carry.
        date = os.environ["SOURCE_DATE_EPOCH"] + " +0000"
        subprocess.run([*git, "commit", "-q", "--allow-empty", "-m", "As it is now"], check=True,
                       env={**os.environ, "GIT_COMMITTER_DATE": date, "GIT_AUTHOR_DATE": date})
        subprocess.run([*git, "tag", tag], check=True)
        return copy

    def packages(self):
        """A copy of the signed ones, to be changed."""
        return pathlib.Path(shutil.copytree(PACKAGES, self.folder / "packages"))

    def test_tag_that_is_rebuilt_elsewhere_gives_the_same_packages(self):
        packages, copy = self.packages(), self.tagged_copy("v-under-test")
        # The statement of origin names the commit, which is one of the copy here.
        statement = packages / settings.PROVENANCE.name
        claims = {"ORVANTIS_BUILDER": "https://forge.invalid/builder"}
        sbom = settings.SOURCE_DIR / "packaging/sbom"
        for command in ([sbom / "record_build.py", copy, self.folder / "record"],
                        [sbom / "make_provenance.py", self.folder / "record", statement,
                         *(packages / package.name for package in settings.PUBLISHED)]):
            made = run(settings.PYTHON, *command, **claims)
            self.assertEqual(made.returncode, 0, made.stderr)
        (self.folder / "temporary files").mkdir()
        said = run(copy / "scripts/verify-release.sh", packages, SIGNATURES, "v-under-test", ORVANTIS_SIGN_CA=str(AUTHORITY),
                   TMPDIR=str(self.folder / "temporary files"), SOURCE_DATE_EPOCH="1")
        self.assertEqual(said.returncode, 0, said.stdout + said.stderr)
        same = re.findall(r"(?m)^same: (.*)$", said.stdout)
        self.assertEqual(sorted(same), files_of(packages))
        self.assertLessEqual({package.name for package in settings.PUBLISHED}, set(same))
        self.assertIn(f"claimed, not verified: built by https://forge.invalid/builder from {settings.HOME_URL}\n", said.stdout)
        self.assertEqual(list((self.folder / "temporary files").iterdir()), [])

    def test_package_with_one_changed_byte_is_noticed(self):
        packages = self.packages()
        data = bytearray((packages / settings.SETUP.name).read_bytes())
        data[len(data) // 2] ^= 1
        (packages / settings.SETUP.name).write_bytes(data)
        said = verify(packages, SIGNATURES, "--built", settings.BUILD_DIR)
        self.assertEqual(said.returncode, 1)
        self.assertIn(f"signature NOT valid: {settings.SETUP.name}\n", said.stdout)

    def test_signature_of_another_file_is_noticed(self):
        signatures = pathlib.Path(shutil.copytree(SIGNATURES, self.folder / "signatures"))
        shutil.copy(signatures / f"{settings.TOOL}.p7", signatures / f"{settings.PLUGIN}.p7")
        said = verify(PACKAGES, signatures, "--built", settings.BUILD_DIR)
        self.assertEqual(said.returncode, 1)
        self.assertIn("The signatures do not fit what the sources make\n", said.stdout)

    def test_unsigned_release_is_compared_as_it_is(self):
        """Which shows, too, that packaging again gives the same bytes."""
        (self.folder / "signatures").mkdir()
        packages = pathlib.Path(shutil.copytree(settings.PACKAGES, self.folder / "packages",
                                                ignore=shutil.ignore_patterns("_CPack_Packages")))
        with zipfile.ZipFile(packages / settings.VALIDATOR.name, "a") as archive:
            archive.writestr("one-more", "file")
        (packages / settings.MSI.name).unlink()
        said = verify(packages, self.folder / "signatures", "--built", settings.BUILD_DIR)
        self.assertEqual(said.returncode, 1, said.stdout + said.stderr)
        self.assertEqual(re.findall(r"(?m)^NOT what the sources make: (.*)$", said.stdout), [settings.VALIDATOR.name])
        self.assertEqual(re.findall(r"(?m)^not there to be compared: (.*)$", said.stdout), [settings.MSI.name])
        same = set(re.findall(r"(?m)^same: (.*)$", said.stdout))
        self.assertEqual(same, set(files_of(packages)) - {settings.VALIDATOR.name})

    def test_tag_that_does_not_exist_is_refused(self):
        said = verify(PACKAGES, SIGNATURES, "v0.0.0-never")
        self.assertEqual(said.returncode, 2)
        self.assertIn("build-release.sh: there is no v0.0.0-never in this repository\n", said.stderr)


if __name__ == "__main__":
    unittest.main()
