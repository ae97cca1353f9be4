"""The parts of a 64-bit Windows file (PE) that crashes are read by: its keys in symbol stores and its unwind data. By the
published layout; damage raises ValueError or struct.error."""

import struct

EXCEPTIONS, DEBUG = 3, 6  # data directories
CODE_VIEW = 2  # kind of debug record


def pdb_reference(record):
    """Name and key (GUID and age, as symbol stores spell them) of the symbols that a CodeView record names; two empty texts
    for a record of another kind."""
    if len(record) < 25 or record[:4] != b"RSDS":
        return "", ""
    first, second, third = struct.unpack_from("<IHH", record, 4)
    (age,) = struct.unpack_from("<I", record, 20)
    path = record[24:].split(b"\0")[0].decode(errors="replace")
    return path.replace("\\", "/").rsplit("/", 1)[-1], f"{first:08X}{second:04X}{third:04X}{record[12:20].hex().upper()}{age:X}"


def image_key(date, size):
    """Key of a program or library in symbol stores."""
    return f"{date:08X}{size:x}"


class PeImage:
    def __init__(self, data):
        self._data = data
        if data[:2] != b"MZ":
            raise ValueError("not a program or library of Windows")
        (header,) = struct.unpack_from("<I", data, 0x3C)
        signature, _, count, date, _, _, optional_size, _ = struct.unpack_from("<4sHHIIIHH", data, header)
        optional = header + 24
        if signature != b"PE\0\0" or struct.unpack_from("<H", data, optional) != (0x20B,):
            raise ValueError("not a 64-bit program or library of Windows")
        (size,) = struct.unpack_from("<I", data, optional + 56)
        self.key = image_key(date, size)
        self._directories = optional + 112
        self._sections = [struct.unpack_from("<8sIIII", data, optional + optional_size + 40 * index)[1:]
                          for index in range(count)]

    def bytes_at(self, offset, size):
        """Of the loaded image; shorter at the end of a section."""
        for virtual_size, address, raw_size, raw in self._sections:
            if address <= offset < address + max(virtual_size, raw_size):
                start = raw + offset - address
                return self._data[start : min(start + size, raw + raw_size)]
        raise ValueError(f"no section holds offset {offset:#x}")

    def _directory(self, index):
        offset, size = struct.unpack_from("<II", self._data, self._directories + 8 * index)
        return self.bytes_at(offset, size) if size else b""

    def symbols(self):
        """Name and key of the symbols; two empty texts without any."""
        table = self._directory(DEBUG)
        for at in range(0, len(table) - 27, 28):
            kind, size, _, raw = struct.unpack_from("<IIII", table, at + 12)
            if kind == CODE_VIEW:
                return pdb_reference(self._data[raw : raw + size])
        return "", ""

    def functions(self):
        """Of each function with a frame: where it begins, where it ends, where its unwind data are."""
        table = self._directory(EXCEPTIONS)
        return [struct.unpack_from("<III", table, at) for at in range(0, len(table) - 11, 12)]
