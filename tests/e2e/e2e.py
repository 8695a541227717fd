"""What the end-to-end tests share: the built helper, applications to drive, and their logs.

Every suite runs in a private desktop (see CMakeLists.txt here), with TARQO_HELPER naming the built
helper and TARQO_APPS the folder of our test applications.
"""

import os
import queue
import subprocess
import threading
import time
import unittest

from tarqo_client import Helper, HelperError, find_node, nodes_of  # noqa: F401, re-exported

HELPER = os.environ["TARQO_HELPER"]
APPS = os.environ["TARQO_APPS"]
READY_SECONDS = 30


def wait_until(condition, seconds, what):
    """Polls until `condition` gives something true, and gives that."""
    deadline = time.monotonic() + seconds
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() >= deadline:
            raise AssertionError("not within %.1f s: %s" % (seconds, what))
        time.sleep(0.01)


class App:
    """A running test application whose log lines are collected as they come."""

    def __init__(self, command, env=None):
        self._process = subprocess.Popen(
            command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
            text=True, env=env)
        self._lines = queue.Queue()
        self.log = []
        threading.Thread(target=self._collect, daemon=True).start()
        self.wait_for("ready", READY_SECONDS)

    def _collect(self):
        for line in self._process.stdout:
            self._lines.put(line.rstrip("\n"))

    @property
    def pid(self):
        return self._process.pid

    def lines(self):
        """Every line so far."""
        while True:
            try:
                self.log.append(self._lines.get_nowait())
            except queue.Empty:
                return list(self.log)

    def count(self, line):
        return self.lines().count(line)

    def wait_for(self, line, seconds=5):
        wait_until(lambda: line in self.lines(), seconds,
                   "the application logs %r (it logged %r)" % (line, self.log[-5:]))

    def forget(self):
        """Starts the log anew."""
        self.lines()
        self.log.clear()

    def close(self):
        self._process.kill()
        self._process.wait()


class HelperTest(unittest.TestCase):
    """A test with a running helper of its own."""

    def setUp(self):
        self.helper = Helper(HELPER)
        self.addCleanup(self.helper.close)

    def call(self, method, timeout=30, **args):
        return self.helper.call(method, args, timeout)

    def fails(self, method, **args):
        """The error of a call that must fail."""
        with self.assertRaises(HelperError) as caught:
            self.call(method, **args)
        return caught.exception

    def node(self, name, role=None, **args):
        """A node of a new observation, by name."""
        args.setdefault("image", False)
        observation = self.call("observe", **args)
        node = find_node(observation, name, role)
        self.assertIsNotNone(
            node, "no %s called %r among %r"
            % (role or "node", name, [(n["role"], n["name"]) for n in nodes_of(observation)]))
        return node

    def click(self, name, role=None, **args):
        """Observes, clicks the node of that name, and gives the result."""
        return self.call("click", nodeId=self.node(name, role)["id"], **args)
