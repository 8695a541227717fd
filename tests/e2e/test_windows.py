"""Where windows are, which one is the target's, and what lies over it."""

import os
import signal
import time
import unittest

import x_windows
from e2e import (
    GTK3, HELPER, QT, READY_SECONDS, AppLog, Helper, HelperError, HelperTest, end_process, nodes_of,
    wait_until)
from pixels import Picture
from private_desktop import PrivateDesktop

BUNDLE = "com.tarqo.test.gtk3"
QT_BUNDLE = "com.tarqo.test.qt"


class WindowTest(HelperTest):
    OPTIONS = ()

    def setUp(self):
        super().setUp()
        self.app = self.start_app(GTK3, "--geometry", "600x440+100+100", *self.OPTIONS)
        self.call("connect", bundleId=BUNDLE)
        self.window = self.app.window()

    def start_cover(self, geometry="560x480+150+120"):
        """Another application, whose window comes up over the target's."""
        cover = self.start_app(QT, "--geometry", geometry)
        window = cover.window()
        wait_until(lambda: x_windows.active_window() == window, 5, "the cover has the focus")
        return window

    def visibility(self):
        return self.call("geometry")["visibility"]

    def expect_title(self, title):
        def has_title():
            try:
                return self.observe()["snapshot"]["title"] == title
            except HelperError as error:
                if error.code != "stale_snapshot":
                    raise
                return False  # The window changed while it was looked at.

        wait_until(has_title, 5, "the target is the window called " + title)


class Covered(WindowTest):
    def test_another_application_in_front_occludes(self):
        self.assertEqual(self.visibility(), "visible")
        self.start_cover()
        self.assertEqual(self.visibility(), "occluded")
        # To look at the tree alone brings nothing forward.
        self.node("Save", "button")
        self.assertEqual(self.visibility(), "occluded")

    def test_another_application_beside_does_not(self):
        self.start_cover("300x200+850+500")
        self.assertEqual(self.visibility(), "visible")

    def test_a_covered_window_is_brought_forward_for_its_picture(self):
        before = self.observe_at_rest()
        self.start_cover()
        after = self.observe(image=True)
        self.assertEqual(after["image"]["bounds"], before["image"]["bounds"])
        changes = Picture(before["image"]).changes(Picture(after["image"]))
        # The cover has some 200,000 pixels; a window that comes to the front changes its own colours
        # in a short animation.
        self.assertLess(len(changes), 10000, "the picture shows what lay over the window")
        self.assertEqual(self.visibility(), "visible")
        self.assertEqual(x_windows.active_window(), self.window)

    def test_a_click_brings_the_target_forward(self):
        self.start_cover()
        node = self.node("Quiet", "button")
        self.assertEqual(self.call("click", nodeId=node["id"], count=2)["method"],
                         "pointer-double")
        wait_until(lambda: self.app.count("clicked Quiet") == 2, 3, "the button is pressed twice")
        self.assertEqual(x_windows.active_window(), self.window)

    def in_the_way(self, error):
        named = error.error["inTheWay"]
        return " In the way is the window \"%s\" of %s." % (named["title"], named["application"])

    def test_what_stays_above_is_neither_pictured_nor_clicked(self):
        cover = self.start_cover()
        x_windows.keep_above(cover)
        error = self.fails("observe")
        self.assertEqual(error.code, "window_covered")
        self.assertEqual(error.message, "Another application's window is in front of the target "
                         "window's area, so reading its pixels would read that window. Bring the "
                         "target window to the front, then look again." + self.in_the_way(error))
        error = self.fails("click", nodeId=self.node("Quiet", "button")["id"], count=2)
        self.assertEqual(error.code, "target_covered")
        self.assertEqual(error.message, "Another application's window covers the click position." +
                         self.in_the_way(error))
        time.sleep(0.3)
        self.assertEqual(self.app.lines("clicked"), [])

    def test_a_window_manager_that_does_not_answer(self):
        self.start_cover()
        node = self.node("Quiet", "button")
        manager = int(os.environ["TARQO_DESKTOP_WM_PID"])
        os.kill(manager, signal.SIGSTOP)
        try:
            start = time.monotonic()
            error = self.fails("click", nodeId=node["id"])
            self.assertEqual(error.code, "focus_failed")
            self.assertEqual(error.message, "Could not bring the target application to the front." +
                             self.in_the_way(error))
            self.assertLess(time.monotonic() - start, 3)
        finally:
            os.kill(manager, signal.SIGCONT)
        self.click("Quiet", "button")
        self.app.wait_for("clicked Quiet")
        self.assertEqual(self.app.count("clicked Quiet"), 1)


