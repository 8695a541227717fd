"""Applications of GNOME, with GTK 4."""

from agent import contains
from catalogue import Application
from proof import eventually, holds, says, setting_is


def calculates_by_its_buttons(agent):
    agent.open()
    for key in ["1", "2", "×", "3", "4", "="]:
        agent.click(key, "button")
    agent.find(role="textbox", value=contains("408"))


def calculates_what_is_typed(agent):
    agent.open()
    agent.write("sqrt(1369)+5", role="textbox", where=lambda node: node["editable"], submit=True)
    agent.find(role="textbox", value=contains("42"))


def changes_to_programming_mode(agent):
    agent.open()
    agent.click("Mode selection", "button")
    agent.click("Programming", where=lambda node: node["clickable"])
    agent.find("XOR", "button")  # The setting is written when the application ends.


def saves_a_text_under_a_name(agent):
    agent.open()
    agent.write("Dear reader", "EditorSourceView", "textbox")
    agent.press("Control+s", "EditorSourceView")
    agent.write("letter.txt", "Name", "textbox")
    agent.click("Save", "button")
    holds(agent.home / "letter.txt", "Dear reader")


def replaces_a_word_everywhere(agent):
    agent.open("fruit.txt")
    agent.press("Control+h", "EditorSourceView")
    agent.write("apple", role="textbox", nth=0, where=is_a_line)
    agent.write("plum", role="textbox", nth=1, where=is_a_line)
    agent.click("Replace All", "button")
    agent.press("Control+s", "EditorSourceView")
    holds(agent.home / "fruit.txt", "plum\npear\nplum pie")


def is_a_line(node):
    return node["rawRole"] == "AXTextField" or node["role"] == "searchbox"


def shows_line_numbers(agent):
    agent.open()
    agent.click("View", "button")
    agent.click("Line Numbers", where=lambda node: node["clickable"])
    setting_is("org.gnome.TextEditor", "show-line-numbers", "true")


def shows_a_group_of_characters(agent):
    agent.open()
    agent.click("Flags", "text")
    agent.find("Flags", "text", nth=1)


def finds_a_character_by_its_name(agent):
    agent.open()
    agent.press("Control+f", role="window")
    agent.write("snowman", role="searchbox")
    agent.find(contains("☃"), seconds=10)


def scrolls_to_the_last_group(agent):
    agent.open()
    for _ in range(6):
        if agent.shows("Bullets", "text"):
            break
        agent.scroll(400, "Objects", "text") if agent.shows("Objects", "text") else agent.scroll(
            400, "Punctuation", "text")
    agent.click("Bullets", "text")
    agent.find("Bullets", "text", nth=1)


def adds_an_alarm(agent):
    agent.open()
    agent.click("Alarms", where=lambda node: node["clickable"])
    agent.click(contains("Add Alarm"), where=lambda node: node["clickable"])
    agent.write("Tea", role="textbox", where=is_a_line)
    agent.click("Add", "button")
    eventually(lambda: "Tea" in says(["gsettings", "get", "org.gnome.clocks", "alarms"]),
               "the alarm is kept")


def starts_a_stopwatch(agent):
    agent.open()
    agent.click("Stopwatch", where=lambda node: node["clickable"])
    agent.click("Start", where=lambda node: node["clickable"])
    agent.click("Lap", where=lambda node: node["clickable"])
    agent.find(contains("Lap 1"))


def starts_a_timer(agent):
    agent.open()
    agent.click("Timer", where=lambda node: node["clickable"])
    agent.click(contains("5 m"), where=lambda node: node["clickable"])
    agent.find(contains("04"), seconds=10)


def changes_a_byte(agent):
    agent.open("data.bin")
    agent.find(contains("data.bin"))
    agent.press("4", where=lambda node: node.get("focused"))
    agent.press("2", where=lambda node: node.get("focused"))
    agent.press("Control+s", role="window")
    holds(agent.home / "data.bin", "Birst")


def finds_a_text_in_the_bytes(agent):
    agent.open("data.bin")
    agent.click("Find a string in the hex document", "button")
    agent.find("Find Next", "button")


def shows_the_about_dialog(agent):
    agent.open("data.bin")
    agent.click("Main menu", "button")
    agent.click("About GHex", where=lambda node: node["clickable"])
    agent.find(contains("binary file editor"))


APPLICATIONS = [
    Application("GNOME Calculator", "GTK 4", "org.gnome.Calculator",
                tasks=[calculates_by_its_buttons, calculates_what_is_typed,
                       changes_to_programming_mode]),
    Application("GNOME Text Editor", "GTK 4", "org.gnome.TextEditor",
                program=["gnome-text-editor"], files={"fruit.txt": "apple\npear\napple pie\n"},
                tasks=[saves_a_text_under_a_name, replaces_a_word_everywhere, shows_line_numbers]),
    Application("GNOME Characters", "GTK 4", "org.gnome.Characters",
                tasks=[shows_a_group_of_characters, finds_a_character_by_its_name,
                       scrolls_to_the_last_group]),
    Application("GNOME Clocks", "GTK 4", "org.gnome.clocks",
                tasks=[adds_an_alarm, starts_a_stopwatch, starts_a_timer]),
    Application("GHex", "GTK 4", "org.gnome.GHex", program=["ghex"],
                files={"data.bin": "first bytes of a file"},
                tasks=[changes_a_byte, finds_a_text_in_the_bytes, shows_the_about_dialog]),
]
