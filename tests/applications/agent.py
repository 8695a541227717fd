"""An agent at work in one application: it looks, finds what it means, acts, waits, and looks again.

A task is written with this as a careful user of the helper would go about it. It knows an
application by what its window shows, and asks again when the helper says that its knowledge is old.
"""

import functools
import os
import pathlib
import re
import subprocess
import time

from tarqo_client import Helper, HelperError

START_SECONDS = 90
FIND_SECONDS = 15
TRIES = 3

# The helper asks for another look, and nothing has happened: an agent looks and does it once more.
LOOK_AGAIN = {"stale_snapshot", "stale_target", "target_busy", "not_visible", "target_covered",
              "hit_test_failed", "window_not_visible", "window_covered"}

PLAIN = {"rawRole": "", "clickable": False, "editable": False, "parentId": None}


class NotFound(AssertionError):
    """What the task was looking for does not show."""


def matches(wanted, text):
    """Whether a name is the one meant: all of it, or what a regular expression finds in it."""
    if wanted is None:
        return True
    if hasattr(wanted, "search"):
        return wanted.search(text or "") is not None
    return (text or "").rstrip(".… :") == wanted.rstrip(".… :")


def contains(words):
    """A name that has these words in it, whatever is around them."""
    return re.compile(re.escape(words))


