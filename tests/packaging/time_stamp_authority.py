"""A time-stamp authority (RFC 3161) for the length of a test: answers on a port of this machine, by `openssl ts`."""

import contextlib
import http.server
import subprocess
import tempfile
import threading

CONFIGURATION = """
[tsa]
serial = {folder}/serial
signer_cert = {certificate}
signer_key = {key}
signer_digest = sha256
digests = sha256
default_policy = 1.2.3.4
ess_cert_id_chain = no
"""


@contextlib.contextmanager
def running(certificate, key):
    """Gives its address."""
    with tempfile.TemporaryDirectory() as folder:
        with open(f"{folder}/serial", "w") as file:
            file.write("01\n")
        with open(f"{folder}/tsa.cnf", "w") as file:
            file.write(CONFIGURATION.format(folder=folder, certificate=certificate, key=key))

        class Handler(http.server.BaseHTTPRequestHandler):
            def do_POST(self):
                with open(f"{folder}/query", "wb") as file:
                    file.write(self.rfile.read(int(self.headers["Content-Length"])))
                subprocess.run(["openssl", "ts", "-reply", "-config", f"{folder}/tsa.cnf", "-section", "tsa", "-queryfile",
                                f"{folder}/query", "-out", f"{folder}/reply"], check=True, capture_output=True)
                self.send_response(200)
                self.send_header("Content-Type", "application/timestamp-reply")
                self.end_headers()
                with open(f"{folder}/reply", "rb") as file:
                    self.wfile.write(file.read())

            def log_message(self, *_):
                pass

        server = http.server.HTTPServer(("127.0.0.1", 0), Handler)
        thread = threading.Thread(target=server.serve_forever)
        thread.start()
        try:
            yield f"http://127.0.0.1:{server.server_port}/"
        finally:
            server.shutdown()
            thread.join()
            server.server_close()
