"""The accessible objects of one application, as lines of a recording.

Objects are numbered in the order in which they are met, so that two recordings of the same window
are the same text. What an object does not answer is left out of its line.
"""

import sys

from gi.repository import GLib

ACCESSIBLE = "org.a11y.atspi.Accessible"
PREFIX = "org.a11y.atspi."
ROOT_PATH = "/org/a11y/atspi/accessible/root"
NULL_PATH = "/org/a11y/atspi/null"

MANY_CHILDREN = 250
MENU_OBJECTS = 60  # Of what closed menus hold; many menus hold hundreds.
MAX_TEXT = 2000
MAX_CELLS = 60
SCREEN, WINDOW = 0, 1

STATES = (
    "invalid active armed busy checked collapsed defunct editable enabled expandable expanded "
    "focusable focused has-tooltip horizontal iconified modal multi-line multiselectable opaque "
    "pressed resizable selectable selected sensitive showing single-line stale transient vertical "
    "visible manages-descendants indeterminate required truncated animated invalid-entry "
    "supports-autocompletion selectable-text is-default visited checkable has-popup read-only"
).split()
APPLICATION_ROLE = 75
CLOSED_MENU_ROLES = {8, 33, 35, 41, 45}  # Menus and their items; what shows of them is closed.
PROPERTIES = ("Name", "Description", "AccessibleId", "Attributes", "Parent", "ChildCount")


def state_names(words):
    bits = sum(word << 32 * i for i, word in enumerate(words or []))
    return " ".join(name for i, name in enumerate(STATES) if bits >> i & 1)


