"""Screens unlike the usual one: without a window manager, and of other depths."""

import unittest

from e2e import GTK3, HelperTest
from pixels import Picture
from private_desktop import PrivateDesktop

BUNDLE = "com.tarqo.test.gtk3"

class ScreenTest(HelperTest):
    DEPTH = 24
    MANAGER = False

    def setUp(self):
        self.desktop = PrivateDesktop(depth=self.DEPTH, manager=self.MANAGER)
        self.addCleanup(self.desktop.close)
        self.start_helper(self.desktop.environment)

    def start_target(self):
        app = self.start_app(GTK3, "--geometry", "600x440+100+100", env=self.desktop.environment)
        self.call("connect", bundleId=BUNDLE)
        return app

    def picture(self):
        return Picture(self.observe(image=True)["image"])


class WithoutAManager(ScreenTest):
    def test_an_application_that_is_started_again_is_pictured(self):
        """The server gives its window the number of the one before."""
        for _ in range(3):
            app = self.start_target()
            self.assertGreater(self.picture().colours(), 30)
            app.close()


class DepthTests:
    """Mixin: what a window shows on this screen is compared with what it shows on the usual one."""

    SLACK = 0

    def test_colours_are_those_of_the_usual_screen(self):
        self.assertTrue(self.call("preflight")["screenCapture"])
        self.start_target()
        here = self.picture()
        usual = PrivateDesktop(manager=False)
        self.addCleanup(usual.close)
        self.start_helper(usual.environment)
        self.start_app(GTK3, "--geometry", "600x440+100+100", env=usual.environment)
        self.call("connect", bundleId=BUNDLE)
        there = self.picture()
        self.assertEqual((here.width, here.height), (there.width, there.height))
        far = [(x, y) for y in range(here.height) for x in range(here.width)
               if any(abs(one - other) > self.SLACK
                      for one, other in zip(here.pixel(x, y), there.pixel(x, y)))]
        # Letters are smoothed a little differently.
        self.assertLess(len(far), here.width * here.height / 100)


class Depth16(DepthTests, ScreenTest):
    DEPTH = 16
    SLACK = 8  # Red and blue have 32 shades.


class Depth30(DepthTests, ScreenTest):
    DEPTH = 30
    SLACK = 2


if __name__ == "__main__":
    unittest.main()
