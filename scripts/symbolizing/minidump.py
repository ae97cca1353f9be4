"""Reads a Windows minidump of a 64-bit x64 process, by the published layout of its streams: modules, what went wrong, the
registers of the thread that it went wrong in, and memory. Errors in the file raise ValueError."""

import dataclasses
import struct

from pe_image import image_key, pdb_reference

REGISTERS = ["rax", "rcx", "rdx", "rbx", "rsp", "rbp", "rsi", "rdi", *(f"r{number}" for number in range(8, 16))]
FIRST_REGISTER, INSTRUCTION = 0x78, 0xF8  # offsets in the CONTEXT record of this processor
MODULES, MEMORY, EXCEPTION, FULL_MEMORY = 4, 5, 6, 9  # kinds of streams


@dataclasses.dataclass
class Module:
    base: int
    size: int
    name: str  # without its folder
    image_key: str  # as symbol stores spell it: date of linking and size
    pdb: str = ""  # name of its symbols; empty when it names none
    pdb_key: str = ""  # as symbol stores spell it: GUID and age


@dataclasses.dataclass
class Crash:
    code: int
    address: int
    thread: int
    parameters: list
    registers: dict  # by name, with "rip"


class Minidump:
    def __init__(self, data):
        self._data = data
        try:
            self._read()
        except (struct.error, UnicodeDecodeError) as error:
            raise ValueError(f"the minidump is cut off or damaged ({error})") from error

    def _read(self):
        if self._data[:4] != b"MDMP":
            raise ValueError("not a minidump")
        count, directory = struct.unpack_from("<II", self._data, 8)
        streams = {}
        for index in range(count):
            kind, size, offset = struct.unpack_from("<III", self._data, directory + 12 * index)
            streams[kind] = (offset, size)
        self._ranges = list(self._memory_ranges(streams))
        self.modules = list(self._modules(streams))
        self.crash = self._crash(streams)

    def _modules(self, streams):
        if MODULES not in streams:
            return
        offset, _ = streams[MODULES]
        (count,) = struct.unpack_from("<I", self._data, offset)
        for index in range(count):
            record = offset + 4 + 108 * index
            base, size, _, date, name = struct.unpack_from("<QIIII", self._data, record)
            view_size, view = struct.unpack_from("<II", self._data, record + 24 + 52)
            (length,) = struct.unpack_from("<I", self._data, name)
            path = self._data[name + 4 : name + 4 + length].decode("utf-16-le")
            pdb, key = pdb_reference(self._data[view : view + view_size])
            yield Module(base, size, path.replace("\\", "/").rsplit("/", 1)[-1], image_key(date, size), pdb, key)

    def _memory_ranges(self, streams):
        if MEMORY in streams:
            offset, _ = streams[MEMORY]
            (count,) = struct.unpack_from("<I", self._data, offset)
            for index in range(count):
                yield struct.unpack_from("<QII", self._data, offset + 4 + 16 * index)
        if FULL_MEMORY in streams:
            offset, _ = streams[FULL_MEMORY]
            count, place = struct.unpack_from("<QQ", self._data, offset)
            for index in range(count):
                start, size = struct.unpack_from("<QQ", self._data, offset + 16 + 16 * index)
                yield start, size, place
                place += size

    def _crash(self, streams):
        if EXCEPTION not in streams:
            return None
        offset, _ = streams[EXCEPTION]
        thread, _, code, _, _, address, count, _ = struct.unpack_from("<IIIIQQII", self._data, offset)
        parameters = list(struct.unpack_from("<15Q", self._data, offset + 40))[: min(count, 15)]
        size, context = struct.unpack_from("<II", self._data, offset + 160)
        if size < INSTRUCTION + 8:
            raise ValueError("the minidump is of another processor, or holds no registers")
        values = struct.unpack_from(f"<{len(REGISTERS)}Q", self._data, context + FIRST_REGISTER)
        registers = dict(zip(REGISTERS, values))
        (registers["rip"],) = struct.unpack_from("<Q", self._data, context + INSTRUCTION)
        return Crash(code, address, thread, parameters, registers)

    def module_at(self, address):
        for module in self.modules:
            if module.base <= address < module.base + module.size:
                return module
        return None

    def number(self, address):
        """The eight bytes at an address of the process, or None when the dump does not hold them."""
        for start, size, offset in self._ranges:
            if start <= address and address + 8 <= start + size:
                at = offset + address - start
                if at + 8 <= len(self._data):
                    return struct.unpack_from("<Q", self._data, at)[0]
        return None
