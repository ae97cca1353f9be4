"""Makes the scripts importable that these tests are about."""
import os
import pathlib
import sys

SOURCE = pathlib.Path(os.environ.get("ORVANTIS_SOURCE_DIR", pathlib.Path(__file__).resolve().parent.parent.parent))
for folder in ("mutation", "coverage"):
    sys.path.insert(0, str(SOURCE / "scripts" / folder))
