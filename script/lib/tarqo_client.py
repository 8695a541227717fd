"""A small client of tarqo-ax: starts the helper and exchanges JSON lines with it.

Used by the demo, the benchmark and the end-to-end tests; also the shortest example of how a server
talks to the helper.
"""

import json
import os
import select
import subprocess
import time


class HelperError(Exception):
    """The "error" of a response."""

    def __init__(self, error):
        super().__init__("%s: %s" % (error.get("code"), error.get("message")))
        self.error = error
        self.code = error.get("code")
        self.message = error.get("message")


class Helper:
    """One running helper. Close it, or use it in a `with` statement."""

    def __init__(self, program, env=None, arguments=()):
        self._process = subprocess.Popen(
            [program, *arguments], stdin=subprocess.PIPE, stdout=subprocess.PIPE, env=env)
        self._buffer = b""
        self._next_id = 0

    def __enter__(self):
        return self

    def __exit__(self, *unused):
        self.close()

    @property
    def pid(self):
        return self._process.pid

    def send_bytes(self, data):
        self._process.stdin.write(data)
        self._process.stdin.flush()

    def read_line(self, timeout=30.0):
        """The next response line without its end; None at the end of the output."""
        deadline = time.monotonic() + timeout
        out = self._process.stdout.fileno()
        while b"\n" not in self._buffer:
            left = deadline - time.monotonic()
            if left <= 0 or not select.select([out], [], [], left)[0]:
                raise TimeoutError("no response within %.1f s" % timeout)
            data = os.read(out, 1 << 20)
            if not data:
                return None
            self._buffer += data
        line, self._buffer = self._buffer.split(b"\n", 1)
        return line

    def exchange(self, request, timeout=30.0):
        """Sends one request object and gives the whole response object."""
        self.send_bytes(json.dumps(request).encode() + b"\n")
        line = self.read_line(timeout)
        if line is None:
            raise EOFError("the helper ended")
        return json.loads(line)

    def call(self, method, args=None, timeout=30.0):
        """The "result" of a request; raises HelperError for an "error"."""
        self._next_id += 1
        response = self.exchange(
            {"id": self._next_id, "method": method, "args": args or {}}, timeout)
        if response["id"] != self._next_id:
            raise AssertionError("response %r to request %d" % (response["id"], self._next_id))
        if "error" in response:
            raise HelperError(response["error"])
        return response["result"]

    def close(self):
        """Ends the input and gives the exit status."""
        if self._process.stdin and not self._process.stdin.closed:
            self._process.stdin.close()
        try:
            status = self._process.wait(timeout=10)
        except subprocess.TimeoutExpired:
            self._process.kill()
            status = self._process.wait()
        self._process.stdout.close()
        return status


def nodes_of(observation):
    return observation["snapshot"]["nodes"]


def find_node(observation, name, role=None):
    """The first node of that name (and role); None when there is none."""
    for node in nodes_of(observation):
        if node["name"] == name and (role is None or node["role"] == role):
            return node
    return None
