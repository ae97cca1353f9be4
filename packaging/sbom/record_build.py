"""Writes what a build is made of, while it is made: which commit of the sources, whether they have been changed since, and the
versions of the distribution's packages. What signs and packages it may be another machine, or come later.

    record_build.py SOURCE OUT      SOURCE is the source folder; OUT is touched only when something is new
"""

import json
import pathlib
import subprocess
import sys

TOOLS = ["clang-16", "lld-16", "g++-mingw-w64-x86-64-posix", "mingw-w64-x86-64-dev", "binutils-mingw-w64-x86-64", "cmake",
         "ninja-build", "nsis", "wixl", "llvm"]


def versions(packages):
    said = subprocess.run(["dpkg-query", "-W", "-f=${Package} ${Version}\n", *packages], check=True, capture_output=True, text=True).stdout
    return dict(line.split(" ") for line in said.splitlines())


def git(source, *words):
    """Nothing where the sources are no repository."""
    result = subprocess.run(["git", "--no-optional-locks", "-C", source, *words], capture_output=True, text=True)
    return result.stdout.strip() if result.returncode == 0 else ""


def main(source, out):
    components = json.loads((pathlib.Path(__file__).parent / "components.json").read_text())["components"]
    record = json.dumps({
        "commit": git(source, "rev-parse", "HEAD"),
        "changed": bool(git(source, "status", "--porcelain", "-uno")),
        "packages": versions(sorted({*TOOLS, *(component["package"] for component in components)})),
    }, indent=2) + "\n"
    out = pathlib.Path(out)
    if not out.exists() or out.read_text() != record:
        out.write_text(record)


if __name__ == "__main__":
    main(*sys.argv[1:])
