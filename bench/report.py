#!/usr/bin/env python3
"""Runs the benchmarks of two builds, judges their figures and writes the page about them.

Called by bench.sh. Prints a table and, last, "N of M ratios reached"; writes DOCS/performance.md from the template
beside this script and DOCS/performance.svg.
"""
import argparse
import json
import os
import pathlib
import subprocess
import sys

import openings
from plot import write_plot

FRAMES = (10_000, 100_000, 1_000_000, 10_000_000)


class Row:
    """One comparison: what was measured, what it was measured against, and whether the ratio was reached."""

    def __init__(self, what, against, figure, spread, reach, reached, key, progress):
        self.what = what
        self.against = against
        self.figure = figure
        self.spread = spread
        self.reach = reach
        self.reached = reached
        self.key = key  # of the reason in REASONS
        self.progress = progress  # figure over reach, 1 and more is reached; None where that is no quotient


# What stands in the way where a figure is not reached. Shown for missed figures only.
REASONS = {
    "open": "Nearly all of the time goes into page faults for the memory of the list itself, 8 bytes a chunk; the reading "
            "and filling in between takes less than a fifth.",
    "list": "A chunk's place is two loads and an addition instead of one load; what is left is where a module and its memory "
            "happen to lie.",
    "growth": "Long clips take their memory from ever further down the system's stock of free pages.",
    "read": "Beyond the plain read a frame costs a fraction of a microsecond; what is left is the noise of reading "
            "megabytes while other programs use the same memory.",
    "call": "Everything but the read and the host's own functions counts, the codec's checks of its arguments included.",
    "count": "A lock is passed twice in every call, and the importer looked up among all that the host holds.",
    "audio": "The requests and the plain reads do the same system calls; what differs is the state of the caches.",
    "deinterleave": "A copy within the caches moves whole lines by one instruction; splitting channels with the "
                    "instructions that every 64-bit processor has takes a load, two shuffles and a store for 16 bytes.",
    "async": "The longer of the two steps alone knows nothing of the other, which takes its share of the memory and of the "
             "processors: the bare pipeline below shows what is left for a plug-in to lose. {round_robin}",
    "latency": "The steps themselves are timed by a sleep and a busy loop; what else the machine runs at that moment lengthens "
               "single ones.",
    "order": "Turns are handed out in the order in which requests are made; a frame that overtook another is a defect.",
    "rate": "Now and then the system puts a thread that it wakes, to take a frame or to go on with one, behind another that is busy "
            "for a whole step; a tenth of the time is too little to make good for that soon. A pipeline of two threads wakes fewer.",
    "clips": "Sixteen host threads and thirty-two steps share the processors, and each clip has buffers of its own, which the "
             "caches do not hold.",
    "pipeline": "Handing a frame to the host and taking the next request costs two changes of threads that the bare pipeline "
                "does not have, while both processors are busy.",
    "log": "The switch is tested a few times in every call.",
}


def spread(figures, scale=1.0, digits=2):
    return f"{figures['ratio_q1'] * scale:.{digits}f} to {figures['ratio_q3'] * scale:.{digits}f}"


def run_native(build, files, results, name, *arguments, before=()):
    output = results / f"{name}.json"
    environment = dict(os.environ, ORVANTIS_BENCH_FILES=str(files.resolve()))
    subprocess.run([*before, build / "bin/orvantis_bench", *arguments, f"--benchmark_out={output}",
                    "--benchmark_out_format=json"],
                   env=environment, check=True, stdout=open(results / f"{name}.log", "w"), stderr=subprocess.STDOUT)
    report = json.loads(output.read_text())
    figures = {}
    for benchmark in report["benchmarks"]:
        if benchmark.get("error_occurred"):
            sys.exit(f"{benchmark['name']}: {benchmark.get('error_message')}")
        figures[benchmark["name"].split("/")[0]] = benchmark
    return report["context"], figures


