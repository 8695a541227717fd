"""The macOS backend through the whole helper, on the stand-in for macOS, with a real application."""

import base64
import unittest

from e2e import GTK3, HelperTest, nodes_of


class Gtk3ThroughMacOS(HelperTest):
    def setUp(self):
        super().setUp()
        self.app = self.start_app(GTK3)
        self.call("connect", bundleId="com.tarqo.test.gtk3")

    def test_a_target_is_found_as_an_application_of_a_mac(self):
        found = [t for t in self.call("listTargets")["targets"]
                 if t["bundleId"] == "com.tarqo.test.gtk3"]
        self.assertEqual([True], [t["running"] for t in found])

    def test_a_click_presses_a_button_once(self):
        answer = self.click("Save", "button")
        self.assertIn(answer["method"], ("accessibility", "pointer"))
        self.call("settle")
        self.assertIn("Status: saved 1", [n["name"] for n in nodes_of(self.observe())])

    def test_text_of_every_kind_arrives(self):
        node = self.node("Name", "textbox")
        self.call("input", nodeId=node["id"], kind="type", text="Hi 한글 é 😀")
        values = [n.get("value") for n in nodes_of(self.observe()) if n["role"] == "textbox"]
        self.assertIn("Hi 한글 é 😀", values)

    def test_a_window_is_pictured(self):
        picture = base64.b64decode(self.observe(image=True)["image"]["base64"])
        self.assertEqual(b"\x89PNG", picture[:4])

    def test_the_pointer_is_proven_before_a_press(self):
        node = self.node("Canvas")
        self.call("click", nodeId=node["id"], count=2)
        self.app.wait_for("double-clicked Canvas")


if __name__ == "__main__":
    unittest.main()
