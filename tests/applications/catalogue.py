"""The applications and their tasks, as the files in families/ list them."""

import dataclasses
import importlib
import pathlib

FAMILIES = pathlib.Path(__file__).with_name("families")
TASK_SECONDS = 100


@dataclasses.dataclass
class Application:
    """An application of the distribution.

    `entry` is the id of its desktop entry; with `command`, one is written for it, where it has none
    or starts only with options. `program` starts it with documents as arguments. `files` are in the
    home folder, by name,
    before it starts. A task is a function of an agent.
    """

    name: str
    toolkit: str
    entry: str
    tasks: list
    program: list = dataclasses.field(default_factory=list)
    command: str = ""
    files: dict = dataclasses.field(default_factory=dict)
    seconds: int = TASK_SECONDS

    def entry_file(self, home):
        name = "applications/%s.desktop" % self.entry
        own = home / ".local/share" / name
        return str(own) if own.exists() else "/usr/share/" + name

    def install(self, home):
        for name, content in self.files.items():
            path = home / name
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text(content, encoding="utf-8")
        if self.command:
            path = home / (".local/share/applications/%s.desktop" % self.entry)
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text("[Desktop Entry]\nType=Application\nName=%s\nExec=%s\n" %
                            (self.name, self.command), encoding="utf-8")


def sentence(task):
    return task.__name__.replace("_", " ")


def applications():
    """All of them, in the order of the families' names."""
    found = []
    for path in sorted(FAMILIES.glob("*.py")):
        found += importlib.import_module("families." + path.stem).APPLICATIONS
    return found