def run_windows(build, files, results, what, clip, delay=0):
    output = results / f"windows-{what}-{clip}.json"
    environment = dict(os.environ, ORVANTIS_STANDIN_DECODE="null")
    if delay:
        environment["ORVANTIS_STANDIN_DELAY_US"] = str(delay)
    subprocess.run([build / "wine-run", build / "bin/importer_host.exe", "bench", "--what", what, "--runs", "7",
                    "--decode-us", str(delay), "--json", "--out", output.resolve(), (files / clip).resolve()],
                   env=environment, check=True, stdout=open(results / f"windows-{what}-{clip}.log", "w"),
                   stderr=subprocess.STDOUT)
    figures = json.loads(output.read_text())
    if "async_bare" in figures:
        figures[what]["bare"] = figures["async_bare"]
    return figures[what]


def opening_rows(native, first):
    rows = []
    for key, what in (("open_opendml", "open and describe 1,000,000 frames, OpenDML"),
                      ("open_idx1", "open and describe 1,000,000 frames, `idx1`")):
        figures = native[key]
        rows.append(Row(what, f"libavformat: {figures['peer_ns'] / 1e6:.1f} ms against {figures['ours_ns'] / 1e6:.1f} ms",
                        f"{figures['ratio']:.1f} times faster", spread(figures, digits=1), "at least 5",
                        figures["ratio"] >= 5, "open", figures["ratio"] / 5))
    figures = native["refuse_foreign"]
    # One window on the start of the file holds all headers. Nothing else is needed to refuse the format.
    reads, kibibytes = int(figures["reads"]), figures["bytes"] / 1024
    rows.append(Row("refuse a foreign clip of 1,000,000 frames", "the one read that holds its headers",
                    f"{reads} read of {kibibytes:.0f} KiB" if reads == 1 else f"{reads} reads",
                    f"{figures['ours_ns'] / 1e3:.0f} us", "nothing more", reads == 1 and kibibytes <= 64, "open", None))
    figures = first["open_growth"]
    slopes = [figures[f"ns_per_frame_to_{frames}"] for frames in FRAMES[1:]]
    rows.append(Row("open and describe 10 thousand to 10 million frames", "a straight line",
                    f"{figures['times']:.2f} between its steepest and its flattest part",
                    ", ".join(f"{slope:.1f}" for slope in slopes) + " ns for each further frame", "at most 1.2",
                    figures["times"] <= 1.2, "growth", 1.2 / figures["times"]))
    for key, what in (("memory_opendml", "memory of an open clip, OpenDML"), ("memory_idx1", "memory of an open clip, `idx1`")):
        each = native[key]["bytes_per_chunk"]
        rows.append(Row(what, "its chunks, 2 for each frame", f"{each:.2f} bytes a chunk", "", "at most 9", each <= 9, "open",
                        9 / each))
    return rows


def first_opening_rows(figures):
    rows = []
    for kind, least in (("OpenDML", 15), ("`idx1`", 10)):
        peer, read = figures[kind]["peer"], figures[kind]["read"]
        what = f"first opening in a new process, {kind}"
        rows.append(Row(what, f"libavformat: {peer['other_ms']:.1f} ms against {peer['ours_ms']:.1f} ms",
                        f"{peer['ratio']:.1f} times faster", spread(peer, digits=1), f"at least {least}",
                        peer["ratio"] >= least, "open", peer["ratio"] / least))
        rows.append(plain_read_row(what, read))
        for name, _ in openings.READERS:
            if name in figures[kind]:
                other = figures[kind][name]
                rows.append(Row(what, f"{name}, less its time for one frame: {other['other_ms']:.1f} ms",
                                f"{other['ratio']:.1f} times faster", spread(other, digits=1), "faster", other["ratio"] > 1,
                                "open", other["ratio"]))
    return rows


