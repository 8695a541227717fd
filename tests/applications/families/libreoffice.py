"""LibreOffice, whose controls are those of its own toolkit, VCL."""

import zipfile

from agent import contains
from catalogue import Application
from proof import eventually, holds

SECONDS = 200


def text_of(path):
    """The document's text, with its markup."""
    with zipfile.ZipFile(path) as archive:
        return archive.read("content.xml").decode()


def is_saved_with(path, words):
    def check():
        try:
            return words in text_of(path)
        except (OSError, zipfile.BadZipFile, KeyError):
            return False

    eventually(check, "%s has %r" % (path.name, words), 30)


def dismiss(agent):
    """The tip of the day, where there is one."""
    if agent.shows(contains("Tip of the Day"), seconds=4):
        agent.click("OK", "button")


def writes_a_paragraph_and_saves_it(agent):
    agent.open("letter.html")
    dismiss(agent)
    agent.press("Control+End", where=is_a_paragraph)
    agent.write("Kind regards", where=lambda node: is_a_paragraph(node) and node.get("focused"))
    agent.press("Control+s")
    if agent.shows(contains("Keep"), "button", seconds=3):
        agent.click(contains("Keep"), "button")
    eventually(lambda: "Kind regards" in (agent.home / "letter.html").read_text(),
               "the words are in the file", 20)


def is_a_paragraph(node):
    return node["rawRole"] in ("AXTextArea", "AXStaticText") and (
        node["editable"] or node.get("focused"))


def saves_under_a_name(agent):
    agent.open("letter.html")
    dismiss(agent)
    agent.find(contains("Dear reader"))
    agent.menu("File", "Save As")
    agent.write(str(agent.home / "letter.odt"), role="textbox",
                where=lambda node: contains("ame").search(node["name"]))
    agent.click("Save", "button")
    is_saved_with(agent.home / "letter.odt", "Dear reader")


def replaces_a_word_everywhere(agent):
    agent.open("letter.html")
    dismiss(agent)
    agent.menu("Edit", "Find and Replace")
    agent.write("reader", role="textbox", inside="Find")
    agent.write("friend", role="textbox", inside="Replace")
    agent.click("Replace All", "button")
    agent.find(contains("Dear friend"))


def sums_a_column(agent):
    agent.open("sums.csv")
    import_as_is(agent)
    agent.click("A4", "cell")
    agent.write("=SUM(A1:A3)", "A4", "cell", submit=True)
    agent.find("A4", value="42")


def import_as_is(agent):
    agent.click("OK", "button")
    dismiss(agent)
    agent.find("A1", "cell")


def writes_into_a_cell_and_saves(agent):
    agent.open("sums.csv")
    import_as_is(agent)
    agent.click("B1", "cell")
    agent.write("apples", "B1", "cell", submit=True)
    agent.press("Control+s")
    if agent.shows(contains("Keep"), "button", seconds=3):
        agent.click(contains("Keep"), "button")
    holds(agent.home / "sums.csv", "apples", 20)


def goes_to_a_cell_by_its_name(agent):
    agent.open("sums.csv")
    import_as_is(agent)
    agent.write("C300", role="textbox", inside=contains("Name Box"), submit=True)
    agent.find("C300", "cell")


LETTER = "<!doctype html><html><body><p>Dear reader</p><p>All is well.</p></body></html>"

APPLICATIONS = [
    Application("LibreOffice Writer", "VCL", "libreoffice-writer",
                program=["libreoffice", "--writer"], files={"letter.html": LETTER},
                tasks=[writes_a_paragraph_and_saves_it, saves_under_a_name,
                       replaces_a_word_everywhere], seconds=SECONDS),
    Application("LibreOffice Calc", "VCL", "libreoffice-calc",
                program=["libreoffice", "--calc"], files={"sums.csv": "10\n12\n20\n"},
                tasks=[sums_a_column, writes_into_a_cell_and_saves, goes_to_a_cell_by_its_name],
                seconds=SECONDS),
]