class Moved(WindowTest):
    def test_a_minimised_window_is_hidden_until_connected_again(self):
        shown = self.call("geometry")["bounds"]
        x_windows.minimise(self.window)
        wait_until(lambda: self.call("geometry")["minimized"], 3, "the window is minimised")
        geometry = self.call("geometry")
        self.assertEqual((geometry["visibility"], geometry["hidden"]), ("hidden", False))
        self.assertEqual(self.fails("observe").code, "window_not_visible")
        self.call("connect", bundleId=BUNDLE)
        self.assertIs(self.call("geometry")["minimized"], False)
        # The window manager plays a picture of the window that grows.
        wait_until(lambda: self.visibility() == "visible", 2, "the window is where it was")
        self.assertEqual(self.observe(image=True)["image"]["bounds"], shown)

    def test_a_click_goes_to_where_the_window_is_now(self):
        node = self.node("Quiet", "button")
        x_windows.move(self.window, 500, 300)
        moved = {"x": 500, "y": 300}
        wait_until(lambda: {k: x_windows.bounds_of(self.window)[k] for k in moved} == moved, 3,
                   "the window moves")
        self.call("click", nodeId=node["id"], count=2)
        wait_until(lambda: self.app.count("clicked Quiet") == 2, 3, "the button is pressed twice")
        bounds = self.observe(image=True)["image"]["bounds"]
        self.assertEqual(bounds, x_windows.bounds_of(self.window))
        again = self.node("Quiet", "button")["bounds"]
        self.assertEqual((again["x"] - node["bounds"]["x"], again["y"] - node["bounds"]["y"]),
                         (400, 200))

    def test_a_window_partly_off_the_screen_is_pictured_whole(self):
        x_windows.move(self.window, 900, 500)
        wait_until(lambda: x_windows.bounds_of(self.window)["x"] == 900, 3, "the window moves")
        self.assertEqual(self.visibility(), "visible")
        image = self.observe(image=True)["image"]
        bounds = x_windows.bounds_of(self.window)
        self.assertEqual((image["width"], image["height"]), (bounds["width"], bounds["height"]))

    def test_a_title_that_changes(self):
        self.app.close()
        self.app = self.start_app(GTK3, "--tab", "Windows")
        self.call("connect", bundleId=BUNDLE)
        self.click("Rename window", "button")
        self.expect_title("Renamed")


class Several(WindowTest):
    OPTIONS = ("--tab", "Windows")

    def test_a_dialog_is_the_target_while_it_is_open(self):
        self.click("Open dialog", "button")
        self.expect_title("Question")
        observation = self.observe()
        dialog = [w for w in x_windows.windows_of(self.app.pid) if w != self.window]
        self.assertEqual(self.call("geometry")["bounds"], x_windows.bounds_of(dialog[0]))
        self.node_in(observation, "Shall we go on?")
        self.call("click", nodeId=self.node_in(observation, "OK", "button")["id"], count=2)
        self.app.wait_for("dialog answered OK")
        self.expect_title("Tarqo GTK 3")

    def test_a_second_window_is_the_target_while_it_has_the_focus(self):
        self.click("Open window", "button")
        self.expect_title("Second")
        self.click("Greet", "button", count=2)
        wait_until(lambda: self.app.count("clicked Greet") == 2, 3, "the button is pressed twice")
        self.click("Close", "button")
        self.app.wait_for("window closed Second")
        self.expect_title("Tarqo GTK 3")
        self.node("Open window", "button")

    def test_two_windows_of_one_title_are_told_apart(self):
        self.click("Open twin", "button")
        self.app.wait_for("window opened Tarqo GTK 3")
        wait_until(lambda: any(n["name"] == "Greet" for n in nodes_of(self.observe())), 5,
                   "the twin is the target")
        twin = [w for w in x_windows.windows_of(self.app.pid) if w != self.window][0]
        self.assertEqual(self.observe(image=True)["image"]["bounds"], x_windows.bounds_of(twin))
        self.click("Greet", "button", count=2)
        wait_until(lambda: self.app.count("clicked Greet") == 2, 3, "the button is pressed twice")
        self.click("Close", "button")
        self.app.wait_for("window closed Tarqo GTK 3")
        wait_until(lambda: any(n["name"] == "Open twin" for n in nodes_of(self.observe())), 5,
                   "the first window is the target again")

    def test_an_application_without_a_window(self):
        node = self.node("Minimize window", "button")
        self.call("click", nodeId=node["id"])
        wait_until(lambda: self.call("geometry")["minimized"], 3, "the window is minimised")
        self.assertEqual(self.fails("observe").code, "window_not_visible")

    def test_two_applications_in_turn(self):
        other = self.start_app(QT)
        first = self.node("Open dialog", "button")
        self.assertEqual(self.call("connect", bundleId=QT_BUNDLE)["pid"], other.pid)
        self.assertEqual(self.fails("click", nodeId=first["id"]).code, "stale_snapshot")
        self.assertEqual(self.observe(image=True)["snapshot"]["title"], "Tarqo Qt")
        self.click("Save", "button")
        other.wait_for("clicked Save")
        self.call("connect", bundleId=BUNDLE)
        self.assertEqual(self.observe(image=True)["snapshot"]["title"], "Tarqo GTK 3")
        self.click("Open dialog", "button")
        self.app.wait_for("dialog opened")
        self.assertEqual(self.app.count("clicked Open dialog"), 1)


class OtherDesktop(HelperTest):
    """Two desktops of one user: what runs on one is no application of the other."""

    def setUp(self):
        other = PrivateDesktop()
        self.addCleanup(other.close)
        log = AppLog()
        with Helper(HELPER, env=log.environment(other.environment)) as helper:
            # Started by its desktop entry, which stands in its environment for all to see.
            self.there = helper.call("connect", {"bundleId": BUNDLE})["pid"]
        self.addCleanup(end_process, self.there)
        log.wait_for("ready", READY_SECONDS)
        self.start_helper()

    def test_an_application_of_the_other_one_is_not_found(self):
        self.assertEqual(self.fails("connect", bundleId=BUNDLE, launch=False).code,
                         "app_not_running")
        target = [t for t in self.call("listTargets")["targets"] if t["bundleId"] == BUNDLE]
        self.assertEqual([t["running"] for t in target], [False])

    def test_an_application_of_this_one_is_found_beside_it(self):
        app = self.start_app(GTK3)
        self.assertEqual(self.call("connect", bundleId=BUNDLE)["pid"], app.pid)


if __name__ == "__main__":
    unittest.main()
