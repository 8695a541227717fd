"""What the safety suite is made of: applications to be changed from outside, acts, and the tally.

An act is one request to one node, with the lines that the application must log for it, no more and
no less: what was activated, and, since the applications log every press, release, key and turn of
the wheel, what arrived of the pointer and the keyboard.
"""

import collections
import dataclasses
import queue
import subprocess
import threading

from e2e import READY_SECONDS, HelperError

COMMAND_SECONDS = 10


class CommandedApp:
    """A gtk3_app whose standard input commands it (see gtk3_commands.h)."""

    def __init__(self, *command):
        self._process = subprocess.Popen(
            command, stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
            text=True, bufsize=1)
        self._arrived = queue.Queue()
        self._lines = []
        threading.Thread(target=self._read, daemon=True).start()
        self._wait_for("ready", READY_SECONDS)
        self.tell("watch")

    def _read(self):
        for line in self._process.stdout:
            self._arrived.put(line.rstrip("\n"))
        self._arrived.put(None)

    def _wait_for(self, awaited, seconds):
        while True:
            line = self._arrived.get(timeout=seconds)
            if line == awaited:
                return
            if line is None or line.startswith("failed "):
                raise AssertionError("%r instead of %r" % (line, awaited))
            self._lines.append(line)

    @property
    def pid(self):
        return self._process.pid

    def is_running(self):
        return self._process.poll() is None

    def tell(self, *words):
        """Gives a command, and returns when the X server has what it changes."""
        self._process.stdin.write(" ".join(map(str, words)) + "\n")
        self._wait_for("done " + words[0], COMMAND_SECONDS)

    def forget(self):
        """Drops the lines up to the last command."""
        self._lines.clear()

    def take_lines(self):
        """The lines since `forget`, all that has reached the application included."""
        if self.is_running():
            self.tell("sync")
        return list(self._lines)

    def send_signal(self, number):
        self._process.send_signal(number)

    def close(self):
        self._process.kill()
        self._process.wait()
        self._process.stdin.close()
        self._process.stdout.close()


def pressed(receiver, count=1, button_lines=()):
    """What is logged of `count` presses of a button of the pointer in the widget of that name."""
    return ["event press " + receiver, "event release " + receiver, *button_lines] * count


@dataclasses.dataclass(frozen=True)
class Act:
    """One request to a node."""

    name: str
    role: str
    by_press: tuple = ()  # The lines when the application was asked to perform it,
    by_pointer: tuple = ()  # and when the pointer or the keyboard did it.
    method: str = "click"
    args: tuple = ()
    page: str = "Controls"
    after: tuple = ()  # Commands that undo what it did.

    @property
    def title(self):
        return " ".join([self.method, *(str(value) for _, value in self.args), self.role,
                         self.name])

    def find(self, observation):
        found = [n for n in observation["snapshot"]["nodes"]
                 if (n["role"], n["name"]) == (self.role, self.name)]
        if not found:
            raise AssertionError("no %s %r to act on" % (self.role, self.name))
        return found[0]

    def expected(self, result):
        return self.by_press if result["method"] == "accessibility" else self.by_pointer


def click(name, role, receiver, line, **more):
    """A click that logs `line`; by the pointer, `receiver` logs its events too."""
    lines = (line,) if line else ()
    return Act(name, role, lines, (*pressed(receiver), *lines), **more)


def double_click(name, role, receiver, *lines, **more):
    return Act(name, role, (), (*pressed(receiver, 2), *lines), args=(("count", 2),), **more)


def button(name):
    return click(name, "button", name, "clicked " + name)


def double_button(name):
    return double_click(name, "button", name, *["clicked " + name] * 2)


def check(name):
    return click(name, "checkbox", name, "toggled " + name)


def double_check(name):
    return double_click(name, "checkbox", name, *["toggled " + name] * 2)


def menu_item(name, path):
    return Act(name, "menuitem", ("menu " + path,))


def typing(text):
    return Act("Name", "textbox", ('text Name "%s"' % text,), method="input",
               args=(("kind", "type"), ("text", text)))


ENTRY = click("Name", "textbox", "Name", None)
DOUBLE_ENTRY = double_click("Name", "textbox", "Name")
CANVAS = Act("Canvas", "text", (), (*pressed("Canvas"), "pressed Canvas 1", "released Canvas 1"))
DOUBLE_CANVAS = double_click("Canvas", "text", "Canvas", *CANVAS.by_pointer[2:] * 2,
                             "double-clicked Canvas")
