"""What every toolkit must do alike: be started, be found, be read, be pictured, be clicked.

A suite mixes these classes into its own and says with class variables what it is about.
"""

import time

import x_windows
from e2e import (
    HELPER, App, AppLog, Helper, HelperTest, end_process, is_alive, nodes_of, wait_until)
from pixels import Picture, centre, contains, is_inside

# The pieces of a node that say what it is: role, name.
COMMON_NODES = {
    ("button", "Save"), ("button", "Quiet"), ("button", "Disabled"), ("checkbox", "Agree"),
    ("checkbox", "Plain"), ("textbox", "Name"), ("textbox", "Password"), ("text", "Status: idle"),
}


class ToolkitTest(HelperTest):
    """A test of an application of a toolkit, connected to it. The tests of a class share it."""

    BUNDLE = ""
    COMMAND = ()
    OPTIONS = ()
    # A control of the page shown first.
    AWAITED = "Save"
    helper = app = None

    def setUp(self):
        if self.app is None or self.app.has_ended:
            self.start()
        self.app.forget()

    @classmethod
    def start(cls, *options):
        """Starts the application anew, and a helper with it."""
        cls.doClassCleanups()
        cls.helper = Helper(HELPER)
        cls.addClassCleanup(cls.helper.close)
        cls.app = App([*cls.COMMAND, *(options or cls.OPTIONS)])
        cls.addClassCleanup(cls.app.close)
        cls().connect()

    def connect(self):
        result = self.call("connect", bundleId=self.BUNDLE)
        self.assertEqual(result["pid"], self.app.pid)
        self.wait_for_node(self.AWAITED)

    def wait_for_node(self, name):
        """Pages report their content a moment after they are first asked."""
        wait_until(lambda: any(n["name"] == name for n in nodes_of(self.observe())), 10,
                   "there is a node called " + name)

    def window(self):
        """The X window of the application."""
        window = self.app.window()
        self.assertEqual(x_windows.windows_of(self.app.pid), [window])
        return window


class LaunchTests:
    """Mixin: starting by the desktop entry."""

    NAME = ""
    TITLE = ""

    def test_connect_starts_it_by_its_desktop_entry(self):
        log = AppLog()
        self.start_helper(env=log.environment())
        self.assertEqual(self.fails("connect", bundleId=self.BUNDLE, launch=False).code,
                         "app_not_running")
        result = self.call("connect", bundleId=self.BUNDLE)
        self.addCleanup(end_process, result["pid"])
        self.assertTrue(is_alive(result["pid"]))
        self.assertEqual(result["name"], self.NAME)
        log.wait_for("ready", 30)
        # A second connection finds the same one.
        again = self.call("connect", bundleId=self.BUNDLE)
        self.assertEqual(again["pid"], result["pid"])
        self.assertEqual(log.count("ready"), 1)
        snapshot = self.observe()["snapshot"]
        self.assertEqual(snapshot["title"], self.TITLE)
        running = [t for t in self.call("listTargets")["targets"] if t["bundleId"] == self.BUNDLE]
        self.assertEqual([t["running"] for t in running], [True])


class ReadingTests:
    """Mixin: what an observation lists."""

    NODES = frozenset()
    EDITABLE = True

    def test_picture_and_bounds_are_those_of_the_window(self):
        observation = self.observe(image=True)
        picture = Picture(observation["image"])
        bounds = x_windows.bounds_of(self.window())
        self.assertEqual(picture.bounds, bounds)
        self.assertEqual((picture.width, picture.height), (bounds["width"], bounds["height"]))
        self.assertEqual(observation["image"]["width"], picture.width)
        self.assertEqual(observation["image"]["height"], picture.height)
        self.assertGreater(picture.colours(), 30)
        root = nodes_of(observation)[0]
        self.assertEqual((root["role"], root["bounds"]), ("window", bounds))
        self.assertEqual(self.call("geometry"), {
            "bounds": bounds, "visibility": "visible", "minimized": False, "hidden": False})

    def test_the_tree_names_what_is_in_the_window(self):
        observation = self.observe()
        self.assertFalse(observation["snapshot"]["truncated"])
        nodes = nodes_of(observation)
        seen = {(n["role"], n["name"]) for n in nodes}
        self.assertEqual((COMMON_NODES | self.NODES) - seen, set(),
                         "these are missing among %r" % sorted(seen))
        for node in nodes:
            if node["role"] == "button" and node["name"] in ("Save", "Quiet", "Disabled"):
                is_enabled = node["name"] != "Disabled"
                self.assertEqual((node["enabled"], node["clickable"]), (is_enabled, is_enabled))
        for name in ("Agree", "Plain"):
            self.assertTrue(self.node_in(observation, name, "checkbox")["clickable"])
        self.assertIs(self.node_in(observation, "Name", "textbox")["editable"], self.EDITABLE)

    def test_ids_and_parents_make_a_tree(self):
        nodes = nodes_of(self.observe())
        seen = set()
        for node in nodes:
            self.assertNotIn(node["id"], seen)
            if node["parentId"] is not None:
                self.assertIn(node["parentId"], seen)
            seen.add(node["id"])
        self.assertLessEqual(sum(n["parentId"] is None for n in nodes), 2)

    def test_a_password_field_tells_nothing(self):
        observation = self.observe()
        password = self.node_in(observation, "Password", "textbox")
        self.assertIs(password["secure"], True)
        self.assertIs(password["editable"], False)
        self.assertIs(password["clickable"], False)
        self.assertNotIn("value", password)
        self.assertNotIn(password["id"], [n["parentId"] for n in nodes_of(observation)])
        self.assertEqual(self.fails("click", nodeId=password["id"]).code, "not_clickable")

    def test_places_lie_inside_the_window(self):
        observation = self.observe(menubar=False)
        window = nodes_of(observation)[0]["bounds"]
        placed = [n for n in nodes_of(observation) if n["clickable"] and "bounds" in n]
        self.assertGreaterEqual(len(placed), 8)
        for node in placed:
            self.assertTrue(contains(window, centre(node["bounds"])), node)
        for role, name in COMMON_NODES:
            node = self.node_in(observation, name, role)
            self.assertTrue(is_inside(node["bounds"], window), node)
        status = self.node_in(observation, "Status: idle")["bounds"]
        save = self.node_in(observation, "Save")["bounds"]
        quiet = self.node_in(observation, "Quiet")["bounds"]
        self.assertLessEqual(status["y"] + status["height"], save["y"] + 1)
        self.assertLessEqual(save["x"] + save["width"], quiet["x"] + 1)

    def test_what_a_toggle_repaints_lies_in_its_place(self):
        before = self.observe_at_rest()
        box = self.node_in(before, "Plain", "checkbox")["bounds"]
        self.call("click", nodeId=self.node_in(before, "Plain", "checkbox")["id"])
        self.app.wait_for("toggled Plain on")
        self.call("settle")
        after = self.observe_at_rest()
        # Scroll bars that fade away repaint themselves at any time.
        places = [box] + [n["bounds"] for n in nodes_of(before) if n["role"] == "scrollbar"]
        changes = Picture(after["image"]).changes(Picture(before["image"]))
        self.assertGreater(sum(contains(box, point) for point in changes), 5)
        outside = [point for point in changes
                   if not any(contains(place, point, slack=3) for place in places)]
        self.assertEqual(outside[:10], [], "%d of %d outside of %r"
                         % (len(outside), len(changes), box))

    def test_a_followed_node_keeps_its_identity(self):
        first = self.node("Save", "button")
        again = self.observe(previousNodeId=first["id"])
        renewed = [n for n in nodes_of(again) if n["id"] == again["renewedNodeId"]]
        self.assertEqual([(n["role"], n["name"]) for n in renewed], [("button", "Save")])
        self.assertNotEqual(renewed[0]["id"], first["id"])


