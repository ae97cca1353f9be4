"""The picture with which the README begins, docs/report-page.png: the beginning of a clip's report page, as an editor has it.

    readme_picture.py BUILD      makes it anew, with the tool of that Windows build (build/windows-clang), under Wine

The words on it are kept in the picture, so that a test sees when the page has changed.
"""
import os
import shutil
import struct
import subprocess
import sys
import tempfile
import zlib
from pathlib import Path

PICTURE = Path(__file__).resolve().parents[3] / "docs/report-page.png"
WIDTH, HEIGHT = 900, 1560  # of the page; the picture is smaller, as the README shows it on screens of twice the density
SIZE = 620, 1075
KEY = b"Words on the page\0"

# Texts that are wholly on the picture, but for the clip's name and folder; digits do not count.
WORDS = """(height => [...document.querySelectorAll('main *')].filter(e => !e.closest('h1, .path'))
  .filter(e => [...e.childNodes].some(n => n.nodeType === 3 && n.data.trim()))
  .filter(e => { const box = e.getBoundingClientRect(); return box.height > 0 && box.bottom <= height; })
  .map(e => e.textContent.trim().replace(/\\s+/g, ' ').replace(/\\d+/g, '0')).join('\\n'))"""


def words(page, path):
    """Of a report page, as far as it would be on the picture."""
    page.look(WIDTH, "light")
    page.open(path)
    return page.value(f"{WORDS}({HEIGHT})")


def chunk(kind, data):
    return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))


def with_words(png, text):
    """The PNG with a text chunk behind its header, which is 33 bytes long."""
    return png[:33] + chunk(b"tEXt", KEY + text.encode("latin-1", "replace")) + png[33:]


def words_of(png):
    """What with_words put there, or nothing."""
    at = png.find(b"tEXt" + KEY)
    if at < 0:
        return ""
    size = struct.unpack(">I", png[at - 4:at])[0]
    return png[at + 4 + len(KEY):at + 4 + size].decode("latin-1")


def comparable(text):
    return text.encode("latin-1", "replace").decode("latin-1")


def main(build):
    import browser
    import make_report_clips
    wine = [Path(build) / "wine-run"]
    drive = subprocess.run([*wine, "winepath", "-u", "C:\\"], check=True, capture_output=True, text=True).stdout.strip()
    folder = Path(drive, "clips")
    folder.mkdir()  # nobody else's
    try:
        make_report_clips.make_sound(folder / "Interview.avi")
        os.utime(folder / "Interview.avi", (1767225600, 1767225600))
        subprocess.run([*wine, Path(build) / "bin/importer_host.exe", "report", r"C:\clips\Interview.avi"], check=True,
                       stdout=subprocess.DEVNULL)
        with browser.Browser(browser.find()) as page, tempfile.TemporaryDirectory() as place:
            text = words(page, folder / "Interview.avi.html")
            page.screenshot(Path(place, "page.png"), WIDTH, HEIGHT, SIZE[0] / WIDTH)
            PICTURE.write_bytes(with_words(Path(place, "page.png").read_bytes(), text))
    finally:
        shutil.rmtree(folder)


if __name__ == "__main__":
    main(*sys.argv[1:])