LABEL = click("Volume", "text", "Volume", None)
TAB = click("Data", "tab", "Data", "tab Data", after=("tab Controls",))
CHOICE = click("Size", "popupbutton", "Small", "opened Size", after=("dismiss",))
ROW = click("Apple", "text", "Apple", "selected Fruits Apple", page="Data")
LINE = click("Line 12", "text", "Line 12", None, page="Data")
CELLS = [click("file%d.txt" % row, "cell", "Files", "selected Files file%d.txt" % row, page="Data")
         for row in (2, 3)]
# Each in its turn; the first one is chosen to begin with.
RADIOS = [Act(name, "radiobutton", ("toggled Blue", "toggled Red"))
           for name in ("Blue", "Red")]
HOVER = Act("Quiet", "button", method="hover")
HOVER_CANVAS = Act("Canvas", "text", method="hover")
MENU = Act("Canvas", "text", (), (*pressed("Canvas"), "pressed Canvas 3", "context Canvas"),
           method="showMenu", after=("dismiss",))
MENU_BUTTON = Act("Save", "button", (), (*pressed("Save"),), method="showMenu")
KEY = Act("Quiet", "button", (), ("event key Quiet", "key space", "clicked Quiet"),
          method="input", args=(("kind", "key"), ("key", "Space")))
KEY_CHECK = Act("Plain", "checkbox", (), ("event key Plain", "key space", "toggled Plain"),
                method="input", args=KEY.args)
SCROLL = Act("Canvas", "text", (), ("event scroll Canvas", "wheel Canvas down"), method="input",
             args=(("kind", "scroll"), ("deltaY", 120)))

# How a helper that cannot do something yet says so.
MISSING = ("Unknown native method", "Could not create a key event.",
           "Could not create a scroll event.")


def normalised(lines):
    """Without places and states, and without what the pointer causes by passing over."""
    result = []
    for line in lines:
        if line.startswith(("hovered ", "dragged ")):
            continue
        if line.startswith(("pressed ", "released ", "toggled ")):
            line = " ".join(line.split(" ")[:3 if line[0] != "t" else 2])
        result.append(line)
    # A wheel turns by as many clicks as the distance takes, all alike.
    if any(line.startswith("event scroll") for line in result):
        result = sorted(set(result))
    return sorted(result)


@dataclasses.dataclass
class Row:
    """What became of the trials of one kind."""

    trials: int = 0
    right: int = 0
    place: int = 0  # At the place that was proved, though its text is another: see safety_text.py.
    wrong: int = 0
    refused: collections.Counter = dataclasses.field(default_factory=collections.Counter)


class Tally:
    """All trials, by kind."""

    def __init__(self):
        self.rows = {}

    def row(self, kind):
        return self.rows.setdefault(kind, Row())

    def count(self, kind, verdict, by_place=False):
        row = self.row(kind)
        row.trials += 1
        if verdict.problem:
            row.wrong += 1
        elif verdict.refusal:
            row.refused[verdict.refusal.code] += 1
        elif by_place:
            row.place += 1
        else:
            row.right += 1

    def trials(self):
        return sum(row.trials for row in self.rows.values())

    def table(self):
        lines = ["%-34s %6s %7s %6s %6s %6s  %s" % (
            "changed between look and act", "trials", "refused", "right", "place", "wrong",
            "refusals")]
        total = Row()
        for kind, row in self.rows.items():
            lines.append(self._line(kind, row))
            total.trials += row.trials
            total.right += row.right
            total.place += row.place
            total.wrong += row.wrong
            total.refused += row.refused
        return "\n".join([*lines, self._line("all", total)])

    @staticmethod
    def _line(kind, row):
        codes = ", ".join("%s %d" % pair for pair in sorted(row.refused.items()))
        return "%-34s %6d %7d %6d %6d %6d  %s" % (
            kind, row.trials, sum(row.refused.values()), row.right, row.place, row.wrong, codes)


TALLY = Tally()  # Of the whole suite.


@dataclasses.dataclass
class Verdict:
    """What became of one trial."""

    refusal: HelperError = None
    problem: str = ""


def judge(act, result, logged, elsewhere, must_refuse):
    """Compares what was answered with what the applications logged."""
    problem = ""
    if elsewhere:
        problem = "another application got %r" % elsewhere
    elif isinstance(result, HelperError):
        if logged:
            problem = "refused (%s), and yet %r arrived" % (result, logged)
    elif must_refuse:
        problem = "not refused: %r, logged %r" % (result, logged)
    elif normalised(logged) != normalised(act.expected(result)):
        problem = "%r, expected %r, logged %r" % (result, act.expected(result), logged)
    return Verdict(result if isinstance(result, HelperError) else None,
                   "%s: %s" % (act.title, problem) if problem else "")
