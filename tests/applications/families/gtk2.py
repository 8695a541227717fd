"""Applications of GTK 2: a file manager, a task manager and a paint program."""

import subprocess

from agent import contains
from catalogue import Application
from proof import eventually, holds, says, title_becomes


def makes_a_folder(agent):
    agent.open()
    agent.menu("File", "Create New", "Folder")
    agent.write("Holidays", role="textbox")
    agent.click("OK", "button")
    eventually((agent.home / "Holidays").is_dir, "the folder is there")


def renames_a_file_in_the_list(agent):
    agent.open()
    agent.menu("View", "Folder View Mode", "Detailed List View")
    agent.click("draft.txt", "cell")
    agent.menu("Edit", "Rename")
    agent.write("final.txt", role="textbox", value="draft.txt")
    agent.press("Enter")
    holds(agent.home / "final.txt", "first words")


def goes_to_a_folder_by_its_path(agent):
    agent.open()
    agent.write(str(agent.home / "Papers"), "Folder location bar", "textbox")
    agent.click("Jump to", "button")
    title_becomes("^Papers")


def shows_hidden_files(agent):
    agent.open()
    agent.menu("View", "Folder View Mode", "Detailed List View")
    agent.menu("View", "Show Hidden")
    agent.find(".hidden.txt", "cell")


def sorts_its_processes_by_name(agent):
    agent.open()
    agent.click("Command", "button")
    names = [node["name"].lower() for node in agent.look() if node["role"] == "cell"][::5][:8]
    if names != sorted(names) and names != sorted(names, reverse=True):
        raise AssertionError("not sorted: %r" % names)


def ends_a_process(agent):
    victim = subprocess.Popen(["sleep", "1000"])
    agent.open()
    agent.click("Command", "button")
    agent.click("Command", "button")  # From Z to A.
    for _ in range(4):
        if agent.shows("sleep", "cell"):
            break
        agent.scroll(400, role="outline")
    agent.context_menu("sleep", "cell")
    agent.click("Term", "menuitem")
    if agent.shows("Yes", "button", seconds=3):
        agent.click("Yes", "button")
    eventually(lambda: victim.poll() is not None, "the process has ended")


def shows_whole_command_lines(agent):
    agent.open()
    agent.find(contains("MB"), "cell")
    agent.menu("View", "Show full cmdline")
    agent.find(contains("/"), "cell")


def saves_a_new_picture_under_a_name(agent):
    agent.open()
    agent.menu("File", "Save As")
    agent.write(str(agent.home / "white.png"), "Name", "textbox")
    agent.click("OK", "button")
    eventually(lambda: "PNG" in says(["file", str(agent.home / "white.png")]), "a picture")


FILES = {"draft.txt": "first words\n", ".hidden.txt": "", "Papers/one.txt": "1\n"}

APPLICATIONS = [
    Application("PCManFM", "GTK 2", "pcmanfm", files=FILES,
                tasks=[makes_a_folder, renames_a_file_in_the_list, goes_to_a_folder_by_its_path,
                       shows_hidden_files]),
    Application("LXTask", "GTK 2", "lxtask",
                tasks=[sorts_its_processes_by_name, ends_a_process,
                       shows_whole_command_lines]),
    Application("mtPaint", "GTK 2", "mtpaint",
                tasks=[saves_a_new_picture_under_a_name]),
]
