#!/usr/bin/env python3
"""Holds the includes of the sources against scripts/directions.txt, and the diagrams against the same table.

    scripts/check-directions.py            says what is wrong; exit code 1 when anything is
    scripts/check-directions.py --write    draws the diagrams in README.md and docs/architecture.md anew
    scripts/check-directions.py --actual   prints, in the form of the table, what the sources include today
    ... --root FOLDER                      looks at another copy of the project

Wrong are: an include that the table does not allow, a folder with sources and without a row, a row or an arrow that no
source uses, an arrow to a folder that does not stand above its row (unless "!" marks it as one that has to go), and a
diagram that differs from the table.
"""

import argparse
import os
import re
import sys

TABLE = "scripts/directions.txt"
SUFFIXES = (".h", ".cpp", ".h.in", ".rc")
# Where a quoted include is looked for after its own folder, as the compilers are told.
INCLUDE_ROOTS = ("", "plugin", "testbed")
INCLUDE = re.compile(r'\s*#\s*include\s*([<"])([^>"]+)[>"]')


class Table:
    """The rows of the table: folder -> (allowed folders, text for the diagrams), in its order."""

    def __init__(self, root):
        self.rows = {}
        self.against = set()  # arrows that stand there until somebody removes them
        self.problems = []
        with open(os.path.join(root, TABLE), encoding="utf-8") as lines:
            for number, line in enumerate(lines, 1):
                line = line.split("#")[0].strip()
                if not line:
                    continue
                folder, colon, rest = line.partition(":")
                allowed, _, text = rest.partition("|")
                if not colon or folder in self.rows:
                    self.problems.append(f"{TABLE}:{number}: no row, or a second one: {line}")
                    continue
                for other in allowed.split():
                    if not other.startswith("!") and other not in self.rows:
                        self.problems.append(f"{TABLE}:{number}: {folder} may include {other}, which does not stand above it")
                self.rows[folder] = ([other.removeprefix("!") for other in allowed.split()], text.strip())
                self.against |= {(folder, other[1:]) for other in allowed.split() if other.startswith("!")}

    def arrows(self):
        return {(folder, other) for folder, (allowed, _) in self.rows.items() for other in allowed}


def sources(root):
    """Every source file, relative to the root with slashes. Build folders and hidden ones are left out."""
    found = []
    for path, folders, files in os.walk(root):
        if "CMakeCache.txt" in files:
            folders.clear()
            continue
        folders[:] = sorted(name for name in folders if not name.startswith(".") and (path != root or name != "build"))
        for name in sorted(files):
            if name.endswith(SUFFIXES):
                found.append(os.path.relpath(os.path.join(path, name), root).replace(os.sep, "/"))
    return found


def includes(root, files):
    """(file, line number, folder of the file, folder of the included one or None, text) of each include between our files."""
    known = set(files)
    for file in files:
        folder = os.path.dirname(file)
        with open(os.path.join(root, file), encoding="utf-8", errors="replace") as lines:
            for number, line in enumerate(lines, 1):
                match = INCLUDE.match(line)
                if not match:
                    continue
                quoted, name = match[1] == '"', match[2]
                places = [os.path.normpath(os.path.join(place, name)) for place in (folder, *INCLUDE_ROOTS)]
                places = [place.replace(os.sep, "/") for place in places]
                target = next((place for place in places for place in (place, place + ".in") if place in known), None)
                if target is not None:
                    yield file, number, folder, os.path.dirname(target), name
                elif quoted:
                    yield file, number, folder, None, name


def check_includes(root, table):
    problems = list(table.problems)
    files = sources(root)
    for folder in sorted({os.path.dirname(file) for file in files} - set(table.rows)):
        problems.append(f"{folder}: has sources and no row in {TABLE}")
    for folder in table.rows:
        if not any(os.path.dirname(file) == folder for file in files):
            problems.append(f"{TABLE}: {folder} has no sources")
    used = set()
    for file, number, folder, target, name in includes(root, files):
        if target is None:
            problems.append(f"{file}:{number}: {name} is no file of the project")
        elif target != folder:
            used.add((folder, target))
            if folder in table.rows and target not in table.rows[folder][0]:
                problems.append(f"{file}:{number}: {folder} may not include {target} ({name})")
    for folder, other in sorted(table.arrows() - used):
        problems.append(f"{TABLE}: nothing in {folder} includes {other}")
    return problems


