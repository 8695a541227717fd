"""GTK 3, driven as a user drives it."""

import unittest

from e2e import GTK3, HelperTest, nodes_of
from one_click import (
    OneClickTests, OneDialogClickTests, OneMenuClickTests, OneStalledClickTests)
from toolkits import ClickingTests, LaunchTests, ReadingTests, ToolkitTest


class Gtk3Test(ToolkitTest):
    BUNDLE = "com.tarqo.test.gtk3"
    COMMAND = GTK3
    POINTED = ("Save", "Quiet", "Slow", "Victim", "Hover me")
    OPTIONS = ("--block", "50")
    NODES = frozenset({
        ("button", "Slow"), ("radiobutton", "Red"), ("popupbutton", "Size"),
        ("searchbox", "Search"), ("textbox", "Notes"), ("slider", "Volume"), ("tab", "Data"),
        ("menuitem", "New"), ("menuitem", "PDF"), ("menuitem", "About")})


class Launch(LaunchTests, HelperTest):
    BUNDLE = Gtk3Test.BUNDLE
    NAME = "Tarqo GTK 3"
    TITLE = "Tarqo GTK 3"


class Reading(Gtk3Test, ReadingTests):
    def test_the_menu_bar_lists_enabled_commands_by_their_path(self):
        commands = [n["command"] for n in nodes_of(self.observe()) if "command" in n]
        for command in (["File", "New"], ["File", "Export", "PDF"],
                        ["File", "Export", "Image", "PNG"], ["Help", "About"]):
            self.assertIn(command, commands)
        self.assertNotIn(["File", "Print"], commands)
        self.assertNotIn("High", [path[-1] for path in commands])

    def test_the_place_of_a_node_is_the_place_the_widget_has(self):
        canvas = self.node("Canvas")
        self.call("click", nodeId=canvas["id"], count=2)
        self.app.wait_for("double-clicked Canvas")
        # The label "Canvas" lies in the middle of the 200 x 70 or larger area that reports the
        # press in its own coordinates, and so in the middle of its bounds.
        pressed = self.app.lines("pressed Canvas")[0].split()
        self.assertEqual(pressed[2], "1")
        area = [n for n in nodes_of(self.observe()) if n["id"].endswith(
            ":" + canvas["parentId"].rsplit(":", 1)[1])][0]["bounds"]
        middle = canvas["bounds"]["x"] + canvas["bounds"]["width"] / 2 - area["x"]
        self.assertAlmostEqual(int(pressed[3]), middle, delta=1)


class Clicking(Gtk3Test, ClickingTests):
    pass


class Controls(Gtk3Test, OneClickTests):
    pass


class Stalled(Gtk3Test, OneStalledClickTests):
    pass


class Dialog(Gtk3Test, OneDialogClickTests):
    OPTIONS = ("--tab", "Windows")
    AWAITED = "Open dialog"


class Menus(Gtk3Test, OneMenuClickTests):
    pass


if __name__ == "__main__":
    unittest.main()
