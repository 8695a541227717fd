#!/usr/bin/python3 -B
"""A Qt application to be driven by tests: each activation of a control is one line of output.

    qt_app.py [--title TEXT] [--geometry WIDTHxHEIGHT+X+Y] [--slow-start MS] [--block MS[,MS...]]
              [--plain]

--plain makes the window of a plain widget with one button, in place of a main window.
Prints "ready" when its window is shown and drawn.
"""

import argparse
import signal
import sys
import time

from PyQt5 import QtCore, QtGui, QtWidgets

from app_log import log_drag, log_line, log_text, log_toggle, make_blocking, parse_geometry


def make_button(label, deed=None):
    button = QtWidgets.QPushButton(label)

    def clicked():
        log_line("clicked " + label)
        if deed:
            deed()

    button.clicked.connect(clicked)
    return button


def make_row(*children):
    row = QtWidgets.QHBoxLayout()
    for child in children:
        row.addWidget(child)
    row.addStretch()
    return row


def make_check(name, deed=None):
    check = QtWidgets.QCheckBox(name)

    def toggled(is_on):
        log_toggle(name, is_on)
        if deed:
            deed(is_on)

    check.toggled.connect(toggled)
    return check


def make_entry(name, placeholder, is_password=False):
    entry = QtWidgets.QLineEdit(placeholderText=placeholder, accessibleName=name)
    if is_password:
        entry.setEchoMode(QtWidgets.QLineEdit.Password)
    entry.textChanged.connect(lambda text: log_text(name, text))
    return entry


def make_choice():
    choice = QtWidgets.QComboBox(accessibleName="Size")
    choice.addItems(["Small", "Medium", "Large"])
    choice.currentTextChanged.connect(lambda text: log_line("selected Size " + text))
    return choice


def make_list():
    fruits = QtWidgets.QListWidget(accessibleName="Fruits")
    fruits.addItems(["Apple", "Banana", "Cherry"])
    fruits.currentTextChanged.connect(lambda text: log_line("selected Fruits " + text))
    return fruits


def make_table():
    table = QtWidgets.QTableWidget(20, 3, accessibleName="Files")
    table.setHorizontalHeaderLabels(["File", "Kind", "Size"])
    for row in range(20):
        for column, text in enumerate(("file%d.txt" % (row + 1), "Text", "%d KB" % (100 * row))):
            table.setItem(row, column, QtWidgets.QTableWidgetItem(text))
    table.cellClicked.connect(
        lambda row, column: log_line("selected Files " + table.item(row, column).text()))
    table.verticalScrollBar().valueChanged.connect(
        lambda value: log_line("scrolled Files %d" % value))
    return table


class HoverButton(QtWidgets.QPushButton):
    def enterEvent(self, event):
        super().enterEvent(event)
        log_line("hovered " + self.text())


class Canvas(QtWidgets.QLabel):
    def mousePressEvent(self, event):
        super().mousePressEvent(event)
        if event.button() == QtCore.Qt.LeftButton:
            log_line("pressed Canvas 1")


def make_canvas():
    """An area that opens a menu at the right button."""
    canvas = Canvas("Canvas", minimumWidth=90)
    menu = QtWidgets.QMenu(canvas)
    for label in ("Copy", "Paste"):
        menu.addAction(label).triggered.connect(
            lambda _, path="Context/" + label: log_line("menu " + path))
    canvas.setContextMenuPolicy(QtCore.Qt.CustomContextMenu)

    def asked(place):
        log_line("context Canvas")
        menu.popup(canvas.mapToGlobal(place))

    canvas.customContextMenuRequested.connect(asked)
    return canvas


class InputLog(QtCore.QObject):
    """Logs each key press and drag once, before the window hands it to a widget."""

    start = None

    MODIFIERS = ((QtCore.Qt.ControlModifier, "Control+"), (QtCore.Qt.AltModifier, "Alt+"),
                 (QtCore.Qt.ShiftModifier, "Shift+"), (QtCore.Qt.MetaModifier, "Super+"))
    # The names that X gives to keys.
    NAMES = {"Esc": "Escape", "Enter": "KP_Enter", "Backspace": "BackSpace", "Del": "Delete",
             "PgUp": "Page_Up", "PgDown": "Page_Down", "Space": "space"}
    # A sequence of a modifier alone has no name that can be written down.
    MODIFIER_KEYS = {QtCore.Qt.Key_Control: "Control_L", QtCore.Qt.Key_Alt: "Alt_L",
                     QtCore.Qt.Key_Shift: "Shift_L", QtCore.Qt.Key_Meta: "Super_L",
                     QtCore.Qt.Key_Super_L: "Super_L"}

    def name_of(self, event):
        if event.key() in self.MODIFIER_KEYS:
            return self.MODIFIER_KEYS[event.key()]
        text = event.text()
        if text.isprintable() and text.strip():
            return text
        name = QtGui.QKeySequence(event.key()).toString()
        if len(name) == 1 and not event.modifiers() & QtCore.Qt.ShiftModifier:
            return name.lower()
        return self.NAMES.get(name, name)

    def eventFilter(self, watched, event):
        if not isinstance(watched, QtGui.QWindow):
            return False
        if event.type() == QtCore.QEvent.MouseButtonPress:
            self.start = event.globalPos()
        elif event.type() == QtCore.QEvent.MouseButtonRelease and self.start is not None:
            way = event.globalPos() - self.start
            log_drag(way.x(), way.y())
        elif event.type() == QtCore.QEvent.KeyPress:
            held = "".join(name for mask, name in self.MODIFIERS if event.modifiers() & mask)
            log_line("key " + held + self.name_of(event))
        return False


