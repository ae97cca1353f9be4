#!/usr/bin/env python3
"""Lets `importer_host validate` judge each piece: it has to fail the check that pieces.txt names, and no other. Each check
has to have a piece there, or a reason why none can be made. The report for build servers has to say what the JSON says.

    matrix.py --table pieces.txt --pieces FOLDER --clip FILE [--smoke] [--jobs N] -- TOOL...
    matrix.py --correct MODULE --level N [--clip FILE]... -- TOOL...

With --correct it judges that module alone, which has to pass everything at that level; without a clip, with those that the tool
makes. TOOL is the command that runs importer_host. Says what differs, and ends with 1 then."""

import argparse
import concurrent.futures
import json
import pathlib
import re
import subprocess
import sys
import tempfile
import xml.etree.ElementTree

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


def junit_differences(path, report):
    """Where the report in the format of JUnit is not what build servers read, or says something else than the JSON."""
    try:
        root = xml.etree.ElementTree.parse(path).getroot()
    except (OSError, xml.etree.ElementTree.ParseError) as error:
        return [f"JUnit: {error}"]
    shape = [element.tag for element in (root, *root)]
    if shape != ["testsuites", "testsuite"]:
        return [f"JUnit: elements {shape}"]
    [suite] = root
    counts = report["counts"]
    wanted = {"tests": sum(counts.values()), "failures": counts["failed"],
              "errors": counts["crashed"] + counts["timed-out"], "skipped": counts["skipped"]}
    seen = [{name: int(element.get(name)) for name in wanted} for element in (root, suite)]
    inside = {"tests": len(suite.findall("testcase")), "failures": len(suite.findall("testcase/failure")),
              "errors": len(suite.findall("testcase/error")), "skipped": len(suite.findall("testcase/skipped"))}
    out = [f"JUnit: {numbers} instead of {wanted}" for numbers in (*seen, inside) if numbers != wanted]
    # What a case has inside, for each outcome, and where its words are.
    kinds = {"passed": [], "warning": ["system-out"], "failed": ["failure"], "crashed": ["error"], "timed-out": ["error"],
             "skipped": ["skipped"]}
    for case, check in zip(suite, report["checks"]):
        name = f"{case.get('classname')}.{case.get('name')}"
        if case.tag != "testcase" or name != check["id"] or [part.tag for part in case] != kinds[check["outcome"]]:
            out.append(f"JUnit: <{case.tag}> {name} with {[part.tag for part in case]} for {check['id']}, {check['outcome']}")
        elif float(case.get("time")) < 0:
            out.append(f"JUnit: {name} took {case.get('time')} s")
        out += [f"JUnit: {name} does not say how to run it again" for part in case
                if part.tag != "skipped" and check["again"] not in part.text]
        out += [f"JUnit: {name} has no message" for part in case if part.tag != "system-out" and not part.get("message")]
    return out


def validate(tool, module, clips, level):
    """What became of each check, by id, the exit code, all that the tool wrote, and where its reports differ."""
    with tempfile.TemporaryDirectory() as folder:
        report, junit = pathlib.Path(folder) / "report.json", pathlib.Path(folder) / "report.xml"
        done = subprocess.run([*tool, "validate", module, *clips, "--level", str(level), "--jobs", "1", "--timeout", "20",
                               "--json", report, "--junit", junit], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT, text=True)
        if not report.exists():
            return {}, done.returncode, done.stdout, []
        said = json.loads(report.read_text(encoding="utf-8"))
        return ({check["id"]: check["outcome"] for check in said["checks"]}, done.returncode, done.stdout,
                junit_differences(junit, said))


def judge(tool, module, clips, level, expected, warns=False):
    """Empty when it failed what was expected (a set of ids), or warned of it, else what it did."""
    outcomes, code, output, differences = validate(tool, module, clips, level)
    if differences:
        return f"{module.name}: " + "\n".join(differences) + "\n"
    bad = {check: outcome for check, outcome in outcomes.items() if outcome in BAD}
    warned = {check for check, outcome in outcomes.items() if outcome == "warning"}
    passed = [check for check, outcome in outcomes.items() if outcome == "passed"]
    wanted_code = 5 if expected and not warns else 0
    if set(bad) == (set() if warns else expected) and (not warns or expected <= warned) and code == wanted_code and passed:
        return ""
    return (f"{module.name}: expected {', '.join(sorted(expected)) or 'nothing'} to {'warn' if warns else 'fail'}, and exit "
            f"code {wanted_code}; seen: {bad or 'nothing'}, warnings {sorted(warned)}, exit code {code}, "
            f"{len(passed)} passed\n{output}")


def too_long(folder):
    """The pieces of more than 40 lines: who reads one is to see at once what it breaks."""
    lines = {piece.name: len(piece.read_text(encoding="utf-8").splitlines()) for piece in sorted(folder.glob("*.cpp"))}
    return [f"{name}: {count} lines, more than 40\n" for name, count in lines.items() if count > 40]


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
    parser.add_argument("--clip", type=pathlib.Path, action="append", default=[])
    parser.add_argument("--correct", type=pathlib.Path)
    parser.add_argument("--level", type=int, default=5)
    parser.add_argument("--smoke", action="store_true")
    parser.add_argument("--only", type=lambda text: text.split(","), help="these pieces, with commas between them")
    parser.add_argument("--windows", action="store_true")
    parser.add_argument("--jobs", type=int, default=2)
    given = parser.parse_args(options)

    if given.correct:
        wrong = [judge(tool, given.correct, given.clip, given.level, set())]
    else:
        known = levels(tool)
        table = [(piece, checks, "warning" in marks) for piece, checks, marks in rows(given.table)
                 if (given.windows or "windows" not in marks) and ("smoke" in marks or not given.smoke)
                 and (not given.only or piece in given.only)]
        pieces = given.table.parent / "pieces"
        unknown = coverage(given.table, known) + unguarded(pieces) + too_long(pieces)
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
