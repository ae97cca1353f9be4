#!/usr/bin/env python3
"""Writes a clip in the format of plain_clip.h: make_clip.py FILE [width height frames channels]"""
import math
import struct
import sys


def clip(width=24, height=14, frames=12, channels=2, rate=25, duration=1, sample_rate=8000):
    sample_frames = frames * duration * sample_rate // rate
    out = bytearray(b"PLAINCLP")
    out += struct.pack("<8I", width, height, frames, rate, duration, channels, sample_rate, sample_frames)
    for index in range(frames):
        for y in range(height):
            for x in range(width):
                out += bytes(((x * 9 + index * 20) % 256, (y * 17 + index) % 256, (x * y + 31 * index) % 256, 255 - x % 3))
    for n in range(sample_frames):
        for channel in range(channels):
            out += struct.pack("<f", 0.5 * math.sin(2 * math.pi * 200 * (channel + 1) * n / sample_rate))
    return bytes(out)


if __name__ == "__main__":
    with open(sys.argv[1], "wb") as file:
        file.write(clip(*map(int, sys.argv[2:6])))
