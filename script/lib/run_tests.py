"""Runs every ctest test of a build folder, and what failed once more, alone.

    run_tests.py REPORT BUILD_FOLDER [CTEST_OPTION...]

A real desktop on a busy machine can be late, so a test has failed when it fails twice in a row. One
that passes only when repeated is FLAKY: it counts as passed, and is never lost from sight. The file
REPORT gets a line "flaky NAME" or "failed NAME" for each. The options hold for the first run; the
second runs one test at a time.

Status 0: every test passed, perhaps at its second try. 1: a test failed, or ctest itself did.
"""

import os
import subprocess
import sys
import tempfile
import xml.etree.ElementTree


def runs_well(build_folder, *options):
    command = ["ctest", "--test-dir", build_folder, "--no-tests=error", "--output-on-failure"]
    return subprocess.run([*command, *options], check=False).returncode == 0


def failed_tests(list_file):
    """The names in ctest's own list of what failed, which --rerun-failed repeats."""
    try:
        with open(list_file, encoding="utf-8") as lines:
            return [line.rstrip("\n").split(":", 1)[1] for line in lines]
    except FileNotFoundError:
        return []


def verdicts(results_file):
    """Whether each test passed, by its name. One that was skipped has not; of two tests with one
    name both must have."""
    passed = {}
    try:
        for test in xml.etree.ElementTree.parse(results_file).iter("testcase"):
            name = test.get("name")
            passed[name] = passed.get(name, True) and test.get("status") == "run"
    except (FileNotFoundError, xml.etree.ElementTree.ParseError):
        pass  # ctest did not come to its end: nothing has passed.
    return passed


def repeat(build_folder, first_failures):
    """Runs what failed once more. Gives (flaky names, failed names, whether ctest was content)."""
    print("\n== Once more, what failed", flush=True)
    with tempfile.TemporaryDirectory() as folder:
        results = os.path.join(folder, "results.xml")
        well = runs_well(build_folder, "--rerun-failed", "--output-junit", results)
        passed = verdicts(results)
    names = sorted(set(first_failures))
    return ([name for name in names if passed.get(name)],
            [name for name in names if not passed.get(name)], well)


def main():
    report, build_folder, *options = sys.argv[1:]
    build_folder = os.path.abspath(build_folder)
    list_file = os.path.join(build_folder, "Testing", "Temporary", "LastTestsFailed.log")
    if os.path.exists(list_file):
        os.remove(list_file)  # Of an earlier run: a ctest that breaks down leaves it as it was.
    if runs_well(build_folder, *options):
        return 0
    first_failures = failed_tests(list_file)
    if not first_failures:
        print("ctest failed without naming a test.", flush=True)
        return 1
    flaky, failed, well = repeat(build_folder, first_failures)
    with open(report, "w", encoding="utf-8") as lines:
        for name in flaky:
            lines.write("flaky %s\n" % name)
        for name in failed:
            lines.write("failed %s\n" % name)
    for name in flaky:
        print("FLAKY, failed and then passed: %s" % name, flush=True)
    return 0 if well and not failed else 1


if __name__ == "__main__":
    sys.exit(main())
