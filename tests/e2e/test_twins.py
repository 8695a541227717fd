"""Two windows of one program that look alike: what is done reaches the one in front, and no other.

Each trial brings one of two equal windows to the front, observes it and acts. Which of them was made
first, whether they lie at one place, and whether the application was standing still when they
changed places must make no difference.
"""

import signal
import sys
import time
import unittest

import x_windows
from e2e import HELPER, Helper, HelperError, nodes_of, wait_until
from safety import Tally, Verdict
from twins import TwinWindows

TALLY = Tally()
TRIALS_AT_LEAST = 60

PLACES = (("one place", ((200, 150), (200, 150))), ("two places", ((100, 120), (820, 420))))
OLDER, NEWER = 1, 2
ARRIVAL_SECONDS = 1.5
AFTERMATH_SECONDS = 0.15


class Act:
    """A request to the node of a role and a name, and what the window in front logs for it."""

    def __init__(self, node, method, line, times=1, **args):
        self.node = node
        self.method = method
        self.line = line
        self.times = times
        self.args = args

    def expected(self, number):
        return [self.line % number] * self.times


SAVE = ("button", "Save")
PRESS = Act(SAVE, "click", "clicked Save in %d")
DOUBLE = Act(SAVE, "click", "clicked Save in %d", 2, count=2)
KEY = Act(SAVE, "input", "key Home in %d", kind="key", key="Home")
ACTS = (PRESS, DOUBLE, KEY)


class Twins:
    """Mixin: the trials of one toolkit."""

    TOOLKIT = ""

    @classmethod
    def setUpClass(cls):
        cls.twins = TwinWindows(cls.TOOLKIT)
        cls.addClassCleanup(cls.twins.close)

    def setUp(self):
        self.problems = []
        self.start_helper()

    def start_helper(self):
        self.helper = Helper(HELPER)
        self.addCleanup(self.helper.close)

    def connect(self, **args):
        result = self.helper.call("connect", {"bundleId": self.twins.bundle, **args})
        self.assertEqual(result["pid"], self.twins.app.pid)

    def node(self, role_and_name):
        """Pages report their content a moment after they are first asked."""

        def found():
            return [n for n in nodes_of(self.helper.call("observe", {"image": False}))
                    if (n["role"], n["name"]) == role_and_name]

        return wait_until(found, 5, "the window shows %r" % (role_and_name,))[0]

    def act(self, kind, act, front):
        """Acts on what the helper takes for the window in front; judges by the log."""
        self.twins.app.forget()
        try:
            node = self.node(act.node)
            result = self.helper.call(act.method, {"nodeId": node["id"], **act.args})
        except HelperError as error:
            result = error
        refusal = result if isinstance(result, HelperError) else None
        expected = [] if refusal else act.expected(front)
        logged = self.await_lines(expected)
        problem = "" if logged == expected else "%s, %s, window %d in front: %r, logged %r" % (
            self.TOOLKIT, kind, front, result, logged)
        TALLY.count(kind, Verdict(refusal, problem))
        self.problems += [problem] if problem else []
        return refusal

    def await_lines(self, expected):
        deadline = time.monotonic() + ARRIVAL_SECONDS
        while len(self.twins.app.lines()) < len(expected) and time.monotonic() < deadline:
            time.sleep(0.01)
        time.sleep(AFTERMATH_SECONDS)
        return self.twins.app.lines()

    def expect_no_problems(self):
        self.assertEqual(self.problems, [], "\n".join(["", *self.problems]))

    def test_the_window_in_front_is_the_one_acted_on(self):
        self.connect()
        for where, places in PLACES:
            self.twins.place(*places)
            for front in (OLDER, NEWER, OLDER):
                self.twins.bring_to_front(front)
                for act in ACTS:
                    refusal = self.act("twins at " + where, act, front)
                    self.assertIsNone(refusal)
        self.expect_no_problems()

    def test_right_after_a_switch(self):
        """The application, which stood still, learns of the focus late; the helper knows nothing of
        before."""
        self.twins.place(*PLACES[0][1])
        for front, pause in ((NEWER, 0), (OLDER, 0.05), (NEWER, 0.3), (OLDER, 0)):
            self.start_helper()
            self.twins.app.send_signal(signal.SIGSTOP)
            self.twins.bring_to_front(front)
            time.sleep(pause)
            self.twins.app.send_signal(signal.SIGCONT)
            self.connect(launch=False)
            self.act("twins right after a switch", PRESS, front)
        self.expect_no_problems()

    def test_from_the_background_the_one_observed_comes_forward(self):
        """Known apart while one of them had the keyboard, they stay known when none has."""
        self.twins.place(*PLACES[0][1])
        for front, other in ((OLDER, NEWER), (NEWER, OLDER)):
            self.twins.bring_to_front(front)
            self.connect()
            node = self.node(SAVE)
            self.twins.bring_to_front(other)
            self.twins.app.forget()
            try:
                result = self.helper.call("click", {"nodeId": node["id"], "count": 2})
            except HelperError as error:
                result = error
            is_refused = isinstance(result, HelperError)
            expected = [] if is_refused else DOUBLE.expected(front)
            logged = self.await_lines(expected)
            problem = "" if logged == expected else "%s: %r, logged %r" % (
                self.TOOLKIT, result, logged)
            TALLY.count("twins, the other raised", Verdict(result if is_refused else None, problem))
            self.problems += [problem] if problem else []
        self.expect_no_problems()


class Gtk3(Twins, unittest.TestCase):
    TOOLKIT = "gtk3"


class Gtk4(Twins, unittest.TestCase):
    TOOLKIT = "gtk4"


class Qt(Twins, unittest.TestCase):
    TOOLKIT = "qt"


class Chromium(Twins, unittest.TestCase):
    TOOLKIT = "chromium"


def main():
    program = unittest.main(exit=False)
    print(TALLY.table())
    if program.testNames is None and TALLY.trials() < TRIALS_AT_LEAST:
        sys.exit("too few trials")
    sys.exit(not program.result.wasSuccessful())


if __name__ == "__main__":
    main()