class Window(QtWidgets.QMainWindow):
    def __init__(self, options):
        super().__init__()
        self.setWindowTitle(options.title)
        self.status = QtWidgets.QLabel("Status: idle")
        self.saved = 0
        self.block = make_blocking(options.block)
        self.is_ready = False
        self.add_menus()
        self.setCentralWidget(self.make_content())
        width, height, x, y = parse_geometry(options.geometry)
        self.resize(width, height)
        if x is not None:
            self.move(x, y)

    def add_menus(self):
        def item(menu, label, path, enabled=True):
            action = menu.addAction(label)
            action.setEnabled(enabled)
            action.triggered.connect(lambda: log_line("menu " + path))

        file = self.menuBar().addMenu("File")
        item(file, "New", "File/New")
        exporting = file.addMenu("Export")
        item(exporting, "PDF", "File/Export/PDF")
        image = exporting.addMenu("Image")
        item(image, "PNG", "File/Export/Image/PNG")
        item(file, "Print", "File/Print", enabled=False)
        item(self.menuBar().addMenu("Help"), "About", "Help/About")

    def save(self):
        self.saved += 1
        self.status.setText("Status: saved %d" % self.saved)

    def open_dialog(self):
        dialog = QtWidgets.QMessageBox(QtWidgets.QMessageBox.Question, "Question",
                                       "Shall we go on?", parent=self)
        dialog.setStandardButtons(QtWidgets.QMessageBox.Ok | QtWidgets.QMessageBox.Cancel)
        dialog.setAttribute(QtCore.Qt.WA_DeleteOnClose)
        dialog.finished.connect(lambda result: log_line(
            "dialog answered " + ("OK" if result == QtWidgets.QMessageBox.Ok else "Cancel")))
        dialog.open()
        log_line("dialog opened")

    def make_content(self):
        disabled = make_button("Disabled")
        disabled.setEnabled(False)
        agree = make_check("Agree", lambda is_on: self.status.setText(
            "Status: agreed" if is_on else "Status: not agreed"))
        column = QtWidgets.QVBoxLayout()
        column.addWidget(self.status)
        column.addLayout(make_row(make_button("Save", self.save), make_button("Quiet"), disabled,
                                  make_button("Open dialog", self.open_dialog),
                                  HoverButton("Hover me")))
        column.addLayout(make_row(agree, make_check("Plain"), make_choice(), make_canvas()))
        column.addLayout(make_row(QtWidgets.QLabel("Name"), make_entry("Name", "Full name")))
        column.addLayout(make_row(QtWidgets.QLabel("Password"),
                                  make_entry("Password", "", is_password=True),
                                  make_button("Slow", self.block)))
        data = QtWidgets.QHBoxLayout()
        data.addWidget(make_list())
        data.addWidget(make_table(), 2)
        column.addLayout(data)
        content = QtWidgets.QWidget()
        content.setLayout(column)
        return content

    def paintEvent(self, event):
        super().paintEvent(event)
        if not self.is_ready:
            self.is_ready = True
            QtCore.QTimer.singleShot(0, lambda: log_line("ready"))


class PlainWindow(QtWidgets.QWidget):
    def __init__(self, options):
        super().__init__()
        self.setWindowTitle(options.title)
        column = QtWidgets.QVBoxLayout(self)
        column.addWidget(make_button("Save"))
        column.addWidget(make_entry("Name", "Full name"))
        width, height, _, _ = parse_geometry(options.geometry)
        self.resize(width, height)
        QtCore.QTimer.singleShot(0, lambda: log_line("ready"))


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--title", default="Tarqo Qt")
    parser.add_argument("--geometry", default="560x480")
    parser.add_argument("--slow-start", type=int, default=0, metavar="MS")
    parser.add_argument("--block", default="1000", metavar="MS[,MS...]")
    parser.add_argument("--plain", action="store_true")
    options = parser.parse_args()
    time.sleep(options.slow_start / 1000)
    signal.signal(signal.SIGTERM, signal.SIG_DFL)
    application = QtWidgets.QApplication(["qt_app"])
    input_log = InputLog()
    application.installEventFilter(input_log)
    window = PlainWindow(options) if options.plain else Window(options)
    window.show()
    sys.exit(application.exec_())


if __name__ == "__main__":
    main()
