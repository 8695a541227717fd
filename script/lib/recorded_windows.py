"""The windows of a process as the X server shows them, for a recording."""

import re
import subprocess


def ask(*command):
    result = subprocess.run(command, capture_output=True, text=True, check=False)
    return result.stdout if result.returncode == 0 else ""


def numbers(name, text):
    """The numbers of a property as xprop prints them; empty when the window does not have it."""
    found = re.search(rf"^{name}\([A-Z]+\) = (.*)$", text, re.MULTILINE)
    return [int(each) for each in found.group(1).split(",")] if found else []


def windows_of(pid):
    """Those that the window manager knows, front to back. Edges are left, right, top, bottom."""
    root = ask("xprop", "-root", "_NET_CLIENT_LIST_STACKING", "_NET_ACTIVE_WINDOW")
    listed, _, active = root.partition("\n")
    result = []
    for number in reversed(re.findall(r"0x[0-9a-f]+", listed)):
        text = ask("xprop", "-notype", "-id", number, "_NET_WM_PID", "_NET_WM_NAME")
        owner = re.search(r"^_NET_WM_PID = (\d+)$", text, re.MULTILINE)
        if not owner or int(owner.group(1)) != pid:
            continue
        title = re.search(r'^_NET_WM_NAME = "(.*)"$', text, re.MULTILINE)
        place = ask("xwininfo", "-id", number)
        edges = ask("xprop", "-id", number, "_NET_FRAME_EXTENTS", "_GTK_FRAME_EXTENTS")
        client = [int(re.search(name + r":\s+(-?\d+)", place).group(1)) for name in
                  ("Absolute upper-left X", "Absolute upper-left Y", "Width", "Height")]
        result.append({"title": title.group(1) if title else "", "client": client,
                       "decoration": numbers("_NET_FRAME_EXTENTS", edges),
                       "shadow": numbers("_GTK_FRAME_EXTENTS", edges),
                       "active": number in active})
    return result
