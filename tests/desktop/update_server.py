"""The maker's web server, which only those trust who trust the test's authority."""

import http.server
import json
import os
import ssl
import subprocess
import threading

_EXTENSIONS = """
[req]
distinguished_name = name
[name]
[authority]
basicConstraints = critical, CA:TRUE
keyUsage = critical, keyCertSign
[server]
basicConstraints = critical, CA:FALSE
subjectAltName = IP:127.0.0.1
"""


class Authority:
    """Signs certificates. `folder` is what stands in /etc/ssl/certs for those who trust it, and nobody else."""

    def __init__(self, place):
        self._place = place
        self.folder = os.path.join(place, "trusted")
        os.makedirs(self.folder)
        with open(self._path("extensions"), "w", encoding="ascii") as file:
            file.write(_EXTENSIONS)
        self._certify("authority", os.path.join(self.folder, "authority.pem"))
        self.server = self._path("server.pem")
        self._certify("server", self.server, "-CA", os.path.join(self.folder, "authority.pem"), "-CAkey",
                      self._path("authority.key"))

    def _path(self, name):
        return os.path.join(self._place, name)

    def _certify(self, name, file, *signer):
        subprocess.run(
            ["openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1", "-nodes",
             "-config", self._path("extensions"), "-extensions", name, "-subj", f"/CN=Tidemark test {name}",
             "-days", "2", "-keyout", self._path(f"{name}.key"), "-out", file, *signer],
            check=True, capture_output=True, stdin=subprocess.DEVNULL)

    def context(self):
        context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
        context.load_cert_chain(self.server, self._path("server.key"))
        return context


class _Handler(http.server.BaseHTTPRequestHandler):
    def do_GET(self):
        served = self.server.served
        served.requests.append(self.path)
        status, headers, body = served.answers.get(self.path, (404, {}, b"not here"))
        served.may_answer.wait()
        self.send_response(status)
        if isinstance(body, bytes):
            headers = {"Content-Length": str(len(body))} | headers
            body = [body]
        for name, value in headers.items():
            self.send_header(name, value)
        self.end_headers()
        for piece in body:
            self.wfile.write(piece)

    def log_message(self, *_):
        pass


class _Server(http.server.ThreadingHTTPServer):
    daemon_threads = True

    def handle_error(self, request, client_address):
        pass  # whoever does not trust it hangs up


def feed(version, url):
    return {"version": version, "url": url, "notes": "What is new."}


class UpdateServer:
    """Answers with what is put into it; `requests` are the paths that were asked for, in order."""

    FEED = "/latest.json"

    def __init__(self, authority=None):
        """Speaks http without an authority."""
        self.answers = {}
        self.requests = []
        self.may_answer = threading.Event()
        self.may_answer.set()
        self._server = _Server(("127.0.0.1", 0), _Handler)
        self._server.served = self
        if authority:
            self._server.socket = authority.context().wrap_socket(
                self._server.socket, server_side=True, do_handshake_on_connect=False)
        self._scheme = "https" if authority else "http"
        self._thread = threading.Thread(target=self._server.serve_forever, kwargs={"poll_interval": 0.05})
        self._thread.start()

    def url(self, path):
        return f"{self._scheme}://127.0.0.1:{self._server.server_port}{path}"

    def answer(self, path, body, status=200, **headers):
        """`body` is bytes, or whatever has them piece by piece and leaves it open how many there will be."""
        self.answers[path] = (status, headers, body)

    def announce(self, version, url):
        self.answer_feed(feed(version, url))

    def answer_feed(self, content, status=200):
        self.answer(self.FEED, json.dumps(content).encode(), status)

    def end(self):
        self.may_answer.set()
        self._server.shutdown()
        self._thread.join()
        self._server.server_close()
