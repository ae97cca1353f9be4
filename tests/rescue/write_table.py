#!/usr/bin/env python3
"""Adds up what rescue_measure printed and writes the table into a document: write_table.py DOCUMENT OUTPUT..."""
import sys

START, END = "<!-- measured -->", "<!-- end of measured -->"
COMMANDS = {
    "rescue": "`importer_host rescue --out`",
    "ffmpeg": "`ffmpeg -map 0 -c copy`",
    "mencoder": "`mencoder -forceidx -ovc copy -oac copy`",
}


def read(paths):
    scan, tools = None, {}
    for path in paths:
        for line in open(path, encoding="utf-8"):
            words = line.split()
            if words[0] == "scan":
                old = scan or {}
                scan = {words[i]: int(words[i + 1]) + old.get(words[i], 0) for i in range(1, len(words), 2)}
            elif words[0] == "tool":
                counts = [int(word) for word in words[2:]]
                old = tools.get(words[1], [0] * len(counts))
                tools[words[1]] = [a + b for a, b in zip(old, counts)]
    return scan, tools


def percent(part, whole):
    text = f"{100 * part / whole:.1f}" if whole else "0.0"
    # What is not all, or not nothing, does not look like it.
    if text == "100.0" and part != whole:
        text = "99.9"
    if text == "0.0" and part:
        text = "under 0.1"
    return text + " %"


def table(scan, tools):
    out = []
    if scan:
        out.append(
            f"The search alone, over {scan['files']} clips cut at {scan['structural']:,} structural points and "
            f"{scan['random']:,} random ones ({scan['chunks']:,} whole chunks): {scan['wrong']:,} cuts where what was found "
            "is not exactly, by stream, offset and size, what the uncut clip's own index names.\n")
    out.append("| Command | Cuts | Exact | Pictures exact | No file | Whole frames lost | Damaged frames taken as whole |")
    out.append("|---|---|---|---|---|---|---|")
    for name, command in COMMANDS.items():
        if name in tools:
            cuts, exact, pictures, nothing, whole, lost, damaged, _ = tools[name]
            out.append(f"| {command} | {cuts:,} | {percent(exact, cuts)} | {percent(pictures, cuts)} | {percent(nothing, cuts)} | "
                       f"{lost:,} of {whole:,} | {damaged:,} |")
    if "rescue" in tools:
        out.append(f"\nCut clips changed by `rescue --out`: {tools['rescue'][7]:,}.")
    return "\n".join(out)


def main():
    document = sys.argv[1]
    text = open(document, encoding="utf-8").read()
    before, rest = text.split(START)
    after = rest.split(END)[1]
    body = table(*read(sys.argv[2:]))
    open(document, "w", encoding="utf-8").write(f"{before}{START}\n{body}\n{END}{after}")


main()
