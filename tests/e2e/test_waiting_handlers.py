"""Handlers that open a dialog and wait in a loop of their own until that is answered."""

import contextlib
import os
import signal
import unittest

import x_keyboard
from e2e import HELPER, Helper, HelperError, is_alive, nodes_of, wait_until
from one_click import OneClick
from test_gtk3 import Gtk3Test


class WaitingHandler(OneClick, Gtk3Test):
    """GTK 3 is still inside the request while its handler waits, and a key can stop it for good.

    Another helper listens to the accessibility bus all the while, as a screen reader would: without
    one GTK 3 stops telling of keys when the helper ends, and would be safe for that alone.
    """

    OPTIONS = ("--tab", "Windows")
    AWAITED = "Ask"

    @classmethod
    def start(cls, *options):
        super().start(*options)
        listener = Helper(HELPER)
        cls.addClassCleanup(listener.close)
        listener.call("connect", {"bundleId": cls.BUNDLE})

    def setUp(self):
        # The last test's application may have stopped.
        self.start()
        super().setUp()

    def expect_node(self, name):
        """The window with that node is the target; it may be another one than a moment ago."""

        def is_seen():
            with contextlib.suppress(HelperError):
                return any(n["name"] == name for n in nodes_of(self.observe()))

        wait_until(is_seen, 5, "a node called " + name)

    def expect_asked(self):
        self.app.wait_for("dialog opened")
        self.expect_node("Answer")
        self.assertEqual(self.app.count("dialog opened"), 1)

    def ask(self):
        self.click("Ask", "button")
        self.expect_asked()

    def tap(self, keysym):
        """A key of the user's."""
        x_keyboard.tap(keysym)
        self.app.wait_for("key " + keysym)

    def expect_answered(self, answer):
        self.app.wait_for("dialog answered " + answer)
        self.expect_works()

    def expect_works(self):
        """No dialog is open, and the main window does what it is told."""
        self.expect_node("Rename window")
        self.click("Rename window", "button")
        self.app.wait_for("clicked Rename window")

    def type_answer(self, text, **args):
        return self.call("input", nodeId=self.node("Answer", "textbox")["id"], kind="type",
                         text=text, **args)

    def test_text_and_return_answer_the_dialog(self):
        self.ask()
        self.type_answer("yes", submit=True)
        self.expect_answered("OK")
        self.assertIn('text Answer "yes"', self.app.lines())
        self.assertEqual(self.app.count("dialog answered OK"), 1)

    def test_a_menu_command_that_asks(self):
        item = self.menu_item(self.observe(), "File", "Ask")
        self.call("click", nodeId=item["id"])
        self.expect_asked()
        for key in ("a", "b"):
            self.call("input", nodeId=self.node("Answer", "textbox")["id"], kind="key", key=key)
        self.call("input", nodeId=self.node("Answer", "textbox")["id"], kind="key", key="Escape")
        self.expect_answered("Cancel")
        self.assertEqual(self.app.lines("key"), ["key a", "key b", "key Escape"])

    def test_a_field_that_asks_when_it_is_set(self):
        field = self.node("Asks when set", "textbox")
        error = self.fails("input", nodeId=field["id"], kind="type", text="x")
        self.assertEqual(error.code, "input_failed")
        self.expect_asked()
        self.tap("a")
        self.type_answer("yes", submit=True)
        self.expect_answered("OK")

    def test_the_buttons_of_the_dialog_are_pressed(self):
        self.ask()
        self.expect_once(self.node("OK", "button"), "dialog answered OK")
        self.expect_works()

    def test_the_pointer_reaches_the_buttons_of_the_dialog(self):
        self.ask()
        self.click("Cancel", "button", count=2)
        self.expect_answered("Cancel")

    def test_a_dialog_that_asks_again(self):
        self.ask()
        self.click("Ask again", "button")
        wait_until(lambda: self.app.count("dialog opened") == 2, 5, "the second dialog opens")
        for answers in (1, 2):
            # The manager gives the focus back to the first dialog a moment after the second closed.
            heard = self.app.count("key a")
            wait_until(lambda: self.tap("a") or self.app.count("key a") > heard, 5,
                       "keys reach dialog %d" % answers)
            self.tap("Return")
            wait_until(lambda: self.app.count("dialog answered OK") == answers, 5,
                       "dialog %d is answered" % answers)
        self.expect_works()

    def survive(self, end_helper):
        """Keys before and after the helper's end; then another helper answers the dialog."""
        self.ask()
        self.tap("a")
        end_helper()
        self.tap("b")
        with Helper(HELPER) as self.helper:
            self.call("connect", bundleId=self.BUNDLE)
            self.assertEqual(self.node("Answer", "textbox")["value"], "ab")
            self.type_answer("yes")
            self.tap("Return")
            self.expect_answered("OK")

    def test_the_helper_ends(self):
        self.survive(self.helper.close)

    def test_the_helper_is_killed(self):
        def kill():
            os.kill(self.helper.pid, signal.SIGKILL)
            self.helper.close()

        self.survive(kill)

    def test_the_helper_ends_before_any_key(self):
        self.ask()
        self.helper.close()
        self.tap("a")
        self.tap("Escape")
        self.app.wait_for("dialog answered Cancel")

    def test_the_application_ends(self):
        self.ask()
        self.app.close()
        self.assertEqual(self.fails("observe").code, "app_closed")
        self.assertTrue(is_alive(self.helper.pid))


if __name__ == "__main__":
    unittest.main()
