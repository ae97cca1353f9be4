"""Signs the packages with a throw-away key, as a release is signed: <build>/signed-under-test with the folders `packages` and
`signatures` and the authority's certificate. What was built stays unsigned."""

import os
import pathlib
import shutil
import subprocess
import sys
import tempfile

import settings
import throw_away_key

programs = [settings.BUILD_DIR / "release" / name for name in (settings.PLUGIN, settings.TOOL)]
before = [path.read_bytes() for path in programs]
shutil.rmtree(settings.SIGNED, ignore_errors=True)
settings.SIGNED.mkdir()
with tempfile.TemporaryDirectory(prefix="key of the release ") as name:
    folder = pathlib.Path(name)
    with throw_away_key.signing(folder) as environment:
        # As somebody types them; packaging, which calls for signatures, works in other folders.
        here = {name: os.path.relpath(value, folder) for name, value in environment.items() if value.startswith(f"{folder}/")
                and name.startswith("ORVANTIS_")}
        subprocess.run([settings.SOURCE_DIR / "scripts/sign-release.sh", settings.BUILD_DIR, settings.SIGNED / "packages",
                        settings.SIGNED / "signatures"], check=True, cwd=folder, env={**os.environ, **environment, **here})
    shutil.copy(folder / "authority.pem", settings.SIGNED)
if [path.read_bytes() for path in programs] != before:
    sys.exit("signing has changed what was built")
