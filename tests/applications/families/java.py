"""Java with Swing; with the bridge to the accessibility bus that Debian has as a package."""

from agent import contains
from catalogue import Application
from proof import holds

FRUIT = "apple\npear\napple pie\n"


def opens_a_file(agent):
    """Started by the helper, which tells Java to serve accessibility, and not with the file."""
    agent.open()
    agent.find(contains("New (C+n)"), "button", seconds=90)
    agent.click(contains("Open... (C+o)"), "button")
    agent.write(str(agent.home / "fruit.txt"), role="textbox", where=lambda node: node["editable"],
                submit=True)
    agent.find(contains("fruit.txt"), "window")


def writes_into_the_text_and_saves(agent):
    opens_a_file(agent)
    agent.write("cherry ", role="window")
    agent.click(contains("Save (C+s)"), "button")
    holds(agent.home / "fruit.txt", "cherry")


def saves_under_a_name(agent):
    opens_a_file(agent)
    agent.menu("File", "Save As")
    agent.write("copy.txt", role="textbox", where=lambda node: node["editable"])
    agent.click("Save", "button")
    holds(agent.home / "copy.txt", "apple pie")


def replaces_a_word_everywhere(agent):
    opens_a_file(agent)
    agent.click(contains("Find... (C+f)"), "button")
    agent.write("apple", role="textbox", nth=0)
    agent.write("plum", role="textbox", nth=1)
    agent.click("Replace All", "button")
    agent.click("Close", "button")
    agent.click(contains("Save (C+s)"), "button")
    holds(agent.home / "fruit.txt", "plum\npear\nplum pie")


APPLICATIONS = [
    Application("jEdit", "Java Swing", "jedit", program=["jedit"],
                # Else it begins with its handbook.
                files={"fruit.txt": FRUIT, ".jedit/properties": "firstTime=false\n"}, seconds=200,
                tasks=[writes_into_the_text_and_saves, saves_under_a_name,
                       replaces_a_word_everywhere]),
]
