"""What may come between a proof and its event: a stranger that comes at a given moment, the acts of
every toolkit that it disturbs, and what may have become of them.

Logs decide: what the stranger got, what the target got, and what the response said of it.
"""

import dataclasses
import os
import queue
import re
import subprocess
import threading
import time

import x_windows
from e2e import APPS, CHROMIUM, GTK3, GTK4, HELPER, QT, App, Helper, HelperError, wait_until

HOME = (260, 130)
SCREEN = (1600, 1000)
PARKED = (1590, 990)
ANSWER_SECONDS = 5
# For what is on its way to an application when the response has come.
AFTERMATH_SECONDS = 0.15
ARRIVAL_SECONDS = 1.5


class Intruder:
    """The program tests/apps/intruder.cpp, its window lying below all others."""

    def __init__(self):
        self._process = subprocess.Popen(
            [os.path.join(APPS, "intruder")], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
            text=True, bufsize=1)
        self._arrived = queue.Queue()
        self._lines = []
        threading.Thread(target=self._read, daemon=True).start()
        self._wait_for("ready")
        self.lie_below_all()

    def _read(self):
        for line in self._process.stdout:
            self._arrived.put(line.rstrip("\n"))

    def _wait_for(self, awaited):
        while True:
            line = self._arrived.get(timeout=ANSWER_SECONDS)
            if line == awaited:
                return
            self._lines.append(line)

    def tell(self, *words):
        self._process.stdin.write(" ".join(map(str, words)) + "\n")
        self._wait_for("done " + words[0])

    def lie_below_all(self):
        self.tell("backdrop", 0, 0, *SCREEN)

    def take(self):
        """Whether its moment has come, and what it got, since the last time."""
        self.tell("sync")
        lines, self._lines = self._lines, []
        return "came" in lines, [line for line in lines if line != "came"]

    def close(self):
        self._process.kill()
        self._process.wait()


@dataclasses.dataclass(frozen=True)
class Act:
    """One request to one node, and the lines that the target logs for it."""

    node: tuple  # Role and name.
    method: str
    lines: tuple
    args: tuple = ()
    # Whether a refusal may follow when some of it, but not all, has arrived.
    divisible: bool = False

    @property
    def title(self):
        return " ".join([self.method, *(str(value) for _, value in self.args), *self.node])


def scrolling(delta):
    return (("kind", "scroll"), ("deltaY", delta))


BACK = scrolling(-1000)
QUIET = ("button", "Quiet")
CANVAS = ("text", "Canvas")
CLICK = Act(CANVAS, "click", ("pressed Canvas 1",))
DOUBLE = Act(QUIET, "click", ("clicked Quiet",) * 2, (("count", 2),), divisible=True)
MENU = Act(CANVAS, "showMenu", ("context Canvas",))
HOVER = Act(("button", "Hover me"), "hover", ("hovered Hover me",), divisible=True)
WHEEL = Act(CANVAS, "input", ("wheel Canvas down",) * 3, scrolling(120), divisible=True)
KEY = Act(QUIET, "input", ("key Left",), (("kind", "key"), ("key", "ArrowLeft")))
TYPE = Act(CANVAS, "input", tuple("key " + letter for letter in "abcdef"),
           (("kind", "type"), ("text", "abcdef")), divisible=True)


@dataclasses.dataclass(frozen=True)
class Toolkit:
    command: tuple
    bundle: str
    click: Act
    wheel: Act
    # Chromium asks the page to open its menu, which needs no pointer.
    points_at_menus: bool = True


def scrolls(node, area, distance, delta):
    """An area that moves by `distance` of its own units when it is scrolled by three clicks."""
    return dataclasses.replace(WHEEL, node=node, args=scrolling(delta),
                               lines=("scrolled %s %d" % (area, distance),))


TOOLKITS = {
    "GTK 3": Toolkit((*GTK3, "--geometry", "640x480+%d+%d" % HOME), "com.tarqo.test.gtk3", CLICK,
                     WHEEL),
    "GTK 4": Toolkit(tuple(GTK4), "com.tarqo.test.gtk4",
                     Act(("checkbox", "Plain"), "click", ("toggled Plain",)),
                     scrolls(("text", "Line 3"), "Lines", 121, 120)),
    "Qt": Toolkit(tuple(QT), "com.tarqo.test.qt", CLICK,
                  scrolls(("cell", "file2.txt"), "Files", 9, 180)),
    "Chromium": Toolkit(tuple(CHROMIUM), "com.tarqo.test.chromium", CLICK,
                        scrolls(("text", "Line 3"), "Lines", 360, 360), False),
}


