"""Programs without any accessible objects: Xlib with Athena widgets, Motif, FLTK and Tk.

Everything in them is read from the pixels.
"""

from agent import contains
from catalogue import Application
from proof import eventually, holds, title_becomes, titles

FRUIT = "apple\npear\napple pie\n"


def runs_a_command(agent):
    agent.open()
    agent.write("echo $((6*7)) > answer", role="window", submit=True)
    holds(agent.home / "answer", "42")


def reads_the_output_of_a_command(agent):
    agent.open()
    agent.write("ls Papers", role="window", submit=True)
    agent.find(contains("invoice"), "text")


def edits_a_file_in_an_editor_of_the_terminal(agent):
    agent.open()
    agent.write("vi fruit.txt", role="window", submit=True)
    agent.find(contains("apple pie"), "text")
    agent.write("Ocherry", role="window")
    agent.press("Escape", role="window")
    agent.write(":wq", role="window", submit=True)
    holds(agent.home / "fruit.txt", "cherry\napple")


def calculates_by_its_keys(agent):
    agent.open()
    agent.write("12*34=", role="window")
    agent.find(contains("408"), "text")


def calculates_by_its_buttons(agent):
    agent.open()
    for key in ["AC", "7", "8", "9"]:
        agent.click(key, "text")
    agent.find(contains("789"), "text")


def takes_a_square_root_by_its_keys(agent):
    agent.open()
    agent.write("1369r", role="window")
    agent.find("37", "text")


def adds_a_line_and_saves(agent):
    agent.open("fruit.txt")
    agent.find(contains("apple pie"), "text")
    agent.click(contains("apple pie"), "text")
    agent.press("Control+a", role="window")
    agent.write("cherry and ", role="window")
    agent.click("Save", "text")
    eventually(lambda: "cherry" in (agent.home / "fruit.txt").read_text(), "the file is saved")


def loads_another_file(agent):
    agent.open("fruit.txt")
    agent.click(contains("apple pie"), "text")
    agent.press("Control+x", role="window")
    agent.press("Control+f", role="window")
    agent.write("notes.txt", role="window", submit=True)
    agent.find(contains("the milk"), "text")


def quits_by_its_keys(agent):
    agent.open("fruit.txt")
    agent.click(contains("apple pie"), "text")
    agent.press("Control+x", role="window")
    agent.press("Control+c", role="window")
    eventually(lambda: not titles(), "its window is closed")


def saves_a_changed_text(agent):
    agent.open("fruit.txt")
    agent.find(contains("apple pie"), "text")
    agent.write("cherry ", role="window")
    agent.press("Control+s", role="window")
    eventually(lambda: (agent.home / "fruit.txt").read_text().startswith("cherry"),
               "the file begins with the word")


def opens_its_search_menu(agent):
    agent.open("fruit.txt")
    agent.click("Search", "text")
    agent.find(contains("Replace"), "text")


def replaces_a_word(agent):
    agent.open("fruit.txt")
    agent.press("Control+r", role="window")
    agent.find(contains("Replace"), "text")
    agent.write("pear", role="window")
    agent.press("Tab", role="window")
    agent.write("plum", role="window")
    agent.press("Enter", role="window")
    agent.press("Control+s", role="window")
    holds(agent.home / "fruit.txt", "plum")


def follows_a_link(agent):
    agent.open("first.html")
    agent.click(contains("second page"), "text")
    title_becomes("Second")


def goes_to_an_address(agent):
    agent.open("first.html")
    agent.press("Control+l", role="window")
    agent.write("file:%s/second.html" % agent.home, role="window", submit=True)
    title_becomes("Second")


def goes_back(agent):
    agent.open("first.html")
    agent.click(contains("second page"), "text")
    title_becomes("Second")
    agent.click("Back", "text")
    title_becomes("First")


PAGES = {
    "first.html": "<title>First</title><p>Welcome here.</p><p><a href='second.html'>To the "
                  "second page</a></p>",
    "second.html": "<title>Second</title><p>This is the end.</p>"}

APPLICATIONS = [
    Application("xterm", "Xlib (Athena)", "app.xterm",
                command="xterm -fa 'DejaVu Sans Mono' -fs 13",
                files={"fruit.txt": FRUIT, "Papers/invoice.txt": "1\n"},
                tasks=[runs_a_command, reads_the_output_of_a_command,
                       edits_a_file_in_an_editor_of_the_terminal]),
    Application("xcalc", "Xlib (Athena)", "app.xcalc", command="xcalc",
                tasks=[calculates_by_its_keys, calculates_by_its_buttons,
                       takes_a_square_root_by_its_keys]),
    Application("xedit", "Xlib (Athena)", "app.xedit", command="xedit",
                program=["xedit"],
                files={"fruit.txt": FRUIT, "notes.txt": "remember the milk\n"},
                tasks=[adds_a_line_and_saves, loads_another_file, quits_by_its_keys]),
    Application("NEdit", "Motif", "nedit", program=["nedit"], files={"fruit.txt": FRUIT},
                tasks=[saves_a_changed_text, opens_its_search_menu, replaces_a_word]),
    Application("Dillo", "FLTK", "dillo", program=["dillo"], files=PAGES,
                tasks=[follows_a_link, goes_to_an_address, goes_back]),
]
