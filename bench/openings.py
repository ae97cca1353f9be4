"""First openings of clips, each in a process of its own: ours, the peer's, plain reads, and two other readers."""
import os
import shutil
import statistics
import subprocess
import time

RUNS = 7
CLIPS = (("OpenDML", "opendml-1000000.avi", "opendml-1.avi"), ("`idx1`", "idx1-1000000.avi", "idx1-1.avi"))
FRAMES = "1000000"
# Whole programs: the time of one that identifies a clip of a million frames, less that for a clip of one frame.
READERS = (("mkvmerge", ["mkvmerge", "--identify"]), ("gst-discoverer", ["gst-discoverer-1.0"]))


def printed(command):
    """The numbers that a program prints."""
    environment = dict(os.environ, ORVANTIS_STANDIN_DECODE="null")
    output = subprocess.run([str(part) for part in command], env=environment, check=True, capture_output=True, text=True)
    return [float(word) for word in output.stdout.split()]


def whole_process(command, clip):
    start = time.perf_counter()
    # gst-discoverer says by its status that it has no decoder for the clip.
    subprocess.run([*command, str(clip)], check=False, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    return time.perf_counter() - start


def in_turns(measures):
    """{name: function giving seconds} to {name: list of seconds}; the first round is not counted."""
    results = {name: [] for name in measures}
    for turn in range(RUNS + 1):
        for name, measure in measures.items():
            seconds = measure()
            if turn > 0:
                results[name].append(seconds)
    return results


def compare(results, ours, other):
    """Quotient of the medians, other over ours, and the quartiles of the rounds' quotients."""
    quotients = sorted(b / a for a, b in zip(results[ours], results[other]))
    quartiles = statistics.quantiles(quotients, n=4)
    return {"ratio": statistics.median(results[other]) / statistics.median(results[ours]),
            "ratio_q1": quartiles[0], "ratio_q3": quartiles[2],
            "ours_ms": statistics.median(results[ours]) * 1e3, "other_ms": statistics.median(results[other]) * 1e3}


def absent_readers():
    return [name for name, command in READERS if shutil.which(command[0]) is None]


def measure_native(build, files):
    """{kind: {name of the other: comparison}} for OpenDML and idx1."""
    once, module = build / "bin/opening_once", build / "bin/ImporterOrvantis.prm"
    figures = {}
    for kind, long_clip, short_clip in CLIPS:
        clip = files / long_clip
        measures = {
            "ours": lambda: printed([once, "ours", module, clip])[0],
            "peer": lambda: printed([build / "bin/peer_once", clip, FRAMES])[0],
            "read": lambda: printed([once, "read", clip, 0])[0],
            "one buffer": lambda: printed([once, "read", clip, 65536])[0],
        }
        for name, command in READERS:
            if shutil.which(command[0]) is not None:
                measures[name] = lambda command=command: (
                    whole_process(command, clip) - whole_process(command, files / short_clip))
        results = in_turns(measures)
        figures[kind] = {name: compare(results, "ours", name) for name in measures if name != "ours"}
    return figures


def measure_windows(build, files):
    once = [build / "wine-run", build / "bin/opening_once.exe"]
    module = build / "bin/ImporterOrvantis.prm"
    figures = {}
    for kind, long_clip, _ in CLIPS:
        clip = (files / long_clip).resolve()
        results = in_turns({"ours": lambda: printed([*once, "ours", module, clip])[0],
                            "read": lambda: printed([*once, "read", clip, 0])[0]})
        figures[kind] = compare(results, "ours", "read")
    return figures


def measure_project(build, files, count=1000):
    """So many clips of 20,000 frames, all of them open: seconds and bytes of memory in all."""
    once, module = build / "bin/opening_once", build / "bin/ImporterOrvantis.prm"
    runs = [printed([once, "keep", module, files / "opendml-20000.avi", count]) for _ in range(3)]
    return {"count": count, "seconds": statistics.median(run[0] for run in runs),
            "bytes": statistics.median(run[1] for run in runs)}
