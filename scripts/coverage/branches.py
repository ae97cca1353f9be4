"""Which branches ran, from what `llvm-cov export` writes, and which ones the sources themselves explain.

A branch is one outcome of one condition: `a && b` has four. A function template or an inline function is counted once for
each place that it is compiled in; what one of them does, all of them can.
"""
import dataclasses
import re

# On the condition's line, or alone on the lines above it.
# "not always": threads decide whether it runs, so the reason may stand where a run had it.
REASON = re.compile(r"//\s*not (always )?covered(?: when (true|false))?:\s*(\S.*)")
COMMENT = re.compile(r"^\s*//")


@dataclasses.dataclass
class Branch:
    line: int
    column: int
    end_line: int
    end_column: int
    true: int
    false: int

    def missing(self):
        return [outcome for outcome in ("true", "false") if getattr(self, outcome) == 0]


def branches_of(export):
    """{file name: [Branch]} of the export's JSON."""
    found = {}
    for data in export["data"]:
        for function in data["functions"]:
            for one in function.get("branches", []):
                line, column, end_line, end_column, true, false, file_id, _, kind = one
                # 4: a branch; others are no conditions.
                if kind != 4 or is_folded(one, function["regions"]):
                    continue
                places = found.setdefault(function["filenames"][file_id], {})
                branch = places.setdefault((line, column, end_line, end_column),
                                           Branch(line, column, end_line, end_column, 0, 0))
                branch.true += true
                branch.false += false
    return {name: [places[place] for place in sorted(places)] for name, places in found.items()}


def is_folded(one, regions):
    """Whether the compiler knew the outcome: neither was counted, although the code around was run."""
    line, column, end_line, end_column, true, false, file_id = one[:7]
    if true or false:
        return False
    around = [region for region in regions if region[7] == 0 and region[5] == file_id
              and tuple(region[:2]) <= (line, column) and (end_line, end_column) <= tuple(region[2:4])]
    # The innermost one begins last.
    return bool(around) and max(around, key=lambda region: (region[0], region[1], -region[2], -region[3]))[4] > 0


@dataclasses.dataclass
class Reason:
    line: int             # of the comment
    code_line: int        # that it is about
    outcome: str          # true, false, or empty for both
    text: str
    needed: bool = False  # by some branch; one that chance decides about counts as needed


def reasons_in(text):
    """The reasons that stand in a source."""
    lines, found = text.split("\n"), []
    for number, line in enumerate(lines, 1):
        match = REASON.search(line)
        if not match:
            continue
        about = number
        while about <= len(lines) and COMMENT.match(lines[about - 1]):
            about += 1
        found.append(Reason(number, about, match[2] or "", match[3], bool(match[1])))
    return found


def judge(branches, reasons):
    """What is wrong: (line, words), for branches that did not run without a reason and for reasons that no branch needs."""
    problems, explained = [], 0
    for branch in branches:
        for outcome in branch.missing():
            reason = next((one for one in reasons if one.code_line == branch.line and one.outcome in ("", outcome)), None)
            if reason is None:
                problems.append((branch.line, f"column {branch.column}: the condition is never {outcome}"))
            else:
                reason.needed = True
                explained += 1
    for reason in reasons:
        if not reason.needed:
            problems.append((reason.line, "a reason where every branch runs"))
    return sorted(problems), explained
