"""Applications of Qt 6: the form designer and the translator's tool that come with it."""

from agent import contains
from catalogue import Application
from proof import eventually, holds, title_becomes


def creates_a_form_and_saves_it(agent):
    agent.open()
    agent.click("Dialog without Buttons", "cell")
    agent.click("Create", "button")
    agent.menu("File", "Save As")
    agent.write(str(agent.home / "dialog.ui"), "File name", "textbox")
    agent.click("Save", "button")
    holds(agent.home / "dialog.ui", "<widget class=\"QDialog\"")


def renames_a_form_in_the_property_editor(agent):
    agent.open("form.ui")
    agent.write("objectN", "Filter", "textbox", where=lambda node: node["bounds"]["y"] > 340)
    agent.double_click("Form", "cell", where=lambda node: node["bounds"]["y"] > 400)
    agent.write("Orders", role="textbox", where=lambda node: node.get("focused"))
    agent.press("Enter")
    agent.press("Control+s", role="window")
    holds(agent.home / "form.ui", "name=\"Orders\"")


def previews_a_form(agent):
    agent.open("form.ui")
    agent.menu("Form", "Preview")
    title_becomes("Preview")


def translates_a_text(agent):
    agent.open("app_de.ts")
    agent.click("Main", "cell")
    agent.press("ArrowRight", "Main", "cell")
    agent.click("Open file", "cell")
    agent.scroll(300, role="textbox", nth=0)  # The field for it may lie further down.
    agent.write("Datei öffnen", role="textbox", nth=2)
    agent.menu("File", "Save")
    holds(agent.home / "app_de.ts", "Datei öffnen")


def finds_a_text(agent):
    agent.open("app_de.ts")
    agent.press("Control+f", role="window")
    agent.write("Close", role="textbox", where=lambda node: node.get("focused"))
    agent.click(contains("Find Next"), "button")
    agent.find(role="textbox", value="Close file")


def changes_a_setting_of_the_translation_file(agent):
    agent.open("app_de.ts")
    agent.menu("Edit", "Translation File Settings")
    agent.find(contains("Target language"))
    agent.click("Cancel", "button")
    eventually(lambda: not agent.shows(contains("Target language")), "the dialog is closed")


FORM = """<?xml version="1.0" encoding="UTF-8"?>
<ui version="4.0"><class>Form</class><widget class="QWidget" name="Form">
<property name="geometry"><rect><x>0</x><y>0</y><width>400</width><height>300</height></rect>
</property>
<property name="windowTitle"><string>Form</string></property>
</widget><resources/><connections/></ui>
"""
TRANSLATION = """<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE" sourcelanguage="en_US"><context><name>Main</name>
<message><source>Open file</source><translation type="unfinished"></translation></message>
<message><source>Close file</source><translation type="unfinished"></translation></message>
</context></TS>
"""
BIN = "/usr/lib/qt6/bin/"

APPLICATIONS = [
    Application("Qt Designer", "Qt 6", "app.designer6", command=BIN + "designer",
                program=[BIN + "designer"], files={"form.ui": FORM},
                tasks=[creates_a_form_and_saves_it, renames_a_form_in_the_property_editor,
                       previews_a_form]),
    Application("Qt Linguist", "Qt 6", "app.linguist6", command=BIN + "linguist",
                program=[BIN + "linguist"], files={"app_de.ts": TRANSLATION},
                tasks=[translates_a_text, finds_a_text,
                       changes_a_setting_of_the_translation_file]),
]
