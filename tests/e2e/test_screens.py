"""Screens unlike the usual one: without a window manager, of other depths; and a locked one."""

import os
import signal
import subprocess
import sys
import unittest

from e2e import GTK3, HelperTest, wait_until
from pixels import Picture
from private_desktop import PrivateDesktop
from tarqo_client import HelperError

BUNDLE = "com.tarqo.test.gtk3"

# A screen saver that covers the screen. It says so on standard output when it can be asked.
SCREEN_SAVER = """
from gi.repository import Gio, GLib
NODE = Gio.DBusNodeInfo.new_for_xml(
    '<node><interface name="org.freedesktop.ScreenSaver"><method name="GetActive">'
    '<arg type="b" direction="out"/></method></interface></node>')
def answer(connection, sender, path, interface, method, arguments, invocation):
    invocation.return_value(GLib.Variant("(b)", (True,)))
bus = Gio.bus_get_sync(Gio.BusType.SESSION)
bus.register_object("/org/freedesktop/ScreenSaver", NODE.interfaces[0], answer, None, None)
Gio.bus_own_name_on_connection(bus, "org.freedesktop.ScreenSaver", Gio.BusNameOwnerFlags.NONE,
                               lambda *_: print("ready", flush=True), None)
GLib.MainLoop().run()
"""


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


class BusyScreenSaver(ScreenTest):
    def setUp(self):
        super().setUp()
        self.start_target()
        self.observe()
        self.saver = subprocess.Popen(
            [sys.executable, "-c", SCREEN_SAVER], stdout=subprocess.PIPE,
            env=self.desktop.environment)
        self.addCleanup(self.end_saver)
        self.assertEqual(self.saver.stdout.readline(), b"ready\n")

    def end_saver(self):
        self.saver.kill()
        self.saver.wait()
        self.saver.stdout.close()

    def test_a_lock_holds_while_the_screen_saver_does_not_answer(self):
        # The helper looks again every few seconds for a screen saver that was absent.
        wait_until(self.is_locked, 10, "the screen counts as locked")
        os.kill(self.saver.pid, signal.SIGSTOP)
        for _ in range(4):
            self.assertTrue(self.is_locked())

    def test_a_screen_saver_that_never_answered_counts_as_a_lock(self):
        os.kill(self.saver.pid, signal.SIGSTOP)
        self.start_helper(self.desktop.environment)
        self.assertTrue(self.is_locked())
        self.assertTrue(self.is_locked())

    def is_locked(self):
        try:
            self.observe()
        except HelperError as error:
            return error.code == "session_locked"
        return False


if __name__ == "__main__":
    unittest.main()
