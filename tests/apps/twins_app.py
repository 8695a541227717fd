#!/usr/bin/python3 -B
"""Windows that cannot be told apart: one title, one content, one size.

    twins_app.py gtk3|gtk4|qt [--count N]

Every line of output says at its end which window it is about, as in "clicked Save in 2"; they are
numbered in the order in which they were made. Prints "window N XID" for each, then "ready".
"""

import argparse
import signal
import sys

from app_log import log_line, log_text

TITLE = "Tarqo twin"
SIZE = (420, 260)


def add_lines_of(number):
    """What logs of window `number`."""
    return (lambda line: log_line("%s in %d" % (line, number)),
            lambda text: log_text("Name", text + " in %d" % number))


def run_gtk3(count):
    import gi
    gi.require_version("Gdk", "3.0")
    gi.require_version("Gtk", "3.0")
    gi.require_version("GdkX11", "3.0")
    from gi.repository import Gdk, GdkX11, GLib, Gtk  # noqa: F401  pylint: disable=unused-import

    for number in range(1, count + 1):
        log, log_name = add_lines_of(number)
        window = Gtk.Window(title=TITLE)
        window.set_default_size(*SIZE)
        column = Gtk.Box(orientation=Gtk.Orientation.VERTICAL, spacing=6)
        button = Gtk.Button(label="Save")
        button.connect("clicked", lambda _, log=log: log("clicked Save"))
        entry = Gtk.Entry()
        entry.get_accessible().set_name("Name")
        entry.connect("changed", lambda e, log_name=log_name: log_name(e.get_text()))
        for widget in (button, entry):
            column.pack_start(widget, False, False, 0)
        window.add(column)
        window.connect("key-press-event",
                       lambda _, event, log=log: log("key " + Gdk.keyval_name(event.keyval))
                       and False)
        window.show_all()
        log_line("window %d 0x%x" % (number, window.get_window().get_xid()))
    GLib.idle_add(lambda: log_line("ready"), priority=GLib.PRIORITY_LOW)
    Gtk.main()


def run_gtk4(count):
    import gi
    gi.require_version("Gdk", "4.0")
    gi.require_version("Gtk", "4.0")
    gi.require_version("GdkX11", "4.0")
    from gi.repository import Gdk, GdkX11, Gio, GLib, Gtk  # noqa: F401  pylint: disable=unused-import

    def open_all(application):
        for number in range(1, count + 1):
            log, log_name = add_lines_of(number)
            column = Gtk.Box(orientation=Gtk.Orientation.VERTICAL, spacing=6)
            button = Gtk.Button(label="Save")
            button.connect("clicked", lambda _, log=log: log("clicked Save"))
            entry = Gtk.Entry()
            entry.update_property([Gtk.AccessibleProperty.LABEL], ["Name"])
            entry.connect("changed", lambda e, log_name=log_name: log_name(e.get_text()))
            for widget in (button, entry):
                column.append(widget)
            window = Gtk.ApplicationWindow(application=application, title=TITLE, child=column,
                                           default_width=SIZE[0], default_height=SIZE[1])
            keys = Gtk.EventControllerKey(propagation_phase=Gtk.PropagationPhase.CAPTURE)
            keys.connect("key-pressed",
                         lambda _, value, *rest, log=log: log("key " + Gdk.keyval_name(value))
                         and False)
            window.add_controller(keys)
            window.present()
            log_line("window %d 0x%x" % (number, window.get_surface().get_xid()))
        GLib.idle_add(lambda: log_line("ready"), priority=GLib.PRIORITY_LOW)

    application_id = "com.tarqo.test.twins"
    GLib.set_prgname(application_id)
    application = Gtk.Application(application_id=application_id,
                                  flags=Gio.ApplicationFlags.NON_UNIQUE)
    application.connect("activate", open_all)
    application.run(None)


def run_qt(count):
    from PyQt5 import QtCore, QtGui, QtWidgets

    class Window(QtWidgets.QMainWindow):
        def __init__(self, number):
            super().__init__()
            self.log, log_name = add_lines_of(number)
            self.setWindowTitle(TITLE)
            self.resize(*SIZE)
            button = QtWidgets.QPushButton("Save")
            button.clicked.connect(lambda: self.log("clicked Save"))
            entry = QtWidgets.QLineEdit(accessibleName="Name")
            entry.textChanged.connect(log_name)
            column = QtWidgets.QVBoxLayout()
            for widget in (button, entry):
                column.addWidget(widget)
            column.addStretch()
            content = QtWidgets.QWidget()
            content.setLayout(column)
            self.setCentralWidget(content)

        def keyPressEvent(self, event):
            self.log("key " + QtGui.QKeySequence(event.key()).toString())

    application = QtWidgets.QApplication(["twins_app.py"])
    windows = [Window(number) for number in range(1, count + 1)]
    for number, window in enumerate(windows, 1):
        window.show()
        log_line("window %d 0x%x" % (number, int(window.winId())))
    QtCore.QTimer.singleShot(0, lambda: log_line("ready"))
    sys.exit(application.exec_())


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("toolkit", choices=("gtk3", "gtk4", "qt"))
    parser.add_argument("--count", type=int, default=2)
    options = parser.parse_args()
    signal.signal(signal.SIGTERM, signal.SIG_DFL)
    {"gtk3": run_gtk3, "gtk4": run_gtk4, "qt": run_qt}[options.toolkit](options.count)


if __name__ == "__main__":
    main()
