#!/usr/bin/python3 -B
"""A GTK 3 application whose window opens a context menu with a dangerous first item.

    menu_app.py [--geometry WIDTHxHEIGHT+X+Y]

Logs "context" when the menu is shown, "menu ITEM" for an item that was activated, and "key NAME" for
every key that reaches it. Prints "ready" when its window is shown.
"""

import argparse

import gi

gi.require_version("Gdk", "3.0")
gi.require_version("Gtk", "3.0")
from gi.repository import Gdk, GLib, Gtk  # noqa: E402

from app_log import log_line, parse_geometry  # noqa: E402


def log_keys(widget):
    def pressed(_widget, event):
        log_line("key " + (Gdk.keyval_name(event.keyval) or "unknown"))
        return False

    widget.connect("key-press-event", pressed)


def make_menu():
    menu = Gtk.Menu()
    for label in ("Delete all", "Keep"):
        item = Gtk.MenuItem(label=label)
        item.connect("activate", lambda _, label=label: log_line("menu " + label))
        menu.append(item)
    log_keys(menu)
    menu.connect("map-event", lambda *_: log_line("context"))
    menu.show_all()
    return menu


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--geometry", default="300x200+50+100")
    width, height, x, y = parse_geometry(parser.parse_args().geometry)
    window = Gtk.Window(title="Menus", default_width=width, default_height=height)
    if x is not None:
        window.move(x, y)
    menu = make_menu()

    def button_pressed(_window, event):
        if event.button == 3:
            menu.popup_at_pointer(event)

    window.connect("button-press-event", button_pressed)
    window.add_events(Gdk.EventMask.BUTTON_PRESS_MASK)
    log_keys(window)
    window.connect("map-event", lambda *_: GLib.idle_add(
        lambda: log_line("ready"), priority=GLib.PRIORITY_LOW))
    window.show_all()
    Gtk.main()


if __name__ == "__main__":
    main()
