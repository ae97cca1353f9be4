"""Shows the tool's pages in a browser, the report of a clip and that of a validation, and looks whether they are as they should
be: they fit their window, narrow and wide, are light or dark as the user has it, need nothing from outside, and say what there
is to say.

    check_report.py FOLDER BAD_MODULE IMPORTER_HOST...

BAD_MODULE is an importer that crashes, IMPORTER_HOST the tool with what it takes to start it. Clips, pages and screenshots go to
FOLDER. Ends with 77, which CTest shows as skipped, where there is no Chromium.
"""
import struct
import subprocess
import sys
import unittest
from pathlib import Path

import axe
import browser
import make_report_clips as clips
import readme_picture

WIDTHS = (400, 1400)
A4_WIDTH = 718  # pixels of CSS between margins of a centimetre
VALIDATION = "validation"
PAGES = (clips.SOUND_NAME, clips.ODD_NAME, VALIDATION)
SCHEMES = {"light": range(200, 256), "dark": range(0, 60)}
FOLDER = Path()
BAD_MODULE = ""
TOOL = []

# The lowest ratio of text to ground among all elements that hold text of their own: 4.5 is readable. Also which one.
CONTRAST = """(() => {
  const light = c => { const f = c.map(v => v / 255).map(v => v <= 0.03928 ? v / 12.92 : ((v + 0.055) / 1.055) ** 2.4);
    return 0.2126 * f[0] + 0.7152 * f[1] + 0.0722 * f[2]; };
  const colour = text => text.match(/[\\d.]+/g).map(Number);
  const ground = e => { for (; e; e = e.parentElement) { const c = colour(getComputedStyle(e).backgroundColor);
    if (c.length < 4 || c[3] > 0) return c; } return [255, 255, 255]; };
  let worst = [99, ''];
  for (const e of document.querySelectorAll('body *')) {
    if (![...e.childNodes].some(n => n.nodeType === 3 && n.data.trim())) continue;
    const a = light(colour(getComputedStyle(e).color)), b = light(ground(e));
    const ratio = (Math.max(a, b) + 0.05) / (Math.min(a, b) + 0.05);
    if (ratio < worst[0]) worst = [ratio, e.outerHTML.slice(0, 100)];
  }
  return worst; })()"""

# Elements that reach out of the window, but for those inside of something that scrolls.
OVERFLOWING = """[...document.querySelectorAll('body *')].filter(e => !e.closest('.scroll') || e.matches('.scroll'))
  .filter(e => e.getBoundingClientRect().right > innerWidth + 0.5).map(e => e.outerHTML.slice(0, 80))"""

# Elements that hide a part of what is in them, but for texts that are there to be heard only.
CUT = """[...document.querySelectorAll('body *')].filter(e => getComputedStyle(e).overflow !== 'visible'
  && !e.matches('caption, svg') && (e.scrollWidth > e.clientWidth + 1 || e.scrollHeight > e.clientHeight + 1))
  .map(e => e.outerHTML.slice(0, 80))"""

# Pairs of texts of the same section that cover each other.
OVERLAPPING = """(() => { const boxes = [...document.querySelectorAll('dt, dd, figcaption, h2, h3, .channel > div, li')]
    .map(e => [e, e.getBoundingClientRect()]).filter(([, r]) => r.width && r.height);
  const out = []; for (let i = 0; i < boxes.length; ++i) for (let j = i + 1; j < boxes.length; ++j) {
    const [a, r] = boxes[i], [b, s] = boxes[j]; if (a.contains(b) || b.contains(a)) continue;
    if (r.left < s.right - 1 && s.left < r.right - 1 && r.top < s.bottom - 1 && s.top < r.bottom - 1)
      out.push(a.outerHTML.slice(0, 60) + ' over ' + b.outerHTML.slice(0, 60)); } return out; })()"""


def texts(page, selector):
    return page.value(f"[...document.querySelectorAll({selector!r})].map(e => e.textContent)")


class ReportTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        clips.make_sound(FOLDER / clips.SOUND_NAME)
        clips.make_odd(FOLDER / clips.ODD_NAME)
        for name in (clips.SOUND_NAME, clips.ODD_NAME):
            subprocess.run([*TOOL, "report", FOLDER / name, "--out", FOLDER], check=True, stdout=subprocess.DEVNULL)
        # Two crashes, a resource that is missing, and what passes.
        done = subprocess.run([*TOOL, "validate", BAD_MODULE, "--only", "module,selectors.supports8,files.missing",
                               "--html", FOLDER / (VALIDATION + ".html")], stdout=subprocess.DEVNULL)
        assert done.returncode == 5, done
        cls.page = cls.enterClassContext(browser.Browser(browser.find()))

    def openPage(self, name, width=1400, scheme="light"):
        self.page.look(width, scheme)
        complaints, outside = self.page.open(FOLDER / (name + ".html"))
        self.assertEqual((complaints, outside), ([], []))

    def test_looks_right_in_every_window(self):
        for number, name in enumerate(PAGES, 1):
            for width in WIDTHS:
                for scheme, levels in SCHEMES.items():
                    with self.subTest(name=name, width=width, scheme=scheme):
                        self.openPage(name, width, scheme)
                        self.page.value("document.querySelectorAll('details').forEach(d => d.open = true)")
                        self.page.screenshot(FOLDER / f"page{number}-{scheme}-{width}.png")
                        self.assertEqual(self.page.value("innerWidth"), width)
                        self.assertLessEqual(self.page.value("document.documentElement.scrollWidth"), width)
                        self.assertEqual(self.page.value(OVERFLOWING), [])
                        self.assertEqual(self.page.value(OVERLAPPING), [])
                        ground = self.page.value("getComputedStyle(document.body).backgroundColor")
                        for level in ground.strip("rgb()").split(","):
                            self.assertIn(int(level), levels, ground)
                        ratio, where = self.page.value(CONTRAST)
                        self.assertGreaterEqual(ratio, 4.5, where)

    def test_nothing_is_out_of_reach_for_anybody(self):
        checker = axe.script(FOLDER.parent.parent / "axe-core")
        if checker is None:
            self.skipTest("there is no npm to fetch axe-core with")
        for name in PAGES:
            for width in WIDTHS:
                for scheme in SCHEMES:
                    with self.subTest(name=name, width=width, scheme=scheme):
                        self.openPage(name, width, scheme)
                        self.page.value("document.querySelectorAll('details').forEach(d => d.open = true)")
                        result = self.page.axe(checker)
                        self.assertEqual(result["found"], [])
                        self.assertGreater(result["checked"], 15, "the checker has looked")

    def test_paper_shows_everything(self):
        for number, name in enumerate(PAGES, 1):
            with self.subTest(name=name):
                self.openPage(name)
                self.page.look_printed(A4_WIDTH)
                self.page.screenshot(FOLDER / f"page{number}-print.png")
                self.assertEqual(self.page.value("getComputedStyle(document.body).backgroundColor"), "rgb(255, 255, 255)")
                self.assertLessEqual(self.page.value("document.documentElement.scrollWidth"), A4_WIDTH)
                self.assertEqual(self.page.value(CUT), [])
                self.assertEqual(self.page.value(OVERFLOWING.replace("!e.closest('.scroll')", "true")), [])
                ratio, where = self.page.value(CONTRAST)
                self.assertGreaterEqual(ratio, 4.5, where)
                self.assertGreater(self.page.value("document.querySelectorAll('pre').length"), 0)
                self.assertEqual(self.page.value("[...document.querySelectorAll('pre')].filter("
                                                 "e => !e.checkVisibility() || e.clientHeight < 10).length"), 0)
                # The log is folded on the screen only.
                self.assertEqual(self.page.value("[...document.querySelectorAll('details pre')].filter("
                                                 "e => e.clientHeight < 100).length"), 0)

    def test_every_picture_has_a_name_of_its_own(self):
        self.openPage(clips.SOUND_NAME)
        names = self.page.value("[...document.images].map(i => i.alt)"
                                ".concat([...document.querySelectorAll('svg')].map(e => e.ariaLabel))")
        self.assertEqual(len(names), 24 + 6 + 1)
        self.assertEqual(len(set(names)), len(names), names)
        self.assertIn("frame 0 at 00:00:00.000", names)
        self.assertIn("Sound track 1, waveform of channel 2, Front right", names)

    def test_a_sound_clip_is_told_at_a_glance(self):
        self.openPage(clips.SOUND_NAME)
        self.assertEqual(texts(self.page, "h1"), [clips.SOUND_NAME])
        self.assertEqual(texts(self.page, "main > .notes li"), ["Nothing unusual was found."])
        self.assertEqual(texts(self.page, ".streams td:nth-child(3)"),
                         ["O8Y2", "PCM, 16 bits, 6 channels, 48000 Hz"])
        self.assertEqual([text.split("peak")[0].split("silent")[0] for text in texts(self.page, ".channel:not(.times) > div")],
                         ["1 Front left", "2 Front right", "3 Front center", "4 Low frequency", "5 Back left",
                          "6 Back right"])
        self.assertEqual(self.page.value("document.images.length"), 24)
        self.assertEqual(self.page.value("[...document.images].filter(i => i.naturalWidth !== 320).length"), 0)
        # Every drawing is there and has a size; the silent channel is a line.
        heights = self.page.value("[...document.querySelectorAll('svg .sound')].map(e => e.getBBox().height)")
        self.assertEqual(len(heights), 6)
        self.assertLess(heights[4], 1)
        self.assertGreater(heights[3], 60)
        self.assertGreater(self.page.value("document.querySelector('svg.rate').getBoundingClientRect().height"), 100)
        self.assertEqual(texts(self.page, "h2")[-2:],
                         ["Diagnostic log of this run, no failures", "How this page was made"])
        self.assertFalse(self.page.value("document.querySelector('details').open"), "it is folded")

    def test_picture_in_the_readme_is_of_this_page(self):
        png = readme_picture.PICTURE.read_bytes()
        shown = readme_picture.comparable(readme_picture.words(self.page, FOLDER / (clips.SOUND_NAME + ".html")))
        self.assertGreater(len(shown.splitlines()), 30)
        self.assertEqual(readme_picture.words_of(png), shown, "make it anew: tests/tool/browser/readme_picture.py build/windows-clang")
        self.assertEqual(png[16:24], struct.pack(">II", *readme_picture.SIZE))

    def test_what_an_importer_broke_is_told_first(self):
        self.openPage(VALIDATION)
        self.assertEqual(texts(self.page, "h1"), [Path(BAD_MODULE).name])
        [result] = texts(self.page, "main > .notes li.bad")
        self.assertRegex(result, r"^FAILURE: \d+ checks: .*[23] crashed")
        told = texts(self.page, "h2")
        self.assertEqual(told[-2:], ["Checks", "How this page was made"])
        self.assertLessEqual({"selectors.supports8", "files.missing"}, set(told))
        # The calls that led to a crash, and the command that does it again.
        blocks = texts(self.page, "pre")
        self.assertTrue(any("bad_module.prm+0x" in text for text in blocks), blocks)
        self.assertTrue(any("--only files.missing --seed 1" in text for text in blocks), blocks)
        rows = texts(self.page, "tbody tr")
        self.assertGreater(len(rows), 10)
        self.assertIn("module.resourcefailedThe module holds a resource of type IMPT with the number 1000.", rows)

    def test_every_oddity_of_a_clip_is_told(self):
        self.openPage(clips.ODD_NAME)
        self.assertEqual(texts(self.page, "h1"), [clips.ODD_NAME])
        notes = "\n".join(texts(self.page, "main > .notes li"))
        for part in ("its OpenDML index is damaged", "19 of 60 frames hold no data", "1 of 60 chunks lie behind the end",
                     "frame rate was adjusted: the file tells 2997/100", "the sound is compressed",
                     "could not be delivered"):
            self.assertIn(part, notes)
        self.assertEqual(texts(self.page, ".streams td:nth-child(4)"), ["idx1 (OpenDML refused)", "idx1"])
        self.assertEqual(len(texts(self.page, ".lost")), 1)
        self.assertIn("red: frames without data", self.page.value("document.body.textContent"))
        # What failed is told ahead of the log, and marked in it.
        for selector in ("section .notes .bad", "pre .bad"):
            failures = texts(self.page, selector)
            self.assertTrue(any("Failed to read frame from AVI" in text for text in failures), failures)


if __name__ == "__main__":
    FOLDER, BAD_MODULE, TOOL = Path(sys.argv[1]).resolve(), sys.argv[2], sys.argv[3:]
    if browser.find() is None:
        print("There is no Chromium here (ORVANTIS_EXTRA_PACKAGES=chromium scripts/install-packages.sh): skipped")
        sys.exit(77)
    FOLDER.mkdir(parents=True, exist_ok=True)
    unittest.main(argv=sys.argv[:1], verbosity=2)
