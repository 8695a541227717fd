#!/usr/bin/python3 -B
"""A GTK 4 application to be driven by tests: each activation of a control is one line of output.

    gtk4_app.py [--title TEXT] [--geometry WIDTHxHEIGHT] [--slow-start MS] [--block MS[,MS...]]

Prints "ready" when its window is shown. GTK 4 leaves the place of a window to the window manager.
"""

import argparse
import time

import gi

gi.require_version("Gdk", "4.0")
gi.require_version("Gtk", "4.0")
from gi.repository import Gdk, Gio, GLib, Gtk  # noqa: E402

from app_log import (  # noqa: E402
    log_drag, log_line, log_text, log_toggle, make_blocking, parse_geometry)

APPLICATION_ID = "com.tarqo.test.gtk4"


def make_button(label, deed=None):
    button = Gtk.Button(label=label)

    def clicked(_button):
        log_line("clicked " + label)
        if deed:
            deed()

    button.connect("clicked", clicked)
    return button


def make_row(*children):
    row = Gtk.Box(orientation=Gtk.Orientation.HORIZONTAL, spacing=6)
    for child in children:
        row.append(child)
    return row


def named(widget, name):
    widget.update_property([Gtk.AccessibleProperty.LABEL], [name])
    return widget


def make_entry(entry, name):
    entry.connect("changed", lambda e: log_text(name, e.get_text()))
    return named(entry, name)


def make_check(name, deed=None):
    check = Gtk.CheckButton(label=name)

    def toggled(_check):
        log_toggle(name, check.get_active())
        if deed:
            deed(check.get_active())

    check.connect("toggled", toggled)
    return check


def make_choice():
    choice = Gtk.DropDown.new_from_strings(["Small", "Medium", "Large"])
    choice.connect("notify::selected-item",
                   lambda c, _: log_line("selected Size " + c.get_selected_item().get_string()))
    return named(choice, "Size")


def make_list():
    fruits = Gtk.ListBox()
    for fruit in ("Apple", "Banana", "Cherry"):
        fruits.append(Gtk.Label(label=fruit))
    fruits.connect("row-activated",
                   lambda _, row: log_line("selected Fruits " + row.get_child().get_label()))
    return named(fruits, "Fruits")


def make_lines():
    lines = Gtk.Box(orientation=Gtk.Orientation.VERTICAL)
    for number in range(1, 61):
        lines.append(Gtk.Label(label="Line %d" % number))
    scrolled = Gtk.ScrolledWindow(hexpand=True, vexpand=True, child=lines)
    scrolled.get_vadjustment().connect(
        "value-changed", lambda a: log_line("scrolled Lines %d" % a.get_value()))
    return scrolled


def log_keys(window):
    keys = Gtk.EventControllerKey(propagation_phase=Gtk.PropagationPhase.CAPTURE)
    modifiers = ((Gdk.ModifierType.CONTROL_MASK, "Control+"), (Gdk.ModifierType.ALT_MASK, "Alt+"),
                 (Gdk.ModifierType.SHIFT_MASK, "Shift+"), (Gdk.ModifierType.SUPER_MASK, "Super+"))

    def pressed(_controller, value, _code, state):
        held = "".join(name for mask, name in modifiers if state & mask)
        log_line("key " + held + (Gdk.keyval_name(value) or "unknown"))
        return False

    keys.connect("key-pressed", pressed)
    window.add_controller(keys)


def log_drags(window):
    """Sees the pointer before any widget does, and leaves it to them."""
    drag = Gtk.GestureDrag(propagation_phase=Gtk.PropagationPhase.CAPTURE)
    drag.connect("drag-end", lambda _, across, down: log_drag(across, down))
    window.add_controller(drag)


def make_hover():
    button = make_button("Hover me")
    motion = Gtk.EventControllerMotion()
    motion.connect("enter", lambda *_: log_line("hovered Hover me"))
    button.add_controller(motion)
    return button


def make_canvas():
    """An area that opens a menu at the right button."""
    canvas = Gtk.Label(label="Canvas", width_request=90)
    menu = Gio.Menu()
    for label in ("Copy", "Paste"):
        menu.append(label, "app.context-" + label.lower())
    popover = Gtk.PopoverMenu.new_from_model(menu)
    popover.set_parent(canvas)
    right = Gtk.GestureClick(button=3)

    def pressed(_gesture, _count, x, y):
        log_line("context Canvas")
        popover.set_pointing_to(Gdk.Rectangle(int(x), int(y), 1, 1))
        popover.popup()

    right.connect("pressed", pressed)
    canvas.add_controller(right)
    return canvas


