"""Weaves mutants into a copy of the core, builds it once, and runs what reaches each of them;
script/mutate is how it is called."""

import argparse
import collections
import concurrent.futures
import json
import os
import random
import re
import resource
import shutil
import signal
import subprocess
import sys
import tempfile
import time

from mutants import Source

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
FOLDERS = ("methods", "session", "observe", "input", "host", "ax")
WORK = os.path.join(ROOT, "build/mutate")
COPY = os.path.join(WORK, "source")
BUILD = os.path.join(WORK, "build")
# Where a mutant makes a function run off its end, or reach into what is empty, it stops there.
FLAGS = ("-O1 -w -Wno-c++11-narrowing -D_GLIBCXX_ASSERTIONS -fsanitize=return,unreachable"
         " -fsanitize-trap=all")
PARSED_AS = ["-x", "c++", "-std=c++20", "-D_GLIBCXX_ASSERTIONS", "-I" + ROOT]
# The programs that the core is part of.
TESTED = [*("tests/%s/all" % name for name in (
    "base", "host", "ax", "session", "observe", "input", "methods", "server", "simulator", "transcripts")), "fuzz/all"]
LIMIT_SECONDS = 20
MEMORY = 4 << 30
PROGRESS = 200
COMPLAINT = re.compile(r"^(?:\S*/source/)?(\S+?):(\d+):\d+: (?:fatal )?(error|note):", re.MULTILINE)


# ---- the copy

def project_files():
    listed = subprocess.run(["git", "ls-files", "-co", "--exclude-standard", "-z"], cwd=ROOT,
                            stdout=subprocess.PIPE, check=True).stdout.decode().split("\0")
    return [name for name in listed if name and os.path.exists(os.path.join(ROOT, name))]


def put(name, data):
    """Writes what differs, so that only that is built anew."""
    path = os.path.join(COPY, name)
    os.makedirs(os.path.dirname(path), exist_ok=True)
    if os.path.exists(path):
        with open(path, "rb") as file:
            if file.read() == data:
                return
    with open(path, "wb") as file:
        file.write(data)


def copy_project(names):
    """All but what `weave` puts there."""
    for name in names:
        if not is_mutated(name):
            with open(os.path.join(ROOT, name), "rb") as file:
                put(name, file.read())
            shutil.copymode(os.path.join(ROOT, name), os.path.join(COPY, name))
    with open(os.path.join(ROOT, "script/lib/mutant.h"), "rb") as file:
        put("mutant.h", file.read())
    for folder, _, files in os.walk(COPY):
        for file in files:
            name = os.path.relpath(os.path.join(folder, file), COPY)
            if name not in names and name != "mutant.h":
                os.remove(os.path.join(COPY, name))


def is_mutated(name):
    return name.split("/")[0] in FOLDERS and name.endswith((".h", ".cpp"))


def weave(names, dropped):
    """Puts all mutants into the copy, and gives them. Those on lines of `dropped` are left out, and
    counted there."""
    mutants = []
    for line in dropped:
        dropped[line] = 0
    for name in sorted(filter(is_mutated, names)):
        source = Source(os.path.join(ROOT, name), name, PARSED_AS,
                        mutants[-1].id + 1 if mutants else 0, dropped)
        put(name, source.woven().encode())
        mutants += source.mutants
    return mutants


# ---- the build

def configure():
    environment = {**os.environ, "CC": "clang", "CXX": "clang++"}
    subprocess.run(["cmake", "-S", COPY, "-B", BUILD, "-G", "Ninja", "--log-level=WARNING",
                    "-DCMAKE_BUILD_TYPE=Debug", "-DCMAKE_CXX_FLAGS_DEBUG=" + FLAGS,
                    "-DTARQO_TESTS=ON", "-DTARQO_DESKTOP=OFF", "-DCMAKE_UNITY_BUILD=ON",
                    "-DCMAKE_UNITY_BUILD_BATCH_SIZE=12"],
                   env=environment, stdout=subprocess.DEVNULL, check=True)


