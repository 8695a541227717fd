"""Keys, text, clicks and the wheel while another program takes them, or while the keyboard changes.

Who receives an event is decided at the moment of posting: no key goes to a menu or a launcher that
has grabbed the keyboard, nor to a window that has the focus before the window manager says so, and
no button to whoever has grabbed the pointer or lies in the way.
"""

import contextlib
import os
import signal
import sys
import threading
import time
import unittest

import x_keyboard
import x_windows
from e2e import GTK3, GTK4, QT, SCRIPTS, HelperError, wait_until
from private_desktop import PrivateDesktop
from toolkits import ToolkitTest
from x_rival import Rival

MENU_APP = [sys.executable, os.path.join(SCRIPTS, "menu_app.py")]
LONG = "the quick brown 여우 jumps over the lazy 개 " * 4
ASIDE = ("50", "560", "200", "120")  # Where no target lies.


class TypingTest(ToolkitTest):
    """Its target has a field "Name" with the focus, and the keyboard is the same afterwards."""

    OPTIONS = ("--geometry", "560x480+640+60")

    def setUp(self):
        super().setUp()
        mapping, down = x_keyboard.mapping(), x_keyboard.state()
        self.addCleanup(lambda: self.assertEqual(x_keyboard.mapping(), mapping))
        self.addCleanup(lambda: self.assertEqual(x_keyboard.state(), down))
        self.empty_field()

    def empty_field(self):
        self.input("Name", "type", "textbox", text="-")
        self.press("a", "Control")
        self.press("Backspace")
        wait_until(lambda: self.typed() == "", 5, "the field is empty")
        self.app.forget()

    def input(self, name, kind, role=None, **args):
        return self.call("input", 60, nodeId=self.node(name, role)["id"], kind=kind, **args)

    def press(self, key, *modifiers):
        return self.input("Name", "key", "textbox", key=key, modifiers=list(modifiers))

    def type_by_keys(self, text):
        """Types into what has the focus: a label is no field whose value can be set."""
        return self.input("Canvas", "type", text=text)

    def typed(self):
        """What the field holds."""
        lines = self.app.lines_ever("text Name ")
        return lines[-1][len("text Name "):].strip('"') if lines else ""

    @contextlib.contextmanager
    def typing(self, text):
        """Types while the body runs, which begins with the first letters. Gives the errors."""
        node, errors = self.node("Canvas"), []

        def type_():
            try:
                self.call("input", 60, nodeId=node["id"], kind="type", text=text)
            except HelperError as error:
                errors.append(error)

        typist = threading.Thread(target=type_)
        typist.start()
        try:
            wait_until(self.typed, 5, "the first letters arrive")
            yield errors
        finally:
            typist.join()

    def start_rival(self, *command):
        rival = Rival()
        self.addCleanup(rival.close)
        rival.tell("show", *ASIDE, *command)
        return rival

    # What lies over the whole window is met by the proof of the element under the pointer first.
    REFUSALS = ("target_covered", "hit_test_failed")

    def refuses(self, **args):
        """A request that is refused because its events would go elsewhere."""
        name, role = args.pop("node")
        error = self.fails(args.pop("method", "input"), nodeId=self.node(name, role)["id"], **args)
        self.assertIn(error.code, self.REFUSALS, error)

    def refuses_keys(self):
        for key in ("ArrowDown", "Enter"):
            self.refuses(node=("Name", "textbox"), kind="key", key=key)
        self.refuses(node=("Canvas", None), kind="type", text="y한")

    def refuses_the_pointer(self):
        self.refuses(method="click", node=("Quiet", "button"), count=2)
        self.refuses(node=("Canvas", None), kind="scroll", deltaY=400)
        self.refuses(method="hover", node=("Hover me", "button"))

    def expect_nothing(self):
        for kind in ("key", "text", "clicked", "wheel", "hovered"):
            self.assertEqual(self.app.lines(kind), [])


class OthersTakeTheKeyboard(TypingTest):
    BUNDLE, COMMAND = "com.tarqo.test.gtk3", GTK3

    def open_menu(self):
        other = self.start_app(MENU_APP, "--geometry", "300x200+50+100")
        x_windows.click(150, 200, button=3)
        other.wait_for("context")
        # The grab comes with the menu's window, and a key shows that it is there.
        x_keyboard.tap("Up")
        other.wait_for("key Up")
        other.forget()
        return other

    def test_nothing_reaches_an_open_menu(self):
        other = self.open_menu()
        self.refuses_keys()
        self.assertEqual(other.lines(), [])
        self.expect_nothing()
        x_keyboard.tap("Escape")
        other.wait_for("key Escape")
        self.press("End")
        self.app.wait_for("key End")

    def test_nothing_reaches_a_launcher(self):
        rival = self.start_rival()
        for grab in ("grab", "grab2"):
            rival.tell(grab, "keyboard")
            self.refuses_keys()
            self.assertEqual(rival.got(), [])
            self.expect_nothing()
            rival.tell("ungrab")
        self.press("End")
        self.app.wait_for("key End")

    def test_a_grab_in_mid_text_gets_nothing_of_it(self):
        rival = self.start_rival()
        with self.typing(LONG) as errors:
            rival.tell("grab", "keyboard")
        self.assertEqual([error.code for error in errors], ["target_covered"])
        self.assertEqual(rival.got(), [])
        self.assertLess(len(self.typed()), len(LONG))
        self.assertTrue(LONG.startswith(self.typed()), self.typed())

    def test_the_focus_counts_before_the_manager_tells_of_it(self):
        rival = self.start_rival("managed")
        manager = int(os.environ["TARQO_DESKTOP_WM_PID"])
        self.press("End")  # Brings the target back to the front.
        active = x_windows.active_window()
        with self.typing(LONG) as errors:
            os.kill(manager, signal.SIGSTOP)
            self.addCleanup(os.kill, manager, signal.SIGCONT)
            rival.tell("focus")
        self.assertEqual(x_windows.active_window(), active)
        self.assertEqual([error.code for error in errors], ["target_covered"])
        self.assertEqual(rival.got(), [])
        self.assertTrue(LONG.startswith(self.typed()), self.typed())


