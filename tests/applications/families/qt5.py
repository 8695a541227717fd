"""Applications of Qt 5, of KDE and others."""

import sqlite3

from agent import contains
from catalogue import Application
from proof import eventually, holds, says, title_becomes

FRUIT = "apple\npear\napple pie\n"


def adds_a_line_and_saves(agent):
    agent.open("fruit.txt")
    agent.press("Control+End", role="textbox")
    agent.write("cherry", role="textbox")
    agent.menu("File", "Save")
    holds(agent.home / "fruit.txt", "cherry")


def replaces_a_word_everywhere(agent):
    agent.open("fruit.txt")
    agent.menu("Edit", "Replace")
    agent.write("apple", role="textbox", inside="Find")
    agent.write("plum", role="textbox", inside="Replace")
    agent.click("Replace All", "button")
    agent.menu("File", "Save")
    holds(agent.home / "fruit.txt", "plum\npear\nplum pie")


def saves_a_copy_under_a_name(agent):
    agent.open("fruit.txt")
    agent.menu("File", "Save As")
    agent.write(str(agent.home / "copy.txt"), "File name", "textbox")
    agent.click("Save", "button")
    holds(agent.home / "copy.txt", "apple pie")


def hides_its_status_bar(agent):
    agent.open("fruit.txt")
    agent.find("Soft Tabs: 4")
    agent.menu("View", "Show Statusbar")
    agent.waits_until_gone("Soft Tabs: 4")


def calculates_by_its_buttons(agent):
    agent.open()
    for key in ["1", "2", "×", "3", "4", "="]:
        agent.click(key, "button")
    agent.find(contains("408"), forceOcr=True)


def switches_to_science_mode(agent):
    agent.open()
    agent.menu("Settings", "Science Mode")
    agent.click("5", "button")
    agent.click("x!", "button")
    agent.find(contains("120"), forceOcr=True)


def shows_binary_numbers(agent):
    agent.open()
    agent.menu("Settings", "Numeral System Mode")
    agent.click("Bin", "radiobutton")
    agent.click("1", "button")
    agent.find("Bin", "radiobutton", where=lambda node: node.get("selected") or node.get("checked"))


def calculates_what_is_typed(agent):
    agent.open()
    agent.write("6*7+0.5", role="textbox", where=lambda node: node["editable"], submit=True)
    agent.find(role="textbox", value=contains("42.5"))


def keeps_a_variable(agent):
    agent.open()
    for line in ["rate=19", "rate*3"]:
        agent.write(line, role="textbox", where=lambda node: node["editable"], submit=True)
    agent.find(role="textbox", value=contains("57"))


def shows_its_keypad_and_uses_it(agent):
    agent.open()
    agent.menu("View", "Keypad")
    for key in ["8", "∗", "4", "="]:
        agent.click(key, "button")
    agent.find(role="textbox", value=contains("32"))


def finds_a_word_by_the_search_bar(agent):
    agent.open("fruit.txt")
    agent.write("pear", "Search...", "textbox", submit=True)
    agent.press("Delete", role="textbox", where=lambda node: node["rawRole"] == "AXTextArea")
    agent.menu("File", "Save")
    eventually(lambda: (agent.home / "fruit.txt").read_text() == "apple\n\napple pie\n",
               "the word found was deleted")


def opens_a_second_tab(agent):
    agent.open("fruit.txt")
    agent.click("New", "button")
    agent.find("Untitled", "tab")
    agent.click("fruit.txt", "tab")
    title_becomes("fruit.txt")


def runs_a_command(agent):
    agent.open()
    agent.write("echo $((6*7)) > answer", *terminal(agent), submit=True)
    holds(agent.home / "answer", "42")


def terminal(agent):
    """The terminal, or the window where the terminal has no object."""
    return ("Terminal", "textbox") if agent.shows("Terminal", "textbox") else (None, "window")


