"""Every kind of request, many times, to one process of the simulated desktop for each example."""

import json
import os
import random
import sys
import time

import soak
from tarqo_client import Helper, nodes_of

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
EXAMPLES = {"notes_editor": "com.example.Notes", "login_page": "com.example.Browser",
            "canvas": "com.example.Game"}
# What closes the only window for good would leave nothing to do.
LAST = {"Delete"}
NOTED_EVERY = 20  # Requests.
KEYS = ["Enter", "Escape", "Tab", "ArrowDown", "a", "Space", "F99", ""]
MALFORMED = [b"", b"{", b"[]", b"null", b"3", b"\xff\xfe{}", b'{"id":1}', b'{"method":7,"id":{}}',
             b'{"id":1,"method":"nothing"}', b"[" * 600, b'{"id":1,"method":"click","args":[1]}',
             b'{"id":1,"method":"observe","args":{"maxNodes":"many","timeoutMs":-1e99}}',
             b'{"id":"\\ud800","method":"host","args":{"pid":1e300}}',
             b'{"id":1,"method":"' + b"x" * 100_000 + b'"}']


class Traffic:
    """One helper over one example, and the requests that it gets."""

    def __init__(self, program, example, chance):
        self._bundle = EXAMPLES[example]
        scene = os.path.join(ROOT, "simulator/examples", example + ".json")
        self.helper = Helper(program, soak.environment(), [scene])
        self._chance = chance
        self._ids = []
        self.outcomes = soak.Outcomes()

    def _send(self, method, **arguments):
        response = self.helper.exchange({"id": 1, "method": method, "args": arguments}, 60)
        self.outcomes.add(method, response)
        return response

    def _node(self):
        return self._chance.choice(self._ids) if self._ids else "none:1"

    def _observe(self):
        arguments = {"image": self._chance.random() < 0.1}
        if self._chance.random() < 0.2:
            arguments.update(maxNodes=self._chance.choice([1, 5, 1500]), menubar=False)
        if self._chance.random() < 0.1:
            arguments["forceOcr"] = True
        if self._chance.random() < 0.1:
            arguments["previousNodeId"] = self._node()
        response = self._send("observe", **arguments)
        if "result" in response:
            self._ids = [node["id"] for node in nodes_of(response["result"])
                         if node["name"] not in LAST]

    def _input(self):
        kind = self._chance.choice(["type", "key", "scroll", "press"])
        self._send("input", nodeId=self._node(), kind=kind, submit=self._chance.random() < 0.3,
                   text=self._chance.choice(["abc", "한글 😀", "", "\n", "x" * 2001]),
                   key=self._chance.choice(KEYS),
                   modifiers=self._chance.choice([[], ["Shift"], ["X"]]),
                   deltaY=self._chance.choice([-300, -900, 0, 500, 5000]),
                   deltaX=self._chance.choice([0, 0, 0, 200]))

    def _connect(self):
        bundle = self._chance.choice([self._bundle] * 8 + ["com.example.Absent", ""])
        arguments = {"bundleId": bundle}
        if self._chance.random() < 0.2:
            arguments["launch"] = False
        self._send("connect", **arguments)

    def _malformed(self):
        self.helper.send_bytes(self._chance.choice(MALFORMED) + b"\n")
        line = self.helper.read_line(60)
        if line is None:
            raise EOFError("the helper ended")
        self.outcomes.add("(malformed)", json.loads(line))

    def step(self):
        pointing = self._chance.choice(["click", "click", "click", "hover", "showMenu"])
        kind = self._chance.choices(
            ["observe", "point", "input", "settle", "geometry", "facts", "connect", "malformed"],
            [30, 20, 15, 10, 5, 8, 5, 7])[0]
        if kind == "observe":
            self._observe()
        elif kind == "point":
            self._send(pointing, nodeId=self._node(), count=self._chance.choice([1, 1, 2]))
        elif kind == "input":
            self._input()
        elif kind == "settle":
            self._send("settle", quietMs=self._chance.choice([20, 180, 9999]))
        elif kind == "geometry":
            self._send("geometry")
        elif kind == "facts":
            self._send(self._chance.choice(["host", "preflight", "listTargets"]))
        elif kind == "connect":
            self._connect()
        else:
            self._malformed()


def run(program, example, requests, seed):
    chance = random.Random("%s %d" % (example, seed))
    traffic = Traffic(program, example, chance)
    growth = soak.Growth(traffic.helper.pid)
    begin = time.monotonic()
    traffic.outcomes.call(traffic.helper, "connect", bundleId=EXAMPLES[example])
    for done in range(1, requests + 1):
        traffic.step()
        if done % NOTED_EVERY == 0:
            growth.note(done / requests)
    print("%s: %d requests in %.0f s" % (example, requests, time.monotonic() - begin))
    traffic.outcomes.show()
    status = traffic.helper.close()
    if status != 0:
        print("  ENDED with status %d" % status)
    return growth.holds() and status == 0


def main():
    arguments = soak.parsed()
    share = arguments.requests // len(EXAMPLES)
    fine = [run(arguments.program, example, share, arguments.seed)
            for example in EXAMPLES if share > 0]
    sys.exit(0 if all(fine) else 1)


if __name__ == "__main__":
    main()
