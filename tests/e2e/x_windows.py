"""Windows as the X server reports them, read and changed by other code than the helper's.

    x_windows.py move WINDOW X Y
    x_windows.py minimise WINDOW
    x_windows.py keep-above WINDOW
    x_windows.py activate WINDOW
    x_windows.py click X Y BUTTON

The deeds are a program of their own: a display that goes away ends the process that uses it.
"""

import ctypes
import os
import re
import subprocess
import sys


def _ask(*command, env=None):
    done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True,
                          timeout=20, check=False, env=env)
    return done.stdout


def _numbers(text):
    return [int(number) for number in re.findall(r"-?\d+", text.partition("=")[2])]


def windows_of(pid):
    """The managed windows of a process, oldest first: identifiers as text."""
    listed = re.findall(r"0x[0-9a-f]+", _ask("xprop", "-root", "_NET_CLIENT_LIST"))
    return [w for w in listed if _numbers(_ask("xprop", "-id", w, "_NET_WM_PID")) == [pid]]


def client_of(window):
    """A window without its decorations, as the protocol writes a rectangle."""
    text = _ask("xwininfo", "-id", window)

    def told(label):
        return int(re.search(label + r":\s+(-?\d+)", text).group(1))

    return {"x": told("Absolute upper-left X"), "y": told("Absolute upper-left Y"),
            "width": told("Width"), "height": told("Height")}


def bounds_of(window):
    """A window with its decorations, as the protocol writes a rectangle."""
    client = client_of(window)
    left, right, top, bottom = (
        _numbers(_ask("xprop", "-id", window, "_NET_FRAME_EXTENTS")) or [0, 0, 0, 0])
    # An invisible border that the window draws itself, for its shadow and for the pointer.
    inner = _numbers(_ask("xprop", "-id", window, "_GTK_FRAME_EXTENTS"))
    if inner:
        left, right, top, bottom = (-number for number in inner)
    return {"x": client["x"] - left, "y": client["y"] - top,
            "width": client["width"] + left + right, "height": client["height"] + top + bottom}


def shown_count():
    """How many windows the root window shows, popups included."""
    children = re.findall(r"^ +(0x[0-9a-f]+) .*  (\d+)x(\d+)\+", _ask(
        "xwininfo", "-root", "-children"), re.MULTILINE)
    return sum("IsViewable" in _ask("xwininfo", "-id", window)
               for window, width, height in children if int(width) > 9 and int(height) > 9)


def title_of(window):
    found = re.search(r'= "(.*)"', _ask("xprop", "-id", window, "_NET_WM_NAME"))
    return found.group(1) if found else ""


def active_window():
    found = re.findall(r"0x[0-9a-f]+", _ask("xprop", "-root", "_NET_ACTIVE_WINDOW"))
    return found[0] if found else ""


def _do(*arguments):
    subprocess.run([sys.executable, os.path.abspath(__file__), *arguments], check=True, timeout=20)


def move(window, x, y):
    _do("move", window, str(x), str(y))


def minimise(window):
    _do("minimise", window)


def keep_above(window):
    _do("keep-above", window)


def activate(window):
    """Asks the window manager to bring it to the front and to give it the focus."""
    _do("activate", window)


def click(x, y, button=1):
    """Presses and releases a button of the pointer."""
    _do("click", str(int(x)), str(int(y)), str(button))


def _click(x, y, button):
    xlib = ctypes.CDLL("libX11.so.6")
    xtest = ctypes.CDLL("libXtst.so.6")
    xlib.XOpenDisplay.restype = ctypes.c_void_p
    display = ctypes.c_void_p(xlib.XOpenDisplay(None))
    xtest.XTestFakeMotionEvent(display, -1, x, y, 0)
    for is_down in (1, 0):
        xtest.XTestFakeButtonEvent(display, button, is_down, 20)
    xlib.XSync(display, 0)


def main():
    if sys.argv[1] == "click":
        _click(*map(int, sys.argv[2:5]))
        return
    import gi
    gi.require_version("Gdk", "3.0")
    gi.require_version("GdkX11", "3.0")
    from gi.repository import Gdk, GdkX11
    display = Gdk.Display.get_default()
    window = GdkX11.X11Window.foreign_new_for_display(display, int(sys.argv[2], 16))
    if sys.argv[1] == "move":
        window.move(int(sys.argv[3]), int(sys.argv[4]))
    elif sys.argv[1] == "minimise":
        window.iconify()
    elif sys.argv[1] == "keep-above":
        window.set_keep_above(True)
    elif sys.argv[1] == "activate":
        window.focus(Gdk.CURRENT_TIME)
    display.sync()


if __name__ == "__main__":
    main()
