"""Programs of a mutant, which may loop, hang or eat memory: held to a time on the processor, a time by the clock and a size."""
import os
import resource
import signal
import subprocess
import tempfile
import threading

MEMORY = 6 << 30
OUTPUT_KEPT = 20_000
LIVE = set()  # groups of processes that are running


class Ended:
    def __init__(self, code, output, seconds, timed_out):
        self.code, self.output, self.seconds, self.timed_out = code, output, seconds, timed_out


def run(words, folder, environment=None, processor_seconds=600, clock_seconds=1200):
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

        clock = threading.Timer(clock_seconds, end)
        clock.start()
        try:
            _, status, usage = os.wait4(process.pid, 0)
        finally:
            clock.cancel()
            end_group(process.pid)
            LIVE.discard(process.pid)
        process.returncode = os.waitstatus_to_exitcode(status)
        size = output.seek(0, os.SEEK_END)
        output.seek(max(0, size - OUTPUT_KEPT))
        text = output.read().decode(errors="replace")
    seconds = usage.ru_utime + usage.ru_stime
    timed_out = late.is_set() or process.returncode == -signal.SIGXCPU or seconds >= processor_seconds
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
