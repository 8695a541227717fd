"""Runs the tasks, each on a private desktop of its own, and tells what became of them.

    run.py HELPER DESKTOP [--list] [--table FILE] [--jobs N] [--tries N] [NAME...]

DESKTOP is the program that runs a command on a private desktop. A NAME is that of an application,
of a toolkit, both as in
"Thunar: makes a folder", or words of a task. The status is 1 when a task failed.
"""

import argparse
import collections
import concurrent.futures
import json
import os
import pathlib
import signal
import subprocess
import sys
import tempfile

import catalogue

START_AND_END_SECONDS = 60  # What a desktop may take, beyond the task.


def label(app, task):
    return "%s: %s" % (app.name, catalogue.sentence(task))


def chosen(names):
    """Pairs of an application and a task."""
    pairs = [(app, task) for app in catalogue.applications() for task in app.tasks]
    if not names:
        return pairs
    picked = []
    for name in names:
        word = name.lower()
        exact = [(app, task) for app, task in pairs
                 if word in (app.name.lower(), app.toolkit.lower(), label(app, task).lower())]
        some = exact or [(app, task) for app, task in pairs
                         if word in catalogue.sentence(task).lower()]
        if not some:
            sys.exit("applications: nothing is called %r (see --list)" % name)
        picked += [pair for pair in some if pair not in picked]
    return picked


def run_task(options, app, task):
    """What one_task.py told; a cause of its own when it told nothing."""
    with tempfile.TemporaryDirectory() as folder:
        result = os.path.join(folder, "result")
        here = pathlib.Path(__file__).parent
        desktop = subprocess.Popen(
            [sys.executable, options.desktop, "--size", "1280x900", sys.executable,
             str(here / "one_task.py"), options.helper, app.name, catalogue.sentence(task), result])
        try:
            status = desktop.wait(app.seconds + START_AND_END_SECONDS)
        except (subprocess.TimeoutExpired, KeyboardInterrupt):
            desktop.send_signal(signal.SIGTERM)
            desktop.wait()
            status = "none in time"
        try:
            with open(result, encoding="utf-8") as file:
                return json.load(file)
        except OSError:
            return {"seconds": 0, "refusals": [], "cause": "the task ended with status %s" % status}


def try_task(options, app, task):
    """What came of the last try, and how many it took."""
    for tries in range(1, options.tries + 1):
        told = dict(run_task(options, app, task), tries=tries)
        if "cause" not in told:
            break
    return told


def table(results):
    """Markdown: one row a task."""
    lines = ["| application | toolkit | task | result | seconds |", "|---|---|---|---|---|"]
    for app, task, told in results:
        result = "done"
        if "cause" in told:
            result = "**failed**"
        elif told["tries"] > 1:
            result = "done at try %d" % told["tries"]
        elif told["refusals"]:
            result = "done, %d refused first" % len(told["refusals"])
        lines.append("| %s | %s | %s | %s | %.1f |" % (
            app.name, app.toolkit, catalogue.sentence(task), result, told["seconds"]))
    return "\n".join(lines) + "\n"


def summary(results):
    done = [told for _, _, told in results if "cause" not in told]
    toolkits = collections.Counter(app.toolkit for app, _, _ in results)
    names = {app.name for app, _, _ in results}
    return "%d of %d tasks done, in %d applications of %d toolkits" % (
        len(done), len(results), len(names), len(toolkits))


def tell(app, task, told):
    result = "FAILED" if "cause" in told else "done  "
    print("%s  %s  %.1f s, try %d" % (result, label(app, task), told["seconds"], told["tries"]))
    for refusal in told["refusals"]:
        print("          refused: %s" % refusal)
    if "cause" in told:
        print("          %s" % told["cause"])
    sys.stdout.flush()


def parse():
    parser = argparse.ArgumentParser(prog="script/applications", add_help=False)
    parser.add_argument("helper")
    parser.add_argument("desktop")
    parser.add_argument("--list", action="store_true")
    parser.add_argument("--table")
    parser.add_argument("--jobs", type=int, default=1)
    parser.add_argument("--tries", type=int, default=1)
    parser.add_argument("names", nargs="*")
    return parser.parse_intermixed_args()


def main():
    options = parse()
    pairs = chosen(options.names)
    if options.list:
        for app, task in pairs:
            print("%s (%s): %s" % (app.name, app.toolkit, catalogue.sentence(task)))
        return 0
    results = {}
    with concurrent.futures.ThreadPoolExecutor(options.jobs) as pool:
        running = {pool.submit(try_task, options, app, task): (number, app, task)
                   for number, (app, task) in enumerate(pairs)}
        for ended in concurrent.futures.as_completed(running):
            number, app, task = running[ended]
            results[number] = (app, task, ended.result())
            tell(*results[number])
            if options.table:
                rows = [results[each] for each in sorted(results)]
                pathlib.Path(options.table).write_text(table(rows), encoding="utf-8")
    print(summary(results.values()))
    return any("cause" in told for _, _, told in results.values())


if __name__ == "__main__":
    sys.exit(main())
