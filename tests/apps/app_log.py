"""What a test application reports to its driver: one line an activation, the same in every toolkit."""

import json
import os
import time


def log_line(line):
    """Writes to standard output, and to the end of the file that TARQO_APP_LOG names, if any."""
    print(line, flush=True)
    path = os.environ.get("TARQO_APP_LOG")
    if path:
        with open(path, "a", encoding="utf-8") as file:
            file.write(line + "\n")


def log_text(name, text):
    log_line("text %s %s" % (name, json.dumps(text, ensure_ascii=False)))


def log_toggle(name, is_on):
    log_line("toggled %s %s" % (name, "on" if is_on else "off"))


def log_drag(across, down):
    """A press of the left button that was released so far from there; a click is none."""
    across, down = round(across), round(down)
    if abs(across) + abs(down) > 4:
        log_line("dragged Window %d %d" % (across, down))


def make_blocking(blocks):
    """A deed that takes, time by time, as many milliseconds as the text says ("100,200"), the last
    for good, and logs "blocked MS"."""
    left = [int(number) for number in blocks.split(",")]

    def block():
        milliseconds = left.pop(0) if len(left) > 1 else left[0]
        time.sleep(milliseconds / 1000)
        log_line("blocked %d" % milliseconds)

    return block


def parse_geometry(geometry):
    """Width, height and, when given, x and y of WIDTHxHEIGHT+X+Y."""
    size, _, place = geometry.partition("+")
    width, height = (int(number) for number in size.split("x"))
    x, y = (int(number) for number in place.split("+")) if place else (None, None)
    return width, height, x, y
