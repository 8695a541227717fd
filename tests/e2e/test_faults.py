"""Applications that hang or die, and desktops that lose a part: clear failures, never a hang."""

import os
import signal
import threading
import time
import unittest

from e2e import GTK3, AppLog, HelperTest, nodes_of, wait_until
from private_desktop import PrivateDesktop
from tarqo_client import HelperError

BUNDLE = "com.tarqo.test.gtk3"

# What a request may cost above its own budget: one messaging time-out, the menu bar's budget, and
# what the machine itself takes.
MESSAGING_SECONDS = 0.3
MENU_BAR_SECONDS = 1.5
SLACK_SECONDS = 1.2

# A throttled application is stopped for the pause after each such run. What counts is the time it
# had a processor for: on a busy machine it may wait long for one. Idle, it runs for the longest.
RUN_SECONDS = 0.001
LONGEST_RUN_SECONDS = 0.05
PAUSE_SECONDS = 0.03

# After that it has answered whatever it was asked, and is not left alone any more for having been
# silent.
REST_SECONDS = 0.7


class SlowTest(HelperTest):
    def expect_window_first(self, observation):
        """Every node hangs on one before it, and the first is the window at its place."""
        nodes = nodes_of(observation)
        snapshot = observation["snapshot"]["id"]
        self.assertGreaterEqual(len(nodes), 1)
        self.assertEqual((nodes[0]["id"], nodes[0]["parentId"]), (snapshot + ":0", None))
        self.assertEqual(nodes[0]["rawRole"], "AXWindow")
        self.assertGreater(nodes[0]["bounds"]["width"], 100)
        listed = {nodes[0]["id"]}
        for node in nodes[1:]:
            self.assertIn(node["parentId"], {None, *listed})
            listed.add(node["id"])


