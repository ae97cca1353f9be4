"""Starts a compiler with the project's folders named relatively: what clang calls a lambda's constructor and destructor holds
the path of their file as it was opened, whatever -ffile-prefix-map says, and the names are in the symbols.

    relative_paths.py SOURCE BUILD COMPILER ARGUMENT...     the current folder is BUILD, as Ninja has it

BUILD/source is a link to SOURCE. A file that CMake has made of several sources names them by their full paths: a copy beside it,
with relative ones, is compiled instead.
"""

import os
import pathlib
import re
import sys

SOURCES = ("-c", "-isystem", "-I", "-iquote")  # what follows is a path that the compiler reads


def relative(path, source, build):
    for folder, name in ((build, "."), (source, "source")):
        if path == folder:
            return name
        if path.startswith(folder + "/"):
            return os.path.normpath(f"{name}/{path[len(folder) + 1:]}")
    return path


def with_relative_includes(path, source, build):
    """The copy of a file that includes sources; nothing is written when it is there already."""
    copy = pathlib.Path(path).with_suffix(".relative.cxx")
    text = re.sub(r'(?m)^#include "(/.*)"$', lambda found: f'#include "{relative(found[1], source, build)}"',
                  pathlib.Path(path).read_text())
    if not copy.exists() or copy.read_text() != text:
        # Another compiler, for a second target, may be reading it.
        temporary = copy.with_suffix(f".{os.getpid()}")
        temporary.write_text(text)
        temporary.replace(copy)
    return str(copy)


def main(source, build, *command):
    out = []
    for word in command:
        before = out[-1] if out else ""
        if before in SOURCES:
            word = relative(word, source, build)
            if before == "-c" and re.search(r"/Unity/unity_\d+_\w+\.\w+$", word):
                word = with_relative_includes(word, source, build)
                out[-1:] = ["-iquote", ".", "-c"]
        elif word.startswith("-I"):
            word = "-I" + relative(word[2:], source, build)
        out.append(word)
    os.execvp(out[0], out)


if __name__ == "__main__":
    main(*sys.argv[1:])
