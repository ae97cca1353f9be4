"""A key to sign with for the length of a test: in a software token, with a certificate, an authority and its time stamps."""

import contextlib
import os
import subprocess

import time_stamp_authority

MODULE = "/usr/lib/softhsm/libsofthsm2.so"


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
    """What scripts/sign-file.sh wants to know, with everything it needs in place. The key is in the token alone; what it leads
    to is <folder>/authority.pem."""
    issue(folder, "authority", "keyUsage=critical,keyCertSign,cRLSign")
    issue(folder, "signer", "keyUsage=critical,digitalSignature\nextendedKeyUsage=codeSigning", "authority")
    issue(folder, "stamper", "keyUsage=critical,digitalSignature\nextendedKeyUsage=critical,timeStamping", "authority")
    (folder / "tokens").mkdir()
    (folder / "softhsm.conf").write_text(f"directories.tokendir = {folder}/tokens\n")
    token = {"SOFTHSM2_CONF": str(folder / "softhsm.conf")}
    subprocess.run(["openssl", "pkcs8", "-topk8", "-nocrypt", "-in", folder / "signer.key", "-out", folder / "signer.pk8"],
                   check=True, capture_output=True)
    for words in (["--init-token", "--free", "--label", "release", "--so-pin", "4321", "--pin", "1234"],
                  ["--import", folder / "signer.pk8", "--token", "release", "--label", "signing", "--id", "01", "--pin", "1234"]):
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