class Hanging(SlowTest):
    def setUp(self):
        super().setUp()
        self.app = self.start_app(GTK3, "--nodes", "1500")
        self.addCleanup(self.app.send_signal, signal.SIGCONT)
        self.call("connect", bundleId=BUNDLE)
        self.whole = len(nodes_of(self.observe()))
        self.assertGreater(self.whole, 50)

    def timed(self, method, **args):
        """The result or the error of a call, and how long it took."""
        start = time.monotonic()
        try:
            answer = self.call(method, timeout=60, **args)
        except HelperError as error:
            answer = error
        return answer, time.monotonic() - start

    def expect_whole(self):
        self.app.send_signal(signal.SIGCONT)
        wait_until(self.is_whole, 10, "the tree is whole again")

    def is_whole(self):
        observation = self.observe(ocr=False)
        return (len(nodes_of(observation)) == self.whole
                and not observation["snapshot"]["truncated"])

    def test_an_application_that_hangs_already(self):
        self.app.send_signal(signal.SIGSTOP)
        for image in (False, True):
            answer, seconds = self.timed("observe", image=image, ocr=False, timeoutMs=1000)
            self.assertLess(seconds, 1 + MESSAGING_SECONDS + MENU_BAR_SECONDS + SLACK_SECONDS)
            self.assertNotIsInstance(answer, HelperError)
            self.assertTrue(answer["snapshot"]["truncated"])
            self.expect_window_first(answer)
        # What its window shows can still be read.
        shown = self.observe(timeoutMs=1000)
        self.assertTrue(shown["snapshot"]["truncated"])
        self.expect_window_first(shown)
        self.assertIn("Label 11", {n["name"] for n in nodes_of(shown) if "confidence" in n})
        settled, seconds = self.timed("settle")
        self.assertEqual(settled["heard"], [])
        self.assertLess(seconds, 1)
        self.expect_whole()

    def test_an_application_that_hangs_in_the_middle_of_the_walk(self):
        cut = 0
        for milliseconds in (40, 80, 120, 160, 200, 250):
            stopper = threading.Timer(
                milliseconds / 1000, self.app.send_signal, [signal.SIGSTOP])
            stopper.start()
            answer, seconds = self.timed("observe", ocr=False, timeoutMs=1000)
            stopper.join()
            self.assertLess(seconds, 1 + MESSAGING_SECONDS + MENU_BAR_SECONDS + SLACK_SECONDS)
            self.assertNotIsInstance(answer, HelperError)
            self.assertLessEqual(len(nodes_of(answer)), self.whole)
            self.expect_window_first(answer)
            if answer["snapshot"]["truncated"]:
                cut += 1
                self.assertIn("The UI tree was truncated by the configured observation budget.",
                              answer["omissions"])
            self.expect_whole()
        self.assertGreater(cut, 0)

    def test_what_is_left_alone_after_a_silence_is_not_taken_for_empty(self):
        self.app.send_signal(signal.SIGSTOP)
        self.timed("observe", ocr=False, image=False, timeoutMs=1000)
        self.app.send_signal(signal.SIGCONT)
        answer, _ = self.timed("observe", ocr=False, image=False)
        while len(nodes_of(answer)) < self.whole:
            self.assertTrue(answer["snapshot"]["truncated"])
            answer, _ = self.timed("observe", ocr=False, image=False)

    def test_a_click_on_what_hangs_is_no_success_and_comes_once(self):
        self.app.close()
        self.app = self.start_app(GTK3)
        self.call("connect", bundleId=BUNDLE)
        node = self.node("Quiet", "button")
        self.app.send_signal(signal.SIGSTOP)
        answer, seconds = self.timed("click", nodeId=node["id"])
        self.assertIsInstance(answer, HelperError)
        self.assertLess(seconds, 4)
        self.app.send_signal(signal.SIGCONT)
        time.sleep(1.5)
        self.assertLessEqual(len(self.app.lines("clicked")), 1)

    def test_one_that_hangs_does_not_hinder_another(self):
        other = self.start_app(GTK3, "--title", "Other", "--geometry", "400x300+20+20")
        self.app.send_signal(signal.SIGSTOP)
        # Both belong to one bundle, so the one started first is the target; it must not take the
        # listing with it.
        answer, seconds = self.timed("listTargets")
        self.assertLess(seconds, 1)
        self.assertTrue([t["running"] for t in answer["targets"] if t["bundleId"] == BUNDLE][0])
        other.close()


class Throttled(SlowTest):
    """An application that answers, but gets to run for a small part of the time alone."""

    def setUp(self):
        super().setUp()
        self.app = self.start_app(GTK3, "--nodes", "300")
        self.call("connect", bundleId=BUNDLE)
        self.whole = len(nodes_of(self.observe(ocr=False, menubar=False)))
        self.assertGreater(self.whole, 50)

    def processor_seconds(self):
        with open("/proc/%d/schedstat" % self.app.pid, encoding="ascii") as file:
            return int(file.read().split()[0]) / 1e9

    def keep_slow(self, over):
        while not over.is_set():
            self.app.send_signal(signal.SIGSTOP)
            time.sleep(PAUSE_SECONDS)
            enough = self.processor_seconds() + RUN_SECONDS
            latest = time.monotonic() + LONGEST_RUN_SECONDS
            self.app.send_signal(signal.SIGCONT)
            while self.processor_seconds() < enough and time.monotonic() < latest:
                time.sleep(RUN_SECONDS / 2)

    def observe_slow(self, milliseconds, **args):
        """The number of nodes of the throttled application, and whether that is not all."""
        time.sleep(REST_SECONDS)
        over = threading.Event()
        throttle = threading.Thread(target=self.keep_slow, args=[over])
        throttle.start()
        time.sleep(2 * PAUSE_SECONDS)
        try:
            answer = self.observe(timeoutMs=milliseconds, menubar=False, timeout=90, **args)
        finally:
            over.set()
            throttle.join()
        self.expect_window_first(answer)
        return len(nodes_of(answer)), answer["snapshot"]["truncated"]

    def test_what_it_told_in_time_is_kept_and_more_time_tells_more(self):
        # How far it gets in which time depends on the machine, and a silence of 0.3 s, which may
        # come by chance, ends any walk: so every time has two chances.
        least = min(self.observe_slow(100, ocr=False)[0] for _ in range(2))
        kept = most = 0
        for milliseconds in (300, 450, 700, 1100, 1800, 3000, 6000, 12000):
            for _ in range(2):
                count, truncated = self.observe_slow(milliseconds, ocr=False)
                most = max(most, count)
                kept = max(kept, count if truncated else 0)
            if kept > 5 and most > least:
                break
        self.assertGreater(kept, 5)
        self.assertGreater(most, least)

    def test_recognised_text_hangs_on_the_window(self):
        for milliseconds in (100, 700):
            self.observe_slow(milliseconds, forceOcr=True)


