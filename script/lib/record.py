"""Plays requests on a simulated desktop and writes them down as a transcript: script/record."""

import json
import os
import re
import sys

from tarqo_client import Helper

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
SCENES = os.path.join(ROOT, "tests/transcripts/scenes")
TIME = re.compile(r"\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}Z")
SNAPSHOT = re.compile(r"[0-9a-f]{8}(-[0-9a-f]{4}){3}-[0-9a-f]{12}")
PNG = "iVBORw0KGgo"  # How the signature of the format begins in base64.
NUMBERS = ("durationMs", "waitedMs")
WIDTH = 110


def handle(name):
    """The name that a node goes by in a transcript."""
    return re.sub(r"\W+", "_", name.lower()).strip("_")


class Recorder:
    """What the conversation has named so far."""

    def __init__(self):
        self._ids = {}  # From handle to node id, of the last observation.
        self._known = {}  # From node id to how it is written from now on.

    def sent(self, request):
        """The request line with ids in the place of handles."""
        return re.sub(r'"\$(\w+)"', lambda m: json.dumps(self._id_of(m[1])), request)

    def _id_of(self, name):
        if name not in self._ids:
            sys.exit("record: no node of the last observation goes by $%s; there are: %s" % (
                name, " ".join(sorted(self._ids)) or "none"))
        return self._ids[name]

    def written(self, response):
        """The response with placeholders for what differs from run to run."""
        nodes = response.get("result", {})
        nodes = nodes.get("snapshot", {}) if isinstance(nodes, dict) else {}
        if "nodes" in nodes:
            self._ids = {}
            named = {node["id"]: handle(node["name"]) for node in nodes["nodes"]}
            for identifier, name in named.items():
                if name and name not in self._ids:
                    self._ids[name] = identifier
        return self._placed(response, None)

    def _placed(self, value, key):
        if isinstance(value, dict):
            # A node's own id before all that refers to it.
            keys = sorted(value, key=lambda name: (name != "id", name))
            return {name: self._placed(value[name], name) for name in keys}
        if isinstance(value, list):
            return [self._placed(item, None) for item in value]
        if key in NUMBERS:
            return "<number>"
        return self._text(value) if isinstance(value, str) else value

    def _text(self, text):
        if TIME.fullmatch(text):
            return "<time>"
        if SNAPSHOT.fullmatch(text):
            return "<snapshot>"
        if text.startswith(PNG):
            return "<png>"
        if text in self._known:
            return self._known[text]
        if SNAPSHOT.match(text):
            name = next((name for name, each in self._ids.items() if each == text), None)
            if name is None:
                return "<node>" if text.rpartition(":")[2].isdigit() else "<any>"
            self._known[text] = "$" + name
            return "<node:%s>" % name if text.rpartition(":")[2].isdigit() else "<any:%s>" % name
        return text


def wrapped(value, indent):
    """JSON over as many lines as it takes, each filled with what fits."""
    line = json.dumps(value, ensure_ascii=False)
    if len(line) + indent <= WIDTH or not isinstance(value, (dict, list)):
        return line
    if isinstance(value, dict):
        parts = [json.dumps(name) + ": " + wrapped(each, indent + 2)
                 for name, each in value.items()]
    else:
        parts = [wrapped(each, indent + 2) for each in value]
    opening, closing = "{}" if isinstance(value, dict) else "[]"
    lines = [opening]
    for position, part in enumerate(parts):
        last = position == len(parts) - 1
        text = part + (closing if last else ",")
        first_line = text.split("\n", 1)[0]
        if position > 0 and len(lines[-1]) + 1 + len(first_line) > WIDTH:
            lines.append(" " * (indent + 2) + text)
        else:
            lines[-1] += ("" if position == 0 else " ") + text
        # What follows goes on after the last line of a part of several.
        lines[-1:] = lines[-1].split("\n")
    return "\n".join(lines)


def main():
    program, scene = sys.argv[1:]
    path = os.path.join(SCENES, scene + ".json")
    if not os.path.exists(path):
        sys.exit("record: there is no scene %s; write it, or take one of: %s" % (
            os.path.relpath(path), " ".join(sorted(name[:-5] for name in os.listdir(SCENES)))))
    recorder = Recorder()
    print("scene: " + scene)
    with Helper(program, arguments=[path]) as helper:
        for request in filter(None, map(str.strip, sys.stdin)):
            helper.send_bytes((recorder.sent(request) + "\n").encode())
            line = helper.read_line()
            print("\n> " + request)
            if line is None:
                print("<")
                return
            print("< " + wrapped(recorder.written(json.loads(line)), 2))


if __name__ == "__main__":
    main()
