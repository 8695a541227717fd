"""Qt, driven as a user drives it."""

import unittest

from e2e import QT, HelperTest, nodes_of
from one_click import OneClickTests, OneDialogClickTests, OneMenuClickTests, OneStalledClickTests
from toolkits import ClickingTests, LaunchTests, ReadingTests, ToolkitTest


class QtTest(ToolkitTest):
    BUNDLE = "com.tarqo.test.qt"
    COMMAND = QT
    NODES = frozenset({("popupbutton", "Small"), ("table", "Files"), ("list", "Fruits"),
                       ("menuitem", "New"), ("menuitem", "PDF"), ("menuitem", "About")})


class Launch(LaunchTests, HelperTest):
    BUNDLE = QtTest.BUNDLE
    NAME = "Tarqo Qt"
    TITLE = "Tarqo Qt"


class Reading(QtTest, ReadingTests):
    def test_the_menu_bar_lists_enabled_commands_by_their_path(self):
        commands = [n["command"] for n in nodes_of(self.observe()) if "command" in n]
        self.assertEqual(commands, [["File", "New"], ["File", "Export", "PDF"],
                                    ["File", "Export", "Image", "PNG"], ["Help", "About"]])


class Clicking(QtTest, ClickingTests):
    pass


class Controls(QtTest, OneClickTests):
    pass


class Stalled(QtTest, OneStalledClickTests):
    pass


class Dialog(QtTest, OneDialogClickTests):
    pass


class PlainWidget(QtTest):
    """A window that is no main window and no dialog."""

    OPTIONS = ("--plain",)

    def test_it_is_the_window_and_what_is_in_it_works(self):
        observation = self.observe()
        self.assertEqual(observation["snapshot"]["title"], "Tarqo Qt")
        self.click("Save", "button")
        self.app.wait_for("clicked Save")


class Menus(QtTest, OneMenuClickTests):
    pass


if __name__ == "__main__":
    unittest.main()
