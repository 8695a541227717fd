"""No event reaches a wrong target, whatever changes between an observation and its action.

Each trial observes, changes one thing behind the helper's back, and acts on what was observed. The
helper may refuse, or act on the intended control wherever it is now; nothing else may be activated
or receive an event, in the target or in the application whose equal window lies at the same place.
A table of all trials is printed at the end.
"""

import os
import shutil
import signal
import sys
import tempfile
import unittest

import safety
from e2e import APPS, HELPER, Helper, HelperError, wait_until
from safety import TALLY, button, check, double_button, double_check, menu_item, typing
from safety_text import RecognisedText  # pylint: disable=unused-import

UNCHANGED = "nothing"
HOME = (60, 40)
AWAY = (760, 300)

BUTTONS = [button("Save"), button("Quiet"), button("Victim"), double_button("Save"),
           double_button("Quiet")]
CHECKS = [check("Agree"), check("Plain"), check("Bold"), double_check("Agree")]
POINTED = [safety.ENTRY, safety.CANVAS, safety.DOUBLE_CANVAS, safety.LABEL, safety.TAB,
           safety.HOVER, safety.MENU, safety.MENU_BUTTON, safety.SCROLL]
TYPED = [typing("one"), typing("two"), safety.KEY, safety.KEY_CHECK]
PLACED = BUTTONS[:4] + CHECKS[:2] + CHECKS[3:] + POINTED + TYPED
# Either half has every method.
EVEN, ODD = PLACED[::2], PLACED[1::2]
MENU_ITEMS = [menu_item("New", "File/New"), menu_item("PDF", "File/Export/PDF")]


