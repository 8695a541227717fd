"""Buttons whose handlers take their time: each press is made once."""

import unittest

from one_click import OneClick
from test_chromium import ChromiumTest as Chromium
from test_gtk3 import Gtk3Test as Gtk3
from test_gtk4 import Gtk4Test as Gtk4
from test_qt import QtTest as Qt

STEPS = range(100, 1001, 50)


class SlowButtonTests(OneClick):
    """Mixin: handlers that take from a tenth of a second to a whole one."""

    # Whether the helper waits for the handler, which the toolkit runs at once.
    IS_AWAITED = False
    OPTIONS = ("--block", ",".join(map(str, STEPS)))

    def test_each_press_is_made_once(self):
        for presses, milliseconds in enumerate(STEPS, 1):
            result = self.click("Slow", "button")
            self.app.wait_for("blocked %d" % milliseconds)
            told = "%d ms: %r logged %r" % (milliseconds, result, self.app.lines("clicked"))
            self.assertEqual(result["method"], "accessibility", told)
            self.assertEqual(self.app.count("clicked Slow"), presses, told)
            if self.IS_AWAITED and milliseconds > 800:
                self.assertIs(result.get("pending"), True, told)
        self.settled()
        self.assertEqual(self.app.lines("clicked"), ["clicked Slow"] * len(STEPS))


class SlowGtk3(SlowButtonTests, Gtk3):
    IS_AWAITED = True


class SlowGtk4(SlowButtonTests, Gtk4):
    pass


class SlowQt(SlowButtonTests, Qt):
    pass


class SlowChromium(SlowButtonTests, Chromium):
    pass


if __name__ == "__main__":
    unittest.main()
