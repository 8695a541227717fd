"""A file manager, a terminal and a calculator of GTK 3."""

from agent import contains
from catalogue import Application
from proof import eventually, holds, title_becomes

IN_A_LIST = {"where": lambda node: node["role"] == "cell"}


def makes_a_folder(agent):
    agent.open()
    agent.press("Control+Shift+n")
    agent.write("Holidays", role="textbox", inside=contains("Create New Folder"))
    agent.click("Create", "button")
    eventually((agent.home / "Holidays").is_dir, "the folder is there")


def renames_a_file_in_the_list(agent):
    agent.open()
    agent.press("Control+2")
    agent.click("draft.txt", **IN_A_LIST)
    agent.menu("Edit", "Rename")
    agent.write("final.txt", role="textbox", value="draft.txt")
    agent.press("Enter")
    holds(agent.home / "final.txt", "first words")


def goes_to_a_folder_by_its_path(agent):
    agent.open()
    agent.write(str(agent.home / "Papers"), role="textbox", submit=True)
    title_becomes("^Papers")


def moves_a_file_to_the_wastebasket_by_its_menu(agent):
    agent.open()
    agent.press("Control+2")
    agent.context_menu("draft.txt", **IN_A_LIST)
    agent.click(contains("to Trash"), "menuitem")
    eventually(lambda: not (agent.home / "draft.txt").exists(), "the file is gone")


def runs_a_command_and_reads_its_output(agent):
    agent.open()
    agent.write("echo $((6*7)) > answer; wc -c draft.txt", role="textbox", submit=True)
    agent.find(role="textbox", value=contains("12 draft.txt"))
    holds(agent.home / "answer", "42")


def opens_a_second_tab(agent):
    agent.open()
    agent.write("echo first", role="textbox", submit=True)
    agent.menu("File", "Open Tab")
    agent.write("echo second > second", role="textbox", submit=True,
                where=lambda node: node.get("focused"))
    holds(agent.home / "second", "second")


def gives_the_terminal_a_title(agent):
    agent.open()
    agent.menu("Terminal", "Set Title")
    agent.write("Workbench", role="textbox", value="", where=lambda node: node["rawRole"] ==
                "AXTextField")
    agent.press("Enter")
    title_becomes("Workbench")


def calculates_by_its_buttons(agent):
    agent.open()
    for key in ["1", "2", "*", "3", "4", "="]:
        agent.click(key, "checkbox")
    agent.find(role="textbox", value=contains("408"))


def switches_to_scientific_mode(agent):
    agent.open()
    agent.menu("View", "Scientific Mode")
    agent.click("5", "checkbox")
    agent.click("n!", "checkbox")
    agent.find(role="textbox", value=contains("120"))


def changes_to_hexadecimal(agent):
    agent.open()
    for key in ["2", "5", "5"]:
        agent.click(key, "checkbox")
    agent.menu("View", "Scientific Mode")
    agent.menu("Calculator", "Number bases", "Hexadecimal")
    agent.find(role="textbox", value=contains("FF"))


FILES = {"draft.txt": "first words\n", "Papers/one.txt": "1\n", "Papers/two.txt": "2\n"}

APPLICATIONS = [
    Application("Thunar", "GTK 3", "thunar", files=FILES,
                tasks=[makes_a_folder, renames_a_file_in_the_list, goes_to_a_folder_by_its_path,
                       moves_a_file_to_the_wastebasket_by_its_menu]),
    Application("Xfce Terminal", "GTK 3 (VTE)", "xfce4-terminal", files=FILES,
                tasks=[runs_a_command_and_reads_its_output, opens_a_second_tab,
                       gives_the_terminal_a_title]),
    Application("galculator", "GTK 3", "galculator",
                tasks=[calculates_by_its_buttons, switches_to_scientific_mode,
                       changes_to_hexadecimal]),
]