def plain_read_row(what, read):
    times = 1 / read["ratio"]
    return Row(what, f"plain reads of the index bytes: {read['other_ms']:.1f} ms against {read['ours_ms']:.1f} ms",
               f"{times:.2f} times", f"{1 / read['ratio_q3']:.2f} to {1 / read['ratio_q1']:.2f}", "at most 2", times <= 2,
               "open", 2 / times)


def list_rows(native):
    rows = []
    for key, what in (("list_frame_call", "one frame call"), ("list_second_of_sound", "one second of sound"),
                      ("list_random_position", "a random position among 1,000,000 chunks")):
        figures = native[key]
        # Slower is what is slower in more than three of four rounds.
        rows.append(Row(f"{what}, compact lists", f"the same with plain lists: {figures['peer_ns']:.0f} ns against "
                        f"{figures['ours_ns']:.0f} ns", f"{figures['ratio']:.3f} of the speed", spread(figures, digits=3),
                        "not slower", figures["ratio_q3"] >= 1, "list", None))
    return rows


def frame_rows(native):
    figures = native["read_frames"]
    rows = [Row("frames in order, 2 MiB each, file to codec", "plain reads into one warm buffer",
                f"{figures['ratio']:.3f} of the throughput", spread(figures, digits=3), "at least 0.95",
                figures["ratio"] >= 0.95, "read", figures["ratio"] / 0.95)]
    figures = native["frame_call"]
    rows.append(Row("`imGetSourceVideo`, codec does nothing", "the read and the host's functions",
                    f"{figures['beyond_ns'] / 1e3:.2f} us beyond",
                    f"{figures['beyond_q1'] / 1e3:.2f} to {figures['beyond_q3'] / 1e3:.2f}", "at most 2 us",
                    figures["beyond_ns"] <= 2000, "call", 2000 / max(figures["beyond_ns"], 1)))
    rows.append(Row("`imGetSourceVideo`, steady state", "", f"{int(figures['allocations'])} allocations", "", "0",
                    figures["allocations"] == 0, "call", None))
    figures = native["counted_call"]
    # The dearest of the three: one importer, a thousand of them, two threads with one each.
    cost = max(figures[f"{case}_ns"] for case in ("one", "thousand", "threads"))
    rows.append(Row("counting a host call on its importer", "50 ns",
                    f"{cost:.0f} ns", f"{figures['one_ns']:.0f}, {figures['thousand_ns']:.0f} among 1000 files, "
                    f"{figures['threads_ns']:.0f} with two threads", "at most 50 ns", cost <= 50, "count", 50 / cost))
    figures = native["play_ahead"]
    rows.append(Row("frames ahead of need, read and decode equally long", "the longer of the two",
                    f"{figures['times']:.3f} times", f"{1 / figures['ratio_q3']:.3f} to {1 / figures['ratio_q1']:.3f}",
                    "at most 1.05", figures["times"] <= 1.05, "async", 1.05 / figures["times"]))
    return rows


