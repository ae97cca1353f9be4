"""Reads a 64-bit Windows file (PE) as the loader and debuggers do, by the published layout, with nothing but the standard
library. Errors in the file show as exceptions, which fail the test that asked."""

import struct

REPRODUCIBLE = 16  # kind of a debug record: the time stamp is no time


class PeFile:
    def __init__(self, data):
        self.data = data
        if data[:2] != b"MZ":
            raise ValueError("not a PE file")
        (self._pe,) = self._at("<I", 0x3C)
        if data[self._pe : self._pe + 4] != b"PE\0\0":
            raise ValueError("no PE header")
        (self.machine, count, self.timestamp, symbol_table, self.symbol_count, optional_size, self.flags) = self._at(
            "<HHIIIHH", self._pe + 4
        )
        self._optional = self._pe + 24
        if self._at("<H", self._optional) != (0x20B,):
            raise ValueError("not a 64-bit PE file")
        string_table = symbol_table + 18 * self.symbol_count
        self.sections = {}
        for index in range(count):
            header = self._optional + optional_size + 40 * index
            name, size, address, raw_size, raw = self._at("<8sIIII", header)
            name = name.rstrip(b"\0").decode()
            if name.startswith("/"):  # longer names lie in the string table
                start = string_table + int(name[1:])
                name = data[start : data.index(b"\0", start)].decode()
            self.sections[name] = (address, max(size, raw_size), raw, raw_size, size)

    def _at(self, form, offset):
        return struct.unpack_from(form, self.data, offset)

    def _offset(self, address):
        for start, size, raw, raw_size, _ in self.sections.values():
            if start <= address < start + min(size, raw_size):
                return address - start + raw
        raise ValueError(f"address outside the file's sections: {address:#x}")

    def _text(self, offset):
        return self.data[offset : self.data.index(b"\0", offset)].decode()

    def _directory(self, index):
        return self._at("<II", self._optional + 112 + 8 * index)

    def section(self, name):
        _, _, raw, raw_size, size = self.sections[name]
        return self.data[raw : raw + min(raw_size, size or raw_size)]

    def image_base(self):
        return self._at("<Q", self._optional + 24)[0]

    def exports(self):
        """Name to address, with the image base in it."""
        address, size = self._directory(0)
        if size == 0:
            return {}
        table = self._offset(address)
        count, functions, names, ordinals = self._at("<IIII", table + 24)
        result = {}
        for index in range(count):
            (name,) = self._at("<I", self._offset(names) + 4 * index)
            (ordinal,) = self._at("<H", self._offset(ordinals) + 2 * index)
            (function,) = self._at("<I", self._offset(functions) + 4 * ordinal)
            result[self._text(self._offset(name))] = self.image_base() + function
        return result

    def resource(self, kind, name):
        """Bytes of the first language of a resource; kind and name are numbers."""
        base = self._offset(self._directory(2)[0])
        offset = 0
        for wanted in (kind, name, None):
            named, numbered = self._at("<HH", base + offset + 12)
            for index in range(named + numbered):
                identifier, target = self._at("<II", base + offset + 16 + 8 * index)
                if wanted is None or identifier == wanted:
                    offset = target & 0x7FFFFFFF
                    break
            else:
                raise KeyError((kind, name))
        address, size = self._at("<II", base + offset)
        start = self._offset(address)
        return self.data[start : start + size]

    def version_strings(self):
        """The StringFileInfo block of the version resource."""
        strings = {}

        def walk(data, end, start, depth):
            while start + 6 <= end:
                length, value_length, is_text = struct.unpack_from("<HHH", data, start)
                if length == 0:
                    break
                stop = start + length
                cursor = start + 6
                while data[cursor : cursor + 2] != b"\0\0":
                    cursor += 2
                key = data[start + 6 : cursor].decode("utf-16-le")
                cursor = (cursor + 2 + 3) & ~3
                if depth == 3:
                    strings[key] = data[cursor : cursor + 2 * value_length].decode("utf-16-le").split("\0")[0]
                else:
                    children = cursor if depth else (cursor + value_length + 3) & ~3
                    if key != "VarFileInfo":
                        walk(data, stop, children, depth + 1)
                start = (stop + 3) & ~3

        data = self.resource(16, 1)
        walk(data, len(data), 0, 0)
        return strings

    def version_numbers(self):
        """FILEVERSION and PRODUCTVERSION, each as four numbers."""
        data = self.resource(16, 1)
        start = data.index(struct.pack("<I", 0xFEEF04BD))
        file_high, file_low, product_high, product_low = struct.unpack_from("<IIII", data, start + 8)
        split = lambda high, low: (high >> 16, high & 0xFFFF, low >> 16, low & 0xFFFF)
        return split(file_high, file_low), split(product_high, product_low)

    def debug_link(self):
        """Name and CRC-32 of the file with the DWARF symbols."""
        data = self.section(".gnu_debuglink")
        name = data[: data.index(b"\0")].decode()
        (crc,) = struct.unpack_from("<I", data, (len(name) + 1 + 3) & ~3)
        return name, crc

    def image_size(self):
        return self._at("<I", self._optional + 56)[0]

    def debug_kinds(self):
        """Kinds of the records in the debug directory."""
        address, size = self._directory(6)
        start = self._offset(address) if size else 0
        return [self._at("<I", entry + 12)[0] for entry in range(start, start + size, 28)]

    def code_view(self):
        """GUID, age and path of the PDB, from the debug directory."""
        address, size = self._directory(6)
        start = self._offset(address)
        for entry in range(start, start + size, 28):
            kind, length, _, raw = self._at("<IIII", entry + 12)
            if kind == 2:
                record = self.data[raw : raw + length]
                if record[:4] != b"RSDS":
                    raise ValueError("not a PDB 7.0 record")
                (age,) = struct.unpack_from("<I", record, 20)
                return record[4:20], age, record[24:].split(b"\0")[0].decode()
        raise KeyError("no CodeView record")


def pdb_identity(data):
    """GUID of a PDB file, from its info stream."""
    if not data.startswith(b"Microsoft C/C++ MSF 7.00\r\n\x1aDS\0\0\0"):
        raise ValueError("not a PDB file")
    block_size, _, _, directory_size, _, directory_map = struct.unpack_from("<IIIIII", data, 32)
    block = lambda number: data[number * block_size : (number + 1) * block_size]
    blocks_of = lambda size: -(-size // block_size)
    numbers = struct.unpack_from(f"<{blocks_of(directory_size)}I", block(directory_map))
    directory = b"".join(block(number) for number in numbers)[:directory_size]
    (streams,) = struct.unpack_from("<I", directory)
    sizes = struct.unpack_from(f"<{streams}I", directory, 4)
    first = 4 + 4 * streams + 4 * blocks_of(sizes[0])  # blocks of stream 1, the info stream
    (info,) = struct.unpack_from("<I", directory, first)
    return block(info)[12:28]