class WithoutAManager(TypingTest):
    """A desktop on which windows take the focus themselves."""

    BUNDLE, COMMAND = "com.tarqo.test.gtk3", GTK3

    def test_the_focus_is_taken_in_mid_text(self):
        desktop = PrivateDesktop(manager=False)
        self.addCleanup(desktop.close)
        type(self).app = self.start_app(GTK3, env=desktop.environment)
        self.addCleanup(self.start)
        self.start_helper(env=desktop.environment)
        self.connect()
        self.click("Name", "textbox", count=2)
        rival = Rival(env=desktop.environment)
        self.addCleanup(rival.close)
        rival.tell("show", 700, 500, 100, 100, "managed")
        with self.typing(LONG) as errors:
            rival.tell("focus")
        self.assertEqual([error.code for error in errors], ["target_covered"])
        self.assertEqual(rival.got(), [])
        self.assertTrue(LONG.startswith(self.typed()), self.typed())


class OthersTakeThePointer(TypingTest):
    BUNDLE, COMMAND = "com.tarqo.test.gtk3", GTK3

    def test_nothing_reaches_who_has_grabbed_it(self):
        rival = self.start_rival()
        for grab in ("grab", "grab2"):
            rival.tell(grab, "pointer")
            self.refuses_the_pointer()
            self.assertEqual(rival.got(), [])
            self.expect_nothing()
            rival.tell("ungrab")
        self.click("Quiet", "button", count=2)
        self.app.wait_for("clicked Quiet")

    def test_nothing_reaches_a_popup_in_the_way(self):
        rival = Rival()
        self.addCleanup(rival.close)
        box = x_windows.client_of(self.app.window())
        rival.tell("show", box["x"], box["y"], box["width"], box["height"])
        self.refuses_the_pointer()
        self.assertEqual(rival.got(), [])
        self.expect_nothing()

    def test_the_wheel_stops_when_it_is_grabbed(self):
        """The first click goes ahead of the others."""
        rival = self.start_rival()
        node, errors = self.node("Canvas"), []

        def scroll():
            try:
                self.call("input", nodeId=node["id"], kind="scroll", deltaY=400)
            except HelperError as error:
                errors.append(error.code)

        scroller = threading.Thread(target=scroll)
        scroller.start()
        wait_until(lambda: self.app.lines("wheel Canvas"), 5, "the first click arrives")
        rival.tell("grab", "pointer")
        scroller.join()
        self.assertEqual(errors, ["target_covered"])
        self.assertEqual(rival.got(), [])
        self.assertEqual(self.app.count("wheel Canvas down"), 1)


class KeyboardChanges:
    """Mixin: what users do to their keyboard while text is typed."""

    TEXT = "aq wz my; 한글 é (1) "
    ACCENTS = [chr(0x300 + i) for i in range(25)]

    def expect_all(self, text):
        wait_until(lambda: self.typed() == text, 5, "%r arrives (%r)" % (text, self.typed()))

    def test_another_layout_is_set(self):
        text = self.TEXT * 5
        with self.typing(text) as errors:
            with x_keyboard.layout("pc105", "fr"):
                time.sleep(0.5)
        self.assertEqual(errors, [])
        self.expect_all(text)

    def test_another_layout_is_chosen(self):
        text = self.TEXT * 4
        with x_keyboard.layout("pc105", "us,ru"):
            with self.typing(text) as errors:
                for group in (1, 0, 1, 0):
                    x_keyboard.lock_group(group)
                    time.sleep(0.3)
        self.assertEqual(errors, [])
        self.expect_all(text)

    def test_caps_lock_is_switched(self):
        text = self.TEXT * 3
        with self.typing(text) as errors:
            for _ in range(3):
                x_keyboard.tap("Caps_Lock")
                time.sleep(0.2)
        self.assertEqual(errors, [])
        self.expect_all(text)
        _, modifiers, locked = x_keyboard.state()
        self.assertEqual((modifiers, locked), (2, 2), "it is on, as the user has it")
        x_keyboard.tap("Caps_Lock")

    def test_a_character_of_many_code_points(self):
        """There are 19 keys to be remapped."""
        text = "e" + "".join(self.ACCENTS[:18]) + "-"
        self.type_by_keys(text)
        self.expect_all(text)

    def test_a_character_of_too_many_code_points_is_refused(self):
        node = self.node("Canvas")
        error = self.fails("input", nodeId=node["id"], kind="type",
                           text="e" + "".join(self.ACCENTS))
        self.assertEqual((error.code, error.message),
                         ("input_failed", "Could not create a key event."))
        time.sleep(0.3)
        self.assertEqual(self.typed(), "")


class Gtk3Keyboard(KeyboardChanges, TypingTest):
    BUNDLE, COMMAND = "com.tarqo.test.gtk3", GTK3


class Gtk4Keyboard(KeyboardChanges, TypingTest):
    BUNDLE, COMMAND = "com.tarqo.test.gtk4", GTK4
    OPTIONS = ()


class QtKeyboard(KeyboardChanges, TypingTest):
    BUNDLE, COMMAND = "com.tarqo.test.qt", QT


if __name__ == "__main__":
    unittest.main()