class Walk:
    """One reading of an application. `lines` gives what was read."""

    def __init__(self, bus, root, limit):
        self._bus = bus
        self._root = root
        self._limit = limit
        self._ids = {ROOT_PATH: "root"}
        self._lines = []
        self._met = set()
        self._menus = []  # What closed menus hold, to be read when all that shows has been.
        self.toolkit = bus.get(root, PREFIX + "Application", "ToolkitName") or ""
        self.version = bus.get(root, PREFIX + "Application", "Version") or ""

    def lines(self):
        self._visit(self._root)
        if len(self._lines) >= self._limit:
            sys.exit(f"record-application: more than {self._limit} objects show; see --objects")
        self._limit = min(self._limit, len(self._lines) + MENU_OBJECTS)
        while self._menus:
            self._visit(self._menus.pop(0))
        return self._lines

    # ---- references

    def _id(self, ref):
        """The short name of an object; None for no object, a pair for another application's."""
        name, path = ref
        if path == NULL_PATH or not path:
            return None
        if name != self._root[0]:
            return ["registry", path] if path == ROOT_PATH else ["other", path]
        return self._ids.setdefault(path, str(len(self._ids)))

    def _call(self, ref, interface, member, signature=None, *arguments):
        variant = GLib.Variant(signature, arguments) if signature else None
        return self._bus.call(ref, PREFIX + interface, member, variant)

    # ---- objects

    def _visit(self, ref):
        own = self._id(ref)
        if not isinstance(own, str) or own in self._met or len(self._lines) >= self._limit:
            return
        self._met.add(own)
        role = self._call(ref, "Accessible", "GetRole")
        if role is None:
            return
        line = {"id": own, "role": role,
                "roleName": self._call(ref, "Accessible", "GetRoleName") or "",
                "states": state_names(self._call(ref, "Accessible", "GetState")),
                "interfaces": self._interfaces(ref)}
        self._lines.append(line)
        self._add_properties(ref, line)
        self._add_details(ref, line)
        if role in CLOSED_MENU_ROLES:
            self._visit_children(ref, line, self._menus.append)
        elif self._shows(line["states"].split()) or role == APPLICATION_ROLE:
            self._visit_children(ref, line, self._visit)

    def _is_gtk4(self):
        return self.toolkit == "GTK" or (self.toolkit == "gtk" and self.version[:1] == "4")

    def _shows(self, states):
        # GTK 4 reports "showing" for windows only, and places inside the window alone.
        return "showing" in states or (self._is_gtk4() and "visible" in states)

    def _interfaces(self, ref):
        names = self._call(ref, "Accessible", "GetInterfaces") or []
        return " ".join(name.removeprefix(PREFIX) for name in names)

    def _visit_children(self, ref, line, visit):
        count = line["properties"].get("ChildCount", 0)
        if count > MANY_CHILDREN and "Component" in line["interfaces"]:
            children = self._cells(ref, line)
            line["cells"] = [self._id(child) for child in children]
        else:
            children = self._call(ref, "Accessible", "GetChildren")
            if children is None:
                return
            line["children"] = [self._id(child) for child in children]
        for child in children:
            visit(child)

    def _add_properties(self, ref, line):
        # The request for all of them crashes Qt 5.
        known = None if self.toolkit == "Qt" else self._bus.get_all(ref, ACCESSIBLE)
        line["allAtOnce"] = known is not None
        if known is None:
            known = {name: self._bus.get(ref, ACCESSIBLE, name) for name in PROPERTIES}
        found = {name: known[name] for name in PROPERTIES if known.get(name) is not None}
        if "Parent" in found:
            found["Parent"] = self._id(found["Parent"])
        line["properties"] = found
        attributes = self._call(ref, "Accessible", "GetAttributes")
        if attributes is not None and attributes != found.get("Attributes"):
            line["attributes"] = attributes

    def _add_details(self, ref, line):
        interfaces = line["interfaces"].split()
        relations = self._call(ref, "Accessible", "GetRelationSet")
        if relations:
            line["relations"] = [[kind, [self._id(target) for target in targets]]
                                 for kind, targets in relations]
        for interface, add in (("Component", self._add_component), ("Action", self._add_actions),
                               ("Text", self._add_text), ("Value", self._add_value),
                               ("Selection", self._add_selection), ("Table", self._add_table),
                               ("Document", self._add_document)):
            if interface in interfaces:
                add(ref, line)

    def _add_component(self, ref, line):
        screen = self._call(ref, "Component", "GetExtents", "(u)", SCREEN)
        if screen is not None:
            line["onScreen"] = list(screen)
        window = self._is_gtk4() and self._call(ref, "Component", "GetExtents", "(u)", WINDOW)
        if window:
            line["inWindow"] = list(window)
            middle = (window[0] + window[2] // 2, window[1] + window[3] // 2)
            line["drawn"] = self._call(ref, "Component", "Contains", "(iiu)", *middle, WINDOW)

    def _add_actions(self, ref, line):
        listed = self._call(ref, "Action", "GetActions")
        if listed is not None:
            line["actions"] = [[name, self._call(ref, "Action", "GetName", "(i)", i) or ""]
                               for i, (name, _, _) in enumerate(listed[:20])]

    def _add_text(self, ref, line):
        count = self._bus.get(ref, PREFIX + "Text", "CharacterCount")
        if count is None:
            return
        text = self._call(ref, "Text", "GetText", "(ii)", 0, min(count, MAX_TEXT))
        if text is not None:
            line["text"] = text

    def _add_value(self, ref, line):
        value = self._bus.get(ref, PREFIX + "Value", "CurrentValue")
        if value is not None:
            line["value"] = value

    def _add_selection(self, ref, line):
        chosen = self._call(ref, "Selection", "GetSelectedChild", "(i)", 0)
        if chosen is not None:
            line["selected"] = self._id(chosen)

    def _add_table(self, ref, line):
        columns = self._bus.get(ref, PREFIX + "Table", "NColumns")
        if columns is None:
            return
        line["columns"] = columns
        headers = [self._call(ref, "Table", "GetColumnHeader", "(i)", i)
                   for i in range(columns if columns <= 64 else 0)]
        line["headers"] = [self._id(header) if header else None for header in headers]

    def _add_document(self, ref, line):
        found = {name: self._call(ref, "Document", "GetAttributeValue", "(s)", name)
                 for name in ("URI", "DocURL")}
        line["document"] = {name: text for name, text in found.items() if text is not None}

    # ---- what has more children than anybody lists

    def _at(self, ref, x, y):
        found = self._call(ref, "Component", "GetAccessibleAtPoint", "(iiu)", x, y, SCREEN)
        own = self._id(found) if found else None
        return found if own and found != ref else None

    def _cells(self, ref, line):
        """Those in view: looked for at the places behind one another, row by row."""
        left, top, width, height = line.get("onScreen", (0, 0, 0, 0))
        found, y = [], top + 3
        while y < top + height and len(found) < MAX_CELLS:
            x, bottom = left + 3, y + 10
            while x < left + width and len(found) < MAX_CELLS:
                cell = self._at(ref, x, y)
                place = cell and self._call(cell, "Component", "GetExtents", "(u)", SCREEN)
                if place and cell not in found:
                    found.append(cell)
                x = max(x + 10, place[0] + place[2] + 3) if place else x + 10
                bottom = max(bottom, place[1] + place[3] + 3) if place else bottom
            y = bottom
        return found
