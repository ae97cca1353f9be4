#!/usr/bin/env python3
"""Measures how long the tool makes people wait for clips that are long, large, or lie about it.

    tests/tool/measure_waiting.py [IMPORTER_HOST]

Without a program the one of the preset linux-quick. Makes its clips in a folder of its own, half a gigabyte, most of it
for a minute. Prints seconds of processor time, which a busy machine does not change much, and of the clock; ends with 1
when a limit of processor time is missed. The tests count instead of measuring: ToolLongClips in tests/tool.
"""
import os
import resource
import struct
import subprocess
import sys
import tempfile
import time
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]


def chunk(code, data):
    return code + struct.pack("<I", len(data)) + data + b"\0" * (len(data) % 2)


def strh(kind, code, scale, rate, length, sample):
    return chunk(b"strh", struct.pack("<4s4sIHHIIIIIIII4H", kind, code, 0, 0, 0, 0, scale, rate, 0, length, 0, 0xFFFFFFFF,
                                      sample, 0, 0, 0, 0))


def headers(width, height, frames, sound_length):
    """Of O8Y2 at 25 frames a second and, with a length, one channel of 8 bits at 8000 Hz."""
    picture = struct.pack("<IiiHH4sIiiII", 40, width, height, 1, 16, b"O8Y2", 0, 0, 0, 0, 0)
    streams = chunk(b"LIST", b"strl" + strh(b"vids", b"O8Y2", 1, 25, frames, 0) + chunk(b"strf", picture))
    if sound_length:
        sound = struct.pack("<HHIIHHH", 1, 1, 8000, 8000, 1, 8, 0)
        streams += chunk(b"LIST", b"strl" + strh(b"auds", b"\0\0\0\0", 1, 8000, sound_length, 1) + chunk(b"strf", sound))
    main = struct.pack("<14I", 40000, 0, 0, 0x10, frames, 0, 2 if sound_length else 1, 0, width, height, 0, 0, 0, 0)
    return chunk(b"LIST", b"hdrl" + chunk(b"avih", main) + streams)


def write(path, header, groups, group, entries):
    """`group` bytes so many times, or, given as a number, holes of that size behind a chunk header; then the index."""
    size = group if isinstance(group, int) else len(group)
    index = chunk(b"idx1", entries)
    with open(path, "wb") as file:
        riff = 4 + len(header) + 12 + size * groups + len(index)
        file.write(b"RIFF" + struct.pack("<I", riff) + b"AVI " + header + b"LIST" +
                   struct.pack("<I", 4 + size * groups) + b"movi")
        start = file.tell()
        if isinstance(group, int):
            for i in range(groups):
                file.seek(start + i * size)
                file.write(b"00dc" + struct.pack("<I", size - 8))
        else:
            for _ in range(groups):
                file.write(group)
        file.seek(start + groups * size)
        file.write(index)


def long_clip(path):
    """A million frames and their sound, eleven hours."""
    picture, sound = chunk(b"00dc", bytes(128)), chunk(b"01wb", bytes([128]) * 320)
    frames, size = 1_000_000, len(picture) + len(sound)
    entries = bytearray()
    for i in range(frames):
        entries += struct.pack("<4sIII4sIII", b"00dc", 0x10, 4 + i * size, 128, b"01wb", 0x10,
                               4 + i * size + len(picture), 320)
    write(path, headers(16, 4, frames, frames * 320), frames, picture + sound, entries)


def large_clip(path, width, height, frames):
    """Frames that are there, as holes of the file."""
    size = width * height * 2 + 8
    entries = b"".join(struct.pack("<4sIII", b"00dc", 0x10, 4 + i * size, size - 8) for i in range(frames))
    write(path, headers(width, height, frames, 0), frames, size, entries)


def lying_clip(path):
    """4 MiB that claim frames of 16384 × 16384, a day of them, and as much sound, all in the same two chunks."""
    picture, sound = chunk(b"00dc", bytes(1 << 20)), chunk(b"01wb", bytes(1 << 20))
    entry = struct.pack("<4sIII4sIII", b"00dc", 0x10, 4, 1 << 20, b"01wb", 0x10, 4 + len(picture), 1 << 20)
    write(path, headers(16384, 16384, 2_160_000, 0x7FFFFFFF), 1, picture + sound, entry * 65_536)


def measured(words):
    before, begun = resource.getrusage(resource.RUSAGE_CHILDREN), time.monotonic()
    subprocess.run(words, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, check=False)
    after, ended = resource.getrusage(resource.RUSAGE_CHILDREN), time.monotonic()
    return after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime, ended - begun


def main():
    if any(word in ("-h", "--help") for word in sys.argv[1:]):
        print(__doc__.strip())
        return 0
    tool = sys.argv[1] if len(sys.argv) > 1 else str(ROOT / "build/linux-quick/bin/importer_host")
    if not os.path.exists(tool):
        print(f"there is no {tool}: cmake --build --preset linux-quick --target importer_host", file=sys.stderr)
        return 2
    missed = 0
    with tempfile.TemporaryDirectory() as folder:
        folder = Path(folder)
        clips = {"1,000,000 frames, 11 hours of sound": (long_clip,),
                 "4 MiB that claim 16384 × 16384, a day of it": (lying_clip,),
                 "40 frames of 7680 × 4320": (large_clip, 7680, 4320, 40),
                 "6 frames of 16384 × 16384": (large_clip, 16384, 16384, 6)}
        print("| Clip | Command | Processor | Clock | Limit |\n|---|---|---|---|---|")
        for name, (make, *arguments) in clips.items():
            clip = folder / "clip.avi"
            make(clip, *arguments)
            commands = [("report", ["--out", folder], 10 if "1,000,000" in name else 2),
                        ("frames", ["--range", "all", "--format", "all", "--sheet", folder / "sheet.png"], 2)]
            if "sound" in name or "claim" in name:
                commands.append(("audio", ["--waveform", folder / "wave.png"], 2))
            for command, options, limit in commands:
                if command == "report" and "6 frames" in name:
                    limit = 10  # three gigabytes are no small file
                processor, clock = measured([tool, command, clip, *options])
                missed += processor > limit
                print(f"| {name} | `{command}` | {processor:.2f} s | {clock:.2f} s | {limit} s |", flush=True)
            clip.unlink()
    return 1 if missed else 0


if __name__ == "__main__":
    sys.exit(main())
