"""Applications of Tk, which has no accessible objects: read from the pixels."""

from agent import contains
from catalogue import Application
from proof import eventually, holds, says, title_becomes


def runs_a_line_of_python(agent):
    agent.open()
    agent.find(contains(">>>"), "text")
    agent.write("open('answer', 'w').write(str(6*7))", role="window", submit=True)
    holds(agent.home / "answer", "42")


def reads_a_result(agent):
    agent.open()
    agent.find(contains(">>>"), "text")
    agent.write("'py' + 'thon' * 2", role="window", submit=True)
    agent.find(contains("pythonthon"), "text")


def opens_a_new_file_by_the_menu(agent):
    agent.open()
    agent.press("Alt+f", role="window")
    agent.click(contains("New File"), "text")
    title_becomes("untitled")


def commits_a_change(agent):
    stages_a_change(agent)
    agent.write("Add bread", role="window")
    agent.press("Control+Enter", role="window")
    eventually(lambda: "Add bread" in says(["git", "log", "--oneline"]), "it is committed")


def stages_a_change(agent):
    repository(agent)
    agent.open()
    agent.find(contains("list.txt"), "text")
    agent.press("Control+i", role="window")
    eventually(lambda: "list.txt" in says(["git", "diff", "--cached", "--name-only"]),
               "the file is staged")


def shows_what_has_changed(agent):
    repository(agent)
    agent.open()
    agent.click(contains("list.txt"), "text")
    agent.find(contains("bread"), "text")


def repository(agent):
    for command in (["git", "init", "-q"], ["git", "config", "user.name", "Ada"],
                    ["git", "config", "user.email", "ada@example.org"]):
        says(command)
    (agent.home / "list.txt").write_text("milk\n")
    says(["git", "add", "list.txt"])
    says(["git", "commit", "-qm", "Begin"])
    (agent.home / "list.txt").write_text("milk\nbread\n")


APPLICATIONS = [
    Application("IDLE", "Tk", "idle",
                tasks=[runs_a_line_of_python, reads_a_result, opens_a_new_file_by_the_menu]),
    Application("Git GUI", "Tk", "app.git-gui", command="git gui",
                tasks=[stages_a_change, commits_a_change, shows_what_has_changed]),
]
