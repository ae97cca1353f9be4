"""The list of mutants that no test can kill, or need not, each with its reason: tests/mutation/explained.txt.

An entry is a block of lines:

    plugin/avi/avi_index.cpp orvantis::readLegacyIndex
    - for (std::uint32_t done = 0; done < bytes;) {
    + for (std::uint32_t done = 0; done != bytes;) {
    = `done` grows to `bytes` and never beyond it.

The lines behind - and + are the mutant's line before and after. "#2" at the end of the first line means the second of two
that read alike in that function. The reason may have several lines, each behind a =. Lines that begin with # are comments.
"""


class Entry:
    def __init__(self, line, file, function, number):
        self.line, self.file, self.function, self.number = line, file, function, number
        self.before, self.after, self.reason = None, None, ""

    def key(self):
        return (self.file, self.function, self.before, self.after, self.number)


def read(path):
    """The entries of the list. Raises ValueError with the place of what is wrong in it."""
    entries = []
    for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
        def wrong(problem):
            return ValueError(f"{path.name}:{number}: {problem}")

        mark, rest = line[:2], line[2:].strip()
        if not line.strip() or line.startswith("#"):
            continue
        if mark == "- " and entries and entries[-1].before is None:
            entries[-1].before = rest
        elif line in ("+", "+ ") and entries and entries[-1].after is None:
            entries[-1].after = ""
        elif mark == "+ " and entries and entries[-1].after is None and entries[-1].before is not None:
            entries[-1].after = rest
        elif mark == "= " and entries and entries[-1].after is not None:
            entries[-1].reason = f"{entries[-1].reason} {rest}".strip()
        elif mark in ("- ", "+ ", "= "):
            raise wrong("out of its place")
        else:
            words = line.split()
            ordinal = int(words.pop()[1:]) if words[-1][:1] == "#" and words[-1][1:].isdigit() else 1
            if len(words) == 3 and words[1].endswith("operator"):
                words[1:] = [" ".join(words[1:])]  # of a conversion
            if len(words) != 2:
                raise wrong("expected: FILE FUNCTION [#NUMBER]")
            entries.append(Entry(number, words[0], words[1], ordinal))
    known = {}
    for entry in entries:
        for missing, what in ((entry.before, "- line"), (entry.after, "+ line"), (entry.reason or None, "reason")):
            if missing is None:
                raise ValueError(f"{path.name}:{entry.line}: no {what}")
        if entry.key() in known:
            raise ValueError(f"{path.name}:{entry.line}: the same as in line {known[entry.key()]}")
        known[entry.key()] = entry.line
    return entries


def text(mutant, reason="why no test can see it"):
    """The entry of a mutant, to be copied into the list."""
    number = f" #{mutant.number}" if mutant.number > 1 else ""
    return f"{mutant.file} {mutant.function}{number}\n- {mutant.before}\n+ {mutant.after}\n= {reason}\n"
