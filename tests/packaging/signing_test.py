"""A release signed with a throw-away key in a software token and a local time-stamp authority, and verified without the key."""

import contextlib
import hashlib
import os
import pathlib
import shutil
import subprocess
import tempfile
import unittest
import zipfile

import settings
import time_stamp_authority

MODULE = "/usr/lib/softhsm/libsofthsm2.so"
SIGNED = [settings.PLUGIN, settings.TOOL, settings.SETUP.name, settings.MSI.name]


def run(*command, **environment):
    return subprocess.run([str(word) for word in command], capture_output=True, text=True, stdin=subprocess.DEVNULL,
                          env={**os.environ, **environment})


def issue(folder, name, use, issuer=None):
    """A certificate of that use with its key, both PEM."""
    (folder / f"{name}.ext").write_text(f"basicConstraints=critical,CA:{'FALSE' if issuer else 'TRUE'}\n{use}\n")
    subprocess.run(["openssl", "req", "-newkey", "rsa:2048", "-nodes", "-keyout", folder / f"{name}.key", "-out",
                    folder / f"{name}.csr", "-subj", f"/CN=Throw-away {name}"], check=True, capture_output=True)
    by = ["-CA", folder / f"{issuer}.pem", "-CAkey", folder / f"{issuer}.key", "-CAcreateserial"] if issuer else [
        "-signkey", folder / f"{name}.key"]
    subprocess.run(["openssl", "x509", "-req", "-in", folder / f"{name}.csr", "-days", "30", "-extfile", folder / f"{name}.ext",
                    "-out", folder / f"{name}.pem", *by], check=True, capture_output=True)


@contextlib.contextmanager
def signing(folder):
    """What scripts/sign-file.sh wants to know, with everything it needs in place. The key is in the token alone."""
    issue(folder, "authority", "keyUsage=critical,keyCertSign,cRLSign")
    issue(folder, "signer", "keyUsage=critical,digitalSignature\nextendedKeyUsage=codeSigning", "authority")
    issue(folder, "stamper", "keyUsage=critical,digitalSignature\nextendedKeyUsage=critical,timeStamping", "authority")
    (folder / "tokens").mkdir()
    (folder / "softhsm.conf").write_text(f"directories.tokendir = {folder}/tokens\n")
    token = {"SOFTHSM2_CONF": str(folder / "softhsm.conf")}
    for words in (["--init-token", "--free", "--label", "release", "--so-pin", "4321", "--pin", "1234"],
                  ["--import", folder / "signer.pk8", "--token", "release", "--label", "signing", "--id", "01", "--pin", "1234"]):
        if "--import" in words:
            subprocess.run(["openssl", "pkcs8", "-topk8", "-nocrypt", "-in", folder / "signer.key", "-out", folder / "signer.pk8"],
                           check=True, capture_output=True)
        subprocess.run(["softhsm2-util", *words], check=True, capture_output=True, env={**os.environ, **token})
    for name in ("signer.key", "signer.pk8"):
        (folder / name).unlink()
    (folder / "pin").write_text("1234")
    with time_stamp_authority.running(folder / "stamper.pem", folder / "stamper.key") as address:
        yield {
            **token, "ORVANTIS_SIGN_MODULE": MODULE, "ORVANTIS_SIGN_KEY": "pkcs11:token=release;object=signing",
            "ORVANTIS_SIGN_PIN": str(folder / "pin"), "ORVANTIS_SIGN_CERTS": str(folder / "signer.pem"),
            "ORVANTIS_SIGN_TSA": address, "ORVANTIS_SIGN_CA": str(folder / "authority.pem"),
        }


class SigningTest(unittest.TestCase):
    def test_release_is_signed_without_a_key_file_and_verified_without_a_key(self):
        with tempfile.TemporaryDirectory() as name:
            folder = pathlib.Path(name)
            packages, signatures = folder / "packages", folder / "signatures"
            before = (settings.BUILD_DIR / "release" / settings.PLUGIN).read_bytes()
            with signing(folder) as environment:
                made = run(settings.SOURCE_DIR / "scripts/sign-release.sh", settings.BUILD_DIR, packages, signatures, **environment)
            self.assertEqual(made.returncode, 0, made.stderr)
            self.assertEqual((settings.BUILD_DIR / "release" / settings.PLUGIN).read_bytes(), before, "the build stays unsigned")
            self.assertEqual(sorted(each.name for each in signatures.iterdir()), sorted(f"{each}.p7" for each in SIGNED))
            self.check_signatures(folder, packages)
            self.check_checksums(packages)

            # Somebody else, with the packages, the signatures and the certificates: no token, no authority.
            public = {"ORVANTIS_SIGN_CA": environment["ORVANTIS_SIGN_CA"]}
            verify = [settings.SOURCE_DIR / "scripts/verify-release.sh", packages, signatures, "--built", settings.BUILD_DIR]
            good = run(*verify, **public)
            self.assertEqual(good.returncode, 0, good.stdout + good.stderr)
            self.assertIn(f"same: {settings.MSI.name}\n", good.stdout)
            self.assertIn(f"same: {settings.PACKAGE.name}\n", good.stdout)
            self.assertIn(f"signature valid: {settings.SETUP.name}\n", good.stdout)

            # One byte of a package, and a signature that is of another file.
            data = bytearray((packages / settings.SETUP.name).read_bytes())
            data[len(data) // 2] ^= 1
            (packages / settings.SETUP.name).write_bytes(data)
            changed = run(*verify, **public)
            self.assertEqual(changed.returncode, 1)
            self.assertIn(f"signature NOT valid: {settings.SETUP.name}\n", changed.stdout)
            shutil.copy(signatures / f"{settings.TOOL}.p7", signatures / f"{settings.PLUGIN}.p7")
            self.assertEqual(run(*verify, **public).returncode, 1)

    def check_signatures(self, folder, packages):
        with zipfile.ZipFile(packages / settings.PACKAGE.name) as archive:
            archive.extractall(folder / "unpacked")
        programs = folder / "unpacked" / settings.TOP
        authority = folder / "authority.pem"
        for file in (programs / settings.PLUGIN, programs / settings.TOOL, packages / settings.SETUP.name,
                     packages / settings.MSI.name):
            said = run("osslsigncode", "verify", "-CAfile", authority, "-TSA-CAfile", authority, "-in", file)
            self.assertEqual(said.returncode, 0, said.stdout + said.stderr)
            self.assertIn("CN=Throw-away signer", said.stdout)
            self.assertRegex(said.stdout, "Time ?stamp Server Signature verification: ok", "it outlives the certificate")

    def check_checksums(self, packages):
        for path in packages.glob("*.sha256"):
            digest = hashlib.sha256((packages / path.stem).read_bytes()).hexdigest()
            self.assertEqual(path.read_text(), f"{digest}  {path.stem}\n")


if __name__ == "__main__":
    unittest.main()
