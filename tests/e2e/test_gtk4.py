"""GTK 4, driven as a user drives it."""

import unittest

from e2e import GTK4, HelperTest
from one_click import (
    OneClickTests, OneDialogClickTests, OneOpenMenuClickTests, OneStalledClickTests)
from toolkits import ClickingTests, LaunchTests, ReadingTests, ToolkitTest


class Gtk4Test(ToolkitTest):
    BUNDLE = "com.tarqo.test.gtk4"
    COMMAND = GTK4
    NODES = frozenset({("popupbutton", "File"), ("popupbutton", "Help"), ("searchbox", "Search")})


class Launch(LaunchTests, HelperTest):
    BUNDLE = Gtk4Test.BUNDLE
    NAME = "Tarqo GTK 4"
    TITLE = "Tarqo GTK 4"


class Reading(Gtk4Test, ReadingTests):
    pass


class Clicking(Gtk4Test, ClickingTests):
    pass


class Controls(Gtk4Test, OneClickTests):
    pass


class Stalled(Gtk4Test, OneStalledClickTests):
    pass


class Dialog(Gtk4Test, OneDialogClickTests):
    pass


class Menus(Gtk4Test, OneOpenMenuClickTests):
    pass


if __name__ == "__main__":
    unittest.main()
