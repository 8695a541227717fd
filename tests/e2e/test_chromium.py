"""Chromium, driven as a user drives it."""

import unittest

from e2e import CHROMIUM, HelperTest, nodes_of
from one_click import (
    OneClickTests, OneDialogClickTests, OneOpenMenuClickTests, OneStalledClickTests)
from toolkits import ClickingTests, LaunchTests, ReadingTests, ToolkitTest


class ChromiumTest(ToolkitTest):
    BUNDLE = "com.tarqo.test.chromium"
    COMMAND = CHROMIUM
    NODES = frozenset({("link", "Below"), ("searchbox", "Search"), ("webarea", "Tarqo page")})

    def setUp(self):
        super().setUp()
        # On a busy machine the page's tree can be away for a moment, the window's alone there.
        self.wait_for_node(self.AWAITED)


class Launch(LaunchTests, HelperTest):
    BUNDLE = ChromiumTest.BUNDLE
    NAME = "Tarqo Chromium"
    TITLE = "Tarqo page - Chromium"


class Reading(ChromiumTest, ReadingTests):
    def test_the_page_tells_its_address(self):
        page = [n for n in nodes_of(self.observe()) if n["role"] == "webarea"]
        url = self.app.lines_ever("url ")[0].split()[1]
        self.assertEqual([n["url"] for n in page], [url])


class Clicking(ChromiumTest, ClickingTests):
    pass


class Controls(ChromiumTest, OneClickTests):
    pass


class Stalled(ChromiumTest, OneStalledClickTests):
    pass


class Dialog(ChromiumTest, OneDialogClickTests):
    pass


class Menus(ChromiumTest, OneOpenMenuClickTests):
    MENU = "Actions"
    ITEM = "Copy"
    LINE = "menu Actions/Copy"


if __name__ == "__main__":
    unittest.main()
