"""Windows without an accessibility tree: what they show is read from their pixels."""

import os
import signal
import sys
import unittest

import x_windows
from e2e import GTK3, SCRIPTS, HelperTest, end_process, nodes_of, wait_until

TK = [sys.executable, os.path.join(SCRIPTS, "tk_app.py")]
TK_BUNDLE = "com.tarqo.test.tk"
XTERM_BUNDLE = "com.tarqo.test.xterm"


def write_entry(bundle, command):
    folder = os.path.join(os.environ["XDG_DATA_HOME"], "applications")
    os.makedirs(folder, exist_ok=True)
    with open(os.path.join(folder, bundle + ".desktop"), "w", encoding="utf-8") as entry:
        entry.write("[Desktop Entry]\nType=Application\nName=%s\nExec=%s\n" % (bundle, command))


class BareWindowTest(HelperTest):
    def line_in(self, observation, words):
        """The node of a line of text that has these words in it."""
        for node in nodes_of(observation):
            if node["role"] == "text" and words in node["name"]:
                return node
        self.fail("no %r among %r" % (words, [n["name"] for n in nodes_of(observation)]))

    def window_in(self, observation):
        node = nodes_of(observation)[0]
        self.assertEqual((node["role"], node["rawRole"]), ("window", "AXWindow"))
        return node


class Terminal(BareWindowTest):
    def setUp(self):
        super().setUp()
        write_entry(XTERM_BUNDLE, "xterm -fa 'DejaVu Sans Mono' -fs 16 -geometry 60x12 "
                    "-title Workbench -e sh")
        self.pid = self.call("connect", bundleId=XTERM_BUNDLE)["pid"]
        self.addCleanup(end_process, self.pid)

    def test_a_command_is_typed_and_its_output_read(self):
        observation = self.observe(image=True)
        node = self.window_in(observation)
        self.assertEqual(node["name"], "Workbench")
        self.assertEqual(self.call("geometry")["bounds"], node["bounds"])
        typed = self.call("input", nodeId=node["id"], kind="type", text="echo fine weather; date",
                          submit=True)
        self.assertEqual((typed["method"], typed["submitted"]), ("keyboard", True))
        wait_until(lambda: any(n["name"] == "fine weather" for n in nodes_of(self.observe())), 10,
                   "the output is read")

    def test_keys_and_the_wheel_go_to_the_window(self):
        node = self.window_in(self.observe(ocr=False))
        self.call("input", nodeId=node["id"], kind="type", text="exit")
        node = self.window_in(self.observe(ocr=False))
        self.assertEqual(self.call("input", nodeId=node["id"], kind="scroll", deltaY=600)["method"],
                         "pointer")
        node = self.window_in(self.observe(ocr=False))
        self.call("input", nodeId=node["id"], kind="key", key="Enter")
        wait_until(lambda: not os.path.exists("/proc/%d" % self.pid), 5, "the shell has ended")


class Tk(BareWindowTest):
    def setUp(self):
        super().setUp()
        write_entry(TK_BUNDLE, " ".join(TK))
        self.app = self.start_app(TK)
        self.assertEqual(self.call("connect", bundleId=TK_BUNDLE)["pid"], self.app.pid)

    def done(self):
        return [line for line in self.app.lines() if not line.startswith(("ready", "menu"))]

    def test_a_button_is_found_by_its_text_and_clicked(self):
        observation = self.observe()
        clicked = self.call("click", nodeId=self.line_in(observation, "Welcome")["id"])
        self.assertEqual((clicked["method"], clicked["via"]), ("pointer", "ocr"))
        self.app.wait_for("welcomed ")

    def test_an_item_of_an_open_menu_is_read_and_chosen(self):
        self.call("click", nodeId=self.line_in(self.observe(), "Actions")["id"])
        observation = self.observe(image=True)
        self.assertIn("menu", [n["role"] for n in nodes_of(observation)])
        self.call("click", nodeId=self.line_in(observation, "Print")["id"])
        self.app.wait_for("printed")
        self.assertEqual(self.app.lines("label"), [])

    def test_a_popup_that_came_over_the_text_is_not_clicked(self):
        line = self.line_in(self.observe(), "Nobody")
        self.app.send_signal(signal.SIGUSR1)
        self.app.wait_for("menu opened")
        error = self.fails("click", nodeId=line["id"])
        self.assertEqual(error.code, "target_covered")
        self.assertIn("holds AXMenu", error.message)
        self.assertEqual(self.done(), [])

    def test_the_text_of_a_popup_that_is_gone_is_not_clicked(self):
        self.app.send_signal(signal.SIGUSR1)
        self.app.wait_for("menu opened")
        line = self.line_in(self.observe(), "Print")
        self.app.send_signal(signal.SIGUSR2)
        self.app.wait_for("menu closed")
        error = self.fails("click", nodeId=line["id"])
        self.assertIn(error.code, ("target_covered", "stale_snapshot"))
        self.assertEqual(self.done(), [])

    def test_another_application_over_it_is_named(self):
        observation = self.observe()
        line = self.line_in(observation, "Welcome")
        cover = self.start_app(GTK3, "--geometry", "560x480+150+120")
        window = cover.window()
        x_windows.keep_above(window)
        wait_until(lambda: x_windows.active_window() == window, 5, "the cover has the focus")
        error = self.fails("click", nodeId=line["id"])
        self.assertEqual(error.code, "target_covered")
        self.assertIn("In the way is the window \"", error.message)
        self.assertEqual(set(error.error["inTheWay"]), {"application", "title"})
        self.assertEqual(self.app.lines("welcomed"), [])


if __name__ == "__main__":
    unittest.main()
