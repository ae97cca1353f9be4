"""Goes from a function to its caller by the unwind data of 64-bit x64 Windows files (.pdata and .xdata, by the published
layout)."""

import struct

from minidump import REGISTERS
from pe_image import PeImage

# What a prologue can do. The registers of these numbers are the first ones in the order of the instruction set.
PUSH, ALLOCATE_LARGE, ALLOCATE_SMALL, SET_FRAME, SAVE, SAVE_FAR, EPILOGUE, _, SAVE_XMM, SAVE_XMM_FAR, MACHINE_FRAME = range(11)
CHAINED = 4


class Unwinding:
    """The unwind data of one file."""

    def __init__(self, data):
        self._image = PeImage(data)
        self._functions = self._image.functions()

    def _function_at(self, offset):
        for function in self._functions:
            if function[0] <= offset < function[1]:
                return function
        return None

    def caller(self, offset, registers, number):
        """The registers in the caller of the place at `offset`; None when the stack is not in the dump. `number` reads
        eight bytes of the process."""
        registers = dict(registers)
        function = self._function_at(offset)
        within = offset - function[0] if function else 0
        while function:
            header = self._image.bytes_at(function[2], 4)
            flags, prologue, count, frame = header[0] >> 3, header[1], header[2], header[3]
            codes = self._image.bytes_at(function[2] + 4, 2 * ((count + 1) & ~1) + 12)
            # Where the prologue has run, its saved registers lie above the frame's register.
            base = registers["rsp"]
            if frame & 15 and within >= prologue:
                base = registers[REGISTERS[frame & 15]] - 16 * (frame >> 4)
            if not _undo(codes, count, within, frame, base, registers, number):
                return None
            if not flags & CHAINED:
                break
            function = struct.unpack_from("<III", codes, 2 * ((count + 1) & ~1))
            within = 1 << 32  # all of the prologue of the function that this part belongs to has run
        back = number(registers["rsp"])
        if back is None:
            return None
        registers["rip"] = back
        registers["rsp"] += 8
        return registers


def _undo(codes, count, within, frame, base, registers, number):
    at = 0
    while at < count:
        done, operation = codes[2 * at], codes[2 * at + 1]
        operation, info = operation & 15, operation >> 4
        slot = lambda index: struct.unpack_from("<H", codes, 2 * (at + index))[0]
        wide = lambda: struct.unpack_from("<I", codes, 2 * (at + 1))[0]
        length = {ALLOCATE_LARGE: 3 if info else 2, SAVE: 2, SAVE_FAR: 3, SAVE_XMM: 2, SAVE_XMM_FAR: 3}.get(operation, 1)
        if done <= within:  # else the crash was within the prologue, before this
            place = None
            if operation == PUSH:
                place = registers["rsp"]
                registers["rsp"] += 8
            elif operation == ALLOCATE_LARGE:
                registers["rsp"] += wide() if info else 8 * slot(1)
            elif operation == ALLOCATE_SMALL:
                registers["rsp"] += 8 * info + 8
            elif operation == SET_FRAME:
                registers["rsp"] = registers[REGISTERS[frame & 15]] - 16 * (frame >> 4)
            elif operation == SAVE:
                place = base + 8 * slot(1)
            elif operation == SAVE_FAR:
                place = base + wide()
            elif operation == MACHINE_FRAME:
                return False
            if place is not None:
                value = number(place)
                if value is None:
                    return False
                registers[REGISTERS[info]] = value
        at += length
    return True