class Dying(HelperTest):
    def setUp(self):
        super().setUp()
        self.app = self.start_app(GTK3, "--nodes", "1500")
        self.call("connect", bundleId=BUNDLE)

    def expect_closed(self):
        for method in ("observe", "geometry", "settle", "click"):
            error = self.fails(method)
            self.assertEqual(error.code, "app_closed")
            self.assertEqual(error.message,
                             "The application closed; reconnect before continuing.")

    def expect_reconnected(self):
        again = self.start_app(GTK3)
        self.assertEqual(self.call("connect", bundleId=BUNDLE)["pid"], again.pid)
        self.node("Save", "button")

    def test_an_application_that_was_killed(self):
        self.observe()
        self.app.close()
        self.expect_closed()
        self.expect_reconnected()

    def test_an_application_that_is_killed_in_the_middle_of_the_walk(self):
        for milliseconds in (20, 60, 120, 200):
            killer = threading.Timer(
                milliseconds / 1000, self.app.send_signal, [signal.SIGKILL])
            killer.start()
            try:
                self.assertTrue(self.call("observe", maxNodes=5000)["snapshot"]["nodes"])
            except HelperError as error:
                self.assertIn(error.code, ("no_window", "app_closed", "window_not_visible",
                                           "window_capture_failed", "stale_snapshot"))
            killer.join()
            self.app.close()
            self.expect_closed()
            self.app = self.start_app(GTK3, "--nodes", "1500")
            self.call("connect", bundleId=BUNDLE)

    def test_one_that_ends_by_its_own_button(self):
        self.app.close()
        self.app = self.start_app(GTK3)
        self.call("connect", bundleId=BUNDLE)
        quit_ = [n for n in nodes_of(self.observe()) if n.get("command") == ["File", "Quit"]][0]
        self.call("click", nodeId=quit_["id"])
        self.app.wait_for("menu File/Quit")
        wait_until(lambda: self.app.has_ended, 5, "the application ends")
        self.expect_closed()


