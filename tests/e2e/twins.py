"""Two windows of one program that look alike, of every toolkit."""

import os
import subprocess
import sys

import x_windows
from e2e import SCRIPTS, App, wait_until

TWINS = [sys.executable, os.path.join(SCRIPTS, "twins_app.py")]
CHROMIUM = [sys.executable, os.path.join(SCRIPTS, "chromium_app.py")]
TOOLKITS = ("gtk3", "gtk4", "qt", "chromium")


class TwinWindows:
    """A running program and its windows, in the order in which they were made."""

    def __init__(self, toolkit, count=2):
        self.toolkit = toolkit
        if toolkit == "chromium":
            self.bundle = "com.tarqo.test.chromium"
            self.app = App([*CHROMIUM, "--geometry", "640x420+60+40", "--windows", str(count)])
        else:
            self.bundle = "com.tarqo.test.twins"
            self.app = App([*TWINS, toolkit, "--count", str(count)])
        self.windows = wait_until(lambda: self._found(count), 20, "%d windows" % count)

    def _found(self, count):
        """The window manager lists windows in the order in which they were mapped."""
        found = x_windows.windows_of(self.app.pid)
        return found if len(found) == count else None

    def place(self, *places):
        for window, (x, y) in zip(self.windows, places):
            x_windows.move(window, x, y)

    def bring_to_front(self, number):
        """The window of that number, counted from 1."""
        x_windows.activate(self.windows[number - 1])
        wait_until(lambda: x_windows.active_window() == self.windows[number - 1], 5,
                   "the window is active")

    def close(self):
        self.app.close()
