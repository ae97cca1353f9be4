"""What scripts/symbolize.sh runs: finds out what it was given, and prints places as functions and lines."""

import os
import pathlib
import re
import struct
import sys

from minidump import Minidump
from symbol_store import SymbolStore, lines_of
from unwind import Unwinding

MOST_FRAMES = 64
SCANNED_BYTES = 64 * 1024  # of the stack, for the next call out of a module whose unwind data we have
NAMES = {
    0x80000003: "breakpoint", 0xC0000005: "access violation", 0xC0000006: "a page could not be read", 0xC000001D:
    "illegal instruction", 0xC0000094: "division by zero", 0xC00000FD: "stack overflow", 0xC0000374: "heap corruption",
    0xC0000409: "fail fast", 0xE06D7363: "C++ exception", 0x20474343: "C++ exception",
}
PLACE = re.compile(r"([\w.-]+\.(?:prm|exe|dll))\s?\+\s?(0x[0-9a-f]+|[0-9a-f]+)", re.IGNORECASE)
EVENT = re.compile(r"module name: ([\w.-]+\.(?:prm|exe|dll)).*?[Ff]ault offset: (0x[0-9a-f]+)", re.IGNORECASE | re.DOTALL)


def own_store():
    root = pathlib.Path(__file__).resolve().parents[2] / "build"
    found = [root / preset / "symbol-store" for preset in ("windows-clang",)]
    return [str(path) for path in found if path.is_dir()]


class Symbols:
    """Files of a store by module, with what was read of them."""

    def __init__(self, store):
        self._store, self._images, self._unwinding = store, {}, {}

    def image_of(self, module):
        if module.base not in self._images:
            self._images[module.base] = self._store.image(module.name, module.image_key, module.pdb, module.pdb_key)
        return self._images[module.base]

    def unwinding_of(self, module):
        image = self.image_of(module)
        if image and module.base not in self._unwinding:
            self._unwinding[module.base] = Unwinding(image.read_bytes())
        return self._unwinding.get(module.base)


def place_text(module, offset, lines):
    """One line for each function, inlined ones too."""
    where = f"{module}+{offset:#x}"
    if not lines:
        return where
    return "\n       ".join(f"{function}  {place}".rstrip() for function, place in lines) + f"  [{where}]"


def what_happened(crash):
    text = NAMES.get(crash.code, "exception")
    if crash.code == 0xC0000005 and len(crash.parameters) > 1:
        verb = {0: "reading", 1: "writing", 8: "executing"}.get(crash.parameters[0], "accessing")
        text += f", {verb} address {crash.parameters[1]:#x}"
    return f"{text} ({crash.code:#010x}) in thread {crash.thread}"


def next_known_return(dump, symbols, registers):
    """Where a module without unwind data was called from, taken from what lies on the stack: a guess."""
    for address in range(registers["rsp"], registers["rsp"] + SCANNED_BYTES, 8):
        value = dump.number(address)
        if value is None:
            return None
        module = dump.module_at(value)
        if module and symbols.image_of(module) and lines_of(symbols.image_of(module), value - 1 - module.base):
            return {**registers, "rip": value, "rsp": address + 8}
    return None


def tell_dump(dump, symbols):
    """Prints the crash and its calls; gives back whether a line was among them."""
    crash = dump.crash
    if crash is None:
        raise ValueError("the dump was made without a crash: it names no exception")
    print(what_happened(crash))
    registers, guessed, seen, any_line = crash.registers, False, False, False
    for number in range(MOST_FRAMES):
        address = registers["rip"]
        module = dump.module_at(address)
        image = module and symbols.image_of(module)
        # A return address is that of the next instruction, which may belong to the next line.
        offset = (address - (number > 0) - module.base) if module else 0
        lines = lines_of(image, offset) if image else []
        any_line = any_line or bool(lines and lines[0][1])
        text = place_text(module.name, offset, lines) if module else f"{address:#x}"
        print(f"  {'?' if guessed else ' '}{number:2}  {text}")
        unwinding = symbols.unwinding_of(module) if image else None
        if unwinding:
            guessed, seen = False, True
            registers = unwinding.caller(address - module.base, registers, dump.number)
        elif not seen:
            guessed, registers = True, next_known_return(dump, symbols, registers)
        else:
            break  # out of our files, into what called them
        if registers is None or dump.module_at(registers["rip"]) is None:
            break
    for module in dump.modules:
        if module.name.lower() in ("importerorvantis.prm", "importer_host.exe") and not symbols.image_of(module):
            print(f"No symbols of this {module.name} ({module.image_key}): give those of its release")
    return any_line


def tell_places(places, store):
    """The same for modules and offsets of a text, which name no build."""
    any_line = False
    for name, offset in places:
        images = store.images(name)
        if len(images) > 1:
            raise ValueError(f"the symbols are of {len(images)} builds of {name}: give those of one release")
        lines = []
        if images:
            image = store.image(images[0].name, images[0].parent.name)
            lines = lines_of(image, offset) if image else []
        any_line = any_line or bool(lines and lines[0][1])
        print(place_text(name, offset, lines))
    return any_line


def places_in(text):
    found = PLACE.findall(text) + EVENT.findall(text)
    return list(dict.fromkeys((name, int(offset, 16)) for name, offset in found))


def main(arguments):
    stores, inputs = [], []
    words = iter(arguments)
    for word in words:
        if word == "--symbols":
            stores.append(next(words, ""))
        elif word.startswith("-"):
            raise ValueError(f"unknown option: {word}")
        else:
            inputs.append(word)
    if len(inputs) != 1:
        raise ValueError("one dump, log or place is needed")
    stores = stores or own_store()
    if not stores:
        raise ValueError("no symbols: give the symbols zip of the release by --symbols")
    with SymbolStore(stores) as store:
        if PLACE.fullmatch(inputs[0]) and not os.path.exists(inputs[0]):
            return tell_places(places_in(inputs[0]), store)
        data = pathlib.Path(inputs[0]).read_bytes()
        if data[:4] == b"MDMP":
            return tell_dump(Minidump(data), Symbols(store))
        # Event texts that were copied out of Windows may be UTF-16.
        text = data.decode("utf-16" if data[:2] in (b"\xff\xfe", b"\xfe\xff") else "utf-8", errors="replace")
        places = places_in(text)
        if not places:
            raise ValueError(f"{inputs[0]}: neither a minidump nor a text with a module and an offset in it")
        return tell_places(places, store)


if __name__ == "__main__":
    try:
        sys.exit(0 if main(sys.argv[1:]) else 1)
    except (ValueError, OSError, struct.error) as problem:
        print(f"symbolize.sh: {problem}", file=sys.stderr)
        sys.exit(2)
