"""What the end-to-end tests share: the built helper, applications to drive, and their logs.

Every suite runs in a private desktop (see CMakeLists.txt here), with TARQO_HELPER naming the built
helper and TARQO_APPS the folder of our test applications.
"""

import contextlib
import os
import signal
import subprocess
import sys
import tempfile
import time
import unittest

import x_windows
from tarqo_client import Helper, HelperError, find_node, nodes_of

HELPER = os.environ["TARQO_HELPER"]
APPS = os.environ["TARQO_APPS"]
SCRIPTS = os.path.join(os.path.dirname(os.path.dirname(os.path.abspath(__file__))), "apps")
READY_SECONDS = 30

GTK3 = [os.path.join(APPS, "gtk3_app")]
GTK4 = [sys.executable, os.path.join(SCRIPTS, "gtk4_app.py")]
QT = [sys.executable, os.path.join(SCRIPTS, "qt_app.py")]
CHROMIUM = [sys.executable, os.path.join(SCRIPTS, "chromium_app.py")]


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


def is_alive(pid):
    try:
        with open("/proc/%d/stat" % pid, encoding="utf-8", errors="replace") as stat:
            return stat.read().rpartition(")")[2].split()[0] not in "ZX"
    except (FileNotFoundError, ProcessLookupError):
        return False


def end_process(pid):
    """Kills a process that is no child of ours, and waits until it is gone."""
    with contextlib.suppress(ProcessLookupError):
        os.kill(pid, signal.SIGKILL)
    wait_until(lambda: not is_alive(pid), 10, "process %d ends" % pid)


class AppLog:
    """The lines that a test application appends to the file that TARQO_APP_LOG names."""

    def __init__(self):
        descriptor, self.path = tempfile.mkstemp(prefix="app-log.")
        os.close(descriptor)
        self._forgotten = 0

    def environment(self, env=None):
        """The environment of an application that shall log here."""
        return dict(os.environ if env is None else env, TARQO_APP_LOG=self.path)

    def _all(self):
        with open(self.path, encoding="utf-8") as file:
            return [line.rstrip("\n") for line in file if line.endswith("\n")]

    def lines(self, start=""):
        """Every line so far that starts so."""
        return [line for line in self._all()[self._forgotten:] if line.startswith(start)]

    def count(self, line):
        return self.lines().count(line)

    def lines_ever(self, start):
        """Every line that starts so, what was forgotten included."""
        return [line for line in self._all() if line.startswith(start)]

    def wait_for(self, line, seconds=5):
        wait_until(lambda: line in self.lines(), seconds,
                   "the application logs %r (it logged %r)" % (line, self.lines()[-5:]))

    def forget(self):
        """Starts the log anew."""
        self._forgotten = len(self._all())


class App(AppLog):
    """A running test application and its log."""

    def __init__(self, command, env=None):
        super().__init__()
        self._process = subprocess.Popen(
            command, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
            stderr=subprocess.DEVNULL, env=self.environment(env))
        try:
            self.wait_for("ready", READY_SECONDS)
        except AssertionError:
            self.close()
            raise

    @property
    def pid(self):
        return self._process.pid

    def window(self):
        """Its first X window. The window manager may list it a moment after it was drawn."""
        return wait_until(lambda: x_windows.windows_of(self.pid), 5,
                          "the window manager lists a window")[0]

    @property
    def has_ended(self):
        return self._process.poll() is not None

    def send_signal(self, number):
        self._process.send_signal(number)

    def close(self):
        self._process.kill()
        self._process.wait()


class HelperTest(unittest.TestCase):
    """A test with a running helper of its own."""

    def setUp(self):
        self.start_helper()

    def start_helper(self, env=None):
        self.helper = Helper(HELPER, env=env)
        self.addCleanup(self.helper.close)

    def call(self, method, timeout=30, **args):
        return self.helper.call(method, args, timeout)

    def fails(self, method, timeout=30, **args):
        """The error of a call that must fail."""
        with self.assertRaises(HelperError) as caught:
            self.call(method, timeout, **args)
        return caught.exception

    def start_app(self, command, *options, env=None):
        app = App([*command, *options], env)
        self.addCleanup(app.close)
        return app

    def observe(self, **args):
        args.setdefault("image", False)
        return self.call("observe", **args)

    def observe_at_rest(self, seconds=5):
        """With a picture, when two in a row show the same: toolkits animate what gains or loses the
        pointer, the focus, or the foreground."""
        deadline = time.monotonic() + seconds
        before = None
        while True:
            observation = self.observe(image=True)
            if observation["image"] == before:
                return observation
            if time.monotonic() >= deadline:
                raise AssertionError("the window has not come to rest within %.1f s" % seconds)
            before = observation["image"]
            time.sleep(0.25)

    def node_in(self, observation, name, role=None):
        """A node of an observation, by name; a failed test when there is none."""
        node = find_node(observation, name, role)
        self.assertIsNotNone(
            node, "no %s called %r among %r"
            % (role or "node", name, [(n["role"], n["name"]) for n in nodes_of(observation)]))
        return node

    def node(self, name, role=None, **args):
        """A node of a new observation, by name."""
        return self.node_in(self.observe(**args), name, role)

    def click(self, name, role=None, **args):
        """Observes, clicks the node of that name, and gives the result."""
        return self.call("click", nodeId=self.node(name, role)["id"], **args)
