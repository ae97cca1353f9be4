#!/usr/bin/env python3
"""Lets `importer_host validate` judge each piece: it has to fail the check that pieces.txt names, and no other. Each check
has to have a piece there, or a reason why none can be made.

    matrix.py --table pieces.txt --pieces FOLDER --clip FILE [--smoke] [--jobs N] [--sample MODULE --level N] -- TOOL...

With --sample it judges that correct module alone, which has to pass everything at that level. TOOL is the command that runs
importer_host. Says what differs, and ends with 1 then."""

import argparse
import concurrent.futures
import json
import pathlib
import re
import subprocess
import sys
import tempfile

BAD = ("failed", "crashed", "timed-out")


def rows(table):
    """(piece, set of the checks that it breaks, marks) of each line of a piece."""
    for line in table.read_text().splitlines():
        if line and line[0] not in "#-":
            piece, checks, *marks = line.split()
            yield piece, set(checks.split(",")) - {"none"}, marks


def without_piece(table):
    """The checks of the lines that say why there is no piece."""
    return [line.split()[1] for line in table.read_text().splitlines() if line.startswith("-") and len(line.split()) > 2]


def coverage(table, known):
    """Empty when each check has a piece, or a reason why none can be made, and not both."""
    broken = {check for _, checks, _ in rows(table) for check in checks}
    excused = set(without_piece(table))
    return ([f"{check}: no piece breaks it, and nothing says why\n" for check in sorted(known.keys() - broken - excused)]
            + [f"{check}: has a piece and a reason to have none\n" for check in sorted(broken & excused)]
            + [f"there is no check {check}\n" for check in sorted((broken | excused) - known.keys())])


def unguarded(folder):
    """The pieces that keep something between calls, which come on any thread, and guard it by nothing."""
    keeps = re.compile(r"^\s+static (?!const|cast)|^[A-Za-z][^()]*\bg_\w+[^()]*;", re.MULTILINE)
    guard = re.compile(r"\bstd::(lock_guard|atomic)\b")
    return [f"{piece.name}: keeps something between calls without a lock, and calls come on several threads\n"
            for piece in sorted(folder.glob("*.cpp"))
            if keeps.search(piece.read_text(encoding="utf-8")) and not guard.search(piece.read_text(encoding="utf-8"))]


def validate(tool, module, clip, level):
    """What became of each check, by id, and all that the tool wrote."""
    with tempfile.TemporaryDirectory() as folder:
        report = pathlib.Path(folder) / "report.json"
        done = subprocess.run([*tool, "validate", module, clip, "--level", str(level), "--jobs", "1", "--timeout", "20",
                               "--json", report], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT, text=True)
        if not report.exists():
            return {}, done.returncode, done.stdout
        checks = json.loads(report.read_text(encoding="utf-8"))["checks"]
        return {check["id"]: check["outcome"] for check in checks}, done.returncode, done.stdout


def judge(tool, module, clip, level, expected, warns=False):
    """Empty when it failed what was expected (a set of ids), or warned of it, else what it did."""
    outcomes, code, output = validate(tool, module, clip, level)
    bad = {check: outcome for check, outcome in outcomes.items() if outcome in BAD}
    warned = {check for check, outcome in outcomes.items() if outcome == "warning"}
    passed = [check for check, outcome in outcomes.items() if outcome == "passed"]
    wanted_code = 5 if expected and not warns else 0
    if set(bad) == (set() if warns else expected) and (not warns or expected <= warned) and code == wanted_code and passed:
        return ""
    return (f"{module.name}: expected {', '.join(sorted(expected)) or 'nothing'} to {'warn' if warns else 'fail'}, and exit "
            f"code {wanted_code}; seen: {bad or 'nothing'}, warnings {sorted(warned)}, exit code {code}, "
            f"{len(passed)} passed\n{output}")


def levels(tool):
    """The level of each check."""
    listed = subprocess.run([*tool, "validate", "--list", "--json"], stdin=subprocess.DEVNULL, check=True,
                            stdout=subprocess.PIPE, text=True).stdout
    listed = json.loads(listed)
    return {check["id"]: check["level"] for check in (listed["checks"] if isinstance(listed, dict) else listed)}


def main():
    options, tool = sys.argv[1:], []
    if "--" in options:
        options, tool = options[: options.index("--")], options[options.index("--") + 1 :]
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--table", type=pathlib.Path)
    parser.add_argument("--pieces", type=pathlib.Path)
    parser.add_argument("--clip", type=pathlib.Path, required=True)
    parser.add_argument("--sample", type=pathlib.Path)
    parser.add_argument("--level", type=int, default=5)
    parser.add_argument("--smoke", action="store_true")
    parser.add_argument("--only", type=lambda text: text.split(","), help="these pieces, with commas between them")
    parser.add_argument("--windows", action="store_true")
    parser.add_argument("--jobs", type=int, default=2)
    given = parser.parse_args(options)

    if given.sample:
        wrong = [judge(tool, given.sample, given.clip, given.level, set())]
    else:
        known = levels(tool)
        table = [(piece, checks, "warning" in marks) for piece, checks, marks in rows(given.table)
                 if (given.windows or "windows" not in marks) and ("smoke" in marks or not given.smoke)
                 and (not given.only or piece in given.only)]
        unknown = coverage(given.table, known) + unguarded(given.table.parent / "pieces")
        with concurrent.futures.ThreadPoolExecutor(given.jobs) as pool:
            wrong = unknown + list(pool.map(
                lambda row: judge(tool, given.pieces / f"{row[0]}.prm", given.clip,
                                  max((max(5, known.get(check, 5)) for check in row[1]), default=10), row[1], row[2]),
                table))
        print(f"{len(table)} pieces, {len([text for text in wrong if text])} differ")
    sys.stdout.write("\n".join(text for text in wrong if text))
    sys.exit(1 if any(wrong) else 0)


if __name__ == "__main__":
    main()
