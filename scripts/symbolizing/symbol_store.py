"""Finds files in symbol stores: NAME/KEY/NAME, where the key of symbols is GUID and age, and that of a program or library is
date of linking and size. A store is a folder, or a zip of one."""

import json
import pathlib
import shutil
import subprocess
import tempfile
import zipfile

from pe_image import PeImage


class SymbolStore:
    """Use it in a `with` block: zips are unpacked for its length."""

    def __init__(self, places):
        self._places = [pathlib.Path(place) for place in places]
        self._work = None

    def __enter__(self):
        self._work = pathlib.Path(tempfile.mkdtemp())
        self._roots = []
        for index, place in enumerate(self._places):
            root = place
            if place.is_file():
                root = self._work / str(index)
                with zipfile.ZipFile(place) as archive:
                    archive.extractall(root)
            elif not place.is_dir():
                raise ValueError(f"{place}: there is no such file or folder")
            self._roots += [root, *(each for each in sorted(root.iterdir()) if each.is_dir())]
        return self

    def __exit__(self, *_):
        shutil.rmtree(self._work, ignore_errors=True)

    def _file(self, name, key):
        for root in self._roots:
            for folder in (each for each in root.glob("*") if each.name.lower() == name.lower()):
                for found in (each for each in folder.glob("*") if each.name.lower() == key.lower()):
                    return next(found.iterdir(), None)
        return None

    def images(self, name):
        """The files of every build of a program or library."""
        folders = [folder for root in self._roots for folder in root.glob("*") if folder.name.lower() == name.lower()]
        return sorted({file.resolve() for folder in folders for file in folder.glob("*/*")})

    def image(self, name, key, pdb="", pdb_key=""):
        """A folder with the program or library and its symbols side by side, as debuggers want them; the path of the
        program. Without a PDB, the one that the program names. None when either is missing."""
        image = self._file(name, key)
        if image and not pdb:
            pdb, pdb_key = PeImage(image.read_bytes()).symbols()
        symbols = self._file(pdb, pdb_key)
        if image is None or symbols is None:
            return None
        together = self._work / "together" / pdb_key
        together.mkdir(parents=True, exist_ok=True)
        shutil.copy(symbols, together / pdb)
        return pathlib.Path(shutil.copy(image, together / name))


def lines_of(image, offset):
    """The functions at an offset of a program or library that has its symbols beside it, the innermost first: pairs of
    name and "file:line". Empty when the symbols say nothing of it."""
    result = subprocess.run(["llvm-symbolizer", "--output-style=JSON", "--relative-address", f"--obj={image}", hex(offset)],
                            check=True, capture_output=True, text=True, stdin=subprocess.DEVNULL)
    out = []
    for answer in json.loads(result.stdout):
        for place in answer.get("Symbol", []):
            if place.get("FunctionName"):
                file = place.get("FileName", "").replace("\\", "/").removeprefix("/orvantis").lstrip("/")
                out.append((place["FunctionName"], f"{file}:{place['Line']}" if file and place.get("Line") else ""))
    return out
