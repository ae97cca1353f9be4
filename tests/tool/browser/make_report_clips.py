"""The clips whose reports the browser shows, made with ffmpeg: one as it should be, and one with every oddity."""
import struct
import subprocess
import sys
from pathlib import Path

SOUND_NAME = "six channels.avi"
ODD_NAME = "damaged & 'odd' #1.avi"

# Six channels that look different, one of them silent.
SIX_CHANNELS = ("0.6*sin(440*2*PI*t)|0.3*sin(880*2*PI*t)*sin(2*t)|0.2*random(0)|0.9*sin(50*2*PI*t)|0|"
                "0.5*sin(300*PI*t)*exp(-t)")


def ffmpeg(*arguments):
    subprocess.run(["ffmpeg", "-nostdin", "-v", "error", "-y", *map(str, arguments)], check=True)


def make_sound(path):
    ffmpeg("-f", "lavfi", "-i", "testsrc2=size=480x270:rate=25", "-f", "lavfi", "-i",
           f"aevalsrc={SIX_CHANNELS}:s=48000:c=5.1", "-t", 2, "-c:v", "rawvideo", "-strict", "unofficial",
           "-pix_fmt", "yuv422p", "-vtag", "O8Y2", "-c:a", "pcm_s16le", path)


def make_odd(path):
    """An odd rate, sound of AC-3, an OpenDML index of an unknown kind; every third frame empty, the last one behind
    the end of the file."""
    ffmpeg("-f", "lavfi", "-i", "testsrc2=size=320x240:rate=2997/100", "-f", "lavfi", "-i",
           "sine=440:sample_rate=48000", "-t", 2, "-c:v", "rawvideo", "-strict", "unofficial", "-pix_fmt",
           "yuva444p", "-vtag", "O8YA", "-c:a", "ac3", path)
    data = bytearray(Path(path).read_bytes())
    # Inside the first strl, ffmpeg leaves room for an index where files grow large.
    room = data.index(b"JUNK", data.index(b"strf"))
    data[room:room + 4] = b"indx"
    data[room + 8 + 3] = 9
    at = data.rindex(b"idx1") + 8
    frames = [place for place in range(at, len(data) - 15, 16) if data[place:place + 2] == b"00"]
    for place in frames[2::3]:
        struct.pack_into("<I", data, place + 12, 0)
    struct.pack_into("<II", data, frames[-1] + 8, 0x7F000000, 1000)
    Path(path).write_bytes(data)


if __name__ == "__main__":
    folder = Path(sys.argv[1])
    folder.mkdir(parents=True, exist_ok=True)
    make_sound(folder / SOUND_NAME)
    make_odd(folder / ODD_NAME)