class Target:
    """A running application of a toolkit, a helper connected to it, and its window."""

    def __init__(self, toolkit):
        self.toolkit = toolkit
        self.helper = Helper(HELPER)
        self.app = App(list(toolkit.command))
        self.window = self.app.window()
        x_windows.move(self.window, *HOME)
        result = self.helper.call("connect", {"bundleId": toolkit.bundle})
        assert result["pid"] == self.app.pid, result
        wait_until(lambda: any(n["name"] == "Canvas" for n in self.nodes()), 10, "it is shown")

    def observe(self):
        try:
            return self.helper.call("observe", {"image": False})
        except HelperError as error:
            # The focus may still be on its way back from the stranger.
            if error.code not in ("stale_snapshot", "no_window"):
                raise
            time.sleep(0.1)
            return self.helper.call("observe", {"image": False})

    def nodes(self):
        return self.observe()["snapshot"]["nodes"]

    def node(self, act):
        """Pages report a change of what shows a moment later."""
        return self._awaited(lambda n: (n["role"], n["name"]) == act.node, act)[0]

    def row_like(self, act):
        """What shows now of the rows of which an act is on one."""
        role, name = act.node
        start = name.rstrip("0123456789.tx")
        rows = self._awaited(lambda n: n["role"] == role and n["name"].startswith(start), act)
        return rows[len(rows) // 2]

    def _awaited(self, fits, act):
        return wait_until(lambda: [n for n in self.nodes() if fits(n)], 3,
                          "there is a node for %s" % act.title)

    def request(self, act, node):
        """The result, or the error."""
        try:
            return self.helper.call(act.method, {"nodeId": node["id"], **dict(act.args)})
        except HelperError as error:
            return error

    def close(self):
        self.helper.close()
        self.app.close()


def told(act, lines):
    """What the lines say about an act, without what the pointer causes on its way."""
    result = []
    for line in lines:
        if line.startswith(("released ", "dragged Canvas", "text ", "focused ")):
            continue
        if line.startswith("hovered ") and act.method != "hover":
            continue
        if line.startswith("dragged "):
            continue
        if line.startswith(("pressed Canvas 3", "pressed Canvas 2")):
            continue
        line = re.sub(r"^(pressed \S+ 1) .*", r"\1", line)
        result.append(re.sub(r"^(toggled \S+) .*", r"\1", line))
    # Of an area that scrolls, where it has come to rest.
    if any(line.startswith("scrolled ") for line in result):
        result = [line for line in result if not line.startswith("scrolled ")] + [
            [line for line in result if line.startswith("scrolled ")][-1]]
    return tuple(result)


def is_all(act, lines):
    """Toolkits round the way that they scroll."""
    match = re.fullmatch(r"(scrolled \S+) (\d+)", act.lines[0])
    if not match:
        return lines == act.lines
    found = re.fullmatch(r"(scrolled \S+) (\d+)", lines[0]) if len(lines) == 1 else None
    return bool(found and found.group(1) == match.group(1)
                and abs(int(found.group(2)) - int(match.group(2))) <= 2)


def is_less(act, lines):
    """Whether something of the act is missing, and nothing else happened."""
    match = re.fullmatch(r"(scrolled \S+) (\d+)", act.lines[0])
    if match and len(lines) == 1:
        found = re.fullmatch(r"(scrolled \S+) (\d+)", lines[0])
        return bool(found and found.group(1) == match.group(1)
                    and int(found.group(2)) < int(match.group(2)) - 2)
    return lines == act.lines[:len(lines)] and len(lines) < len(act.lines)


def problem_of(act, result, got, lines):
    """What is wrong with an outcome; empty when it is right."""
    logged = told(act, lines)
    if got:
        return "another application got %r (%s)" % (got, result)
    if not isinstance(result, HelperError):
        # The second press of a double click is left out when it cannot be proven, and the result says so.
        right = (logged == act.lines[:result["clicks"]] if "clicks" in result
                 else is_all(act, logged))
        return "" if right else "%r, but logged %r" % (result, lines)
    if act.method == "hover":  # To have been there is no harm.
        return "" if set(logged) <= set(act.lines) else "refused (%s), logged %r" % (result, lines)
    if not logged or (act.divisible and is_less(act, logged)):
        return ""
    return "refused (%s), and yet %r arrived" % (result, lines)
