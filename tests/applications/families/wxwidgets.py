"""Applications of wxWidgets on GTK 3."""

from agent import contains
from catalogue import Application
from proof import eventually, holds, says

CATALOGUE = '''msgid ""
msgstr ""
"Language: de\\n"
"MIME-Version: 1.0\\n"
"Content-Type: text/plain; charset=UTF-8\\n"
"Content-Transfer-Encoding: 8bit\\n"
"Plural-Forms: nplurals=2; plural=(n != 1);\\n"

msgid "Open file"
msgstr ""

msgid "Close file"
msgstr "Datei zumachen"
'''


def translates_a_text(agent):
    agent.open("de.po")
    agent.find(contains("Open file"))
    agent.write("Datei öffnen", role="textbox", nth=1)  # Below the text to be translated.
    agent.menu("File", "Save")
    holds(agent.home / "de.po", "Datei öffnen")


def finds_a_text(agent):
    agent.open("de.po")
    agent.menu("Edit", "Find")
    agent.write("zumachen", role="textbox", where=lambda node: node.get("focused"))
    agent.click("Next >", "button")
    agent.click("Close", "button")
    agent.find(role="textbox", value="Datei zumachen")


def changes_the_translators_name(agent):
    agent.open("de.po")
    agent.menu("Edit", "Preferences")
    agent.write("Ada Example", role="textbox", nth=0)
    agent.click("Close", "button")
    eventually(lambda: says(["grep", "-rl", "Ada Example", str(agent.home)]),
               "the name is in its settings")


def welcome(agent):
    agent.open()
    agent.click("OK", "button", seconds=40)


def goes_to_a_local_folder(agent):
    welcome(agent)
    agent.write(str(agent.home / "Papers"), role="textbox", inside=contains("Local site"),
                submit=True)
    agent.find("invoice.txt")


def adds_a_site_to_the_site_manager(agent):
    welcome(agent)
    agent.menu("File", "Site Manager")
    agent.click("New site", "button")
    agent.press("Enter")
    agent.write("files.example.org", "Host", "textbox")
    agent.click("OK", "button", seconds=40)
    holds(agent.home / ".config/filezilla/sitemanager.xml", "files.example.org")


def is_told_of_a_server_that_does_not_answer(agent):
    welcome(agent)
    agent.write("127.0.0.1", "Host", "textbox")
    agent.write("9", "Port", "textbox")
    agent.click("Quickconnect", "button")
    agent.find(contains("ECONNREFUSED"), seconds=20)


def replaces_in_a_sheet(agent):
    agent.open()
    agent.write("Tutorial", role="textbox", nth=0)
    agent.press("Enter")
    agent.find(role="textbox", value="Tutorial")


def makes_a_new_sheet_and_saves_it(agent):
    agent.open()
    agent.click(contains("New (CTRL"), "button")
    agent.click("OK", "button", seconds=40)
    agent.write("Shopping", role="window")
    agent.press("Control+s", role="window")
    agent.write("list.cts", "Name", "textbox")
    agent.click("Save", "button")
    eventually(lambda: (agent.home / "list.cts").stat().st_size > 50, "the sheet is saved")


def exports_a_sheet_as_text(agent):
    agent.open()
    agent.menu("File", "Export view as", "Indented text")
    agent.write("out.txt", "Name", "textbox")
    agent.click("Save", "button")
    holds(agent.home / "out.txt", "TreeSheets")


APPLICATIONS = [
    Application("Poedit", "wxWidgets", "net.poedit.Poedit", program=["poedit"],
                files={"de.po": CATALOGUE},
                tasks=[translates_a_text, finds_a_text, changes_the_translators_name]),
    Application("FileZilla", "wxWidgets", "filezilla",
                files={"Papers/invoice.txt": "1\n"},
                tasks=[goes_to_a_local_folder, adds_a_site_to_the_site_manager,
                       is_told_of_a_server_that_does_not_answer]),
    Application("TreeSheets", "wxWidgets", "treesheets",
                tasks=[replaces_in_a_sheet, makes_a_new_sheet_and_saves_it,
                       exports_a_sheet_as_text]),
]
