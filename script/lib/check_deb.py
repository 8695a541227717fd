"""For check_deb.sh: uses the installed package, within the clean root."""

import json
import os
import subprocess
import sys
import time

DESKTOP = ["python3", "-I", "/usr/lib/tarqo-mcp/dist/desktop", "--"]


def run(*command, **options):
    return subprocess.run(command, stdout=subprocess.PIPE, text=True, timeout=120, check=True,
                          **options).stdout


class Server:
    """A server in a headless desktop, spoken to like a host does."""

    def __init__(self, *arguments):
        self.process = subprocess.Popen([*DESKTOP, "tarqo-mcp", *arguments],
                                        stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        self.number = 0

    def ask(self, method, **params):
        self.number += 1
        self.send(id=self.number, method=method, params=params)
        while True:
            answer = json.loads(self.process.stdout.readline())
            if answer.get("id") == self.number:
                return answer["result"]

    def send(self, **message):
        self.process.stdin.write(json.dumps({"jsonrpc": "2.0", **message}) + "\n")
        self.process.stdin.flush()

    def end(self):
        self.process.stdin.close()
        return self.process.wait(timeout=30)


def check(what, holds, seen=""):
    print(("ok   " if holds else "FAIL ") + what, flush=True)
    if not holds:
        sys.exit(f"{what}: {seen}")


def main():
    helper = run("tarqo-ax", "--version").split()
    server = run("tarqo-mcp", "--version").split()
    check("both programs tell the same version", helper[1] == server[1], (helper, server))
    for page in ("tarqo-ax", "tarqo-mcp"):
        check(f"there is a page for {page}", os.path.exists(f"/usr/share/man/man1/{page}.1.gz"))
    vips = run("/usr/lib/tarqo-mcp/node", "-p",
               "require('/usr/lib/tarqo-mcp/node_modules/sharp').versions.vips")
    check("pictures can be made", vips.strip() != "", vips)
    answer = json.loads(run(*DESKTOP, "tarqo-ax", input='{"id":1,"method":"preflight"}\n'))
    check("the helper may use the headless desktop", answer["result"]["screenCapture"], answer)
    begun = time.monotonic()
    talk = Server()
    hello = talk.ask("initialize", protocolVersion="2025-06-18", capabilities={},
                     clientInfo={"name": "check", "version": "1"})
    check("the server greets", "serverInfo" in hello, hello)
    print(f"     {time.monotonic() - begun:.1f} s with the start of its desktop")
    talk.send(method="notifications/initialized")
    names = [tool["name"] for tool in talk.ask("tools/list")["tools"]]
    check("it has its tools", "check_setup" in names and "click" in names, names)
    setup = talk.ask("tools/call", name="check_setup", arguments={})
    text = setup["content"][0]["text"]
    check("it finds the helper of the package", "/bin/tarqo-ax (lies beside" in text, text)
    check("it ends when nobody needs it", talk.end() == 0)


if __name__ == "__main__":
    main()