class App:
    def __init__(self, options):
        self.options = options
        self.status = Gtk.Label(label="Status: idle", xalign=0)
        self.saved = 0
        self.application = Gtk.Application(application_id=APPLICATION_ID,
                                           flags=Gio.ApplicationFlags.NON_UNIQUE)
        self.application.connect("startup", lambda _: self.add_menus())
        self.application.connect("activate", lambda _: self.open())
        self.window = None

    def add_menus(self):
        def item(menu, label, path, enabled=True):
            name = path.lower().replace("/", "-")
            action = Gio.SimpleAction(name=name, enabled=enabled)
            action.connect("activate", lambda *_: log_line("menu " + path))
            self.application.add_action(action)
            menu.append(label, "app." + name)

        bar, file, exporting, image, help_menu = (Gio.Menu() for _ in range(5))
        item(file, "New", "File/New")
        item(exporting, "PDF", "File/Export/PDF")
        item(image, "PNG", "File/Export/Image/PNG")
        exporting.append_submenu("Image", image)
        file.append_submenu("Export", exporting)
        item(file, "Print", "File/Print", enabled=False)
        item(help_menu, "About", "Help/About")
        for label in ("Copy", "Paste"):
            item(Gio.Menu(), label, "Context/" + label)
        bar.append_submenu("File", file)
        bar.append_submenu("Help", help_menu)
        self.application.set_menubar(bar)

    def save(self):
        self.saved += 1
        self.status.set_label("Status: saved %d" % self.saved)

    def open_dialog(self):
        dialog = Gtk.MessageDialog(transient_for=self.window, modal=True, text="Shall we go on?",
                                   title="Question", buttons=Gtk.ButtonsType.OK_CANCEL)

        def answered(_dialog, response):
            log_line("dialog answered " + ("OK" if response == Gtk.ResponseType.OK else "Cancel"))
            dialog.destroy()

        dialog.connect("response", answered)
        dialog.connect("map", lambda _: log_line("dialog opened"))
        dialog.present()

    def make_content(self):
        content = Gtk.Box(orientation=Gtk.Orientation.VERTICAL, spacing=6, margin_start=8,
                          margin_end=8, margin_top=8, margin_bottom=8)
        disabled = make_button("Disabled")
        disabled.set_sensitive(False)
        agree = make_check("Agree", lambda is_on: self.status.set_label(
            "Status: agreed" if is_on else "Status: not agreed"))
        content.append(self.status)
        content.append(make_row(make_button("Save", self.save), make_button("Quiet"), disabled,
                                make_button("Open dialog", self.open_dialog), make_hover()))
        content.append(make_row(agree, make_check("Plain"), make_choice(), make_canvas()))
        content.append(make_row(Gtk.Label(label="Name"),
                                make_entry(Gtk.Entry(placeholder_text="Full name"), "Name")))
        content.append(make_row(Gtk.Label(label="Password"),
                                make_entry(Gtk.PasswordEntry(), "Password"),
                                make_button("Slow", make_blocking(self.options.block))))
        content.append(make_entry(Gtk.SearchEntry(), "Search"))
        content.append(make_row(make_list(), make_lines()))
        return content

    def open(self):
        width, height, _, _ = parse_geometry(self.options.geometry)
        self.window = Gtk.ApplicationWindow(
            application=self.application, title=self.options.title, default_width=width,
            default_height=height, show_menubar=True, child=self.make_content())
        log_keys(self.window)
        log_drags(self.window)
        # Below the priority of drawing, so what is mapped has been drawn as well.
        self.window.connect("map", lambda _: GLib.idle_add(
            lambda: log_line("ready"), priority=GLib.PRIORITY_LOW))
        self.window.present()


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--title", default="Tarqo GTK 4")
    parser.add_argument("--geometry", default="560x520")
    parser.add_argument("--slow-start", type=int, default=0, metavar="MS")
    parser.add_argument("--block", default="1000", metavar="MS[,MS...]")
    options = parser.parse_args()
    time.sleep(options.slow_start / 1000)
    # Becomes the class of the window and the name of the accessible application.
    GLib.set_prgname(APPLICATION_ID)
    App(options).application.run(None)


if __name__ == "__main__":
    main()