def async_rows(native):
    rows = []
    for key, what in (("latency_equal", "decode = read"), ("latency_four", "decode = 4 x read")):
        figures = native[key]
        one = f"one read and one decode, {figures['one_ms']:.2f} ms"
        rows.append(Row(f"first frame after a flush, 7 in flight, {what}", one,
                        f"{figures['first_p99']:.3f} times (99 of 100)",
                        f"half {figures['first_p50']:.3f}, largest {figures['first_max']:.3f}; "
                        f"synchronous ones {figures['one_p99']:.3f}", "at most 1.2",
                        figures["first_p99"] <= 1.2, "latency", 1.2 / figures["first_p99"]))
        rows.append(Row(f"aiFlush with 7 pending, {what}", one, f"{figures['flush_p99']:.3f} times (99 of 100)",
                        f"half {figures['flush_p50']:.3f}, largest {figures['flush_max']:.3f}", "at most 1",
                        figures["flush_p99"] <= 1, "latency", 1 / figures["flush_p99"]))
        rows.append(Row(f"aiGetFrame while playing, 7 in flight, {what}", one,
                        f"{figures['steady_ms_p99']:.2f} ms (99 of 100)",
                        f"half {figures['steady_ms_p50']:.2f}, largest {figures['steady_ms_max']:.2f}", "–", None,
                        "latency", None))
    figures = native["overtaking"]
    rows.append(Row("frames that overtook an earlier one", f"{int(figures['frames']):,} frames, 7 in flight",
                    f"{int(figures['overtook'])}", "", "0", figures["overtook"] == 0, "order", None))
    figures = native["fixed_rate"]
    rows.append(Row("late frames at a fixed rate, steps of 90 % of a tick",
                    f"of {int(figures['frames']):,} frames; a bare pipeline of two threads: {int(figures['bare_late'])}, the latest "
                    f"by {figures['bare_latest_ms']:.2f} ms", f"{int(figures['late'])}",
                    f"the latest by {figures['latest_ms']:.2f} ms", "no more than the pipeline",
                    figures["late"] <= figures["bare_late"], "rate", None))
    figures = native["clips_at_once"]
    rows.append(Row("16 clips at once", "one clip", f"{figures['ratio']:.3f} of the throughput",
                    spread(figures, digits=3), "at least 0.95", figures["ratio"] >= 0.95, "clips", figures["ratio"] / 0.95))
    for key, what in (("pipeline_cache", "reads from the cache"), ("pipeline_device", "reads that wait for a device")):
        rows.append(pipeline_row(native[key], f"frames ahead of need, {what}",
                                 f"; itself {native[key]['bare_times']:.3f} times the longer of its steps"))
    figures = native["idle_clips"]
    rows.append(Row("memory of an idle clip", "1,000 clips opened, described, quieted", f"{figures['bytes']:,.0f} bytes", "",
                    "–", None, "open", None))
    return rows


def pipeline_row(figures, what, remark=""):
    quotient = figures.get("turn_by_turn", figures["ratio"])
    return Row(what, f"a bare pipeline of two threads{remark}", f"{quotient:.3f} of the throughput",
               spread(figures, digits=3), "at least 0.98", quotient >= 0.98, "pipeline", quotient / 0.98)


def audio_rows(native):
    rows = []
    for key, what in (("audio_16x2", "sound, 16-bit stereo, one-second requests"),
                      ("audio_float_8", "sound, float of 8 channels, one-second requests")):
        figures = native[key]
        rows.append(Row(what, "plain reads and one copy", f"{figures['ratio']:.2f} of the throughput", spread(figures),
                        "at least 0.8", figures["ratio"] >= 0.8, "audio", figures["ratio"] / 0.8))
    for channels in (2, 8):
        figures = native[f"deinterleave_{channels}"]
        rows.append(Row(f"splitting float samples of {channels} channels", "one copy of the bytes",
                        f"{figures['ratio']:.2f} of the throughput", spread(figures), "at least 0.7",
                        figures["ratio"] >= 0.7, "deinterleave", figures["ratio"] / 0.7))
    return rows


def log_row(native):
    figures = native["log_off"]
    # Measurable is what exceeds the largest difference between copies of the same plug-in.
    reached = figures["difference"] <= figures["noise"]
    return Row("`imGetSourceVideo`, log switched off",
               f"a plug-in without a single call of the log: {figures['without_ns']:.0f} ns against "
               f"{figures['with_ns']:.0f} ns",
               f"{figures['difference'] * 100:+.1f} %", f"copies of one plug-in differ by {figures['noise'] * 100:.1f} %",
               "no measurable difference", reached, "log", None)


