"""The product under test: tidemarkctl on a home folder of its own, in a process per command or in one that serves many."""

import os
import subprocess
import struct


class ProductCrashed(Exception):
    """The process ended, or a sanitizer complained."""


class Result:
    def __init__(self, status, output, errors):
        self.status = status
        self.output = output
        self.errors = errors


class Product:
    """Runs commands for one world after another. Not for several threads."""

    def __init__(self, scratch, server=None, program=None):
        self._server_path = server
        self._program = program
        self._output = os.path.join(scratch, "output")
        self._errors = os.path.join(scratch, "errors")
        self._log_path = os.path.join(scratch, "server-errors")
        self._server = None
        self._log = None

    def run(self, environment, arguments, own_process=False):
        if own_process or not self._server_path:
            done = subprocess.run([self._program, *arguments], env={**os.environ, **environment},
                                  capture_output=True, check=False, stdin=subprocess.DEVNULL)
            result = Result(done.returncode, done.stdout, done.stderr)
        else:
            result = self._ask_server(environment, arguments)
        if result.status not in (0, 1, 2) or b"Sanitizer" in result.errors or b"runtime error" in result.errors:
            raise ProductCrashed(f"{arguments}: status {result.status}\n{result.errors.decode(errors='replace')}")
        return result

    def _ask_server(self, environment, arguments):
        if self._server is None:
            self._log = open(self._log_path, "wb")
            self._server = subprocess.Popen([self._server_path], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                            stderr=self._log, env={**os.environ, "LC_ALL": "C.UTF-8"})
        texts = [self._output, self._errors, *(f"{key}={value}" for key, value in environment.items()), "--", *arguments]
        encoded = [os.fsencode(text) for text in texts]
        request = struct.pack("=I", len(encoded)) + b"".join(struct.pack("=I", len(each)) + each for each in encoded)
        try:
            self._server.stdin.write(request)
            self._server.stdin.flush()
            answer = self._server.stdout.readline()
        except OSError:
            answer = b""
        if not answer:
            log = self._end()
            with open(self._errors, "rb") as errors:
                log += errors.read()
            raise ProductCrashed(f"{arguments}: the process ended\n{log.decode(errors='replace')}")
        with open(self._output, "rb") as output, open(self._errors, "rb") as errors:
            return Result(int(answer), output.read(), errors.read())

    def _end(self):
        self._server.stdin.close()
        status = self._server.wait()
        self._server = None
        self._log.close()
        with open(self._log_path, "rb") as log:
            return log.read() + (f"exit status {status}\n".encode() if status else b"")

    def close(self):
        """Ends the server. Raises ProductCrashed for what a sanitizer has to say at the end (leaks)."""
        if self._server is not None:
            log = self._end()
            if log:
                raise ProductCrashed(log.decode(errors="replace"))