class Safety(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.helper = Helper(HELPER)
        cls.addClassCleanup(cls.helper.close)
        folder = tempfile.mkdtemp()
        cls.addClassCleanup(shutil.rmtree, folder)
        # Under a name of its own it belongs to no desktop entry.
        program = shutil.copy(os.path.join(APPS, "gtk3_app"), os.path.join(folder, "other_app"))
        cls.other = safety.CommandedApp(program, "--title", "Other")
        cls.addClassCleanup(cls.other.close)
        cls.other.tell("move", *HOME)
        cls.target = None
        cls.start_target()
        cls.addClassCleanup(lambda: cls.target.close())
        cls.missing = set()
        for act in (safety.HOVER, safety.MENU, typing("zero"), safety.KEY, safety.SCROLL):
            cls.probe(act)

    @classmethod
    def start_target(cls):
        if cls.target:
            cls.target.close()
        cls.target = safety.CommandedApp(os.path.join(APPS, "gtk3_app"), "--title", "Target")
        cls.page = "Controls"
        cls.is_fresh = True
        result = cls.helper.call("connect", {"bundleId": "com.tarqo.test.gtk3"})
        assert result["pid"] == cls.target.pid, result
        cls.target.tell("move", *HOME)
        cls.target.tell("raise")

    @classmethod
    def probe(cls, act):
        """Leaves out what the helper cannot do yet."""
        try:
            cls.request(act, act.find(cls.observe()))
        except HelperError as error:
            if error.message in safety.MISSING:
                print("left out: %s (%s)" % (act.title, error.message), flush=True)
                cls.missing.add((act.method, dict(act.args).get("kind")))
        cls.target.tell("dismiss")

    @classmethod
    def observe(cls):
        try:
            return cls.helper.call("observe", {"image": False})
        except HelperError as error:
            # The focus may still be on its way from one window to another.
            if error.code != "stale_snapshot":
                raise
            return cls.helper.call("observe", {"image": False})

    @classmethod
    def request(cls, act, node):
        return cls.helper.call(act.method, {"nodeId": node["id"], **dict(act.args)})

    def setUp(self):
        self.problems = []
        if not self.is_fresh:
            self.start_target()
        type(self).is_fresh = False

    def is_possible(self, act):
        return (act.method, dict(act.args).get("kind")) not in self.missing

    def trial(self, kind, act, change, must_refuse=False):
        """Observes, changes, acts, judges. `change` gets the bounds of the node.

        With `must_refuse` there is no right way to act: what was observed is not there any more.
        """
        if act.page != self.page:
            self.target.tell("tab", act.page)
            type(self).page = act.page
        node = act.find(self.observe())
        change(node.get("bounds"))
        for app in (self.target, self.other):
            app.forget()
        try:
            result = self.request(act, node)
        except HelperError as error:
            result = error
        if self.target.is_running():
            self.target.send_signal(signal.SIGCONT)
        verdict = safety.judge(act, result, self.target.take_lines(), self.other.take_lines(),
                               must_refuse)
        self.count(kind, act, verdict)

    def count(self, kind, act, verdict):
        TALLY.count(kind, verdict)
        if verdict.problem:
            self.problems.append(verdict.problem)
        elif not verdict.refusal:
            for command in act.after:
                self.target.tell(*command.split())

    def trials(self, kind, acts, change, undo=lambda: None, must_refuse=False):
        for act in filter(self.is_possible, acts):
            self.trial(kind, act, lambda bounds, act=act: change(act, bounds), must_refuse)
            undo()
        self.assertEqual(self.problems, [], "\n".join(["", *self.problems]))

    # Nothing is changed.

    def test_nothing_changes(self):
        acts = (BUTTONS[:3] * 9 + CHECKS[:3] * 9 + MENU_ITEMS * 8 + TYPED + safety.RADIOS * 4
                + BUTTONS[3:] + CHECKS[3:] + POINTED
                + [safety.CHOICE, safety.DOUBLE_ENTRY, safety.HOVER_CANVAS, safety.ROW, safety.LINE]
                + safety.CELLS)
        self.trials(UNCHANGED, acts, lambda act, bounds: None)
        self.assertEqual(TALLY.row(UNCHANGED).refused.total(), 0)

    # Something comes over the target.

    def test_a_window_of_another_application_comes_over_it(self):
        def change(act, bounds):
            self.other.tell("move", int(bounds["x"]) - 100, max(0, int(bounds["y"]) - 90))
            self.other.tell("raise")

        self.trials("covered by a window", ODD, change, self.put_back)

    def test_a_window_that_stays_on_top_comes_over_it(self):
        def change(act, bounds):
            self.other.tell("above", "on")
            self.other.tell("raise")

        def undo():
            self.other.tell("above", "off")
            self.put_back()

        self.trials("covered, kept on top", EVEN, change, undo)

    def test_a_popup_of_another_application_comes_over_it(self):
        def change(act, bounds):
            self.other.tell("cover", int(bounds["x"]) - 4, int(bounds["y"]) - 4,
                            int(bounds["width"]) + 8, int(bounds["height"]) + 8)

        self.trials("covered by a popup", ODD, change, lambda: self.other.tell("uncover"))

    def test_a_window_of_the_same_application_comes_over_it(self):
        def change(act, bounds):
            # So that the button "Greet" of the new window comes to lie there.
            self.target.tell("open", "Second", int(bounds["x"] + bounds["width"] / 2) - 160,
                             max(0, int(bounds["y"] + bounds["height"] / 2) - 60))

        self.trials("covered by a window of its own", EVEN, change,
                    lambda: self.target.tell("close", "Second"))

    def put_back(self):
        self.other.tell("move", *HOME)
        self.target.tell("raise")

    # The window changes.

    def test_the_window_moves(self):
        places = [(7, 5), (300, 90), (61, 41), (90, 200), HOME, (60, 74), (132, 40)]

        def change(act, bounds):
            places.append(places.pop(0))
            self.target.tell("move", *places[-1])

        self.trials("window moved", EVEN + MENU_ITEMS, change)
        self.target.tell("move", *HOME)

    def test_the_window_changes_its_size(self):
        sizes = [(660, 500), (900, 700), (700, 480), (720, 600)]

        def change(act, bounds):
            sizes.append(sizes.pop(0))
            self.target.tell("resize", *sizes[-1])

        self.trials("window resized", ODD, change)
        self.target.tell("resize", 640, 480)

    def test_the_window_is_minimised(self):
        self.trials("window minimised", EVEN[::2],
                    lambda act, bounds: self.target.tell("minimise"),
                    lambda: self.target.tell("raise"))

    def test_the_window_is_closed(self):
        greet = safety.click("Greet", "button", "Greet", "clicked Greet")
        double = safety.double_click("Greet", "button", "Greet", *["clicked Greet"] * 2)
        for kind, count in (("window closed", 1), ("window closed, its twin left", 2)):
            for act in (greet, double) * 3:
                for _ in range(count):
                    self.target.tell("open", "Second", 200, 150)
                self.trial(kind, act, lambda bounds: self.target.tell("close", "Second"), True)
                if count == 2:
                    self.target.tell("close", "Second")
            self.assertEqual(self.problems, [])

    # The element changes.

    def test_the_element_is_removed(self):
        self.trials("element removed", BUTTONS + CHECKS,
                    lambda act, bounds: self.target.tell("detach", act.name),
                    lambda: self.target.tell("attach"), must_refuse=True)

    def test_the_element_is_replaced_by_one_of_its_name(self):
        self.trials("element replaced by its like", BUTTONS * 2,
                    lambda act, bounds: self.target.tell("replace", act.name), must_refuse=True)

    def test_the_element_is_hidden(self):
        self.change_by_name("element hidden", BUTTONS + CHECKS + [safety.ENTRY],
                            "hide", "show")

    def test_the_element_is_disabled(self):
        self.change_by_name("element disabled",
                            BUTTONS + CHECKS + MENU_ITEMS + [safety.ENTRY, *TYPED[:3]],
                            "disable", "enable")

    def change_by_name(self, kind, acts, do, undo):
        for act in filter(self.is_possible, acts):
            self.trial(kind, act, lambda bounds, act=act: self.target.tell(do, act.name), True)
            self.target.tell(undo, act.name)
        self.assertEqual(self.problems, [])

    def test_the_element_is_renamed(self):
        acts = (BUTTONS + CHECKS + MENU_ITEMS + TYPED
                + [safety.ENTRY, safety.CANVAS, safety.DOUBLE_CANVAS, safety.TAB])
        for act in filter(self.is_possible, acts):
            self.trial("element renamed", act,
                       lambda bounds, act=act: self.target.tell("rename", act.name, "Else"), True)
            self.target.tell("rename", "Else", act.name)
        self.assertEqual(self.problems, [])

    def test_the_element_changes_places_with_its_neighbour(self):
        neighbours = {"Save": "Quiet", "Quiet": "Slow", "Victim": "Remove", "Agree": "Plain",
                      "Plain": "Agree", "Bold": "Blue"}
        self.trials("swapped with its neighbour", BUTTONS + CHECKS,
                    lambda act, bounds: self.target.tell("swap", act.name, neighbours[act.name]))

    def test_another_page_comes_over_it(self):
        self.trials("page of tabs switched", ODD,
                    lambda act, bounds: self.target.tell("tab", "Windows"),
                    lambda: self.target.tell("tab", "Controls"))

    def test_the_element_is_scrolled_away(self):
        for act, area in ((safety.LINE, "Line_12"), (safety.CELLS[0], "Files")):
            for y in (120, 350, 600):
                self.trial("scrolled out of sight", act,
                           lambda bounds, y=y, area=area: self.target.tell("scroll", area, y))
                self.target.tell("scroll", area, 0)
        self.assertEqual(self.problems, [])

    # The application changes.

    def test_another_application_takes_the_focus(self):
        def change(act, bounds):
            self.other.tell("move", *AWAY)
            self.other.tell("raise")

        self.trials("focus taken", EVEN + MENU_ITEMS, change, self.put_back)

    def test_the_application_stops_answering(self):
        self.trials("application stopped", BUTTONS[:2] + CHECKS[3:] + [safety.ENTRY, *TYPED[1:3]],
                    lambda act, bounds: self.target.send_signal(signal.SIGSTOP),
                    self.wait_for_an_answer, must_refuse=True)

    def wait_for_an_answer(self):
        """What did not answer is left alone for a while, so that a tree may come late or cut."""

        def answers():
            try:
                return not self.helper.call(
                    "observe", {"image": False, "ocr": False})["snapshot"]["truncated"]
            except HelperError:
                return False

        wait_until(answers, 5, "the application answers again")

    def test_the_application_is_killed(self):
        def change(act, bounds):
            self.target.close()

        acts = [BUTTONS[0], BUTTONS[3], CHECKS[0], safety.CANVAS, safety.ENTRY, MENU_ITEMS[0]]
        self.trials("application killed", acts, change, self.start_target, must_refuse=True)


def main():
    program = unittest.main(exit=False)
    print(TALLY.table())
    unchanged = TALLY.row(UNCHANGED).trials
    if program.testNames is None and (unchanged < 100 or TALLY.trials() - unchanged < 200):
        sys.exit("too few trials")
    sys.exit(not program.result.wasSuccessful())


if __name__ == "__main__":
    main()