def reads_the_output_of_a_command(agent):
    agent.open()
    agent.write("ls Papers; cd Papers", *terminal(agent), submit=True)
    if agent.shows("Terminal", "textbox"):
        agent.find("Terminal", "textbox", value=contains("one.txt"))
    else:
        agent.find(contains("one.txt"), forceOcr=True)


def opens_a_tab_for_another_shell(agent):
    agent.open()
    agent.menu("File", "Clone Tab")
    agent.write("echo second > second", *terminal(agent), submit=True)
    holds(agent.home / "second", "second")


def works_in_two_terminals_side_by_side(agent):
    agent.open()
    agent.menu("Actions", "Split Terminal Vertically")
    agent.write("tty > second", *terminal(agent), submit=True)
    holds(agent.home / "second", "/dev/pts/")


def shows_the_rows_of_a_table(agent):
    database(agent)
    agent.open("birds.db")
    agent.click("Browse Data", where=lambda node: node["clickable"])
    agent.find("heron")


def runs_a_statement_and_writes_it(agent):
    database(agent)
    agent.open("birds.db")
    agent.click("Execute SQL", where=lambda node: node["clickable"])
    agent.write("insert into birds values('stork', 7)", role="textbox",
                where=lambda node: node.get("editable") and node["bounds"]["width"] > 300)
    agent.press("Control+Enter")
    agent.menu("File", "Write Changes")
    eventually(lambda: "stork" in rows(agent), "the row is in the database")


def changes_a_cell(agent):
    database(agent)
    agent.open("birds.db")
    agent.click("Browse Data", where=lambda node: node["clickable"])
    agent.click("heron", "cell")
    agent.write("crane", role="textbox", value="heron")
    agent.click("Apply", "button")
    agent.menu("File", "Write Changes")
    eventually(lambda: "crane" in rows(agent), "the row is changed")


def database(agent):
    with sqlite3.connect(agent.home / "birds.db") as birds:
        birds.execute("create table birds(name text, count integer)")
        birds.executemany("insert into birds values(?, ?)", [("heron", 2), ("gull", 40)])


def rows(agent):
    return says(["/usr/bin/python3", "-c", "import sqlite3; print(sqlite3.connect('%s').execute("
                 "'select * from birds').fetchall())" % (agent.home / "birds.db")])


PAPERS = {"Papers/one.txt": "1\n"}

APPLICATIONS = [
    Application("Kate", "Qt 5", "org.kde.kate", program=["kate"],
                files={"fruit.txt": FRUIT},
                tasks=[adds_a_line_and_saves, replaces_a_word_everywhere,
                       saves_a_copy_under_a_name, hides_its_status_bar]),
    Application("KCalc", "Qt 5", "org.kde.kcalc",
                tasks=[calculates_by_its_buttons, switches_to_science_mode, shows_binary_numbers]),
    Application("SpeedCrunch", "Qt 5", "speedcrunch",
                tasks=[calculates_what_is_typed, keeps_a_variable, shows_its_keypad_and_uses_it]),
    Application("FeatherPad", "Qt 5", "featherpad", program=["featherpad"],
                files={"fruit.txt": FRUIT},
                tasks=[adds_a_line_and_saves, finds_a_word_by_the_search_bar, opens_a_second_tab]),
    Application("Konsole", "Qt 5", "org.kde.konsole", files=PAPERS,
                tasks=[runs_a_command, reads_the_output_of_a_command,
                       opens_a_tab_for_another_shell]),
    Application("QTerminal", "Qt 5", "qterminal", files=PAPERS,
                tasks=[runs_a_command, reads_the_output_of_a_command,
                       works_in_two_terminals_side_by_side]),
    Application("DB Browser for SQLite", "Qt 5", "sqlitebrowser",
                program=["sqlitebrowser"],
                tasks=[shows_the_rows_of_a_table, runs_a_statement_and_writes_it, changes_a_cell]),
]