def build(names, jobs):
    """The mutants of a build that compiles, and how many had to be left out."""
    dropped = collections.Counter()
    mutants = weave(names, dropped)
    configure()
    while True:
        done = subprocess.run(["ninja", "-C", BUILD, "-k", "0", "-j", str(jobs)] + TESTED,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False)
        if done.returncode == 0:
            return mutants, sum(dropped.values())
        said = done.stdout.decode(errors="replace")
        lines = {(os.path.normpath(file), int(line)) for file, line, _ in COMPLAINT.findall(said)}
        culprits = (lines & {(mutant.file, mutant.line) for mutant in mutants}) - dropped.keys()
        if not culprits:
            sys.stderr.write(said)
            raise SystemExit("mutate: the copy does not build")
        for culprit in culprits:
            print("mutate: does not compile: %s:%d" % culprit, file=sys.stderr)
            dropped[culprit] = 0
        mutants = weave(names, dropped)


# ---- the tests

class Program:
    """A test program: of its tests the names and what each reaches; or a single test."""

    def __init__(self, words, folder):
        self.words = words
        self.folder = folder
        self.tests = {}  # name (none: the program as a whole) -> reached mutants
        self.seconds = collections.Counter()

    def command(self, names):
        if None in names:
            return self.words
        return self.words + ["--gtest_filter=" + ":".join(names), "--gtest_fail_fast",
                             "--gtest_brief=1"]


def programs():
    """What ctest would run of what was built."""
    listed = json.loads(subprocess.run(["ctest", "--show-only=json-v1"], cwd=BUILD,
                                       stdout=subprocess.PIPE, check=True).stdout)
    found = {}
    for test in listed["tests"]:
        words = test.get("command", [""])
        if not words[0].startswith(BUILD) or not os.path.exists(words[0]):
            continue
        properties = {entry["name"]: entry["value"] for entry in test["properties"]}
        folder = properties.get("WORKING_DIRECTORY", BUILD)
        if properties.get("DISABLED"):
            continue
        single = next((word for word in words if word.startswith("--gtest_filter=")), None)
        kept = [word for word in words if not word.startswith("--gtest_")]
        program = found.setdefault((tuple(kept), folder), Program(kept, folder))
        program.tests[single.split("=", 1)[1] if single else None] = frozenset()
    return list(found.values())


def limited():
    resource.setrlimit(resource.RLIMIT_AS, (MEMORY, MEMORY))
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))


def passes(command, folder, variables, usually=0.0):
    """Whether a command ends well in time: "passed", "failed" or "timed out". What takes long on a
    busy machine has taken long before."""
    process = subprocess.Popen(command, cwd=folder, env={**os.environ, **variables},
                               stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                               stderr=subprocess.DEVNULL, preexec_fn=limited,
                               start_new_session=True)
    try:
        return "passed" if process.wait(LIMIT_SECONDS + 2 * usually) == 0 else "failed"
    except subprocess.TimeoutExpired:
        os.killpg(process.pid, signal.SIGKILL)
        process.wait()
        return "timed out"


def measure(program, name, count):
    """What one test reaches while nothing is changed."""
    with tempfile.NamedTemporaryFile() as file:
        file.truncate(count)
        begin = time.monotonic()
        outcome = passes(program.command([name]), program.folder,
                         {"TARQO_MUTANTS_REACHED": file.name})
        program.seconds[name] = time.monotonic() - begin
        if outcome == "passed":
            program.tests[name] = frozenset(at for at, byte in enumerate(file.read()) if byte)
        else:
            print("mutate: left out, as it %s while nothing is changed: %s" % (
                outcome, name or program.words[0]), file=sys.stderr)


