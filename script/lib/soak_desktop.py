"""Observe, act, settle, many times: one helper, three applications of three kinds, a private
desktop."""

import random
import sys
import time

import soak
from tarqo_client import Helper, find_node, nodes_of

# Of each application what may be clicked again and again without its window changing for good; what
# takes text; what opens a context menu.
APPLICATIONS = {
    "com.tarqo.test.gtk3": (["Save", "Quiet", "Agree", "Plain", "Red", "Blue", "Bold", "Canvas"],
                            ["Name", "Search"], ["Canvas"]),
    "com.tarqo.test.qt": (["Save", "Quiet", "Agree", "Plain"], ["Name"], ["Canvas"]),
    "org.gnome.Calculator": (["1", "2", "3", "4", "5", "6", "7", "8", "9", "0"], [], []),
}
ACTIONS = {"click": 50, "double": 6, "hover": 6, "menu": 4, "type": 12, "key": 8, "scroll": 6,
           "refused": 8}
TEXTS = ["one", "두 번째", "third 3", "x" * 40]
CYCLES_EACH = 25  # Between two applications.
IMAGE_EVERY = 10
TEXT_EVERY = 200
SETTLE = {"quietMs": 60, "timeoutMs": 800}


class Absent(Exception):
    """An application cannot be connected to, or does not show itself."""


class Driver:
    """One helper at work, and what became of its requests."""

    def __init__(self, program, chance):
        self.helper = Helper(program, env=soak.environment())
        self.outcomes = soak.Outcomes()
        self._chance = chance
        self._bundle = ""
        self._stale = "none:1"
        self.tried = 0
        self.done = 0

    def call(self, method, **arguments):
        return self.outcomes.call(self.helper, method, **arguments)

    def connect(self, number):
        self._bundle = list(APPLICATIONS)[number % len(APPLICATIONS)]
        # It may have been started just now, on a machine that is busy with other things.
        deadline = time.monotonic() + 120
        while time.monotonic() < deadline:
            seen = (self.call("connect", bundleId=self._bundle)
                    and self.call("observe", image=False))
            if seen and find_node(seen, APPLICATIONS[self._bundle][0][0]):
                return
            time.sleep(0.2)
        raise Absent(self._bundle)

    def warm_up(self):
        """Starts every application, and reads text of every kind that a cycle types: what the
        recogniser loads for the first text of a language it keeps."""
        for number, (_, typed, _) in enumerate(APPLICATIONS.values()):
            self.connect(number)
            for text in TEXTS if typed else [""]:
                if text:
                    field = find_node(self.call("observe", image=False), typed[0])
                    self.call("input", nodeId=field["id"], kind="type", text=text)
                self.call("observe", forceOcr=True)

    def cycle(self, number):
        if number % CYCLES_EACH == 0:
            self.connect(number // CYCLES_EACH)
        seen = self.call("observe", image=number % IMAGE_EVERY == 0,
                         forceOcr=number % TEXT_EVERY == 1)
        if seen:
            kind = self._chance.choices(list(ACTIONS), list(ACTIONS.values()))[0]
            self._act(kind, seen)
            self._stale = nodes_of(seen)[0]["id"]
        self.call("settle", **SETTLE)
        if number % CYCLES_EACH == 7:
            self.call("geometry")
        elif number % CYCLES_EACH == 11:
            self.call(self._chance.choice(["preflight", "host", "listTargets"]))

    def _pick(self, seen, names):
        name = self._chance.choice(names) if names else None
        return name and find_node(seen, name)

    def _intended(self, method, **arguments):
        """An action that should succeed."""
        self.tried += 1
        self.done += self.call(method, **arguments) is not None

    def _act(self, kind, seen):
        clicked, typed, menus = APPLICATIONS[self._bundle]
        if kind == "refused":
            self._refused(seen)
            return
        names = {"type": typed, "menu": menus}.get(kind, clicked)
        node = self._pick(seen, names)
        if node is None:
            node, kind = nodes_of(seen)[0], "key"  # The window itself.
        if kind in ("click", "double"):
            self._intended("click", nodeId=node["id"], count=2 if kind == "double" else 1)
        elif kind == "hover":
            self._intended("hover", nodeId=node["id"])
        elif kind == "menu":
            self._menu(node)
        elif kind == "type":
            self._intended("input", nodeId=node["id"], kind="type",
                           text=self._chance.choice(TEXTS))
        elif kind == "scroll":
            self._intended("input", nodeId=node["id"], kind="scroll",
                           deltaY=self._chance.choice([200, -600, 600]))
        else:
            # Escape clears the calculator and closes what an earlier action has opened.
            self._intended("input", nodeId=node["id"], kind="key",
                           key=self._chance.choice(["Escape", "Escape", "Home"]))

    def _menu(self, node):
        self._intended("showMenu", nodeId=node["id"])
        seen = self.call("observe", image=False)
        if seen:
            self._intended("input", nodeId=nodes_of(seen)[0]["id"], kind="key", key="Escape")

    def _refused(self, seen):
        disabled = find_node(seen, "Disabled")
        password = find_node(seen, "Password", "textbox")
        window = nodes_of(seen)[0]["id"]
        kind = self._chance.randrange(6)
        if kind == 0 and disabled:
            self.call("click", nodeId=disabled["id"])
        elif kind == 1 and password:
            self.call("input", nodeId=password["id"], kind="type", text="secret")
        elif kind == 2:
            self.call("input", nodeId=window, kind="key", key="NoSuchKey")
        elif kind == 3:
            self.call("connect", bundleId="com.example.absent", launch=False)
            self.call("connect", bundleId=self._bundle)
        elif kind == 4:
            self.helper.send_bytes(b'{"id":1,"method":\n')
            self.helper.read_line(60)
        else:
            self.call("click", nodeId=self._stale)


def run(driver, arguments, growth):
    """How many cycles there were."""
    begin = time.monotonic()
    limit = (arguments.minutes or float("inf")) * 60
    for number in range(arguments.cycles):
        spent = (time.monotonic() - begin) / limit
        if spent >= 1:
            return number
        try:
            driver.cycle(number)
        except Absent as application:
            print("  ENDED early: %s does not show itself" % application)
            return number
        growth.note(max(number / arguments.cycles, spent))
    return arguments.cycles


def main():
    arguments = soak.parsed()
    if arguments.cycles <= 0:
        return
    driver = Driver(arguments.program, random.Random(arguments.seed))
    resources = soak.XResources()
    growth = soak.Growth(driver.helper.pid, resources)
    try:
        driver.warm_up()
    except Absent as application:
        sys.exit("soak: %s does not show itself" % application)
    begin = time.monotonic()
    cycles = run(driver, arguments, growth)
    print("real applications: %d of %d cycles in %.0f s" % (
        cycles, arguments.cycles, time.monotonic() - begin))
    print("  %d of %d actions that should succeed did" % (driver.done, driver.tried))
    driver.outcomes.show()
    status = driver.helper.close()
    if status != 0:
        print("  ENDED with status %d" % status)
    mostly = driver.done * 2 > driver.tried
    if not mostly:
        print("  too few actions succeed for this to say anything")
    is_whole = arguments.minutes is not None or cycles == arguments.cycles
    sys.exit(0 if growth.holds() and mostly and is_whole and status == 0 else 1)


if __name__ == "__main__":
    main()
