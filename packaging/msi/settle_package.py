"""Makes an MSI package that was compiled twice come out the same: its compiler gives each a random code and the time of day.

    settle_package.py PACKAGE CODE SECONDS      CODE is a UUID, SECONDS the date since 1970

Both stand in the summary information, a property set as Windows documents it, and are written over in place.
"""

import pathlib
import struct
import sys

SUMMARY = bytes.fromhex("E0859FF2F94F6810AB9108002B27B3D9")  # the set's identifier
CODE, CREATED, SAVED = 9, 12, 13  # properties
TEXT, TIME = 30, 64  # their types
FROM_1601_TO_1970 = 11644473600


def main(path, code, seconds):
    path = pathlib.Path(path)
    data = bytearray(path.read_bytes())
    start = data.index(SUMMARY)
    (offset,) = struct.unpack_from("<I", data, start + 16)
    # The header before the identifier is 28 bytes long, and offsets count from its beginning.
    section = start - 28 + offset
    _, count = struct.unpack_from("<II", data, section)
    settled = set()
    for index in range(count):
        identifier, place = struct.unpack_from("<II", data, section + 8 + 8 * index)
        at = section + place
        (kind,) = struct.unpack_from("<I", data, at)
        if identifier == CODE and kind == TEXT:
            text = b"{" + code.upper().encode() + b"}"
            if struct.unpack_from("<I", data, at + 4)[0] != len(text) + 1:
                sys.exit(f"{path}: its code is of another length")
            data[at + 8 : at + 8 + len(text)] = text
            settled.add(identifier)
        elif identifier in (CREATED, SAVED) and kind == TIME:
            struct.pack_into("<Q", data, at + 4, (int(seconds) + FROM_1601_TO_1970) * 10_000_000)
            settled.add(identifier)
    if settled != {CODE, CREATED, SAVED}:
        sys.exit(f"{path}: the summary information is not as expected, only {sorted(settled)} were found")
    path.write_bytes(data)


if __name__ == "__main__":
    main(*sys.argv[1:])
