#!/usr/bin/env python3
"""Measures fuzz targets against each other at equal processor time, from the same seeds, all at once and at low priority.

    measure.py --seconds N --seeds FOLDER --work FOLDER NAME=PROGRAM...

Each program runs until it has used N seconds of processor time, whatever else the machine does meanwhile. Prints for each
how many inputs it ran and which edges and features it reached, at every tenth of that time. A NAME ending in "-bytes" is
run with the fuzzer's own mutator only. FOLDER/NAME has the log, the corpus and what broke the target.
"""

import argparse
import os
import re
import signal
import subprocess
import sys
import time

HERE = os.path.dirname(os.path.realpath(__file__))
STATUS = re.compile(rb"#(\d+)\s+\w+\s+cov: (\d+) ft: (\d+)")


def processor_seconds(pid):
    """User and system time of a running process; None when it has ended."""
    try:
        with open(f"/proc/{pid}/stat", encoding="ascii", errors="replace") as stat:
            fields = stat.read().rpartition(")")[2].split()
    except OSError:
        return None
    return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK") if fields[0] != "Z" else None


class Run:
    def __init__(self, name, program, options):
        self.name = name
        self.folder = os.path.join(options.work, name)
        os.makedirs(os.path.join(self.folder, "corpus"), exist_ok=True)
        self.log = os.path.join(self.folder, "log")
        self.points = []
        environment = dict(os.environ)
        if name.endswith("-bytes"):
            environment["ORVANTIS_FUZZ_BYTES_ONLY"] = "1"
        command = ["nice", "-n", "15", program, "-seed=1", "-max_len=16384", "-timeout=120", "-rss_limit_mb=2500",
                   "-print_final_stats=1", f"-dict={HERE}/avi.dict", f"-artifact_prefix={self.folder}/",
                   os.path.join(self.folder, "corpus"), options.seeds]
        with open(self.log, "wb") as log:
            self.process = subprocess.Popen(command, stdout=log, stderr=log, env=environment)

    def reached(self):
        """Runs, edges and features of the last line of status so far."""
        with open(self.log, "rb") as log:
            found = STATUS.findall(log.read())
        return tuple(int(number) for number in found[-1]) if found else (0, 0, 0)

    def step(self, limit):
        """True until the program has ended."""
        used = processor_seconds(self.process.pid)
        while used is not None and len(self.points) < 10 and used >= limit * (len(self.points) + 1) / 10:
            self.points.append((used, *self.reached()))
        if used is not None and used >= limit:
            self.process.send_signal(signal.SIGINT)
            self.process.wait()
            return False
        if self.process.poll() is not None:
            print(f"{self.name} ended by itself, see {self.log}", file=sys.stderr)
            return False
        return True


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--seconds", type=float, required=True)
    parser.add_argument("--seeds", required=True)
    parser.add_argument("--work", required=True)
    parser.add_argument("programs", nargs="+", metavar="NAME=PROGRAM")
    options = parser.parse_args()
    runs = [Run(*program.partition("=")[::2], options) for program in options.programs]
    going = list(runs)
    while going:
        time.sleep(0.2)
        going = [run for run in going if run.step(options.seconds)]
    for run in runs:
        for used, count, edges, features in run.points:
            print(f"{run.name}: {used:6.0f} s, {count:8d} runs, {edges:5d} edges, {features:6d} features")


if __name__ == "__main__":
    main()
