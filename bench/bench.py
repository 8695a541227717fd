"""The figures of the README: each beside what a user would pick instead, in one run.

    bench.py HELPER GTK3_APP TEXT_APP CHECK_TO_EVENT

Timings of one machine vary; the ratio of two things measured in turns varies less, so that is what
to look at. Needs a desktop: run it through script/bench.
"""

import collections
import ctypes
import json
import os
import statistics
import subprocess
import sys
import tempfile
import time

from tarqo_client import Helper, nodes_of

NODES = 1500
ROUNDS = 7
IMAGE_ROUNDS = 15
TEXT_ROUNDS = 3
WINDOW = "1280x800"
CHECKED_ROUNDS = 70
CHECK_TO_EVENT_MS = 5  # What must not be exceeded by 99 events of 100.
SWITCH_MS = 120  # What every action gives its target to come to the front.
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


def pyatspi_walk(desktop_name, only_shown):
    """Reads of every accessible what the helper reads of a node, as a client of pyatspi would; or,
    as the helper does, only of those that show and those in menus."""
    import pyatspi  # pylint: disable=import-outside-toplevel

    desktop = pyatspi.Registry.getDesktop(0)
    application = next(a for a in desktop if a and a.name == desktop_name)
    count = 0

    def visit(accessible, in_menu):
        nonlocal count
        states = accessible.getState()
        if only_shown and not in_menu and not states.contains(pyatspi.STATE_SHOWING):
            return
        count += 1
        in_menu = accessible.getRoleName() == "menu bar" or in_menu
        _ = accessible.name
        _ = accessible.description
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
            visit(accessible.getChildAtIndex(i), in_menu)

    for i in range(application.childCount):
        visit(application.getChildAtIndex(i), False)
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
        self._process = subprocess.Popen(
            command, stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        self.lines = []
        for line in self._process.stdout:
            if line.strip() == "ready":
                break
            self.lines.append(line.strip())

    def tell(self, line):
        self._process.stdin.write(line + "\n")
        self._process.stdin.flush()

    def await_line(self, wanted):
        for line in self._process.stdout:
            if line.strip() == wanted:
                return
        raise RuntimeError("the application ended")

    def __enter__(self):
        return self

    def __exit__(self, *unused):
        self._process.terminate()
        self._process.wait()
        self._process.stdin.close()
        self._process.stdout.close()


class Pointer:
    """Where the pointer is; asking costs some 30 us."""

    def __init__(self):
        self._x11 = ctypes.CDLL("libX11.so.6")
        self._x11.XOpenDisplay.restype = ctypes.c_void_p
        self._x11.XDefaultRootWindow.argtypes = [ctypes.c_void_p]
        self._x11.XDefaultRootWindow.restype = ctypes.c_ulong
        self._x11.XQueryPointer.argtypes = [ctypes.c_void_p, ctypes.c_ulong] + [ctypes.c_void_p] * 7
        self._display = self._x11.XOpenDisplay(None)
        self._root = self._x11.XDefaultRootWindow(self._display)

    def position(self):
        windows = (ctypes.c_ulong * 2)()
        places = (ctypes.c_int * 4)()
        mask = ctypes.c_uint()
        at = ctypes.addressof
        self._x11.XQueryPointer(
            self._display, self._root, at(windows), at(windows) + ctypes.sizeof(ctypes.c_ulong),
            *(at(places) + i * ctypes.sizeof(ctypes.c_int) for i in range(4)), at(mask))
        return places[0], places[1]


def until_first_event(helper, request, happened):
    """Median time from a request to what it causes, without the fixed wait on the way; `happened`
    gives a function that waits for it."""
    times = []
    for i in range(ROUNDS + 1):
        nodes = nodes_of(helper.call("observe", {"image": False}))
        # Two in turn: a pointer that is there already does not move.
        node = [node for node in nodes if node["name"].startswith("Button")][i % 2]
        await_it = happened(node)
        start = time.perf_counter()
        helper.send_bytes(json.dumps(
            {"id": i, "method": request["method"],
             "args": {"nodeId": node["id"], **request["args"]}}).encode() + b"\n")
        await_it()
        times.append((time.perf_counter() - start) * 1000 - SWITCH_MS)
        response = json.loads(helper.read_line())
        if "error" in response:
            raise RuntimeError(response["error"])
    return statistics.median(times[1:])


def measure_input(program, app):
    print("\n| from the request to its first effect, less the fixed %d ms | ms |\n|---|---|"
          % SWITCH_MS)
    pointer = Pointer()

    def pointer_moves(_node):
        before = pointer.position()

        def wait():
            while pointer.position() == before:
                pass
        return wait

    with Helper(program) as helper:
        helper.call("connect", {"bundleId": BUNDLE})
        for what, request, happened in (
                ("click: the application's button is pressed", {"method": "click", "args": {}},
                 lambda node: lambda: app.await_line("clicked " + node["name"])),
                ("double click: the pointer starts to move",
                 {"method": "click", "args": {"count": 2}}, pointer_moves),
                ("hover: the same", {"method": "hover", "args": {}}, pointer_moves),
                ("key: the application gets it",
                 {"method": "input", "args": {"kind": "key", "key": "ArrowLeft"}},
                 lambda node: lambda: app.await_line("event key " + node["name"]))):
            print("| %s | %.1f |" % (what, until_first_event(helper, request, happened)),
                  flush=True)


def measure_checks(check_to_event):
    """How long lies between the end of the last proof and the event, on the application that
    runs."""
    print("\n| check to event | actions | events | median ms | 99th percentile | limit |\n"
          "|---|---|---|---|---|---|")
    told = subprocess.run([check_to_event, BUNDLE, str(CHECKED_ROUNDS)], check=True,
                          capture_output=True, text=True)
    for line in told.stdout.splitlines():
        what, actions, events, median, late, _longest = line.split("\t")
        print("| %s | %s | %s | %.2f | %.2f | %d |" % (
            what, actions, events, float(median), float(late), CHECK_TO_EVENT_MS), flush=True)


def main():
    program, application, text_application, check_to_event = sys.argv[1:5]
    print("| what | tarqo-ax | peer | peer's time | ratio |\n|---|---|---|---|---|")
    with Application(application, "--nodes", str(NODES), "--geometry", WINDOW + "+0+0",
                     "--title", "Bench"):
        idle = measure(program, os.path.basename(application))
    with Application(text_application, "--geometry", WINDOW + "+0+0", "--title", "Bench") as app:
        measure_text(program, app.lines)
    with Application(application, "--nodes", "20", "--geometry", WINDOW + "+0+0",
                     "--title", "Bench") as app:
        app.tell("watch")
        measure_input(program, app)
    with Application(application, "--nodes", "20", "--geometry", WINDOW + "+0+0",
                     "--title", "Bench"):
        measure_checks(check_to_event)
    print("\nResident memory while idle after connect: %.1f MiB" % idle)


def measure(program, application_name):
    with Helper(program) as helper:
        helper.call("connect", {"bundleId": BUNDLE})
        counts = {}
        everything = {"image": False, "maxNodes": 10000, "maxDepth": 100, "timeoutMs": 30000}

        def observe():
            counts["ours"] = len(nodes_of(helper.call("observe", everything)))

        for only_shown in (False, True):
            def walk():
                counts["theirs"] = pyatspi_walk(application_name, only_shown)

            ours, theirs = in_turns(observe, walk)
            row("observe without image, %d nodes listed" % counts["ours"], ours,
                "pyatspi walk reading the same of %s, %d accessibles"
                % ("what shows" if only_shown else "everything", counts["theirs"]), theirs)

        measure_image(helper)

    ours, theirs = in_turns(
        first_response(program),
        lambda: subprocess.run(["/usr/bin/python3", "-c", "import pyatspi"], check=True))
    row("first response after process start, to its end", ours, "`python3 -c 'import pyatspi'`",
        theirs)

    with Helper(program) as helper:
        helper.call("connect", {"bundleId": BUNDLE})
        time.sleep(0.5)
        return resident_mib(helper.pid)


def measure_image(helper):
    """The image alone is what an observation with one takes longer than one without."""
    look = {"maxNodes": 1, "menubar": False, "ocr": False}
    window = str(bench_window())
    times = {"with": [], "without": [], "import": []}
    for measured in [False] + [True] * IMAGE_ROUNDS:
        for what, deed in (
                ("with", lambda: helper.call("observe", look)),
                ("without", lambda: helper.call("observe", {**look, "image": False})),
                ("import", lambda: subprocess.run(["import", "-window", window, "png:/dev/null"],
                                                  check=True))):
            time_taken = milliseconds(deed)
            if measured:
                times[what].append(time_taken)
    medians = {what: statistics.median(taken) for what, taken in times.items()}
    row("window image %s captured, encoded, sent: what it adds to an observe" % WINDOW,
        medians["with"] - medians["without"], "ImageMagick `import`", medians["import"])
    row("observe of one node with that image, the whole request", medians["with"], "the same",
        medians["import"])


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
