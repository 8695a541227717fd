"""Plays the typical exchange with the helper against real applications, and shows it."""

import base64
import json
import os
import subprocess
import sys
import threading
import time

import annotate
from tarqo_client import Helper, HelperError, find_node, nodes_of

CALCULATOR = "org.gnome.Calculator"
KEYS = ["7", "×", "6", "="]
# Enough that the first line of the calculator's history is out of sight.
TYPED = ["12*12", "2^10", "81/3", "1000-1"]
SCROLL_BACK = -500  # Pixels, up; up to 400 would be a pull with the pointer.

# The calculator of macOS names its keys in the user's language, and has named them differently over
# the years. Their places stay: rows counted from the bottom, keys of a row from the right.
MAC_CALCULATOR = "com.apple.calculator"
MAC_KEYS = {"7": (3, 3), "×": (3, 0), "6": (2, 1), "=": (0, 0)}

VIEWER = "org.gnome.eog"
VIEWER_PROGRAM = "eog"
# Drawn as a picture, so that no accessibility tree holds a word of it.
PICTURE_LINES = [
    ("DejaVu Sans", 24, "Server room on the second floor"),
    ("DejaVu Sans", 15, "Temperature is 21 degrees and all four fans are running."),
    ("NanumGothic", 20, "서버실 온도는 정상입니다"),
    ("NanumGothic", 15, "다음 점검은 월요일 오전에 예정되어 있습니다"),
]
# What the viewer may need to start and show the picture.
VIEWER_SECONDS = 20


class Progress:
    """Prints a line each second while something takes that long."""

    def __init__(self, what):
        self._what = what
        self._done = threading.Event()
        self._thread = threading.Thread(target=self._run, daemon=True)

    def _run(self):
        start = time.monotonic()
        while not self._done.wait(1.0):
            print("   ... %s, %.0f s" % (self._what, time.monotonic() - start), flush=True)

    def __enter__(self):
        self._thread.start()
        return self

    def __exit__(self, *unused):
        self._done.set()
        self._thread.join()


def is_node(value):
    return isinstance(value, dict) and "rawRole" in value


def abridged(value, depth=0):
    """A response short enough to read: long texts and lists are cut, and say so; of a node only
    what names it is left."""
    if is_node(value):
        kept = {key: value[key] for key in ("id", "role", "name", "value") if value.get(key)}
        return dict(kept, **{"...": "%d more" % (len(value) - len(kept))})
    if isinstance(value, str):
        return value if len(value) <= 100 else value[:60] + "... (%d characters)" % len(value)
    if isinstance(value, list):
        shown = [abridged(item, depth + 1) for item in value[:3]]
        return shown + (["... %d more" % (len(value) - 3)] if len(value) > 3 else [])
    if isinstance(value, dict):
        return {key: abridged(item, depth + 1) for key, item in value.items()}
    return value


class Demo:
    def __init__(self, program, folder):
        self._helper = Helper(program)
        self._folder = folder
        self._transcript = open(os.path.join(folder, "transcript.jsonl"), "w", encoding="utf-8")
        self._count = 0

    def play(self, method, args=None):
        self._count += 1
        request = {"id": self._count, "method": method, "args": args or {}}
        print("\n\033[1m> %s\033[0m" % json.dumps(request, ensure_ascii=False), flush=True)
        start = time.monotonic()
        with Progress("waiting for " + method):
            response = self._helper.exchange(request, timeout=60)
        took = (time.monotonic() - start) * 1000
        for line in (request, response):
            self._transcript.write(json.dumps(line, ensure_ascii=False) + "\n")
        print("< (%.0f ms) %s" % (took, json.dumps(abridged(response), ensure_ascii=False)))
        if "error" in response:
            raise HelperError(response["error"])
        return response["result"]

    def wait_for_window(self, application, title, seconds):
        """Waits, without showing it, until an application that is starting has the window."""
        deadline = time.monotonic() + seconds
        with Progress("waiting for " + title):
            while time.monotonic() < deadline:
                try:
                    self._helper.call("connect", {"bundleId": application, "launch": False})
                    window = nodes_of(self._helper.call("observe", {"image": False, "ocr": False}))
                    if window and title in window[0]["name"]:
                        return
                except HelperError:
                    pass  # It has no window yet.
                time.sleep(0.1)
        sys.exit("%s shows no window %s within %d s" % (application, title, seconds))

    def connect(self, application):
        targets = self.play("listTargets")["targets"]
        if not any(target["bundleId"] == application for target in targets):
            sys.exit("%s is not installed" % application)
        self.play("preflight")
        self.play("connect", {"bundleId": application})
        self.play("settle")

    def observe(self, name, args=None):
        result = self.play("observe", args)
        path = os.path.join(self._folder, name)
        with open(path + ".png", "wb") as file:
            file.write(base64.b64decode(result["image"]["base64"]))
        with open(path + ".svg", "w", encoding="utf-8") as file:
            file.write(annotate.annotated(result))
        print("  window image: %s.png (%d x %d), with numbered nodes: %s.svg"
              % (path, result["image"]["width"], result["image"]["height"], path))
        return result

    def click(self, observation, key, find):
        """Clicks the calculator's key that `find` finds."""
        node = find(observation, key)
        if node is None:
            others = [n["name"] for n in buttons(observation)]
            sys.exit("There is no button %s, only %s" % (key, ", ".join(others)))
        self.play("click", {"nodeId": node["id"]})
        self.play("settle", {"quietMs": 300})

    def type(self, observation, text):
        """Types into the first text field, and submits."""
        typing = {"kind": "type", "text": text, "submit": True}
        try:
            self.play("input", dict(typing, nodeId=first_node(observation, "textbox")["id"]))
        except HelperError as refused:
            # The calculator has shown a result since it was observed, so this is another text.
            if refused.code != "stale_target":
                raise
            observation = self.observe("again")
            self.play("input", dict(typing, nodeId=first_node(observation, "textbox")["id"]))
        self.play("settle", {"quietMs": 300})

    def close(self):
        self._helper.close()
        self._transcript.close()