class Agent:
    def __init__(self, helper, application):
        self.application = application
        self.home = pathlib.Path(os.environ["HOME"])
        self.refusals = []
        self.pid = None
        self._helper = Helper(helper)

    def close(self):
        self._helper.close()

    def call(self, method, **arguments):
        return self._helper.call(method, arguments, timeout=60)

    # ---- the application

    def open(self, *arguments):
        """Starts the application and connects to it: by the helper, or with `arguments` as a file
        manager would."""
        self.application.install(self.home)
        if arguments:
            start = 'export GIO_LAUNCHED_DESKTOP_FILE_PID=$$; exec "$@"'
            entry = self.application.entry_file(self.home)
            environment = dict(os.environ, GIO_LAUNCHED_DESKTOP_FILE=entry)
            with open(os.devnull, "wb") as nowhere:
                subprocess.Popen(["sh", "-c", start, "sh", *self.application.program, *arguments],
                                 cwd=self.home, env=environment, stdin=subprocess.DEVNULL,
                                 stdout=nowhere, stderr=nowhere)
        deadline = time.monotonic() + START_SECONDS
        while True:
            self.connect(launch=not arguments)
            try:
                self.look(patience=5)
                return
            except HelperError as error:
                # The process that starts it may end before another one shows its window.
                again = error.code in LOOK_AGAIN | {"no_window", "app_closed"}
                if not again or time.monotonic() > deadline:
                    raise

    def connect(self, launch=True, **options):
        deadline = time.monotonic() + START_SECONDS
        while True:
            try:
                self.pid = self.call("connect", bundleId=self.application.entry, launch=launch,
                                     **options)["pid"]
                return
            except HelperError as error:
                starting = error.code == "app_not_running" or "Connect again" in error.message
                if not starting or time.monotonic() > deadline:
                    raise
                launch = False  # It is being started; once is enough.
                time.sleep(0.5)

    # ---- looking

    def look(self, patience=FIND_SECONDS, **options):
        """The nodes of the window in front, and of its menu bar."""
        deadline = time.monotonic() + patience
        while True:
            try:
                seen = self.call("observe", image=False, states=True, **options)
                # What was read from the pixels says less of itself.
                return [dict(PLAIN, **node) for node in seen["snapshot"]["nodes"]]
            except HelperError as error:
                # A window may be about to open, or to move.
                if error.code not in LOOK_AGAIN | {"no_window"} or time.monotonic() > deadline:
                    raise
                time.sleep(0.5)

    def find(self, name=None, role=None, value=None, inside=None, where=None, nth=0,
             seconds=FIND_SECONDS, **options):
        """The node that has this name, role and value; looks until it is there.

        `inside` is the name of what it lies in, `where` asks more of the node, `nth` takes another
        than the first.
        """
        deadline = time.monotonic() + seconds
        while True:
            nodes = self.look(**options)
            found = [node for node in nodes
                     if matches(name, node["name"]) and role in (None, node["role"])
                     and matches(value, str(node.get("value", "")))
                     and (inside is None or lies_in(node, inside, nodes))
                     and (where is None or where(node))]
            if len(found) > nth:
                return found[nth]
            if time.monotonic() > deadline:
                wanted = describe(name or inside, role, value)
                raise NotFound("no %s; there is %s" % (wanted, listed(nodes)))
            time.sleep(0.2)

    def shows(self, *arguments, seconds=0, **options):
        try:
            return self.find(*arguments, seconds=seconds, **options)
        except NotFound:
            return None

    def waits_until_gone(self, *arguments, seconds=FIND_SECONDS, **options):
        deadline = time.monotonic() + seconds
        while self.shows(*arguments, **options):
            if time.monotonic() > deadline:
                raise AssertionError("still there: %r" % (arguments,))

    # ---- acting

    def click(self, *arguments, **options):
        return self._act("click", arguments, options)

    def double_click(self, *arguments, **options):
        return self._act("click", arguments, options, count=2)

    def context_menu(self, *arguments, **options):
        return self._act("showMenu", arguments, options)

    def write(self, text, *arguments, submit=False, **options):
        return self._act("input", arguments, options, kind="type", text=text, submit=submit)

    def scroll(self, down, *arguments, **options):
        return self._act("input", arguments, options, kind="scroll", deltaY=down)

    def press(self, keys, *arguments, **options):
        """A key with modifiers, like "Control+s": on a node, or on what has the focus."""
        *modifiers, key = keys.split("+")
        if not arguments and not options:
            options = {"where": self._focus_or_window()}
        return self._act("input", arguments, options, kind="key", key=key, modifiers=modifiers)

    def menu(self, *path):
        """A command of the menu bar, by the titles on the way to it."""
        deadline = time.monotonic() + FIND_SECONDS
        while True:
            commands = [node["command"] for node in self.look() if "command" in node]
            for command in commands:
                if same_path(command, path):
                    is_it = functools.partial(has_command, command)
                    return self._act("click", (), {"where": is_it})
            others = [command for command in commands if matches(path[0], command[0])]
            if not others or same_path(others[0], (path[0], path[0])):
                break
            # A slow application's menus may be listed in part.
            if time.monotonic() > deadline:
                raise NotFound("no command %r; there is %r" % (path, others))
        # A menu that is filled when it opens, or shows no items while it is closed.
        for title in path:
            self._act("click", (title,), {"where": is_menu_title})
        return None

    def settle(self):
        try:
            self.call("settle", quietMs=200, timeoutMs=2500)
        except HelperError as error:
            if error.code != "app_closed":  # It may have been told to end.
                raise

    def _act(self, method, arguments, options, **details):
        """Finds the node, acts on it and waits for what comes of it; gives what the helper did."""
        for attempt in range(TRIES):
            node = self.find(*arguments, **options)
            try:
                done = self.call(method, nodeId=node["id"], **details)
            except HelperError as error:
                self.refusals.append(error)
                if attempt == TRIES - 1 or error.code not in LOOK_AGAIN or error.error.get("sent"):
                    raise
                time.sleep(0.5)
                continue
            self.settle()
            return done

    def _focus_or_window(self):
        seen = self.look()
        has_focus = [node for node in seen if node.get("focused") and node["role"] != "window"]
        if has_focus:
            return lambda node: node.get("focused") and node["role"] == has_focus[0]["role"]
        return lambda node: node["parentId"] is None


def lies_in(node, name, nodes):
    by_id = {other["id"]: other for other in nodes}
    while node["parentId"] in by_id:
        node = by_id[node["parentId"]]
        if matches(name, node["name"]):
            return True
    return False


def is_menu_title(node):
    return node["role"] in ("menu", "menuitem", "menubutton", "text") and node["clickable"]


def has_command(command, node):
    return node.get("command") == command


def same_path(command, path):
    titles = [title for title in command if title]
    return len(titles) == len(path) and all(matches(a, b) for a, b in zip(path, titles))


def describe(name, role, value):
    name = name.pattern if hasattr(name, "pattern") else name
    value = value.pattern if hasattr(value, "pattern") else value
    words = [role or "node"]
    if name is not None:
        words.append('"%s"' % name)
    if value is not None:
        words.append('with the value "%s"' % value)
    return " ".join(words)


def listed(nodes):
    shown = ["%s %r" % (node["role"], node["name"][:40]) for node in nodes
             if not node.get("command")]
    return "%d nodes: %s" % (len(nodes), ", ".join(shown[:60]))
