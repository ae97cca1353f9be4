"""What CMake tells the packaging tests, in environment variables."""

import os
import pathlib


def _path(name):
    return pathlib.Path(os.environ[name])


SOURCE_DIR = _path("ORVANTIS_SOURCE_DIR")
BUILD_DIR = _path("ORVANTIS_BUILD_DIR")
PACKAGES = _path("ORVANTIS_PACKAGES")  # made by the fixture of these tests, nothing older lies there
CPACK = os.environ["ORVANTIS_CPACK"]
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
SYMBOLS_TOP = f"ImporterOrvantis-{VERSION}-win64/"
TOP = f"ImporterOrvantis-{VERSION}-win64/"

PLUGIN = "ImporterOrvantis.prm"
TOOL = "importer_host.exe"
TEXTS = ["CHANGELOG.txt", "LICENSE.txt", "README.txt", "THIRD_PARTY_NOTICES.txt"]
CODEC = "orvantis_common64.dll"
