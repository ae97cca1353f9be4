"""What both bills of materials and the provenance are made of: components with their versions, files with their sums."""

import datetime
import hashlib
import json
import os
import pathlib
import uuid

NAMESPACE = uuid.UUID("0e3a1c0b-6b64-4f0e-9d0c-61c1c5d2f2a7")
PURPOSE = "Importer plug-in for AVI files coded with the Orvantis lossless codec"
SUPPLIER = "Orvantis Importer Developers"


def components(record):
    """Each with `version`, that of the distribution's package which it was taken from."""
    read = json.loads((pathlib.Path(__file__).parent / "components.json").read_text())["components"]
    return [{**component, "version": record["packages"][component["package"]]} for component in read]


def build_record(path):
    """What record_build.py wrote."""
    return json.loads(pathlib.Path(path).read_text())


def purl(package, version):
    """The package's name as package URLs have it."""
    escaped = version.replace("+", "%2B").replace(":", "%3A").replace("~", "%7E")
    return f"pkg:deb/debian/{package.replace('+', '%2B')}@{escaped}"


def digest(path):
    return hashlib.sha256(pathlib.Path(path).read_bytes()).hexdigest()


def date():
    """That of the packages, so that making them twice gives equal files."""
    seconds = int(os.environ["SOURCE_DATE_EPOCH"])
    return datetime.datetime.fromtimestamp(seconds, datetime.timezone.utc).strftime("%Y-%m-%dT%H:%M:%SZ")


def identifier(*words):
    return uuid.uuid5(NAMESPACE, " ".join(words))


def write(path, document):
    pathlib.Path(path).write_text(json.dumps(document, indent=2, ensure_ascii=False) + "\n", encoding="utf-8")


def sha1(path):
    """SPDX has it for every file, as a name rather than for safety."""
    return hashlib.sha1(pathlib.Path(path).read_bytes()).hexdigest()