class ClickingTests:
    """Mixin: what a click does, and what is refused."""

    # Buttons that any pointer may press.
    POINTED = ("Save", "Quiet")

    def test_a_double_click_lands_on_the_button(self):
        result = self.click("Save", "button", count=2)
        self.assertEqual(result["method"], "pointer-double")
        self.app.wait_for("clicked Save")
        wait_until(lambda: self.app.count("clicked Save") == 2, 3, "the button is pressed twice")
        self.call("settle")
        self.node("Status: saved %d" % len(self.app.lines_ever("clicked Save")))
        self.assertEqual(self.app.lines("clicked"), ["clicked Save"] * 2)

    def test_the_pointer_lands_on_every_button(self):
        names = [n["name"] for n in nodes_of(self.observe(menubar=False))
                 if n["role"] == "button" and n["name"] in self.POINTED]
        self.assertEqual(set(names), set(self.POINTED))
        for name in names:
            self.app.forget()
            self.click(name, "button", count=2)
            self.app.wait_for("clicked " + name)
            self.assertEqual(set(self.app.lines("clicked")), {"clicked " + name})

    def test_a_disabled_button_is_refused(self):
        error = self.fails("click", nodeId=self.node("Disabled", "button")["id"])
        self.assertEqual(error.code, "not_clickable")
        time.sleep(0.3)
        self.assertEqual(self.app.lines("clicked"), [])

    def test_an_observation_allows_one_click(self):
        observation = self.observe()
        save = self.node_in(observation, "Save")["id"]
        quiet = self.node_in(observation, "Quiet")["id"]
        self.call("click", nodeId=save)
        for node_id in (save, quiet):
            self.assertEqual(self.fails("click", nodeId=node_id).code, "stale_snapshot")
        time.sleep(1)
        self.assertEqual(self.app.lines("clicked"), ["clicked Save"])

    def test_settle_hears_a_click(self):
        for name, role in (("Agree", "checkbox"), ("Save", "button")):
            self.click(name, role)
            settled = self.call("settle")
            self.assertTrue(settled["listening"])
            self.assertNotEqual(settled["heard"], [], name)
            self.assertTrue(settled["quiet"], settled)

    def test_settle_hears_an_entry_take_the_focus(self):
        self.click("Name", "textbox", count=2)
        self.assertIn("AXFocusedUIElementChanged", self.call("settle")["heard"])
        self.assertTrue(self.node("Name", "textbox").get("focused"))

    def wait_for_silence(self):
        """Until nothing was heard for a second; what a start causes may come late."""

        def is_silent():
            start = time.time() * 1000
            time.sleep(1)
            return not self.call("settle", sinceMs=start)["heard"]

        wait_until(is_silent, 15, "the application is silent")

    def test_settle_of_a_quiet_application_is_quiet(self):
        self.wait_for_silence()
        settled = self.call("settle", sinceMs=time.time() * 1000)
        self.assertEqual((settled["heard"], settled["quiet"], settled["listening"]),
                         ([], True, True))
        self.assertLess(settled["waitedMs"], 400)
        self.assertGreaterEqual(settled["waitedMs"], 180)
