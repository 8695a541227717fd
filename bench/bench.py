"""The figures of the README: each beside what a user would pick instead, in one run.

    bench.py HELPER GTK3_APP TEXT_APP

Timings of one machine vary; the ratio of two things measured in turns varies less, so that is what
to look at. Needs a desktop: run it through script/bench.
"""

import collections
import os
import statistics
import subprocess
import sys
import tempfile
import time

from tarqo_client import Helper, nodes_of

NODES = 1500
ROUNDS = 7
TEXT_ROUNDS = 3
WINDOW = "1280x800"
BUNDLE = "com.tarqo.test.gtk3"
TEXT_BUNDLE = "com.tarqo.test.text"


def milliseconds(deed):
    start = time.perf_counter()
    deed()
    return (time.perf_counter() - start) * 1000


def in_turns(ours, theirs, rounds=ROUNDS):
    """Medians of two deeds run alternately, after one round that does not count."""
    ours()
    theirs()
    times = ([], [])
    for _ in range(rounds):
        times[0].append(milliseconds(ours))
        times[1].append(milliseconds(theirs))
    return [statistics.median(times[0]), statistics.median(times[1])]


def resident_mib(pid):
    with open("/proc/%d/status" % pid, encoding="ascii") as file:
        for line in file:
            if line.startswith("VmRSS:"):
                return int(line.split()[1]) / 1024
    raise RuntimeError("no VmRSS")


def pyatspi_walk(desktop_name):
    """Reads of every accessible what the helper reads of a node, as a client of pyatspi would."""
    import pyatspi  # pylint: disable=import-outside-toplevel

    desktop = pyatspi.Registry.getDesktop(0)
    application = next(a for a in desktop if a and a.name == desktop_name)
    count = 0

    def visit(accessible):
        nonlocal count
        count += 1
        accessible.getRoleName()
        _ = accessible.name
        _ = accessible.description
        states = accessible.getState()
        accessible.getAttributes()
        interfaces = pyatspi.listInterfaces(accessible)
        if states.contains(pyatspi.STATE_SHOWING) and "Component" in interfaces:
            accessible.queryComponent().getExtents(pyatspi.DESKTOP_COORDS)
        if "Action" in interfaces:
            action = accessible.queryAction()
            for i in range(action.nActions):
                action.getName(i)
        if "Text" in interfaces:
            accessible.queryText().getText(0, -1)
        if "Value" in interfaces:
            _ = accessible.queryValue().currentValue
        for i in range(accessible.childCount):
            visit(accessible.getChildAtIndex(i))

    for i in range(application.childCount):
        visit(application.getChildAtIndex(i))
    return count


def first_response(program):
    def once():
        with Helper(program) as helper:
            helper.exchange({"id": 1, "method": "unknown"})
    return once


def row(what, ours, peer, theirs):
    print("| %s | %.1f ms | %s | %.1f ms | %.1f |" % (what, ours, peer, theirs, theirs / ours),
          flush=True)


class Application:
    """An application of ours that runs inside a `with` statement; `lines` is what it printed until
    it was ready."""

    def __init__(self, *command):
        self._process = subprocess.Popen(command, stdout=subprocess.PIPE, text=True)
        self.lines = []
        for line in self._process.stdout:
            if line.strip() == "ready":
                break
            self.lines.append(line.strip())

    def __enter__(self):
        return self

    def __exit__(self, *unused):
        self._process.terminate()
        self._process.wait()
        self._process.stdout.close()


def main():
    program, application, text_application = sys.argv[1:4]
    print("| what | tarqo-ax | peer | peer's time | ratio |\n|---|---|---|---|---|")
    with Application(application, "--nodes", str(NODES), "--geometry", WINDOW + "+0+0",
                     "--title", "Bench"):
        idle = measure(program, os.path.basename(application))
    with Application(text_application, "--geometry", WINDOW + "+0+0", "--title", "Bench") as app:
        measure_text(program, app.lines)
    print("\nResident memory while idle after connect: %.1f MiB" % idle)


def measure(program, application_name):
    with Helper(program) as helper:
        helper.call("connect", {"bundleId": BUNDLE})
        counts = {}
        everything = {"image": False, "maxNodes": 10000, "maxDepth": 100, "timeoutMs": 30000}

        def observe():
            counts["ours"] = len(nodes_of(helper.call("observe", everything)))

        def walk():
            counts["theirs"] = pyatspi_walk(application_name)

        ours, theirs = in_turns(observe, walk)
        row("observe without image, %(ours)d nodes listed of %(theirs)d accessibles" % counts,
            ours, "pyatspi walk of the same attributes", theirs)

        image = {"maxNodes": 1, "menubar": False, "ocr": False}
        window = str(bench_window())
        ours, theirs = in_turns(
            lambda: helper.call("observe", image),
            lambda: subprocess.run(["import", "-window", window, "png:/dev/null"], check=True))
        row("window image %s captured, encoded, sent" % WINDOW, ours, "ImageMagick `import`", theirs)

    ours, theirs = in_turns(
        first_response(program),
        lambda: subprocess.run(["/usr/bin/python3", "-c", "import pyatspi"], check=True))
    row("first response after process start, to its end", ours, "`python3 -c 'import pyatspi'`",
        theirs)

    with Helper(program) as helper:
        helper.call("connect", {"bundleId": BUNDLE})
        time.sleep(0.5)
        return resident_mib(helper.pid)


def words_right(drawn, read):
    """How many of the words drawn were read, anywhere."""
    return (collections.Counter(drawn) & collections.Counter(read)).total()


def measure_text(program, drawn_lines):
    """Reads a window without accessible text, by the helper and by the command of Tesseract."""
    drawn = [word for line in drawn_lines for word in line.split('"', 1)[1].rstrip('"').split()]
    read = {}
    with Helper(program) as helper, tempfile.TemporaryDirectory() as folder:
        helper.call("connect", {"bundleId": TEXT_BUNDLE})
        picture = os.path.join(folder, "window.png")
        window = str(bench_window())

        def observe():
            nodes = nodes_of(helper.call("observe", {"menubar": False}, timeout=120))
            read["ours"] = [word for node in nodes for word in node["name"].split()]

        def command():
            subprocess.run(["import", "-window", window, picture], check=True)
            result = subprocess.run(
                ["tesseract", picture, "-", "-l", "kor+eng"], check=True, capture_output=True,
                text=True, env={**os.environ, "OMP_THREAD_LIMIT": "1"})  # Faster than with more.
            read["theirs"] = result.stdout.split()

        ours, theirs = in_turns(observe, command, TEXT_ROUNDS)
    row("%d lines of text read from the pixels of a window" % len(drawn_lines), ours,
        "ImageMagick `import`, then `tesseract -l kor+eng`", theirs)
    ours, theirs = (words_right(drawn, read[who]) for who in ("ours", "theirs"))
    print("| words right, of %d Korean and English ones | %d | the same | %d | %.2f |"
          % (len(drawn), ours, theirs, ours / theirs))


def bench_window():
    """The X window of the benchmark's application, by its title."""
    tree = subprocess.run(["xwininfo", "-root", "-tree"], check=True, capture_output=True, text=True)
    for line in tree.stdout.splitlines():
        if '"Bench"' in line:
            return int(line.split()[0], 16)
    raise RuntimeError("the benchmark's window is not there")


if __name__ == "__main__":
    main()
