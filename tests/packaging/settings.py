"""What CMake tells the packaging tests, in environment variables."""

import os
import pathlib


def _path(name):
    return pathlib.Path(os.environ[name])


SOURCE_DIR = _path("ORVANTIS_SOURCE_DIR")
BUILD_DIR = _path("ORVANTIS_BUILD_DIR")
PACKAGES = _path("ORVANTIS_PACKAGES")  # made by the fixture of these tests, nothing older lies there
SIGNED = BUILD_DIR / "signed-under-test"  # the same ones signed: made by make_signed.py
PYTHON = os.environ["ORVANTIS_PYTHON"]
CMAKE = os.environ["ORVANTIS_CMAKE"]
HOME_URL = os.environ["ORVANTIS_HOME_URL"]
WIXL = os.environ["ORVANTIS_WIXL"]
SETUP_ACTIONS = _path("ORVANTIS_SETUP_ACTIONS")
MAKENSIS = os.environ["ORVANTIS_MAKENSIS"]
ADDR2LINE = os.environ["ORVANTIS_ADDR2LINE"]
FFMPEG = os.environ["ORVANTIS_FFMPEG"]
HAS_TOOL = os.environ["ORVANTIS_HAS_TOOL"] == "1"
VERSION = os.environ["ORVANTIS_VERSION"]

PACKAGE = PACKAGES / f"ImporterOrvantis-{VERSION}-win64.zip"
SYMBOLS = PACKAGES / f"ImporterOrvantis-{VERSION}-symbols.zip"
VALIDATOR = PACKAGES / f"importer-validator-{VERSION}-win64.zip"
VALIDATOR_TOP = f"importer-validator-{VERSION}-win64/"
SETUP = PACKAGES / f"ImporterOrvantis-{VERSION}-setup.exe"
MSI = PACKAGES / f"ImporterOrvantis-{VERSION}.msi"
PUBLISHED = [PACKAGE, SYMBOLS, *([VALIDATOR] if HAS_TOOL else []), SETUP, MSI]
CYCLONEDX, SPDX, PROVENANCE = (PACKAGES / f"ImporterOrvantis-{VERSION}.{kind}.json" for kind in ("cdx", "spdx", "intoto"))
TOP = f"ImporterOrvantis-{VERSION}-win64/"
SYMBOLS_TOP = TOP  # in the zip of the symbols

PLUGIN = "ImporterOrvantis.prm"
TOOL = "importer_host.exe"
TEXTS = ["CHANGELOG.txt", "LICENSE.txt", "README.txt", "THIRD_PARTY_NOTICES.txt"]
CODEC = "orvantis_common64.dll"
