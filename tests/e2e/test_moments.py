"""No event reaches a stranger that comes between a proof and its event.

In each trial a window of another application comes over the target, takes the keyboard, or the
target's own window goes, at a moment of an action that is known by the events the action has caused
so far. The stranger may get nothing; the target all of the action when the response says so, and
otherwise not all of it.
"""

import dataclasses
import sys
import time
import unittest

import moments
from e2e import HelperError, wait_until
from moments import DOUBLE, HOVER, KEY, MENU, TYPE, Intruder, Target
from safety import Tally, Verdict

TALLY = Tally()
TRIALS_AT_LEAST = 90

# The pointer glides for 180 ms after its first motion, and rests for 250 ms before it presses.
GLIDE = (("motion", 1, 0), ("motion", 1, 90))
REST = (("motion", 1, 190), ("motion", 1, 300))
LAST_MOMENT = (("motion", 1, 400), ("motion", 1, 424))


@dataclasses.dataclass(frozen=True)
class Trial:
    kind: str
    act: moments.Act
    moment: tuple
    deed: str


def trials_of(toolkit):
    click, wheel = toolkit.click, toolkit.wheel
    yield Trial("glide of a click", click, GLIDE[0], "popup")
    yield Trial("glide of a click", DOUBLE, GLIDE[1], "window")
    yield Trial("rest of a click", click, REST[0], "window")
    yield Trial("rest of a click", DOUBLE, REST[1], "popup")
    yield Trial("last moment of a click", click, LAST_MOMENT[0], "popup")
    yield Trial("last moment of a click", DOUBLE, LAST_MOMENT[1], "popup")
    yield Trial("first of two clicks", DOUBLE, ("press", 1, 10), "popup")
    yield Trial("between two clicks", DOUBLE, ("release", 1, 5), "popup")
    yield Trial("between two clicks", DOUBLE, ("release", 1, 20), "window")
    if toolkit.points_at_menus:
        yield Trial("before a menu's press", MENU, ("motion", 1, 5), "popup")
        yield Trial("before a menu's press", MENU, ("motion", 1, 25), "window")
        yield Trial("after a menu's press", MENU, ("press", 1, 5), "popup")
    yield Trial("hover", HOVER, GLIDE[1], "popup")
    yield Trial("hover", HOVER, REST[0], "window")
    yield Trial("hover", HOVER, ("motion", 1, 500), "popup")
    yield Trial("before the wheel turns", wheel, ("motion", 1, 0), "popup")
    yield Trial("between turns of the wheel", wheel, ("wheel", 1, 5), "popup")
    yield Trial("between turns of the wheel", wheel, ("wheel", 1, 20), "window")
    # A key is posted when the target has had 120 ms to come to the front.
    for delay, deed in ((100, "keys"), (125, "keys"), (132, "keys"), (140, "keys"), (130, "focus")):
        yield Trial("before a key", KEY, ("now", 1, delay), deed)
    yield Trial("between keys of a text", TYPE, ("key", 1, 5), "keys")
    yield Trial("between keys of a text", TYPE, ("key", 3, 15), "keys")
    yield Trial("between keys of a text", TYPE, ("key", 2, 20), "focus")
    yield Trial("window moves meanwhile", DOUBLE, GLIDE[1], "move")
    yield Trial("window moves meanwhile", click, REST[1], "move")
    yield Trial("window moves meanwhile", DOUBLE, LAST_MOMENT[0], "move")


def unchanged(toolkit):
    return (toolkit.click, DOUBLE, MENU, HOVER, toolkit.wheel, KEY, TYPE)


