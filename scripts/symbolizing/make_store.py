"""Lays files out as a symbol store, which debuggers take as a symbol path: NAME/KEY/NAME.

    make_store.py STORE [IMAGE PDB]...      STORE is made anew

Refuses symbols that are not those of their program or library.
"""

import pathlib
import shutil
import sys

from pe_image import PeImage


def add(store, file, key):
    folder = store / file.name / key
    folder.mkdir(parents=True)
    shutil.copyfile(file, folder / file.name)


def main(store, *files):
    store = pathlib.Path(store)
    shutil.rmtree(store, ignore_errors=True)
    for image, pdb in zip(map(pathlib.Path, files[::2]), map(pathlib.Path, files[1::2])):
        read = PeImage(image.read_bytes())
        name, key = read.symbols()
        if name != pdb.name:
            sys.exit(f"{image} names the symbols {name!r}, not {pdb.name!r}")
        add(store, image, read.key)
        add(store, pdb, key)


if __name__ == "__main__":
    main(*sys.argv[1:])
