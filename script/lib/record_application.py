"""Writes down what an application reports over AT-SPI: script/record-application."""

import argparse
import json
import os
import subprocess
import sys
import time

from gi.repository import Gio, GLib

from recorded_objects import ROOT_PATH, Walk
from recorded_windows import windows_of

READY_SECONDS = 150
PAUSE_SECONDS = 1.0
REGISTRY = "org.a11y.atspi.Registry"


class Bus:
    """Calls on the accessibility bus. An answer is None when there is none in time or an error."""

    def __init__(self):
        session = Gio.bus_get_sync(Gio.BusType.SESSION)
        address = session.call_sync("org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress",
                                    None, None, Gio.DBusCallFlags.NONE, 10000, None).unpack()[0]
        flags = (Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT
                 | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION)
        self._connection = Gio.DBusConnection.new_for_address_sync(address, flags, None, None)

    def call(self, target, interface, member, arguments=None):
        name, path = target
        try:
            answer = self._connection.call_sync(
                name, path, interface, member, arguments, None, Gio.DBusCallFlags.NONE, 3000, None)
        except GLib.Error:
            return None
        values = answer.unpack()
        return values[0] if len(values) == 1 else values

    def get(self, target, interface, name):
        return self.call(target, "org.freedesktop.DBus.Properties", "Get",
                         GLib.Variant("(ss)", (interface, name)))

    def get_all(self, target, interface):
        return self.call(target, "org.freedesktop.DBus.Properties", "GetAll",
                         GLib.Variant("(s)", (interface,)))

    def applications(self):
        """The roots of all registered applications, each with its process id."""
        driver = ("org.freedesktop.DBus", "/org/freedesktop/DBus")
        roots = self.call((REGISTRY, ROOT_PATH), "org.a11y.atspi.Accessible", "GetChildren") or []
        for root in roots:
            pid = self.call(driver, driver[0], "GetConnectionUnixProcessID",
                            GLib.Variant("(s)", (root[0],)))
            yield root, pid

    def listen(self):
        """Makes toolkits report at all that report only while somebody listens."""
        for event in ("object:state-changed", "window:activate", "focus:"):
            self.call((REGISTRY, "/org/a11y/atspi/registry"), REGISTRY, "RegisterEvent",
                      GLib.Variant("(sass)", (event, [], "")))


def descends(pid, ancestor):
    """Whether a process is another one or was started below it."""
    while pid and pid != ancestor:
        try:
            with open(f"/proc/{pid}/stat", encoding="utf-8", errors="replace") as stat:
                pid = int(stat.read().rpartition(")")[2].split()[1])
        except (OSError, ValueError):
            return False
    return pid == ancestor


def scrubbed(text):
    """Without the folders of this machine."""
    for variable in ("TARQO_DESKTOP", "PWD", "HOME"):
        folder = os.environ.get(variable, "")
        if len(folder) > 1:
            text = text.replace(folder, "/home/user")
    return text


def recording(bus, pid, objects, command):
    """The lines of a recording; None while the application shows no window."""
    for root, owner in bus.applications():
        if not owner or not descends(owner, pid):
            continue
        walk = Walk(bus, root, objects)
        lines = walk.lines()
        windows = windows_of(owner)
        if len(lines) < 2 or not windows:
            continue
        header = {"recording": 1, "command": command, "toolkit": walk.toolkit,
                  "version": walk.version, "windows": windows}
        return [scrubbed(json.dumps(line, ensure_ascii=False)) for line in [header, *lines]]
    return None


def settled_recording(bus, pid, objects, command):
    """The recording once it stays the same; ends this program when it does not come to that."""
    deadline = time.monotonic() + READY_SECONDS
    lines, changed = None, "it shows no window"
    while time.monotonic() < deadline:
        time.sleep(PAUSE_SECONDS)
        before, lines = lines, recording(bus, pid, objects, command)
        if lines and lines == before:
            return lines
        if lines and before:
            changed = "its objects keep changing: %s was %s" % next(
                (pair for pair in zip(lines, before) if pair[0] != pair[1]), ("an object", "none"))
    sys.exit(f"record-application: the application does not come to rest; {changed}")


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--objects", type=int, default=350)
    parser.add_argument("--pid", type=int)
    parser.add_argument("command", nargs=argparse.REMAINDER)
    options = parser.parse_args()
    bus = Bus()
    bus.listen()
    if options.pid:
        lines = recording(bus, options.pid, options.objects, "")
    else:
        process = subprocess.Popen(options.command, stdin=subprocess.DEVNULL,
                                   stdout=sys.stderr, stderr=sys.stderr)
        lines = settled_recording(bus, process.pid, options.objects, " ".join(options.command))
        process.terminate()
    if not lines:
        sys.exit("record-application: the application shows no window")
    print("\n".join(lines))


if __name__ == "__main__":
    main()
