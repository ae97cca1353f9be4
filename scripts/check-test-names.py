#!/usr/bin/env python3
"""Fails when a test is hard to find: by a suite name that stands in two files, or in a file that no build has.

Reads tests/ only, in a fraction of a second. What it holds to:
  - A file with tests is named *_tests.cpp, and a CMakeLists.txt of its folder (or one above) names it.
  - A suite name belongs to one file, over all programs. Twins (x_win32_tests.cpp, x_posix_tests.cpp) count as one.
"""
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
MACRO = re.compile(r"^\s*(?:TEST|TEST_F|TEST_P|TYPED_TEST|TYPED_TEST_P)\(\s*(\w+)", re.MULTILINE)


def twin_free(path):
    return re.sub(r"_(win32|posix|native)_tests\.cpp$", "_tests.cpp", str(path))


def is_listed(path, tests):
    folder = path.parent
    while True:
        lists = folder / "CMakeLists.txt"
        if lists.exists() and re.search(rf"(?<![\w-]){re.escape(path.name)}\b", lists.read_text()):
            return True
        if folder == tests:
            return False
        folder = folder.parent


def problems(root):
    tests = root / "tests"
    homes = {}
    for path in sorted(tests.rglob("*.cpp")):
        name = path.relative_to(root)
        suites = set(MACRO.findall(path.read_text(encoding="utf-8")))
        if path.name.endswith("_test.cpp") or (suites and not path.name.endswith(("_tests.cpp", "_example.cpp"))):
            yield f"{name}: a file with tests is named *_tests.cpp"
        if path.name.endswith("_tests.cpp"):
            if not suites:
                yield f"{name}: no test in it"
            if not is_listed(path, tests):
                yield f"{name}: no CMakeLists.txt names it"
        for suite in suites:
            homes.setdefault(suite, {}).setdefault(twin_free(name), name)
    for suite, files in sorted(homes.items()):
        if len(files) > 1:
            yield f"suite {suite} stands in {', '.join(str(file) for file in files.values())}"
    if not homes:
        yield "no tests found"


def main():
    found = list(problems(pathlib.Path(sys.argv[1]) if len(sys.argv) > 1 else ROOT))
    for line in found:
        print(line, file=sys.stderr)
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
