#!/usr/bin/env python3
"""Writes the compile commands of a build as editors want them: one for each source file, also where the build compiles
several files as one piece. LINK, where editors look, then leads to them.

    scripts/editor_commands.py compile_commands.json OUTPUT LINK
"""
import contextlib
import json
import pathlib
import re
import shlex
import sys

INCLUDED = re.compile(r'^#include "(.+)"$', re.MULTILINE)


def of_each_file(entry):
    """The entry, or one for each file that the piece includes."""
    piece = pathlib.Path(entry["file"])
    if piece.parent.name != "Unity" or not piece.exists():
        return [entry]
    words = shlex.split(entry["command"])
    return [{"directory": entry["directory"], "file": file,
             "command": shlex.join(file if word == entry["file"] else word for word in words)}
            for file in INCLUDED.findall(piece.read_text())]


def main():
    if len(sys.argv) != 4 or sys.argv[1] in ("-h", "--help"):
        sys.exit(__doc__)
    entries = json.loads(pathlib.Path(sys.argv[1]).read_text())
    output = pathlib.Path(sys.argv[2])
    output.parent.mkdir(parents=True, exist_ok=True)
    output.write_text(json.dumps([one for entry in entries for one in of_each_file(entry)], indent=1))
    link = pathlib.Path(sys.argv[3])
    # Not every system lets everybody make links; nothing but an editor depends on it.
    with contextlib.suppress(OSError):
        link.unlink(missing_ok=True)
        link.symlink_to(output.resolve())


if __name__ == "__main__":
    main()