def verdict(mutant, found):
    """What becomes of a mutant, and by which program."""
    reaching = []
    for program in found:
        names = [name for name, reached in program.tests.items() if mutant.id in reached]
        if names:
            reaching.append((sum(program.seconds[name] for name in names), program, names))
    for usually, program, names in sorted(reaching, key=lambda entry: entry[0]):
        outcome = passes(program.command(names), program.folder,
                         {"TARQO_MUTANT": str(mutant.id)}, usually)
        if outcome != "passed":
            return outcome
    return "survived" if reaching else "not reached"


# ---- the report

def source_line(mutant):
    with open(os.path.join(ROOT, mutant.file), encoding="utf-8") as file:
        return file.read().splitlines()[mutant.line - 1].strip()


def report(results, uncompiled, begin):
    for title in ("survived", "not reached"):
        for mutant in (mutant for mutant, outcome in results if outcome == title):
            print("%s:%d: %s%s\n    %s" % (
                mutant.file, mutant.line, mutant.what,
                " (not reached)" if title == "not reached" else "", source_line(mutant)))
    for folder in FOLDERS + ("",):
        counts = collections.Counter(outcome for mutant, outcome in results
                                     if mutant.file.startswith(folder))
        mutants = sum(counts.values())
        if mutants:
            killed = counts["failed"] + counts["timed out"]
            print("%-8s mutants %d, killed %d (%d by their time limit), survived %d, not reached %d"
                  ": %.1f %% killed" % (folder or "all", mutants, killed, counts["timed out"],
                                        counts["survived"], counts["not reached"],
                                        100 * killed / mutants))
    print("did not compile: %d; %.0f s" % (uncompiled, time.monotonic() - begin))


def parsed():
    parser = argparse.ArgumentParser(
        prog="mutate", usage="script/mutate [--jobs N] [--only PATH]... [--sample N [--seed S]]")
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    parser.add_argument("--only", action="append", default=[])
    parser.add_argument("--sample", type=int)
    parser.add_argument("--seed", type=int, default=1)
    arguments = parser.parse_args()
    arguments.only = [os.path.normpath(path) for path in arguments.only]
    for path in arguments.only:
        if path.split("/")[0] not in FOLDERS or not os.path.exists(os.path.join(ROOT, path)):
            parser.error("%s is not in %s" % (path, ", ".join(FOLDERS)))
    return arguments


def chosen(mutants, arguments):
    wanted = [mutant for mutant in mutants if not arguments.only or any(
        (mutant.file + "/").startswith(path + "/") for path in arguments.only)]
    if arguments.sample and arguments.sample < len(wanted):
        wanted = random.Random(arguments.seed).sample(wanted, arguments.sample)
    return sorted(wanted)


def main():
    arguments = parsed()
    begin = time.monotonic()
    os.makedirs(COPY, exist_ok=True)
    names = project_files()
    copy_project(names)
    mutants, uncompiled = build(names, arguments.jobs)
    wanted = chosen(mutants, arguments)
    found = programs()
    print("mutate: %d mutants, %d of them to be tried; built in %.0f s" % (
        len(mutants), len(wanted), time.monotonic() - begin), file=sys.stderr)
    with concurrent.futures.ThreadPoolExecutor(arguments.jobs) as pool:
        tests = [(program, name) for program in found for name in program.tests]
        list(pool.map(lambda test: measure(*test, mutants[-1].id + 1), tests))
        print("mutate: %d tests; %.0f s" % (len(tests), time.monotonic() - begin),
              file=sys.stderr, flush=True)
        outcomes = []
        for outcome in pool.map(lambda mutant: verdict(mutant, found), wanted):
            outcomes.append(outcome)
            if len(outcomes) % PROGRESS == 0:
                print("mutate: %d of %d; %.0f s" % (len(outcomes), len(wanted),
                                                    time.monotonic() - begin),
                      file=sys.stderr, flush=True)
    report(list(zip(wanted, outcomes)), uncompiled, begin)


if __name__ == "__main__":
    main()