def windows_rows(figures):
    frames, calls, stereo, surround, ahead = figures
    # The time of a call beyond its limit, from the medians.
    beyond = calls["ours_us"] - calls["limit_us"]
    times = 1 / ahead["ratio"]
    return [
        Row("frames in order, 2 MiB each", "plain reads", f"{frames['ratio']:.3f} of the throughput",
            spread(frames, digits=3), "at least 0.95", frames["ratio"] >= 0.95, "read", frames["ratio"] / 0.95),
        Row("`imGetSourceVideo`, codec does nothing", "the read and the host's functions", f"{beyond:.2f} us beyond",
            "", "at most 2 us", beyond <= 2, "call", None),
        Row("sound, 16-bit stereo", "plain reads and one copy", f"{stereo['ratio']:.2f} of the throughput",
            spread(stereo), "at least 0.8", stereo["ratio"] >= 0.8, "audio", stereo["ratio"] / 0.8),
        Row("sound, float of 8 channels", "plain reads and one copy", f"{surround['ratio']:.2f} of the throughput",
            spread(surround), "at least 0.8", surround["ratio"] >= 0.8, "audio", surround["ratio"] / 0.8),
        Row("frames ahead of need", "the longer of read and decode", f"{times:.3f} times",
            f"{1 / ahead['ratio_q3']:.3f} to {1 / ahead['ratio_q1']:.3f}", "at most 1.05", times <= 1.05, "async",
            1.05 / times),
        pipeline_row(ahead["bare"], "frames ahead of need"),
    ]


def round_robin_text(build, files, results):
    """The same playback where an idle processor takes whichever thread waits; needs the right to ask for that."""
    policy = ("chrt", "--rr", "1")
    try:
        subprocess.run([*policy, "true"], check=True, stderr=subprocess.DEVNULL)
    except (OSError, subprocess.CalledProcessError):
        return ""
    _, figures = run_native(build, files, results, "round-robin", "--benchmark_filter=play_ahead", before=policy)
    return (f"Threads scheduled round robin, where an idle processor takes whichever waits, need {figures['play_ahead']['times']:.3f} "
            "times on the same machine (native build; for comparison only).")


def measure_windows(build, files, results):
    frames = run_windows(build, files, results, "frames", "chunks-2m.avi")
    calls = run_windows(build, files, results, "calls", "calls.avi")
    stereo = run_windows(build, files, results, "audio", "sound-16x2.avi")
    surround = run_windows(build, files, results, "audio", "sound-float-8.avi")
    # A decode as long as the read of a frame, both measured in the same run.
    reads = run_windows(build, files, results, "async", "ahead.avi")
    delay = max(1, round(reads["limit_us"]))
    ahead = run_windows(build, files, results, "async", "ahead.avi", delay)
    return frames, calls, stereo, surround, ahead


def machine():
    text = pathlib.Path("/proc/cpuinfo").read_text()
    names = [line.split(":", 1)[1].strip() for line in text.splitlines() if line.startswith("model name")]
    kibibytes = int(pathlib.Path("/proc/meminfo").read_text().split()[1])
    load = os.getloadavg()[0]
    return (f"{os.cpu_count()} processors ({names[0] if names else 'unknown'}), {kibibytes / 2**20:.0f} GiB of memory, "
            f"Linux; load {load:.1f} when the run began")


# None: a figure that has nothing to reach.
MARKS = {True: "yes", False: "**no**", None: "–"}


def markdown_table(rows):
    lines = ["| What | Measured against | Figure | Spread | Reach | Reached |", "|---|---|---|---|---|---|"]
    for row in rows:
        lines.append(f"| {row.what} | {row.against or '–'} | {row.figure} | {row.spread or '–'} | {row.reach} | "
                     f"{MARKS[row.reached]} |")
    return "\n".join(lines)


def missed_text(rows, round_robin):
    missed = [row for row in rows if row.reached is False]
    if not missed:
        return "Every ratio was reached in this run."
    lines = []
    for key in dict.fromkeys(row.key for row in missed):
        what = "; ".join(f"{row.what} ({row.figure}, {row.reach})" for row in missed if row.key == key)
        lines.append(f"- {what}: {REASONS[key].format(round_robin=round_robin).strip()}")
    return "\n".join(lines)


