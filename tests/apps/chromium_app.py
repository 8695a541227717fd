#!/usr/bin/python3 -B
"""Chromium with a page to be driven by tests: each activation of a control is one line of output.

    chromium_app.py [--geometry WIDTHxHEIGHT+X+Y] [--port PORT] [--slow-start MS] [--windows N]
                    [--block MS[,MS...]]

Serves the page on the loopback interface, on a port of the system's choice unless one is named.
Prints "url ADDRESS", and "ready" when the page is drawn. This process becomes Chromium's own, so
what started it knows its process id; the server is a child that ends with it.

With --windows every window shows the same page, and each line of output says at its end which
window it is about ("clicked Save in 2"), but for the one "ready" at last.
"""

import argparse
import ctypes
import http.server
import os
import shutil
import signal
import subprocess
import tempfile
import time

from app_log import log_line, parse_geometry

PR_SET_PDEATHSIG = 1

FLAGS = [
    "--no-first-run", "--no-default-browser-check", "--disable-gpu", "--disable-quic",
    "--disable-background-networking", "--disable-component-update", "--disable-sync",
    "--disable-extensions", "--password-store=basic", "--class=tarqo-chromium",
]


class Handler(http.server.BaseHTTPRequestHandler):
    """The page for GET of "/", and log lines for POST."""

    open_window = None  # Opens the window of a number, or none beyond the last.

    def do_GET(self):
        if self.path.partition("?")[0] != "/":
            self.send_error(404)
            return
        path = os.path.join(os.path.dirname(os.path.abspath(__file__)), "chromium_page.html")
        with open(path, "rb") as file:
            self.answer(200, file.read())

    def do_POST(self):
        body = self.rfile.read(int(self.headers["Content-Length"]))
        lines = body.decode().split("\n")
        for line in lines:
            log_line(line)
        self.answer(204, b"")
        for line in lines:
            if line.startswith("ready in "):
                Handler.open_window(int(line.rpartition(" ")[2]) + 1)

    def answer(self, status, body):
        self.send_response(status)
        self.send_header("Content-Type", "text/html; charset=utf-8")
        self.send_header("Content-Length", str(len(body)))
        self.end_headers()
        self.wfile.write(body)

    def log_message(self, format, *args):  # pylint: disable=redefined-builtin
        """The requests themselves are not worth a line."""


def windows_opener(command, url, count):
    """One after the other, so that it is known which is which."""

    def open_window(number):
        if number > count:
            log_line("ready")
            return
        subprocess.Popen([*command, "--new-window", "%s?window=%d" % (url, number)],
                         stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                         stderr=subprocess.DEVNULL)

    return open_window


def serve(server, browser, profile):
    """Until the browser ends, whose process this one's parent becomes; then removes its profile."""

    def end(*_):
        # The browser's own children may still write into it for a moment.
        for _ in range(40):
            shutil.rmtree(profile, ignore_errors=True)
            time.sleep(0.05)
            if not os.path.exists(profile):
                break
        os._exit(0)

    signal.signal(signal.SIGTERM, end)
    ctypes.CDLL(None).prctl(PR_SET_PDEATHSIG, signal.SIGTERM)
    if os.getppid() != browser:
        end()
    server.serve_forever()


def chromium_command(geometry, profile):
    width, height, x, y = parse_geometry(geometry)
    command = ["chromium", *FLAGS, "--user-data-dir=" + profile,
               "--window-size=%d,%d" % (width, height)]
    if x is not None:
        command.append("--window-position=%d,%d" % (x, y))
    if os.getuid() == 0:
        # The second keeps the warning about the first off the page.
        command += ["--no-sandbox", "--test-type"]
    return command


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--geometry", default="900x640")
    parser.add_argument("--port", type=int, default=0)
    parser.add_argument("--slow-start", type=int, default=0, metavar="MS")
    parser.add_argument("--windows", type=int, default=0, metavar="N")
    parser.add_argument("--block", metavar="MS[,MS...]")
    options = parser.parse_args()
    time.sleep(options.slow_start / 1000)

    server = http.server.HTTPServer(("127.0.0.1", options.port), Handler)
    url = "http://127.0.0.1:%d/" % server.server_port
    if options.block:
        url += "?block=" + options.block
    profile = tempfile.mkdtemp(prefix="tarqo-chromium.")
    log_line("url " + url)
    browser = os.getpid()
    command = chromium_command(options.geometry, profile)
    if os.fork() == 0:
        Handler.open_window = windows_opener(command, url, options.windows)
        serve(server, browser, profile)
    server.socket.close()
    os.environ["GNOME_ACCESSIBILITY"] = "1"
    # The output belongs to the page's lines.
    os.dup2(2, 1)
    os.execvp("chromium", [*command, url + ("?window=1" if options.windows else "")])


if __name__ == "__main__":
    main()
