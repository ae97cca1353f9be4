"""The outcomes added up: a table for people, by folder of the plug-in."""
import collections

START, END = "<!-- mutants -->", "<!-- end of mutants -->"
COLUMNS = ("killed", "timeout", "survived", "explained", "undecided", "equal", "invalid")


def percent(part, whole):
    text = f"{100 * part / whole:.1f}" if whole else "0.0"
    # What is not all does not look like it.
    return ("99.9" if text == "100.0" and part != whole else text) + " %"


def add_up(results):
    """{folder: {verdict: count}} with "all" at the end."""
    folders = collections.defaultdict(collections.Counter)
    for result in results:
        folders[result["file"].split("/")[1]][result["verdict"]] += 1
    everything = sum(folders.values(), collections.Counter())
    return {**{name: folders[name] for name in sorted(folders)}, "all": everything}


def table(results, existing=None):
    """A Markdown table. `existing`: {folder: mutants that there are}."""
    rows = ["| Folder | There are | Tried | Same code | Killed | of these by time | Survived, explained | Survived | "
            "Undecided | Killed of those that may differ |",
            "|---|--:|--:|--:|--:|--:|--:|--:|--:|--:|"]
    for folder, counts in add_up(results).items():
        tried = sum(counts[name] for name in COLUMNS) - counts["invalid"]
        killed = counts["killed"] + counts["timeout"]
        differ = killed + counts["survived"] + counts["undecided"]
        total = sum(existing.values()) if existing and folder == "all" else (existing or {}).get(folder, "")
        rows.append(f"| {folder} | {total} | {tried} | {counts['equal']} | {killed} | {counts['timeout']} | "
                    f"{counts['explained']} | {counts['survived']} | {counts['undecided']} | {percent(killed, differ)} |")
    return "\n".join(rows) + "\n"


def write_into(path, words):
    text = path.read_text(encoding="utf-8")
    head, rest = text.split(START, 1)
    _, tail = rest.split(END, 1)
    path.write_text(f"{head}{START}\n{words}{END}{tail}", encoding="utf-8")
