"""Runs the fuzzers side by side for a while and says what they did: script/fuzz."""

import argparse
import os
import re
import resource
import shutil
import signal
import subprocess
import sys
import tempfile

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
BUILD = os.path.join(ROOT, "build/fuzz")
FINDINGS = os.path.join(BUILD, "findings")
FUZZERS = ("serve", "json", "text")
NICENESS = 19
# An input that takes longer, or a process that grows larger, is a finding. The serve fuzzer needs
# some milliseconds an input; the limit leaves room for a machine that does something else.
INPUT_SECONDS = 30
RESIDENT_MIB = 2048
# Of the new inputs as many join the corpus as reach this much more than those before them.
MOST_MERGED = 16
LEAST_NEW = 10
STATUS = re.compile(r"^#(\d+)\s+(\w+)\s+cov: (\d+) ft: (\d+)", re.MULTILINE)
KEPT = re.compile(r"Test unit written to (\S+)")


class Fuzzer:
    """One fuzzer, its own folder of inputs, and what it has printed."""

    def __init__(self, name, seconds, work):
        self.name = name
        self.program = os.path.join(BUILD, "fuzz", "fuzz_" + name)
        self.corpus = os.path.join(ROOT, "fuzz/corpus", name)
        self.fresh = os.path.join(work, name)
        os.mkdir(self.fresh)
        self._log = os.path.join(work, name + ".log")
        options = ["-max_total_time=%d" % seconds, "-timeout=%d" % INPUT_SECONDS,
                   "-report_slow_units=%d" % INPUT_SECONDS,
                   "-rss_limit_mb=%d" % RESIDENT_MIB, "-print_final_stats=1",
                   "-artifact_prefix=%s/%s-" % (FINDINGS, name)]
        dictionary = os.path.join(ROOT, "fuzz", name + ".dict")
        if os.path.exists(dictionary):
            options.append("-dict=" + dictionary)
        with open(self._log, "wb") as log:
            self.process = subprocess.Popen([self.program] + options + [self.fresh, self.corpus],
                                            stdin=subprocess.DEVNULL, stdout=log, stderr=log)

    def printed(self):
        with open(self._log, encoding="utf-8", errors="replace") as log:
            return log.read()

    def report(self):
        """The lines that say what it did; whether it found something."""
        text = self.printed()
        states = STATUS.findall(text)
        start = next((state for state in states if state[1] == "INITED"), None)
        failed = self.process.returncode != 0 and not self._was_only_late(text)
        if start:
            executions = int(statistic(text, "number_of_executed_units") or states[-1][0])
            lines = ["%s: %d executions, %s/s" % (
                self.name, executions, statistic(text, "average_exec_per_sec") or "?")]
            lines.append("  edges %s -> %s, features %s -> %s, new inputs %d" % (
                start[2], states[-1][2], start[3], states[-1][3], len(os.listdir(self.fresh))))
        else:
            lines = ["%s: ended before its corpus was read" % self.name]
        if self.process.returncode != 0 and not failed:
            lines.append("  ended early, as an input took too long; it did not when tried again")
        if failed:
            lines.append("  FINDING: " + finding(text))
            lines += ["  reproduce with: %s %s" % (relative(self.program), relative(path))
                      for path in KEPT.findall(text)]
        return lines, failed

    def _was_only_late(self, text):
        """Whether the one thing found is an input that took too long, and does not any more: the
        machine was busy, or the process was stopped for a while."""
        kept = KEPT.findall(text)
        if len(kept) != 1 or "-timeout-" not in os.path.basename(kept[0]):
            return False
        again = subprocess.run([self.program, "-timeout=%d" % INPUT_SECONDS, kept[0]],
                               stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                               stderr=subprocess.DEVNULL, check=False)
        if again.returncode == 0:
            os.remove(kept[0])
        return again.returncode == 0

    def merge(self, fresh=None):
        """Adds to the corpus new inputs that reach new code, those that reach most first, and gives
        their number. How often code runs does not count, and the corpus is to stay small: every
        test run replays it."""
        with tempfile.TemporaryDirectory() as folder:
            control = os.path.join(folder, "control")
            os.mkdir(os.path.join(folder, "merged"))
            subprocess.run([self.program, "-merge=1", "-use_counters=0",
                            "-merge_control_file=" + control, os.path.join(folder, "merged"),
                            self.corpus, fresh or self.fresh], stdin=subprocess.DEVNULL,
                           stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, check=True)
            reached = reached_by(control)
        known = set().union(*(codes for path, codes in reached.items()
                              if path.startswith(self.corpus + os.sep)))
        chosen = best_of({path: codes for path, codes in reached.items()
                          if not path.startswith(self.corpus + os.sep)}, known)
        for path in chosen:
            shutil.copy(path, self.corpus)
        return len(chosen)


