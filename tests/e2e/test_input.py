"""Text, keys, the wheel, gestures and context menus, on real applications of four toolkits.

Characters that the keyboard lacks are typed on remapped keys, so after every test the
keyboard must be what it was before.
"""

import contextlib
import os
import signal
import threading
import time
import unittest

import x_keyboard
import x_windows
from e2e import CHROMIUM, GTK3, GTK4, QT, Helper, HelperError, HELPER, nodes_of, wait_until
from toolkits import ToolkitTest

TEXT = "한글 é 漢字 😀"


class InputTest(ToolkitTest):
    def setUp(self):
        super().setUp()
        self.mapping = x_keyboard.mapping()
        self.down = x_keyboard.state()
        self.addCleanup(self.check_keyboard)

    def check_keyboard(self):
        self.assertEqual(x_keyboard.mapping(), self.mapping)
        self.assertEqual(x_keyboard.state(), self.down)
        self.assertEqual(x_keyboard.borrowed_keys(), "")

    def input(self, name, kind, role=None, **args):
        return self.call("input", 60, nodeId=self.node(name, role)["id"], kind=kind, **args)

    def press(self, key, *modifiers, name="Name", role="textbox"):
        """Presses a key on an element, the field "Name" when none is named."""
        return self.input(name, "key", role, key=key, modifiers=list(modifiers))

    def type_by_keys(self, text):
        """Types into whatever has the focus: a label is no field whose value can be set."""
        result = self.input("Canvas", "type", text=text)
        self.assertEqual((result["method"], result["sent"]), ("keyboard", text))

    def expect_text(self, text, name="Name"):
        """The last text that the entry reported is this."""
        line = 'text %s "%s"' % (name, text)
        # A page logs 2,000 characters one by one, on a busy machine for longer than 5 s.
        wait_until(lambda: self.app.lines("text " + name)[-1:] == [line], 15,
                   "%s holds %r (%r)" % (name, text, self.app.lines("text " + name)[-2:]))