def first_opening_text(figures):
    parts = []
    for kind in figures:
        once = figures[kind]["one buffer"]
        parts.append(f"{kind} {once['other_ms']:.1f} ms against {once['ours_ms']:.1f} ms of ours")
    absent = openings.absent_readers()
    skipped = f" Not installed, so not compared: {', '.join(absent)}." if absent else ""
    return "; ".join(parts) + "." + skipped


def project_text(project):
    count = project["count"]
    return (f"{count} clips of 20,000 frames with sound, all of them open, take {project['bytes'] / 1e6:.0f} MB of memory and "
            f"{project['seconds']:.2f} s to open: {project['bytes'] / count / 1e3:.0f} kB and "
            f"{project['seconds'] / count * 1e3:.2f} ms each.")


PRINTED = {True: "ok  ", False: "MISS", None: "    "}


def print_table(rows):
    width = max(len(row.what) for row in rows)
    figure_width = max(len(row.figure) for row in rows)
    for row in rows:
        print(f"{PRINTED[row.reached]}  {row.what:{width}}  {row.figure:{figure_width}}  "
              f"reach: {row.reach}   [{row.spread}]")


def main():
    parser = argparse.ArgumentParser()
    for name in ("native", "windows", "files", "results", "docs"):
        parser.add_argument(f"--{name}", type=pathlib.Path, required=True)
    options = parser.parse_args()

    environment = machine()
    print("== measure: first openings, each in a process of its own")
    figures = openings.measure_native(options.native, options.files)
    for name in openings.absent_readers():
        print(f"SKIPPED: {name} is not installed")
    project = openings.measure_project(options.native, options.files)
    print("== measure: growth")
    _, first = run_native(options.native, options.files, options.results, "first", "--first")
    print("== measure: native")
    context, native = run_native(options.native, options.files, options.results, "native")
    round_robin = round_robin_text(options.native, options.files, options.results)
    print("== measure: the Windows plug-in under Wine")
    windows = measure_windows(options.windows, options.files, options.results)
    windows_first = openings.measure_windows(options.windows, options.files)

    native_rows = (first_opening_rows(figures) + opening_rows(native, first) + frame_rows(native) + async_rows(native) +
                    audio_rows(native) + list_rows(native) + [log_row(native)])
    wine_rows = [plain_read_row(f"first opening in a new process, {kind}", read) for kind, read in windows_first.items()]
    wine_rows += windows_rows(windows)
    rows = native_rows + wine_rows
    judged = [row.reached for row in rows if row.reached is not None]
    summary = f"{sum(judged)} of {len(judged)} ratios reached"

    growth = first["open_growth"]
    times = [(frames, growth[f"us_{frames}"] / 1e3) for frames in FRAMES]
    peers = [(1_000_000, figures["OpenDML"]["peer"]["other_ms"])]
    write_plot(options.docs / "performance.svg", times, peers,
               [(row.what.replace("`", ""), row.progress, row.reached) for row in native_rows if row.progress])

    template = (pathlib.Path(__file__).parent / "performance.md.in").read_text()
    values = {
        "machine": environment, "peer": context["peer"], "native_table": markdown_table(native_rows),
        "wine_table": markdown_table(wine_rows), "summary": summary, "missed": missed_text(rows, round_robin),
        "one_buffer": first_opening_text(figures), "project": project_text(project),
        "growth_us": f"{growth['us_10000']:.0f}",
    }
    for name, value in values.items():
        template = template.replace("{{" + name + "}}", value)
    (options.docs / "performance.md").write_text(template)

    print(f"\nNative ({environment}):")
    print_table(native_rows)
    print("\nThe Windows plug-in under Wine:")
    print_table(wine_rows)
    print(f"\nWritten to {options.docs}/performance.md")
    print(summary)


if __name__ == "__main__":
    main()