def first_node(observation, role):
    for node in nodes_of(observation):
        if node["role"] == role:
            return node
    sys.exit("There is no %s in the window" % role)


def buttons(observation):
    return [node for node in nodes_of(observation) if node["role"] == "button"]


def key_named(observation, key):
    return find_node(observation, key, "button")


def key_placed(observation, key):
    """The key of a Mac's calculator, basic or scientific, by its place."""
    def middle(node):
        return node["bounds"]["y"] + node["bounds"]["height"] / 2

    rows = []
    placed = [node for node in buttons(observation) if "bounds" in node]
    for node in sorted(placed, key=middle, reverse=True):
        if rows and middle(rows[-1][0]) - middle(node) < node["bounds"]["height"] / 2:
            rows[-1].append(node)
        else:
            rows.append([node])
    row, place = MAC_KEYS[key]
    if row >= len(rows) or place >= len(rows[row]):
        return None
    return sorted(rows[row], key=lambda node: -node["bounds"]["x"])[place]


def texts(observation):
    """What an observation shows, without the menu bar: (role, name, value), each as often as it
    is there."""
    return [(n["role"], n["name"], n.get("value", "")) for n in nodes_of(observation)
            if n.get("parentId") is None or not n["parentId"].endswith(":menubar")]


def changes(before, after):
    left = texts(before)
    for text in texts(after):
        if text in left:
            left.remove(text)
        else:
            yield text


def show_changes(what, before, after):
    print("\nWhat %s changed in the window:" % what)
    changed = [(role, name, value) for role, name, value in changes(before, after) if name]
    for role, name, value in changed:
        print("  %s %r%s" % (role, name, " = %r" % value if value and value != name else ""))
    if not changed:
        sys.exit("  nothing: it had no effect")


def press_keys(demo, application, find):
    demo.connect(application)
    first = demo.observe("before")
    last = first
    for key in KEYS:
        demo.click(last, key, find)
        last = demo.observe("after")
    show_changes("the clicks on " + " ".join(KEYS), first, last)
    return last


def type_and_scroll(demo, first):
    last = first
    for text in TYPED:
        demo.type(last, text)
        last = demo.observe("typed")
    show_changes("typing %s" % ", ".join(TYPED), first, last)
    history = first_node(last, "list")
    demo.play("input", {"nodeId": history["id"], "kind": "scroll", "deltaY": SCROLL_BACK})
    demo.play("settle")
    show_changes("scrolling back", last, demo.observe("scrolled"))


def write_picture(path):
    y = 0
    with open(path, "w", encoding="utf-8") as file:
        file.write('<svg xmlns="http://www.w3.org/2000/svg" width="560" height="190">\n'
                   '<rect width="560" height="190" fill="#f4f6f8"/>\n')
        for font, size, text in PICTURE_LINES:
            y += 40
            file.write('<text x="24" y="%d" font-family="%s" font-size="%dpx" fill="#223">%s</text>\n'
                       % (y, font, size, text))
        file.write("</svg>\n")


def read_picture(demo, folder):
    """Reads the text in a picture that an image viewer shows."""
    picture = os.path.join(folder, "notice.svg")
    write_picture(picture)
    viewer = subprocess.Popen([VIEWER_PROGRAM, picture], stdin=subprocess.DEVNULL,
                              stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    try:
        demo.wait_for_window(VIEWER, os.path.basename(picture), VIEWER_SECONDS)
        demo.connect(VIEWER)
        # The window has controls with names, so recognition must be asked for.
        observation = demo.observe("picture", {"forceOcr": True})
        wanted = [text for _, _, text in PICTURE_LINES]
        read = {n["name"] for n in nodes_of(observation)}.intersection(wanted)
        print("\nThe lines of the picture, which are not in the accessibility tree:")
        for text in wanted:
            print("  %s %r" % ("read     " if text in read else "not read ", text))
        if not read:
            sys.exit("  none was read")
    finally:
        viewer.terminate()
        viewer.wait()


def read_window(demo):
    """Reads the text in the window's picture, though the accessibility tree has it too."""
    observation = demo.observe("read", {"forceOcr": True})
    print("\nWhat is read in the window's picture:")
    for node in nodes_of(observation):
        if "confidence" in node:
            print("  %r" % node["name"])


def play_on_a_mac(demo):
    press_keys(demo, MAC_CALCULATOR, key_placed)
    read_window(demo)


def play_on_linux(demo, folder):
    type_and_scroll(demo, press_keys(demo, CALCULATOR, key_named))
    read_picture(demo, folder)


def main():
    program, folder = sys.argv[1:3]
    demo = Demo(program, folder)
    try:
        demo.play("host")
        if sys.platform == "darwin":
            play_on_a_mac(demo)
        else:
            play_on_linux(demo, folder)
    finally:
        demo.close()
    print("\nPictures and the full transcript: %s" % folder)


if __name__ == "__main__":
    main()
