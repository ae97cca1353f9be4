#!/usr/bin/env python3
"""Lets `importer_host validate` judge each piece: it has to fail the check that pieces.txt names, and no other.

    matrix.py --table pieces.txt --pieces FOLDER --clip FILE [--smoke] [--jobs N] [--sample MODULE --level N] -- TOOL...

With --sample it judges that correct module alone, which has to pass everything at that level. TOOL is the command that runs
importer_host. Says what differs, and ends with 1 then."""

import argparse
import concurrent.futures
import json
import pathlib
import subprocess
import sys
import tempfile

BAD = ("failed", "crashed", "timed-out")


def rows(table, windows):
    """(piece, id of its check, is it one of the few) of each line; those for Windows alone only there."""
    for line in table.read_text().splitlines():
        if line and not line.startswith("#"):
            piece, check, *marks = line.split()
            if windows or "windows" not in marks:
                yield piece, check, "smoke" in marks


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


def judge(tool, module, clip, level, expected):
    """Empty when it failed what was expected (an id, or None for nothing), else what it did."""
    outcomes, code, output = validate(tool, module, clip, level)
    bad = {check: outcome for check, outcome in outcomes.items() if outcome in BAD}
    passed = [check for check, outcome in outcomes.items() if outcome == "passed"]
    wanted_code = 5 if expected else 0
    if set(bad) == ({expected} if expected else set()) and code == wanted_code and passed:
        return ""
    return (f"{module.name}: expected {expected or 'nothing'} to fail, and exit code {wanted_code}; seen: "
            f"{bad or 'nothing'}, exit code {code}, {len(passed)} passed\n{output}")


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
    parser.add_argument("--windows", action="store_true")
    parser.add_argument("--jobs", type=int, default=2)
    given = parser.parse_args(options)

    if given.sample:
        wrong = [judge(tool, given.sample, given.clip, given.level, None)]
    else:
        known = levels(tool)
        table = [(piece, check) for piece, check, few in rows(given.table, given.windows) if few or not given.smoke]
        unknown = [f"{piece}: there is no check {check}\n" for piece, check in table if check not in known]
        with concurrent.futures.ThreadPoolExecutor(given.jobs) as pool:
            wrong = unknown + list(pool.map(
                lambda row: judge(tool, given.pieces / f"{row[0]}.prm", given.clip, max(5, known.get(row[1], 5)), row[1]),
                table))
        print(f"{len(table)} pieces, {len([text for text in wrong if text])} differ")
    sys.stdout.write("\n".join(text for text in wrong if text))
    sys.exit(1 if any(wrong) else 0)


if __name__ == "__main__":
    main()