class Moments:
    """Mixin: the trials of one toolkit."""

    NAME = ""

    @classmethod
    def setUpClass(cls):
        cls.intruder = Intruder()
        cls.addClassCleanup(cls.intruder.close)
        cls.start_target()
        cls.addClassCleanup(lambda: cls.target.close())

    @classmethod
    def start_target(cls):
        cls.target = Target(moments.TOOLKITS[cls.NAME])
        bounds = cls.target.nodes()[0]["bounds"]
        cls.bounds = {key: int(value) for key, value in bounds.items()}
        cls.cover_all()

    @classmethod
    def cover_all(cls):
        """The popup will lie over all of the target's window."""
        cls.intruder.tell("popup", *(cls.bounds[key] for key in ("x", "y", "width", "height")))

    def setUp(self):
        self.problems = []

    def prepare(self, act):
        self.intruder.tell("away", self.target.window)
        self.intruder.tell("park", *moments.PARKED)
        node = self.target.node(act)
        self.intruder.take()
        self.target.app.forget()
        return node

    def outcome(self, kind, act, result, must_refuse=False):
        """Compares what both logged with the response."""
        lines = self.target.app.lines
        if isinstance(result, HelperError):
            time.sleep(moments.AFTERMATH_SECONDS)
        else:
            deadline = time.monotonic() + moments.ARRIVAL_SECONDS
            while (not moments.is_all(act, moments.told(act, lines()))
                   and time.monotonic() < deadline):
                time.sleep(0.02)
            time.sleep(0.05)
        came, got = self.intruder.take()
        problem = moments.problem_of(act, result, got, lines())
        refused = isinstance(result, HelperError) or "clicks" in result
        if must_refuse and not problem and not refused:
            problem = "not refused: %r" % result
        refusal = result if isinstance(result, HelperError) else None
        TALLY.count(kind, Verdict(refusal, problem))
        if problem:
            self.problems.append("%s, %s: %s: %s" % (self.NAME, kind, act.title, problem))
        self.undo(act, lines())
        return came

    def undo(self, act, lines):
        """Closes the menu and scrolls back."""
        if "context Canvas" in lines:
            self.intruder.tell("away", self.target.window)
            escape = dataclasses.replace(KEY, args=(("kind", "key"), ("key", "Escape")))
            self.target.request(escape, self.target.node(KEY))
        if any(line.startswith("scrolled ") for line in lines):
            self.intruder.tell("away", self.target.window)
            back = dataclasses.replace(act, args=moments.BACK)
            wait_until(lambda: self.target.request(back, self.target.row_like(act)) and
                       self.target.app.lines("scrolled ")[-1].endswith(" 0"), 5,
                       "the area is scrolled back")

    def deed(self, name):
        if name != "move":
            return name.split()
        x, y = moments.HOME
        return ["move", self.target.window, x + 170, y + 110]

    def test_a_stranger_comes(self):
        for trial in trials_of(self.target.toolkit):
            node = self.prepare(trial.act)
            self.intruder.tell("after", *trial.moment, *self.deed(trial.deed))
            came = self.outcome(trial.kind, trial.act, self.target.request(trial.act, node))
            self.assertTrue(came, "%r: the moment did not come" % (trial,))
            if trial.deed == "move":
                self.intruder.tell("now", "move", self.target.window, *moments.HOME)
        self.assertEqual(self.problems, [], "\n".join(["", *self.problems]))

    def try_undisturbed(self, act):
        node = self.prepare(act)
        result = self.target.request(act, node)
        if isinstance(result, HelperError):
            self.problems.append("%s: %s refused: %s" % (self.NAME, act.title, result))
        self.outcome("nothing", act, result)

    def test_nothing_comes(self):
        for act in unchanged(self.target.toolkit):
            self.try_undisturbed(act)
        # Where the window was before, or who lay over it, is of no account.
        click = self.target.toolkit.click
        x, y = moments.HOME
        for place in ((x + 170, y + 110), (x, y)):
            self.intruder.tell("now", "move", self.target.window, *place)
            self.try_undisturbed(click)
        self.assertEqual(self.problems, [], "\n".join(["", *self.problems]))

    def test_the_window_closes(self):
        node = self.prepare(DOUBLE)
        self.intruder.tell("after", *REST[1], "close", self.target.window)
        self.outcome("window closes meanwhile", DOUBLE, self.target.request(DOUBLE, node))
        self.target.close()
        self.start_target()
        self.assertEqual(self.problems, [], "\n".join(["", *self.problems]))


class Gtk3(Moments, unittest.TestCase):
    NAME = "GTK 3"


class Gtk4(Moments, unittest.TestCase):
    NAME = "GTK 4"


class Qt(Moments, unittest.TestCase):
    NAME = "Qt"


class Chromium(Moments, unittest.TestCase):
    NAME = "Chromium"


def main():
    program = unittest.main(exit=False)
    print(TALLY.table())
    if program.testNames is None and TALLY.trials() - TALLY.row("nothing").trials < TRIALS_AT_LEAST:
        sys.exit("too few trials")
    sys.exit(not program.result.wasSuccessful())


if __name__ == "__main__":
    main()
