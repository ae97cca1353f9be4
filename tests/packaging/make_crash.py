"""Lets the released tool load the importer that crashes, under a debugger that writes the dump: <build>/crash.dmp."""

import os
import shutil
import sys

import package_test
import settings
import wine_prefix as wine

wine.clean()
folder = wine.native(r"C:\t")
(folder / settings.TOOL).write_bytes(package_test.programs()[settings.TOOL])
(folder / "clip.avi").write_bytes(b"RIFF")
shutil.copy(os.environ["ORVANTIS_CRASH_IMPORTER"], folder)
result = wine.run(os.environ["ORVANTIS_DUMP_ON_CRASH"], r"C:\t\crash.dmp", rf"C:\t\{settings.TOOL}", "info", "--plugin",
                  r"C:\t\crash_importer.prm", r"C:\t\clip.avi", timeout=280)  # a busy machine loads a whole tool under a debugger
if result.returncode != 0:
    sys.exit(f"no dump: {result.returncode}\n{result.stdout}")
shutil.copy(folder / "crash.dmp", settings.BUILD_DIR / "crash.dmp")
