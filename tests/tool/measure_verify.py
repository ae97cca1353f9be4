#!/usr/bin/env python3
"""Measures how fast "importer_host verify" is beside "ffmpeg -f framemd5": the same raw pictures and sound, in processor time, so
that other work of the machine does not count. Both hash every byte, and verify compares with ffmpeg's list.

    measure_verify.py IMPORTER_HOST [FRAMES [RUNS]]

IMPORTER_HOST is best of an optimised build (preset linux-bench). Prints the medians of RUNS (5) runs over FRAMES (100) frames.
"""
import os
import resource
import statistics
import subprocess
import sys
import tempfile


def processor_seconds(command):
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    subprocess.run(command, check=True, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL)
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    return after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime


def main():
    if len(sys.argv) < 2 or sys.argv[1] in ("-h", "--help"):
        print(__doc__)
        return 0 if len(sys.argv) > 1 else 2
    tool = os.path.abspath(sys.argv[1])
    frames = int(sys.argv[2]) if len(sys.argv) > 2 else 100
    runs = int(sys.argv[3]) if len(sys.argv) > 3 else 5
    ffmpeg = ["ffmpeg", "-nostdin", "-v", "fatal", "-y"]
    with tempfile.TemporaryDirectory() as folder:
        os.chdir(folder)
        seconds = str(frames / 25)
        # ffmpeg knows such pictures by another code than the plug-in does; the clips differ in nothing else.
        subprocess.run(ffmpeg + ["-f", "lavfi", "-i", f"testsrc2=s=1280x720:r=25:d={seconds}", "-f", "lavfi", "-i",
                                 f"sine=r=48000:d={seconds}", "-c:v", "rawvideo", "-pix_fmt", "yuv422p", "-vtag", "Y42B", "-c:a",
                                 "pcm_s16le", "ffmpeg.avi"], check=True)
        subprocess.run(ffmpeg + ["-i", "ffmpeg.avi", "-c", "copy", "-strict", "unofficial", "-vtag", "O8Y2", "clip.avi"], check=True)
        listing = ffmpeg + ["-i", "ffmpeg.avi", "-map", "0", "-c:v", "rawvideo", "-pix_fmt", "yuv422p", "-c:a", "pcm_s16le", "-f",
                            "framemd5", "list"]
        verifying = [tool, "verify", "clip.avi", "--compare", "--framemd5", "list", "--jobs", "1"]
        times = [(processor_seconds(listing), processor_seconds(verifying)) for _ in range(runs)]
    peer, own = (statistics.median(column) for column in zip(*times))
    print(f"ffmpeg -f framemd5: {frames / peer:.0f} frames a second of processor time")
    print(f"importer_host verify --jobs 1: {frames / own:.0f}, {peer / own:.2f} times ffmpeg's")
    return 0


sys.exit(main())
