"""Another program on the display, by Xlib alone: it grabs devices, takes the focus or lies in the
way, and says what reaches it. Suites use `Rival`; this file is also the program that it runs.

Reads commands from its standard input, answers each with "done COMMAND":
    show X Y WIDTH HEIGHT [managed]    its window; a popup that no window manager knows, unless
                                       "managed"
    grab keyboard|pointer, ungrab      by the core protocol; "failed grab" when the server refuses
    grab2 keyboard|pointer             by XInput 2, as toolkits do
    focus                              gives its window the keyboard focus, past any window manager
    sync                               nothing; what arrived before has been told
Prints "ready" when it has connected, and for what reaches it "key DOWN|UP CODE", "button DOWN|UP
NUMBER" and, of a grab by XInput 2, "event KIND".
"""

import ctypes
import os
import queue
import select
import subprocess
import sys
import threading

WAIT_SECONDS = 10


class Rival:
    """The program, running."""

    def __init__(self, env=None):
        self._process = subprocess.Popen(
            [sys.executable, os.path.abspath(__file__)], stdin=subprocess.PIPE,
            stdout=subprocess.PIPE, text=True, bufsize=1, env=env)
        self._arrived = queue.Queue()
        self.lines = []  # What has reached it so far.
        threading.Thread(target=self._read, daemon=True).start()
        self._wait_for("ready")

    def _read(self):
        for line in self._process.stdout:
            self._arrived.put(line.rstrip("\n"))
        self._arrived.put("ended")

    def _wait_for(self, awaited):
        while True:
            line = self._arrived.get(timeout=WAIT_SECONDS)
            if line == awaited:
                return
            if line.startswith(("ended", "failed")):
                raise AssertionError("%r instead of %r" % (line, awaited))
            self.lines.append(line)

    @property
    def pid(self):
        return self._process.pid

    def tell(self, *words):
        self._process.stdin.write(" ".join(map(str, words)) + "\n")
        self._wait_for("done " + words[0])

    def got(self):
        """All that has reached it."""
        self.tell("sync")
        return self.lines

    def close(self):
        self._process.kill()
        self._process.wait()
        self._process.stdin.close()
        self._process.stdout.close()


class _Attributes(ctypes.Structure):
    """XSetWindowAttributes."""

    _fields_ = [(name, ctypes.c_ulong) for name in ("background_pixmap", "background_pixel",
                                                    "border_pixmap", "border_pixel")] + [
        (name, ctypes.c_int) for name in ("bit_gravity", "win_gravity", "backing_store")] + [
        (name, ctypes.c_ulong) for name in ("backing_planes", "backing_pixel")] + [
        ("save_under", ctypes.c_int), ("event_mask", ctypes.c_long),
        ("do_not_propagate_mask", ctypes.c_long), ("override_redirect", ctypes.c_int),
        ("colormap", ctypes.c_ulong), ("cursor", ctypes.c_ulong)]


class _InputEvent(ctypes.Structure):
    """XKeyEvent and XButtonEvent."""

    _fields_ = [("type", ctypes.c_int), ("serial", ctypes.c_ulong), ("sent", ctypes.c_int),
                ("display", ctypes.c_void_p)] + [
        (name, ctypes.c_ulong) for name in ("window", "root", "subwindow", "time")] + [
        (name, ctypes.c_int) for name in ("x", "y", "x_root", "y_root")] + [
        ("state", ctypes.c_uint), ("detail", ctypes.c_uint), ("same_screen", ctypes.c_int),
        ("padding", ctypes.c_long * 24)]


class _Mask(ctypes.Structure):
    """XIEventMask."""

    _fields_ = [("device", ctypes.c_int), ("length", ctypes.c_int), ("mask", ctypes.c_char_p)]


_NAMES = {2: "key DOWN", 3: "key UP", 4: "button DOWN", 5: "button UP"}
_KEYS, _BUTTONS, _MAPPED = 0x3, 0xC, 0x20000  # Event masks: also that the window is shown.
_MAP_NOTIFY, _GENERIC_EVENT = 19, 35
_OVERRIDE_REDIRECT, _EVENT_MASK = 1 << 9, 1 << 11
_ASYNC, _NOW, _PARENT, _SUCCESS = 1, ctypes.c_ulong(0), 0, 0
_MASTERS = {"pointer": 2, "keyboard": 3}