class LosingTheDesktop(HelperTest):
    """On a desktop of its own, whose parts end and come back while the helper lives."""

    def setUp(self):
        self.desktop = PrivateDesktop()
        self.addCleanup(self.desktop.close)
        self.start_helper(env=AppLog().environment(self.desktop.environment))
        self.app = self.start_app(GTK3, env=self.desktop.environment)
        self.call("connect", bundleId=BUNDLE)
        self.call("observe")

    def expect_failures(self, codes):
        """Every method that needs the desktop fails with one of the codes, and in time."""
        for method in ("observe", "geometry", "settle", "click", "observe"):
            start = time.monotonic()
            error = self.fails(method)
            self.assertIn(error.code, codes, method)
            self.assertNotEqual(error.message, "")
            self.assertLess(time.monotonic() - start, 6)
        self.assertIn("known", self.call("host"))
        self.assertIn("targets", self.call("listTargets"))

    def is_trusted(self):
        try:
            return self.call("preflight")["accessibility"]
        except HelperError:
            return False

    def expect_all_back(self):
        """The helper works again as soon as the application is there again."""
        self.app.close()
        self.app = self.start_app(GTK3, env=self.desktop.environment)
        self.assertEqual(self.call("connect", bundleId=BUNDLE)["pid"], self.app.pid)
        self.assertGreater(self.call("observe")["image"]["width"], 100)
        self.click("Quiet", "button")
        self.app.wait_for("clicked Quiet")
        self.assertEqual(self.call("settle")["listening"], True)

    def test_the_accessibility_bus(self):
        self.desktop.end_accessibility()
        self.expect_failures({"ax_not_trusted"})
        error = self.fails("connect", bundleId=BUNDLE)
        self.assertEqual(error.code, "ax_not_trusted")
        self.assertEqual(error.error["permission"], "accessibility")
        self.assertEqual(
            error.message, "The accessibility bus of this desktop session does not answer. Install "
            "at-spi2-core, log in to the desktop again, then run again.")
        self.desktop.start_accessibility()
        self.expect_all_back()

    def test_the_target_is_heard_again_after_the_accessibility_bus_came_back(self):
        self.desktop.end_accessibility()
        self.desktop.start_accessibility()
        self.app.forget()
        self.app.send_signal(signal.SIGUSR1)
        self.app.wait_for("ready", 20)

        def is_heard():
            # The target was not connected to again: the same process is there with a new window.
            try:
                self.click("Save", "button")
                settled = self.call("settle")
            except HelperError:
                return False
            self.assertTrue(settled["listening"])
            # Of the press itself the helper knows without the bus.
            return bool(set(settled["heard"]) - {"AXActionAcknowledged"})
        wait_until(is_heard, 10, "the target is heard")

    def test_an_accessibility_bus_that_comes_back_switched_off(self):
        self.desktop.end_accessibility()
        self.assertFalse(self.is_trusted())
        self.desktop.start_accessibility()
        self.desktop.ask(
            "dbus-send", "--session", "--print-reply", "--dest=org.a11y.Bus", "/org/a11y/bus",
            "org.freedesktop.DBus.Properties.Set", "string:org.a11y.Status", "string:IsEnabled",
            "variant:boolean:false")
        self.assertTrue(self.is_trusted())
        self.expect_all_back()

    def test_an_accessibility_bus_that_hangs(self):
        for pid in self.desktop.accessibility_processes():
            os.kill(pid, signal.SIGSTOP)
        self.expect_failures({"ax_not_trusted", "no_window"})
        for pid in self.desktop.accessibility_processes():
            os.kill(pid, signal.SIGCONT)
        # A bus that kept the helper waiting is left alone for a while.
        wait_until(self.is_trusted, 15, "the accessibility bus is asked again")
        self.expect_all_back()

    def test_the_session_bus(self):
        self.desktop.end_session_bus()
        # The accessibility bus goes with it, a moment later.
        wait_until(lambda: not self.is_trusted(), 5, "the loss is noticed")
        self.expect_failures({"ax_not_trusted"})
        error = self.fails("connect", bundleId=BUNDLE)
        self.assertEqual(
            error.message, "There is no D-Bus session to reach applications through. Start this "
            "helper inside the user's desktop session, with DBUS_SESSION_BUS_ADDRESS set, then run "
            "again.")
        self.desktop.end_accessibility()
        self.desktop.start_session_bus()
        self.desktop.start_accessibility()
        self.expect_all_back()

    def test_the_display(self):
        self.desktop.end_display()
        wait_until(lambda: self.app.has_ended, 5, "the application loses its display")
        self.expect_failures({"app_closed"})
        error = self.fails("preflight")
        self.assertEqual((error.code, error.error["permission"]),
                         ("screen_capture_denied", "screen"))
        self.assertEqual(self.fails("connect", bundleId=BUNDLE).code, "launch_failed")
        self.desktop.start_display()
        self.expect_all_back()
        self.call("preflight")

    def test_the_window_manager(self):
        self.desktop.end_manager()
        observation = self.call("observe")
        self.assertGreater(observation["image"]["width"], 100)
        self.desktop.start_manager()
        self.expect_all_back()


if __name__ == "__main__":
    unittest.main()
