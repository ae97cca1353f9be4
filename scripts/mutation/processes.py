"""Programs of a mutant, which may loop, hang or eat memory: held to a time on the processor, a time by the clock, a time
without any work and a size."""
import os
import pathlib
import resource
import signal
import subprocess
import tempfile
import threading
import time

MEMORY = 6 << 30
OUTPUT_KEPT = 200_000
# Threads that all sleep for so long, in seconds, wait for one another. What works may take long on a busy machine.
IDLE = 5
CLOCK = 1200
LIVE = set()  # groups of processes that are running


class Ended:
    def __init__(self, code, output, seconds, timed_out):
        self.code, self.output, self.seconds, self.timed_out = code, output, seconds, timed_out


def work_of(session):
    """What the processes of a session have used of the processor so far, and whether any of their threads would like to."""
    ticks, runs = 0, False
    for process in pathlib.Path("/proc").glob("[0-9]*"):
        try:
            fields = (process / "stat").read_text().rpartition(")")[2].split()
            if int(fields[3]) == session:
                ticks += int(fields[11]) + int(fields[12])
                runs = runs or any((task / "stat").read_text().rpartition(")")[2].split()[0] in "RD"
                                   for task in (process / "task").iterdir())
        except (OSError, IndexError):
            continue  # has ended
    return ticks, runs


def watch(session, ended, end, clock_seconds, idle_seconds):
    begin = worked = time.monotonic()
    before = None
    while not ended.wait(1):
        now = time.monotonic()
        ticks, runs = work_of(session)
        if runs or ticks != before:
            worked, before = now, ticks
        if now - begin >= clock_seconds or now - worked >= idle_seconds:
            end()
            return


def run(words, folder, environment=None, processor_seconds=600, clock_seconds=CLOCK, idle_seconds=IDLE):
    """Runs a program and all that it starts; `seconds` of what it gives back are of the processor."""
    def limits():
        resource.setrlimit(resource.RLIMIT_CPU, (processor_seconds, processor_seconds + 5))
        resource.setrlimit(resource.RLIMIT_AS, (MEMORY, MEMORY))
        resource.setrlimit(resource.RLIMIT_CORE, (0, 0))

    with tempfile.TemporaryFile() as output:
        process = subprocess.Popen(words, cwd=folder, env=environment, stdin=subprocess.DEVNULL, stdout=output,
                                   stderr=subprocess.STDOUT, start_new_session=True, preexec_fn=limits)
        LIVE.add(process.pid)
        late = threading.Event()

        def end():
            late.set()
            end_group(process.pid)

        ended = threading.Event()
        watcher = threading.Thread(target=watch, args=(process.pid, ended, end, clock_seconds, idle_seconds))
        watcher.start()
        try:
            _, status, usage = os.wait4(process.pid, 0)
        finally:
            ended.set()
            watcher.join()
            end_group(process.pid)
            LIVE.discard(process.pid)
        process.returncode = os.waitstatus_to_exitcode(status)
        size = output.seek(0, os.SEEK_END)
        output.seek(max(0, size - OUTPUT_KEPT))
        text = output.read().decode(errors="replace")
    seconds = usage.ru_utime + usage.ru_stime
    timed_out = late.is_set() or process.returncode in (-signal.SIGXCPU, -signal.SIGPROF) or seconds >= processor_seconds
    return Ended(process.returncode, text, seconds, timed_out)


def end_group(group):
    try:
        os.killpg(group, signal.SIGKILL)
    except (ProcessLookupError, PermissionError):
        pass


def end_all_when_ended():
    """From here on Ctrl-C and a request to end take the running programs along. Main thread."""
    def end(number, _):
        for group in list(LIVE):
            end_group(group)
        os._exit(128 + number)

    for number in (signal.SIGINT, signal.SIGTERM):
        signal.signal(number, end)