def actual(root, table):
    """The table as the sources would have it: today's order and texts, new folders last."""
    files = sources(root)
    arrows = {}
    for folder in {os.path.dirname(file) for file in files}:
        arrows[folder] = set()
    for _, _, folder, target, _ in includes(root, files):
        if target is not None and target != folder:
            arrows[folder].add(target)
    order = [folder for folder in table.rows if folder in arrows] + sorted(set(arrows) - set(table.rows))
    for folder in order:
        text = table.rows.get(folder, ([], ""))[1]
        names = ["!" * ((folder, name) in table.against) + name for name in sorted(arrows[folder], key=order.index)]
        yield f"{folder}: {' '.join(names)}".rstrip() + (f" | {text}" if text else "")


# ---- diagrams ----

# What everybody may use is drawn apart, or its arrows would hide the others.
POOLED = ("plugin/diag", "host")


def plugin_diagram(table, with_texts):
    """The plug-in's folders, uppermost first, with every arrow of the table, and what lies around them."""
    folders = [folder for folder in reversed(table.rows) if folder.startswith("plugin/") and folder != "plugin/resources"]
    short = {folder: folder.removeprefix("plugin/") for folder in (*folders, "host")}

    def box(folder):
        text = table.rows[folder][1]
        return f'{short[folder]}["{short[folder]}/' + (f"<br>{text}" if with_texts and text else "") + '"]'

    lines = ["```mermaid", "flowchart TB", "    premiere([Host]) -->|xImportEntry| entry",
             "    premiere -->|xAsyncImportEntry, any thread| async", "    subgraph prm[ImporterOrvantis.prm]"]
    lines += [f"        {box(folder)}" for folder in folders]
    for folder in folders:
        targets = [short[other] for other in folders if other in table.rows[folder][0] and other not in POOLED]
        if targets:
            lines.append(f"        {short[folder]} --> {' & '.join(targets)}")
    lines += ["    end", f"    {box('host')}"]
    for pool in POOLED:
        users = [short[folder] for folder in folders if pool in table.rows[folder][0]]
        lines.append(f"    {' & '.join(users)} -.-> {short[pool]}")
    lines += ["    video -->|imported| codec[(orvantis_common64.dll)]", "    fileio --> disk[(AVI file)]", "```"]
    return lines


def room_diagram(table):
    """The rooms of the project, each of them all its folders, with every arrow between them."""
    rooms = list(dict.fromkeys(folder.split("/")[0] for folder in reversed(table.rows)))
    arrows = {(a.split("/")[0], b.split("/")[0]) for a, b in table.arrows()}
    lines = ["```mermaid", "flowchart TB"]
    lines += [f'    {room}["{room}/"]' for room in rooms if any(room in arrow for arrow in arrows)]
    for room in rooms:
        targets = [other for other in rooms if other != room and (room, other) in arrows]
        if targets:
            lines.append(f"    {room} --> {' & '.join(targets)}")
    return lines + ["```"]


DIAGRAMS = (
    ("README.md", "plugin", lambda table: plugin_diagram(table, True)),
    ("docs/architecture.md", "plugin", lambda table: plugin_diagram(table, False)),
    ("docs/architecture.md", "rooms", room_diagram),
)


def check_diagrams(root, table, write):
    problems = []
    for file, name, draw in DIAGRAMS:
        path = os.path.join(root, file)
        with open(path, encoding="utf-8") as text:
            before = text.read()
        begin, end = f"<!-- directions: {name} -->\n", "<!-- end of directions -->"
        head, found, rest = before.partition(begin)
        _, closed, tail = rest.partition(end)
        if not found or not closed:
            problems.append(f"{file}: the marks of the diagram '{name}' are gone")
            continue
        after = head + begin + "\n".join(draw(table)) + "\n" + end + tail
        if after == before:
            continue
        if write:
            with open(path, "w", encoding="utf-8", newline="\n") as text:
                text.write(after)
        else:
            problems.append(f"{file}: the diagram '{name}' differs from {TABLE}; scripts/check-directions.py --write draws it")
    return problems


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--write", action="store_true")
    parser.add_argument("--actual", action="store_true")
    parser.add_argument("--root", default=os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
    arguments = parser.parse_args()
    root = os.path.abspath(arguments.root)
    table = Table(root)
    if arguments.actual:
        print("\n".join(actual(root, table)))
        return 0
    problems = check_includes(root, table) + check_diagrams(root, table, arguments.write)
    for problem in problems:
        print(problem, file=sys.stderr)
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
