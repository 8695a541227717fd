"""Text editors of GTK 3: with menus of models, with a header bar, and with panes."""

from catalogue import Application
from proof import eventually, holds, setting_is

FRUIT = "apple\npear\napple pie\n"


def saves_a_text_under_a_name(agent):
    agent.open()
    agent.write("Milk and bread", role="textbox")
    agent.menu("File", "Save As")
    agent.write("shopping.txt", "Name", "textbox")
    agent.click("Save", "button")
    holds(agent.home / "shopping.txt", "Milk and bread")


def replaces_a_word_everywhere(agent):
    agent.open("fruit.txt")
    agent.menu("Search", "Find and Replace")
    agent.write("apple", role="textbox", inside="Search for")
    agent.write("plum", role="textbox", inside="Replace with")
    if not agent.find("Replace all in:", "checkbox").get("checked"):
        agent.click("Replace all in:", "checkbox")
    agent.click("Replace All", "button")
    agent.click("Close", "button")
    agent.menu("File", "Save")
    holds(agent.home / "fruit.txt", "plum\npear\nplum pie")


def turns_on_line_numbers(agent):
    agent.open("fruit.txt")
    agent.menu("View", "Line Numbers")
    setting_is("org.xfce.mousepad.preferences.view", "show-line-numbers", "true")


def makes_all_of_a_text_upper_case(agent):
    agent.open("fruit.txt")
    agent.menu("Edit", "Select All")
    agent.menu("Edit", "Convert", "To Uppercase")
    agent.press("Control+s")
    holds(agent.home / "fruit.txt", "APPLE\nPEAR")


def writes_and_saves_by_the_dialog(agent):
    agent.open()
    agent.write("Dear reader", role="textbox")
    agent.click("Save", "button")
    agent.write("letter.txt", "Name", "textbox")
    agent.click("Save", "button")
    holds(agent.home / "letter.txt", "Dear reader")


def finds_a_word_by_the_search_bar(agent):
    agent.open("fruit.txt")
    agent.press("Control+f", role="textbox")
    agent.write("pie", role="searchbox", submit=True)
    agent.press("Delete", role="textbox")  # What was found is selected.
    agent.press("Control+s", role="textbox")
    eventually(lambda: (agent.home / "fruit.txt").read_text() == "apple\npear\napple \n",
               "the word found was deleted")


def opens_its_preferences_and_shows_line_numbers(agent):
    agent.open("fruit.txt")
    agent.click("Menu", "checkbox", where=lambda node: "recent" not in node.get("description", ""))
    agent.click("Preferences", where=lambda node: node["clickable"])
    agent.click("Display line numbers", "checkbox")
    setting_is("org.gnome.gedit.preferences.editor", "display-line-numbers", "false")


def replaces_a_word_in_the_document(agent):
    agent.open("fruit.txt")
    agent.menu("Search", "Replace")
    agent.write("apple", role="textbox", inside="Search for")
    agent.write("plum", role="textbox", inside="Replace with")
    agent.click("Replace All", "checkbox")
    agent.click("In Document", "button")
    agent.menu("File", "Save")
    holds(agent.home / "fruit.txt", "plum\npear\nplum pie")


def hides_the_sidebar(agent):
    agent.open("fruit.txt")
    agent.find("Symbols")
    agent.menu("View", "Show Sidebar")
    agent.waits_until_gone("Symbols")


def adds_a_line_by_the_keyboard(agent):
    agent.open("fruit.txt")
    agent.press("Control+End", role="textbox")
    agent.write("cherry", role="textbox")
    agent.menu("File", "Save")
    holds(agent.home / "fruit.txt", "cherry")


APPLICATIONS = [
    Application("Mousepad", "GTK 3", "org.xfce.mousepad", program=["mousepad"],
                files={"fruit.txt": FRUIT},
                tasks=[saves_a_text_under_a_name, replaces_a_word_everywhere, turns_on_line_numbers,
                       makes_all_of_a_text_upper_case]),
    Application("gedit", "GTK 3", "org.gnome.gedit", program=["gedit"],
                files={"fruit.txt": FRUIT},
                tasks=[writes_and_saves_by_the_dialog, finds_a_word_by_the_search_bar,
                       opens_its_preferences_and_shows_line_numbers]),
    Application("Geany", "GTK 3", "geany", program=["geany"],
                files={"fruit.txt": FRUIT},
                tasks=[replaces_a_word_in_the_document, hides_the_sidebar,
                       adds_a_line_by_the_keyboard]),
]
