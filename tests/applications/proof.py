"""What proves a task without the helper: files, titles of windows, what other programs say."""

import re
import subprocess
import time


def eventually(condition, what, seconds=10):
    """Polls until `condition` gives something true, and gives that."""
    deadline = time.monotonic() + seconds
    while True:
        try:
            value = condition()
        except OSError:
            value = None
        if value:
            return value
        if time.monotonic() > deadline:
            raise AssertionError("not so within %d s: %s" % (seconds, what))
        time.sleep(0.1)


def holds(path, text, seconds=10):
    """The file is there, and has this text in it."""
    def read():
        return path.read_bytes().decode("utf-8", "replace")

    try:
        eventually(lambda: text in read(), path.name, seconds)
    except AssertionError as error:
        was = repr(read()[:200]) if path.is_file() else "no such file"
        raise AssertionError("%s does not hold %r: %s" % (path.name, text, was)) from error


def says(command, text=""):
    """What a program prints, which has this text in it."""
    done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                          timeout=30, check=False)
    if text not in done.stdout:
        raise AssertionError("%s says %r" % (" ".join(command), done.stdout[:200]))
    return done.stdout


def titles():
    """The titles of all windows, by the X server."""
    listing = says(["xprop", "-root", "_NET_CLIENT_LIST"])
    found = []
    for window in re.findall(r"0x[0-9a-f]+", listing):
        name = re.search(r'= "(.*)"', says(["xprop", "-id", window, "_NET_WM_NAME"])) or re.search(
            r'= "(.*)"', says(["xprop", "-id", window, "WM_NAME"]))
        if name:
            found.append(name.group(1))
    return found


def title_becomes(pattern, seconds=10):
    try:
        eventually(lambda: any(re.search(pattern, title) for title in titles()), pattern, seconds)
    except AssertionError as error:
        raise AssertionError("no window is called %r: %r" % (pattern, titles())) from error


def setting_is(schema, key, value, seconds=5):
    """A setting of the application, as its own store has it."""
    eventually(lambda: says(["gsettings", "get", schema, key]).strip() == value,
               "%s %s is %s" % (schema, key, value), seconds)