class InputTests:
    """Mixin: what every toolkit must do alike."""

    # A node in an area that scrolls, and what that area logs.
    SCROLLING = ("Line 2", "scrolled Lines")
    LONGEST = "The quick brown 여우 jumps 😀. " * 68 + "." * 28
    MENU_IS_HEARD = True
    MENU_STAYS_OPEN = False

    # Text

    def test_a_value_is_replaced(self):
        for text in ("before", TEXT):
            self.app.forget()
            result = self.input("Name", "type", "textbox", text=text)
            self.assertEqual((result["method"], result["sent"], result["submitted"]),
                             ("accessibility", text, False))
            self.expect_text(text)
        self.assertIn("AXValueChanged", self.call("settle")["heard"])
        self.assertEqual(self.node("Name", "textbox")["value"], TEXT)

    def test_the_longest_text_is_a_value(self):
        self.assertEqual(len(self.LONGEST.encode("utf-16-le")), 2 * 2000)
        self.input("Name", "type", "textbox", text=self.LONGEST)
        self.expect_text(self.LONGEST)

    def test_text_is_typed_into_what_has_the_focus(self):
        self.input("Name", "type", "textbox", text="-")
        self.press("a", "Control")
        self.type_by_keys(TEXT)
        self.expect_text(TEXT)

    def test_submitting_presses_return_in_the_field(self):
        self.input("Name", "type", "textbox", text="sent", submit=True)
        self.app.wait_for("key Return")
        lines = self.app.lines()
        self.assertLess(lines.index('text Name "sent"'), lines.index("key Return"))
        self.assertEqual(self.app.lines("clicked"), [])

    def test_a_password_is_typed_and_never_read(self):
        password = self.node("Password", "textbox")
        error = self.fails("input", nodeId=password["id"], kind="type", text="secret")
        self.assertEqual(error.code, "stale_target")
        self.press("Tab")
        self.type_by_keys("sécret")
        self.expect_text("sécret", "Password")
        observation = self.observe()
        self.assertNotIn("value", self.node_in(observation, "Password", "textbox"))
        self.assertNotIn("cret", repr(observation))

    # Keys

    def test_keys_move_in_a_field(self):
        self.input("Name", "type", "textbox", text="ac")
        self.press("End")
        self.press("ArrowLeft")
        self.type_by_keys("b")
        self.expect_text("abc")
        self.press("End", "Shift")
        self.press("Backspace")
        self.expect_text("ab")
        for line in ("key End", "key Left", "key Shift+End", "key BackSpace"):
            self.assertEqual(self.app.count(line), 1, line)

    def test_keys_with_modifiers(self):
        self.press("s", "Control")
        self.app.wait_for("key Control+s")
        self.press("Tab")
        self.app.wait_for("key Tab")
        wait_until(lambda: self.node("Password", "textbox").get("focused"), 2, "the focus moves")
        self.press("Enter")
        self.app.wait_for("key Return")

    # The wheel

    def test_the_wheel_scrolls_down_and_back(self):
        name, line = self.SCROLLING
        self.input(name, "scroll", deltaY=400)
        wait_until(lambda: self.app.lines(line), 5, "it scrolls")
        way = self.places(line)
        self.assertEqual(way, sorted(way))
        self.assertGreater(way[-1], 0)
        self.wait_for_rest(line)
        self.scroll_back()

    def scroll_back(self):
        """Over what shows now in the middle of the area."""
        name, line = self.SCROLLING
        prefix = name.split("2")[0]
        shown = [n for n in nodes_of(self.observe()) if n["name"].startswith(prefix)]
        self.app.forget()
        self.call("input", nodeId=shown[len(shown) // 2]["id"], kind="scroll", deltaY=-2000)
        wait_until(lambda: self.places(line)[-1:] == [0], 5, "it scrolls back")
        self.wait_for_rest(line)

    def wait_for_rest(self, line):
        """Pages scroll by and by."""
        at_rest = None
        while at_rest != self.places(line):
            at_rest = self.places(line)
            time.sleep(0.2)

    def places(self, line):
        return [int(each.split()[2]) for each in self.app.lines(line)]

    def test_sideways_and_a_little_up_nothing_is_dragged(self):
        for deltas in ({"deltaX": -300}, {"deltaX": 300}, {"deltaY": -100}):
            result = self.input("Canvas", "scroll", **deltas)
            self.assertEqual(result["method"], "pointer")
        self.call("settle")
        self.assertEqual(self.app.lines("dragged"), [])

    def test_a_little_up_goes_back_a_little(self):
        name, line = self.SCROLLING
        self.input(name, "scroll", deltaY=400)
        wait_until(lambda: self.places(line), 5, "it scrolls")
        self.wait_for_rest(line)
        furthest = self.places(line)[-1]
        prefix = name.split("2")[0]
        shown = [n for n in nodes_of(self.observe()) if n["name"].startswith(prefix)]
        self.call("input", nodeId=shown[len(shown) // 2]["id"], kind="scroll", deltaY=-100)
        wait_until(lambda: 0 < self.places(line)[-1] < furthest, 5, "it scrolls back a little")
        self.wait_for_rest(line)
        self.scroll_back()

    # The pointer

    def test_hovering_presses_nothing(self):
        result = self.call("hover", nodeId=self.node("Hover me", "button")["id"])
        self.assertEqual(result["method"], "pointer")
        self.app.wait_for("hovered Hover me")
        self.assertEqual(self.app.lines("clicked"), [])

    def test_a_context_menu_opens_and_its_item_is_chosen(self):
        self.call("showMenu", nodeId=self.node("Canvas")["id"])
        self.app.wait_for("context Canvas")
        heard = self.call("settle")["heard"]
        if self.MENU_IS_HEARD:
            self.assertIn("AXMenuOpened", heard)
        self.assertNotEqual(heard, [])
        self.click("Copy", "menuitem")
        self.app.wait_for("menu Context/Copy")
        self.call("settle")
        if self.MENU_STAYS_OPEN:
            self.press("Escape")
        wait_until(lambda: not any((n["role"], n["name"]) == ("menuitem", "Paste")
                                   for n in nodes_of(self.observe())), 3, "the menu closes")
        self.assertEqual(self.app.lines("menu"), ["menu Context/Copy"])


class StateTests:
    """Mixin: what the user does at the keyboard meanwhile."""

    def test_modifiers_that_the_user_holds_count_for_nothing(self):
        self.press("End")
        self.app.forget()
        with x_keyboard.held("Control_L"):
            held = x_keyboard.state()
            self.press("1")
            self.type_by_keys("aB é")
            self.assertEqual(x_keyboard.state(), held)
        wait_until(lambda: self.app.lines('text Name "') and
                   self.app.lines("text Name")[-1].endswith('1aB é"'), 5, "the text arrives")
        self.assertEqual([line for line in self.app.lines("key") if "Control+" in line
                          and "Control+Control" not in line], [])

    def test_caps_lock_counts_for_nothing(self):
        self.input("Name", "type", "textbox", text="-")
        self.press("a", "Control")
        x_keyboard.tap("Caps_Lock")
        self.addCleanup(x_keyboard.tap, "Caps_Lock")
        locked = x_keyboard.state()
        self.assertNotEqual(locked, self.down)
        self.type_by_keys("aB é")
        self.press("z")
        self.expect_text("aB éz")
        self.assertEqual(x_keyboard.state(), locked)


class Gtk3Input(InputTests, StateTests, InputTest):
    BUNDLE, COMMAND = "com.tarqo.test.gtk3", GTK3

    def test_the_wheel_scrolls_down_and_back(self):
        for delta, line in ((120, "wheel Canvas down"), (-600, "wheel Canvas up")):
            self.app.forget()
            self.input("Canvas", "scroll", deltaY=delta)
            wait_until(lambda line=line, delta=delta: self.app.count(line) == abs(delta) // 40, 2,
                       line)


    def test_a_little_up_goes_back_a_little(self):
        self.input("Canvas", "scroll", deltaY=-80)
        wait_until(lambda: self.app.count("wheel Canvas up") == 2, 2, "two clicks up")

    def test_sideways_the_wheel_has_buttons_of_its_own(self):
        for delta, line in ((80, "wheel Canvas right"), (-120, "wheel Canvas left")):
            self.input("Canvas", "scroll", deltaX=delta)
            wait_until(lambda line=line, delta=delta: self.app.count(line) == abs(delta) // 40, 2,
                       line)


class Gtk4Input(InputTests, InputTest):
    BUNDLE, COMMAND = "com.tarqo.test.gtk4", GTK4
    MENU_IS_HEARD = False


class QtInput(InputTests, InputTest):
    BUNDLE, COMMAND = "com.tarqo.test.qt", QT
    SCROLLING = ("file2.txt", "scrolled Files")
    MENU_STAYS_OPEN = True


class ChromiumInput(InputTests, StateTests, InputTest):
    """Its fields take text from the keyboard alone."""

    BUNDLE, COMMAND = "com.tarqo.test.chromium", CHROMIUM
    # The area itself: a page reports the new places of its lines up to half a second late.
    SCROLLING = ("Lines", "scrolled Lines")
    LONGEST = "😀👍🎉🚀" * 250

    def test_every_click_of_the_wheel_counts(self):
        name, line = self.SCROLLING
        for _ in range(4):
            self.call("hover", nodeId=self.node("Hover me", "button")["id"])
            self.input(name, "scroll", deltaY=600)
            wait_until(lambda: self.places(line)[-1:] == [5 * 120], 5, "five clicks move the page")
            self.wait_for_rest(line)
            self.scroll_back()

    def test_the_wheel_does_not_zoom_while_the_user_holds_control(self):
        name, line = self.SCROLLING
        with x_keyboard.held("Control_L"):
            self.input(name, "scroll", deltaY=600)
        wait_until(lambda: self.places(line)[-1:] == [5 * 120], 5, "five clicks move the page")
        self.wait_for_rest(line)
        self.scroll_back()

    def test_a_long_value_is_replaced_to_its_end(self):
        self.click("Canvas", count=2)
        self.app.wait_for("double-clicked Canvas")
        wait_until(lambda: self.node("Notes", "textbox").get("value"), 5, "the notes are reported")
        self.input("Notes", "type", "textbox", text="new")
        wait_until(lambda: self.app.lines("text Notes")[-1:] == ['text Notes "new"'], 5,
                   "the notes hold nothing else")

    def test_no_key_of_a_value_reaches_another_window(self):
        node = self.node("Name", "textbox")
        failures = []

        def type_():
            try:
                self.call("input", 60, nodeId=node["id"], kind="type", text="abc" * 660)
            except HelperError as error:
                failures.append(error.code)

        typist = threading.Thread(target=type_)
        typist.start()
        wait_until(lambda: self.app.lines("text Name"), 5, "the first characters arrive")
        other = self.start_app(GTK3, "--geometry", "500x400+100+100")
        window = other.window()
        wait_until(lambda: x_windows.active_window() == window, 5, "the other window has the focus")
        time.sleep(0.1)  # for a key that was under way
        other.forget()
        typist.join()
        self.assertEqual(failures, ["input_failed"])
        self.assertEqual([line for line in other.lines() if line.startswith(("text", "key"))], [])


class Endings(InputTest):
    """Ends that come in the middle of a text, which needs keys that mean something else then."""

    BUNDLE, COMMAND = "com.tarqo.test.gtk3", GTK3
    FOREIGN = "".join(chr(0xAC00 + 7 * i) for i in range(60))

    def start_typing(self):
        """Types a long text, and returns when the first of it has arrived."""
        node = self.node("Canvas")
        self.press("End")
        node = self.node("Canvas")
        self.app.forget()

        def type_():
            with contextlib.suppress(HelperError, EOFError, ValueError, OSError):
                self.call("input", 60, nodeId=node["id"], kind="type", text=self.FOREIGN)

        typist = threading.Thread(target=type_)
        typist.start()
        wait_until(lambda: self.app.lines("text Name"), 5, "the first characters arrive")
        self.assertNotEqual(x_keyboard.mapping(), self.mapping)
        return typist

    def new_helper(self):
        cls = type(self)
        cls.helper = Helper(HELPER)
        cls.addClassCleanup(cls.helper.close)
        self.connect()

    def test_the_target_is_killed(self):
        typist = self.start_typing()
        self.app.close()
        typist.join()
        self.check_keyboard()
        self.assertEqual(self.fails("observe").code, "app_closed")

    def test_the_client_is_gone(self):
        typist = self.start_typing()
        helper = self.helper
        helper.close()  # Waits for the end of what is under way.
        typist.join()
        self.check_keyboard()
        self.new_helper()

    def test_a_signal_that_asks_it_to_end(self):
        for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
            typist = self.start_typing()
            started = time.monotonic()
            os.kill(self.helper.pid, number)
            typist.join()
            self.helper.close()
            self.assertLess(time.monotonic() - started, 1)
            self.check_keyboard()
            self.new_helper()

    def end_while_a_button_is_down(self, number, method, name, **args):
        node = self.node(name)
        self.app.forget()

        def act():
            with contextlib.suppress(EOFError, ValueError, OSError):
                self.call(method, nodeId=node["id"], **args)

        actor = threading.Thread(target=act)
        actor.start()
        while actor.is_alive() and not x_keyboard.buttons():
            pass  # It is down for 40 ms.
        self.assertNotEqual(x_keyboard.buttons(), 0)
        started = time.monotonic()
        os.kill(self.helper.pid, number)
        actor.join()
        self.assertEqual(self.helper.close(), -number)
        self.assertLess(time.monotonic() - started, 1)
        self.assertEqual(x_keyboard.buttons(), 0)
        self.new_helper()

    def test_a_signal_in_a_click_waits_for_the_button_to_come_up(self):
        for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
            self.end_while_a_button_is_down(number, "click", "Quiet", count=2)
            self.app.wait_for("clicked Quiet")

    def test_a_signal_in_a_click_leaves_what_the_user_holds(self):
        with x_keyboard.held("Control_L"):
            held = x_keyboard.state()
            self.end_while_a_button_is_down(signal.SIGTERM, "click", "Quiet", count=2)
            self.assertEqual(x_keyboard.state(), held)

    def kill_while_it_types(self):
        typist = self.start_typing()
        os.kill(self.helper.pid, signal.SIGKILL)
        typist.join()
        self.helper.close()
        self.assertNotEqual(x_keyboard.mapping(), self.mapping)
        self.assertNotEqual(x_keyboard.borrowed_keys(), "")

    def test_a_helper_that_is_killed_leaves_a_note_for_the_next(self):
        self.kill_while_it_types()
        self.new_helper()
        self.type_by_keys("한")
        self.check_keyboard()

    def test_the_next_takes_no_key_of_a_layout_set_meanwhile(self):
        self.kill_while_it_types()
        with x_keyboard.layout("jp106", "jp"):  # It has keys that others lack.
            chosen = x_keyboard.mapping()
            self.new_helper()
            self.type_by_keys("한")
            self.assertEqual(x_keyboard.mapping(), chosen)
            self.assertEqual(x_keyboard.borrowed_keys(), "")


if __name__ == "__main__":
    unittest.main()
