"""What the tests of earlier mutants took and found: who goes first, and how long anyone may take."""
import json
import pathlib
import threading


class History:
    """{"seconds": {program: [processor, clock]}, "found": {source: {program: [killed, tried]}}} in a file."""

    def __init__(self, path):
        self.path, self.lock = pathlib.Path(path), threading.Lock()
        kept = json.loads(self.path.read_text()) if self.path.exists() else {}
        self.seconds, self.found = kept.get("seconds", {}), kept.get("found", {})

    def save(self):
        with self.lock:
            self.path.write_text(json.dumps({"seconds": self.seconds, "found": self.found}, indent=1, sort_keys=True))

    def note(self, source, program, killed, seconds):
        with self.lock:
            counts = self.found.setdefault(source, {}).setdefault(program, [0, 0])
            counts[0] += killed
            counts[1] += 1

    def note_time(self, program, seconds):
        # The clock of a busy machine says little; at least what the processor took.
        self.seconds[program] = [round(seconds, 2), round(2 * seconds + 5, 2)]
        self.save()

    def in_order(self, source, programs):
        """First who is likeliest to end it for the least time."""
        def price(program):
            killed, tried = self.found.get(source, {}).get(program.name, (0, 0))
            return (self.processor_seconds(program.name) + 0.15) * (tried + 2) / (killed + 1)
        return sorted(programs, key=price)

    def processor_seconds(self, program):
        return self.seconds.get(program, [1.0, 1.0])[0]

    def clock_seconds(self, program):
        # Generous: the machine may be busy, and what waits for ever takes no processor time.
        return 600 + 10 * self.seconds.get(program, [1.0, 30.0])[1]
