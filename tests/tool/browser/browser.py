"""A headless Chromium driven over its DevTools pipe: one start for all pages, no packages needed."""
import base64
import json
import os
import pathlib
import shutil
import subprocess
import tempfile
import time

FLAGS = [
    "--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run", "--hide-scrollbars",
    "--disable-background-networking", "--disable-component-update", "--disable-sync", "--remote-debugging-pipe",
]


def find():
    """The browser's program, or None."""
    return shutil.which("chromium") or shutil.which("chromium-browser")


class Browser:
    """A context manager. Every call waits for its answer, at most `timeout` seconds."""

    def __init__(self, program, timeout=60):
        self.timeout = timeout
        self.profile = tempfile.mkdtemp(prefix="report-browser-")
        from_us, self.to_browser = os.pipe()
        self.from_browser, to_us = os.pipe()

        def places():  # the browser reads its commands from 3 and answers on 4
            os.dup2(from_us, 100)
            os.dup2(to_us, 101)
            os.dup2(100, 3)
            os.dup2(101, 4)

        self.process = subprocess.Popen(
            [program, *FLAGS, f"--user-data-dir={self.profile}", "about:blank"], preexec_fn=places,
            close_fds=False, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        os.close(from_us)
        os.close(to_us)
        os.set_blocking(self.from_browser, False)
        self.rest = b""
        self.number = 0
        self.events = []
        self.session = None

    def __enter__(self):
        target = self.call("Target.createTarget", url="about:blank")["targetId"]
        self.session = self.call("Target.attachToTarget", targetId=target, flatten=True)["sessionId"]
        for domain in ("Page", "Runtime", "Log", "Network"):
            self.call(domain + ".enable")
        return self

    def __exit__(self, *_):
        self.process.kill()
        self.process.wait()
        os.close(self.to_browser)
        os.close(self.from_browser)
        shutil.rmtree(self.profile, ignore_errors=True)

    def message(self):
        end = time.monotonic() + self.timeout
        while b"\0" not in self.rest:
            try:
                block = os.read(self.from_browser, 1 << 20)
                if not block:
                    raise RuntimeError("the browser has ended")
                self.rest += block
            except BlockingIOError:
                if time.monotonic() > end:
                    raise RuntimeError("the browser does not answer") from None
                time.sleep(0.005)
        text, self.rest = self.rest.split(b"\0", 1)
        return json.loads(text)

    def call(self, method, **parameters):
        self.number += 1
        request = {"id": self.number, "method": method, "params": parameters}
        if self.session:
            request["sessionId"] = self.session
        os.write(self.to_browser, json.dumps(request).encode() + b"\0")
        while True:
            answer = self.message()
            if answer.get("id") == self.number:
                if "error" in answer:
                    raise RuntimeError(f"{method}: {answer['error']}")
                return answer["result"]
            self.events.append(answer)

    def look(self, width, scheme):
        """The window's width, and 'light' or 'dark'."""
        self.call("Emulation.setDeviceMetricsOverride", width=width, height=900, deviceScaleFactor=1, mobile=False)
        self.call("Emulation.setEmulatedMedia", media="", features=[{"name": "prefers-color-scheme", "value": scheme}])

    def look_printed(self, width):
        """As on paper that is `width` wide, for a user whose system is dark."""
        self.call("Emulation.setDeviceMetricsOverride", width=width, height=900, deviceScaleFactor=1, mobile=False)
        self.call("Emulation.setEmulatedMedia", media="print",
                  features=[{"name": "prefers-color-scheme", "value": "dark"}])

    def axe(self, script):
        """What the checker of accessibility, whose program text is given, finds on the page."""
        self.call("Runtime.evaluate", expression=script)
        answer = self.call("Runtime.evaluate", awaitPromise=True, returnByValue=True, expression="""axe.run(document,
            {resultTypes: ['violations'], runOnly: ['wcag2a', 'wcag2aa', 'wcag21a', 'wcag21aa', 'wcag22aa', 'best-practice']})
            .then(r => ({checked: r.passes.length, found: r.violations.map(v => v.id + ': ' + v.help + ': ' +
                v.nodes.slice(0, 3).map(n => n.html.slice(0, 120)).join(' | '))}))""")
        return answer["result"]["value"]

    def open(self, path):
        """Loads the file. Gives what the browser had to complain about, and what it asked of the network."""
        self.events.clear()
        self.call("Page.navigate", url=pathlib.Path(path).resolve().as_uri())
        while not any(event.get("method") == "Page.loadEventFired" for event in self.events):
            self.events.append(self.message())
        self.call("Runtime.evaluate", expression="1")  # what came with the page is here now
        complaints = [e["params"] for e in self.events
                      if e.get("method") in ("Log.entryAdded", "Runtime.exceptionThrown", "Runtime.consoleAPICalled")]
        requests = [e["params"]["request"]["url"] for e in self.events
                    if e.get("method") == "Network.requestWillBeSent"]
        return complaints, [url for url in requests if not url.startswith(("data:", "file:"))]

    def value(self, expression):
        """What the JavaScript expression gives on the page, as a Python value."""
        answer = self.call("Runtime.evaluate", expression=expression, returnByValue=True)
        if "exceptionDetails" in answer:
            raise RuntimeError(f"{expression}: {answer['exceptionDetails']}")
        return answer["result"].get("value")

    def screenshot(self, path, width=None, height=None, scale=1):
        """The whole page, however long, or its upper left part, larger or smaller."""
        part = {"clip": {"x": 0, "y": 0, "width": width, "height": height, "scale": scale}} if width else {}
        image = self.call("Page.captureScreenshot", captureBeyondViewport=True, format="png", **part)["data"]
        pathlib.Path(path).write_bytes(base64.b64decode(image))