def reached_by(control):
    """What each input reaches, from the file in which the engine notes the course of a merge."""
    with open(control, encoding="utf-8") as file:
        lines = file.read().splitlines()
    count = int(lines[0])
    paths = lines[2:2 + count]
    reached = {}
    for line in lines[2 + count:]:
        words = line.split()
        if words[0] == "FT":
            reached[paths[int(words[1])]] = set(map(int, words[2:]))
    return reached


def best_of(reached, known):
    chosen = []
    while reached and len(chosen) < MOST_MERGED:
        path = max(sorted(reached), key=lambda path: len(reached[path] - known))
        codes = reached.pop(path)
        if len(codes - known) < LEAST_NEW:
            break
        known = known | codes
        chosen.append(path)
    return chosen


def statistic(text, name):
    found = re.search(r"stat::%s:\s*(\d+)" % name, text)
    return found and found.group(1)


def finding(text):
    """The line in which a sanitizer, the engine or a check says what is wrong."""
    lines = text.splitlines()
    for at, line in enumerate(lines):
        if "ERROR: " in line or "runtime error: " in line:
            # A check that fails says so in the line before it aborts.
            aborted = "deadly signal" in line and at > 0
            return (lines[at - 1] + " / " if aborted else "") + line
    return lines[-1] if lines else "ended without a word"


def relative(path):
    return os.path.relpath(path, ROOT)


def positive(text):
    value = float(text)
    if value <= 0:
        raise argparse.ArgumentTypeError("must be more than 0")
    return value


def parsed():
    parser = argparse.ArgumentParser(prog="fuzz", usage="script/fuzz [--merge] MINUTES [FUZZER...]")
    parser.add_argument("--merge", action="store_true")
    parser.add_argument("minutes", type=positive)
    parser.add_argument("fuzzers", nargs="*")
    arguments = parser.parse_args()
    for name in arguments.fuzzers:
        if name not in FUZZERS:
            parser.error("no fuzzer is called %r (%s)" % (name, ", ".join(FUZZERS)))
    return arguments


def wait(fuzzers):
    """Until all have ended. When this process is asked to end, so are they, and they say what they
    have done."""
    def tell(*_):
        for fuzzer in fuzzers:
            if fuzzer.process.poll() is None:
                fuzzer.process.send_signal(signal.SIGINT)

    for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
        signal.signal(number, tell)
    for fuzzer in fuzzers:
        fuzzer.process.wait()


def main():
    arguments = parsed()
    os.nice(NICENESS)
    os.makedirs(FINDINGS, exist_ok=True)
    work = tempfile.mkdtemp(prefix="tarqo-fuzz.")
    failed = False
    try:
        fuzzers = [Fuzzer(name, arguments.minutes * 60, work)
                   for name in dict.fromkeys(arguments.fuzzers or FUZZERS)]
        wait(fuzzers)
        used = resource.getrusage(resource.RUSAGE_CHILDREN)
        for fuzzer in fuzzers:
            lines, found = fuzzer.report()
            failed |= found
            print("\n".join(lines), flush=True)
            if arguments.merge:
                print("  joined fuzz/corpus/%s: %d" % (fuzzer.name, fuzzer.merge()), flush=True)
        print("%.1f minutes of processor time in all" % ((used.ru_utime + used.ru_stime) / 60))
    finally:
        shutil.rmtree(work)
    sys.exit(1 if failed else 0)


if __name__ == "__main__":
    main()
