"""What both halves of script/soak share: what a process holds, and whether that grows."""

import argparse
import collections
import ctypes
import os
import struct

from tarqo_client import HelperError

# What may be there more at the end than in the middle. Memory comes in pieces that are kept.
BOUNDS = {"rss KiB": 2048, "private KiB": 2048, "threads": 0, "descriptors": 0, "X resources": 2}


def parsed():
    parser = argparse.ArgumentParser(
        prog="soak", usage="script/soak [--requests N] [--cycles N] [--minutes N] [--seed N]")
    parser.add_argument("program", help=argparse.SUPPRESS)
    parser.add_argument("--requests", type=int, default=100_000)
    parser.add_argument("--cycles", type=int, default=5_000)
    parser.add_argument("--minutes", type=float)
    parser.add_argument("--seed", type=int, default=1)
    arguments = parser.parse_args()
    arguments.program = os.path.abspath(arguments.program)
    return arguments


class XResources:
    """Counts what a process keeps in the X server, by the X-Resource extension."""

    LOCAL_PROCESS = 2

    def __init__(self):
        self._xcb = ctypes.CDLL("libxcb.so.1")
        self._res = ctypes.CDLL("libxcb-res.so.0")
        self._libc = ctypes.CDLL(None)
        self._libc.free.argtypes = [ctypes.c_void_p]
        self._xcb.xcb_connect.restype = ctypes.c_void_p
        self._xcb.xcb_connection_has_error.argtypes = [ctypes.c_void_p]
        self._connection = self._xcb.xcb_connect(None, None)
        if self._xcb.xcb_connection_has_error(self._connection):
            raise SystemExit("soak: no X server answers")

    def _ask(self, request, *arguments):
        ask = getattr(self._res, request)
        ask.restype = ctypes.c_uint
        answer = getattr(self._res, request + "_reply")
        answer.restype = ctypes.c_void_p
        answer.argtypes = [ctypes.c_void_p, ctypes.c_uint, ctypes.c_void_p]
        connection = ctypes.c_void_p(self._connection)
        reply = answer(connection, ask(connection, *arguments), None)
        if not reply:
            raise SystemExit("soak: the X server does not answer %s" % request)
        length = struct.unpack("I", ctypes.string_at(reply + 4, 4))[0]
        data = ctypes.string_at(reply, 32 + 4 * length)
        self._libc.free(reply)
        return data

    def _clients(self, pid):
        """The first resource of every connection of a process."""
        every = (ctypes.c_uint * 2)(0, self.LOCAL_PROCESS)
        data = self._ask("xcb_res_query_client_ids", ctypes.c_uint(1), every)
        at, found = 32, []
        for _ in range(struct.unpack_from("I", data, 8)[0]):
            client, _, length = struct.unpack_from("III", data, at)
            if length >= 4 and struct.unpack_from("I", data, at + 12)[0] == pid:
                found.append(client)
            at += 12 + length
        return found

    def count(self, pid):
        total = 0
        for client in self._clients(pid):
            data = self._ask("xcb_res_query_client_resources", ctypes.c_uint(client))
            for kind in range(struct.unpack_from("I", data, 8)[0]):
                total += struct.unpack_from("II", data, 32 + 8 * kind)[1]
        return total


def sample(pid, resources):
    found = collections.Counter()
    with open("/proc/%d/smaps_rollup" % pid, encoding="ascii") as file:
        for line in file:
            name, _, rest = line.partition(":")
            if name == "Rss":
                found["rss KiB"] = int(rest.split()[0])
            elif name == "Private_Dirty":  # Clean pages are private while nobody else has them.
                found["private KiB"] = int(rest.split()[0])
    found["threads"] = len(os.listdir("/proc/%d/task" % pid))
    found["descriptors"] = len(os.listdir("/proc/%d/fd" % pid))
    if resources:
        found["X resources"] = resources.count(pid)
    return found


def environment():
    """In which the allocator gives large blocks back to the system at once. Else it keeps some of
    those that pictures took, now more and now fewer, and what leaks is lost among them."""
    return {**os.environ, "GLIBC_TUNABLES":
            "glibc.malloc.mmap_threshold=65536:glibc.malloc.trim_threshold=65536"}


class Growth:
    """What a helper holds at three moments of a run, each the least of a tenth of it: memory goes up
    and down, and threads that serve one request end a moment after it."""

    MOMENTS = {"start": 0.1, "middle": 0.5, "end": 0.95}
    HALF_WIDTH = 0.05

    def __init__(self, pid, resources=None):
        self._pid = pid
        self._resources = resources
        self._least = {}

    def note(self, progress):
        """To be called again and again while the run goes from 0 to 1."""
        for moment, middle in self.MOMENTS.items():
            if abs(progress - middle) <= self.HALF_WIDTH:
                now = sample(self._pid, self._resources)
                least = self._least.setdefault(moment, now)
                self._least[moment] = {name: min(least[name], now[name]) for name in now}

    def holds(self):
        """Prints a table. Whether nothing has grown by more than it may."""
        if len(self._least) != len(self.MOMENTS):
            print("  too short to say whether anything grows")
            return False
        print("  %-14s %9s %9s %9s   may grow by" % ("", *self.MOMENTS))
        grown = []
        for name in self._least["start"]:
            values = [self._least[moment][name] for moment in self.MOMENTS]
            print("  %-14s %9d %9d %9d   %d" % (name, *values, BOUNDS[name]))
            if values[2] - values[1] > BOUNDS[name]:
                grown.append(name)
        if grown:
            print("  GREW: " + ", ".join(grown))
        return not grown


class Outcomes:
    """What became of requests: the method, and "ok" or the code of the failure."""

    def __init__(self):
        self._counts = collections.Counter()

    def add(self, method, response):
        error = response.get("error")
        self._counts[method, error["code"] if error else "ok"] += 1

    def call(self, helper, method, **arguments):
        """The result; none after a failure."""
        try:
            result = helper.call(method, arguments, 120)
        except HelperError as error:
            self._counts[method, error.code] += 1
            return None
        self._counts[method, "ok"] += 1
        return result

    def show(self):
        for method in sorted({method for method, _ in self._counts}):
            print("  %-14s %s" % (method, ", ".join(
                "%s %d" % (code, count) for (name, code), count in sorted(self._counts.items())
                if name == method)))
