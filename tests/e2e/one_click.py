"""One click request activates exactly once: what every toolkit must keep to.

Each test clicks one control, waits until the application has settled, has answered something else
and a while more, and reads in the application's own log what was activated.
"""

import contextlib
import os
import signal
import subprocess
import sys
import threading
import time

import x_windows
from e2e import HelperError, nodes_of, wait_until

# For what comes late of a click, after the application has answered once more.
AFTERMATH_SECONDS = 0.3


@contextlib.contextmanager
def busy_machine():
    """Twice as many busy processes as there are processors."""
    burners = [subprocess.Popen([sys.executable, "-c", "while True: pass"])
               for _ in range(2 * (os.cpu_count() or 1))]
    try:
        yield
    finally:
        for burner in burners:
            burner.kill()
            burner.wait()


class OneClick:
    """The means, for a ToolkitTest."""

    def settled(self):
        with contextlib.suppress(HelperError):
            self.call("settle")
            self.observe()
        time.sleep(AFTERMATH_SECONDS)

    def expect_once(self, node, start):
        """Clicks a node: exactly one line of the log starts like that. Gives the click's result."""
        self.app.forget()
        result = self.call("click", nodeId=node["id"])
        self.settled()
        self.assertEqual(len(self.app.lines(start)), 1,
                         "%r logged %r" % (result, self.app.lines()))
        return result

    def expect_each_once(self, name, role, start, repeats):
        for _ in range(repeats):
            self.expect_once(self.node(name, role), start)

    def menu_item(self, observation, *path):
        """The menu bar's node of that path, menu by menu."""
        for node in nodes_of(observation):
            if node.get("command") == list(path):
                return node
        raise AssertionError("no command %r among %r" % (
            path, [n["command"] for n in nodes_of(observation) if "command" in n]))


class OneClickTests(OneClick):
    """Mixin: buttons and check boxes."""

    REPEATS = 2

    def test_a_button_that_changes_a_label(self):
        self.expect_each_once("Save", "button", "clicked", self.REPEATS)
        self.node("Status: saved %d" % len(self.app.lines_ever("clicked Save")))

    def test_a_button_that_announces_nothing(self):
        self.expect_each_once("Quiet", "button", "clicked", self.REPEATS)

    def test_a_check_box_that_changes_a_label(self):
        self.expect_each_once("Agree", "checkbox", "toggled", self.REPEATS)

    def test_a_check_box_that_announces_nothing(self):
        self.expect_each_once("Plain", "checkbox", "toggled", self.REPEATS)

    def test_under_load(self):
        with busy_machine():
            for name, role, start in (("Quiet", "button", "clicked"),
                                      ("Plain", "checkbox", "toggled"),
                                      ("Save", "button", "clicked")):
                self.expect_once(self.node(name, role), start)


class OneStalledClickTests(OneClick):
    """Mixin: an application that stands still at any moment of a click, for any while.

    A press that it has taken but not confirmed looks like one that it did not get.
    """

    def expect_at_most_once(self, name, role, start, delay, pause):
        """Clicks; `delay` seconds later the application stands still for `pause` seconds."""
        node = self.node(name, role)
        self.app.forget()

        def stall():
            time.sleep(delay)
            self.app.send_signal(signal.SIGSTOP)
            time.sleep(pause)
            self.app.send_signal(signal.SIGCONT)

        staller = threading.Thread(target=stall)
        staller.start()
        result = None
        with contextlib.suppress(HelperError):
            result = self.call("click", nodeId=node["id"])
        staller.join()
        self.settled()
        count = len(self.app.lines(start))
        told = "%r after %.2f s for %.1f s: %r" % (result, delay, pause, self.app.lines())
        self.assertLessEqual(count, 1, told)
        if result:
            self.assertEqual(count, 1, told)

    def test_a_button(self):
        # The press is made about 0.14 s after the request. A pause outlasts what the helper waits
        # for a sign of life, or even for an answer.
        for delay, pause in ((0.0, 1.2), (0.13, 0.4), (0.13, 1.2), (0.15, 0.4), (0.15, 1.2),
                             (0.2, 1.2)):
            self.expect_at_most_once("Quiet", "button", "clicked", delay, pause)

    def test_a_check_box(self):
        for delay, pause in ((0.14, 0.4), (0.14, 1.2)):
            self.expect_at_most_once("Plain", "checkbox", "toggled", delay, pause)


class OneDialogClickTests(OneClick):
    """Mixin: a button whose handler opens a dialog, and the dialog's own buttons."""

    def test_a_button_that_opens_a_dialog(self):
        for answer in ("OK", "Cancel"):
            self.expect_once(self.node("Open dialog", "button"), "clicked Open dialog")
            self.app.wait_for("dialog opened")  # Pages report it a moment later.
            self.assertEqual(self.app.count("dialog opened"), 1)
            self.expect_once(self.dialog_button(answer), "dialog answered " + answer)

    def dialog_button(self, name):
        """A button of the dialog that is open, by a name with or without a mnemonic."""

        def found():
            return [n for n in nodes_of(self.observe())
                    if n["role"] == "button" and n["name"].replace("&", "") == name]

        return wait_until(found, 5, "the dialog shows a button called " + name)[0]


class OneMenuClickTests(OneClick):
    """Mixin: items of closed menus, in the menu bar's branch."""

    REPEATS = 2

    def press_file(self):
        """Presses the title of the File menu as a user does."""
        client = x_windows.client_of(self.window())
        x_windows.click(client["x"] + 15, client["y"] + 12)

    def test_settle_hears_a_menu_open_and_close(self):
        for heard in ("AXMenuOpened", "AXMenuClosed"):
            start = time.time() * 1000
            self.press_file()
            wait_until(lambda: heard in self.call("settle", sinceMs=start)["heard"], 3, heard)
            time.sleep(0.5)  # A second press at once would be a double click, which closes nothing.

    def test_an_item_of_a_menu_that_the_user_opened(self):
        closed = x_windows.shown_count()
        for _ in range(self.REPEATS):
            self.press_file()
            wait_until(lambda: x_windows.shown_count() > closed, 5, "the menu opens")
            self.expect_once(self.menu_item(self.observe(), "File", "New"), "menu File/New")
            if x_windows.shown_count() > closed:  # Qt leaves it open.
                self.press_file()
                wait_until(lambda: x_windows.shown_count() == closed, 5, "the menu closes")

    def test_an_item_of_a_closed_menu(self):
        self.expect_once(self.menu_item(self.observe(), "File", "New"), "menu File/New")
        self.expect_once(self.menu_item(self.observe(), "File", "Export", "PDF"),
                         "menu File/Export/PDF")


class OneOpenMenuClickTests(OneClick):
    """Mixin: items that show only in the menu that is open, in the window."""

    REPEATS = 2
    MENU = "File"
    ITEM = "New"
    LINE = "menu File/New"

    def test_settle_hears_a_menu_open(self):
        self.click(self.MENU)
        self.assertIn("AXMenuOpened", self.call("settle")["heard"])
        self.click(self.MENU)
        self.app.forget()

    def test_an_item_in_the_menu_that_is_open(self):
        for _ in range(self.REPEATS):
            self.click(self.MENU)
            self.call("settle")
            observation = self.observe()
            found = [n for n in nodes_of(observation) if "command" not in n
                     and (n["role"], n["name"]) == ("menuitem", self.ITEM)]
            self.assertEqual(len(found), 1,
                             [(n["role"], n["name"]) for n in nodes_of(observation)])
            self.expect_once(found[0], self.LINE)