class _Program:
    def __init__(self):
        self.xlib = ctypes.CDLL("libX11.so.6")
        self.xinput = ctypes.CDLL("libXi.so.6")
        self.xlib.XOpenDisplay.restype = ctypes.c_void_p
        self.xlib.XDefaultRootWindow.restype = ctypes.c_ulong
        self.xlib.XCreateWindow.restype = ctypes.c_ulong
        self.display = ctypes.c_void_p(self.xlib.XOpenDisplay(None))
        version = ctypes.c_int(2), ctypes.c_int(2)
        self.xinput.XIQueryVersion(self.display, *map(ctypes.byref, version))
        self.window = None

    def run(self):
        self.say("ready")
        connection = self.xlib.XConnectionNumber(self.display)
        while True:
            self.read_events()
            ready, _, _ = select.select([sys.stdin, connection], [], [])
            if sys.stdin in ready:
                # No buffer of its own may keep a line from the selection.
                line = _read_line()
                if not line:
                    return
                verb, *words = line.split()
                getattr(self, verb)(*words)
                self.xlib.XSync(self.display, 0)
                self.read_events()
                self.say("done " + verb)

    @staticmethod
    def say(line):
        print(line, flush=True)

    def read_events(self, awaited=None):
        event = _InputEvent()
        seen = False
        while awaited and not seen or self.xlib.XPending(self.display):
            self.xlib.XNextEvent(self.display, ctypes.byref(event))
            seen = seen or event.type == awaited
            if event.type in _NAMES:
                self.say("%s %d" % (_NAMES[event.type], event.detail))
            elif event.type == _GENERIC_EVENT:
                self.say("event %d" % (event.window >> 32))  # Where its kind is.

    def show(self, x, y, width, height, kind="popup"):
        attributes = _Attributes(event_mask=_KEYS | _BUTTONS | _MAPPED,
                                 override_redirect=kind == "popup")
        root = ctypes.c_ulong(self.xlib.XDefaultRootWindow(self.display))
        self.window = ctypes.c_ulong(self.xlib.XCreateWindow(
            self.display, root, int(x), int(y), int(width), int(height), 0, 0, 1, None,
            ctypes.c_ulong(_OVERRIDE_REDIRECT | _EVENT_MASK), ctypes.byref(attributes)))
        self.xlib.XMapRaised(self.display, self.window)
        self.read_events(_MAP_NOTIFY)

    def grab(self, device):
        if device == "keyboard":
            result = self.xlib.XGrabKeyboard(self.display, self.window, 0, _ASYNC, _ASYNC, _NOW)
        else:
            result = self.xlib.XGrabPointer(self.display, self.window, 0, _BUTTONS, _ASYNC, _ASYNC,
                                            ctypes.c_ulong(0), ctypes.c_ulong(0), _NOW)
        self.check(result)

    def grab2(self, device):
        mask = _Mask(_MASTERS[device], 4, bytes([0x3C, 0, 0, 0]))  # Keys and buttons.
        self.check(self.xinput.XIGrabDevice(
            self.display, _MASTERS[device], self.window, _NOW, ctypes.c_ulong(0), _ASYNC, _ASYNC,
            0, ctypes.byref(mask)))

    def check(self, result):
        if result != _SUCCESS:
            self.say("failed grab")

    def ungrab(self):
        self.xlib.XUngrabKeyboard(self.display, _NOW)
        self.xlib.XUngrabPointer(self.display, _NOW)
        for master in _MASTERS.values():
            self.xinput.XIUngrabDevice(self.display, master, _NOW)

    def focus(self):
        self.xlib.XSetInputFocus(self.display, self.window, _PARENT, _NOW)

    def sync(self):
        pass


def _read_line():
    line = b""
    while not line.endswith(b"\n"):
        byte = os.read(0, 1)
        if not byte:
            return ""
        line += byte
    return line.decode()


if __name__ == "__main__":
    _Program().run()
