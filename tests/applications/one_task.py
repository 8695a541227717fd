"""Does one task in one application, in the desktop it is started in.

    one_task.py HELPER APPLICATION TASK RESULT

Writes what came of it to the file RESULT, as JSON: "seconds", "refusals", and "cause" when it
failed.
"""

import json
import os
import signal
import sys
import time
import traceback

import catalogue
from agent import Agent


class TimeIsUp(Exception):
    """The task took longer than it may."""


def give_up(*_):
    raise TimeIsUp("the time was up")


def cause_of(error):
    """The error, and the line of the task that it came from."""
    frames = [frame for frame in traceback.extract_tb(error.__traceback__)
              if "families" in frame.filename]
    where = " (at: %s)" % frames[-1].line if frames else ""
    return "%s: %s%s" % (type(error).__name__, error, where)


def main(helper, name, sentence, result):
    application = next(app for app in catalogue.applications() if app.name == name)
    task = next(task for task in application.tasks if catalogue.sentence(task) == sentence)
    signal.signal(signal.SIGALRM, give_up)
    signal.alarm(application.seconds)
    told = {}
    os.chdir(os.environ["HOME"])
    # Java takes the home of the account for the user's, whatever HOME says.
    os.environ["JAVA_TOOL_OPTIONS"] = "-Duser.home=" + os.environ["HOME"]
    begin = time.monotonic()
    agent = Agent(helper, application)
    try:
        task(agent)
    except Exception as error:  # Whatever it is, it is the result.
        told["cause"] = cause_of(error)
    finally:
        signal.alarm(0)
    told["seconds"] = round(time.monotonic() - begin, 1)
    told["refusals"] = [str(error) for error in agent.refusals]
    with open(result, "w", encoding="utf-8") as file:
        json.dump(told, file)


if __name__ == "__main__":
    main(*sys.argv[1:])
