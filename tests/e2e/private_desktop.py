"""A desktop inside the desktop, whose parts a test may end and start again.

An X server, a D-Bus session and its accessibility bus of their own; no window manager is needed to
lose them, but one is there, since activating depends on it, unless a test does without.
"""

import os
import re
import shutil
import subprocess
import tempfile

from e2e import end_process, wait_until


LAUNCHER = "/usr/libexec/at-spi-bus-launcher"

# A session bus that starts no service by itself, so that what was ended stays away.
BUS_CONFIGURATION = """<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <listen>%s</listen>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
"""


class PrivateDesktop:
    def __init__(self, depth=24, manager=True):
        self._depth = depth
        self._has_manager = manager
        self.folder = tempfile.mkdtemp(prefix="private.")
        self.environment = {name: value for name, value in os.environ.items()
                            if not name.startswith(("AT_SPI", "TARQO_DESKTOP"))}
        self.environment.update({
            "XDG_RUNTIME_DIR": self.folder,
            # Switching accessibility on is a setting, and its usual store a service of the bus.
            "GSETTINGS_BACKEND": "keyfile",
            "XDG_CONFIG_HOME": os.path.join(self.folder, "config"),
            "DBUS_SESSION_BUS_ADDRESS": "unix:path=%s/bus" % self.folder})
        self._parts = {}
        self._display = None
        self.start_display()
        self.start_session_bus()
        self.start_accessibility()

    def _start(self, name, command, **options):
        self._parts[name] = subprocess.Popen(
            command, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
            stderr=subprocess.DEVNULL, env=self.environment, **options)
        return self._parts[name]

    def _end(self, name):
        part = self._parts.pop(name, None)
        if part:
            part.kill()
            part.wait()

    # ---- the X server

    def start_display(self):
        """Starts the X server and the window manager; a second time at the number of the first."""
        reader, writer = os.pipe()
        number = [self._display] if self._display else []
        self._start("X", ["Xvfb", *number, "-displayfd", str(writer), "-screen", "0",
                          "1280x800x%d" % self._depth, "-nolisten", "tcp", "-noreset"],
                    pass_fds=(writer,))
        os.close(writer)
        with os.fdopen(reader) as told:
            self._display = ":" + told.readline().strip()
        self.environment["DISPLAY"] = self._display
        if self._has_manager:
            self.start_manager()

    def start_manager(self):
        self._start("manager", ["openbox", "--sm-disable"])
        wait_until(lambda: "window id" in self.ask(
            "xprop", "-root", "_NET_SUPPORTING_WM_CHECK"), 20, "the window manager is ready")

    def end_display(self):
        self._end("X")
        self._end("manager")

    def end_manager(self):
        self._end("manager")

    # ---- the buses

    def start_session_bus(self):
        reader, writer = os.pipe()
        self._start("bus", ["dbus-daemon", "--config-file=" + self._bus_configuration(),
                            "--nofork", "--nopidfile", "--print-address=%d" % writer],
                    pass_fds=(writer,))
        os.close(writer)
        with os.fdopen(reader) as told:
            told.readline()

    def _bus_configuration(self):
        path = os.path.join(self.folder, "bus.conf")
        with open(path, "w", encoding="utf-8") as file:
            file.write(BUS_CONFIGURATION % self.environment["DBUS_SESSION_BUS_ADDRESS"])
        return path

    def end_session_bus(self):
        self._end("bus")

    def start_accessibility(self):
        self._start("accessibility", [LAUNCHER])
        wait_until(lambda: self.ask(
            "dbus-send", "--session", "--print-reply=literal", "--dest=org.a11y.Bus",
            "/org/a11y/bus", "org.a11y.Bus.GetAddress").strip(), 20,
                   "the accessibility bus answers")

    def end_accessibility(self):
        """Kills the launcher of the accessibility bus, the bus, and the registry on it."""
        self._end("accessibility")
        for pid in self.accessibility_processes():
            end_process(pid)

    def accessibility_processes(self):
        found = []
        for name in os.listdir("/proc"):
            try:
                with open("/proc/%s/environ" % name, "rb") as file:
                    ours = self.folder.encode() in file.read()
                with open("/proc/%s/cmdline" % name, "rb") as file:
                    command = file.read().decode().replace("\0", " ")
            except (OSError, ValueError):
                continue
            if ours and re.search(r"at-spi-bus-launcher|accessibility\.conf|at-spi2-registryd",
                                  command):
                found.append(int(name))
        return found

    # ---- all

    def ask(self, *command):
        done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                              text=True, timeout=30, check=False, env=self.environment)
        return done.stdout

    def close(self):
        self.end_accessibility()
        for name in list(self._parts):
            self._end(name)
        shutil.rmtree(self.folder, ignore_errors=True)
