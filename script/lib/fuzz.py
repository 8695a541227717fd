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
        failed = self.process.returncode != 0
        if start:
            executions = int(statistic(text, "number_of_executed_units") or states[-1][0])
            lines = ["%s: %d executions, %s/s" % (
                self.name, executions, statistic(text, "average_exec_per_sec") or "?")]
            lines.append("  edges %s -> %s, features %s -> %s, new inputs %d" % (
                start[2], states[-1][2], start[3], states[-1][3], len(os.listdir(self.fresh))))
        else:
            lines = ["%s: ended before its corpus was read" % self.name]
        if failed:
            lines.append("  FINDING: " + finding(text))
            lines += ["  reproduce with: %s %s" % (relative(self.program), relative(path))
                      for path in KEPT.findall(text)]
        return lines, failed

    def merge(self):
        """Adds to the corpus the fewest new inputs that reach new code, and gives their number.
        How often code runs does not count, or there would be hundreds."""
        before = set(os.listdir(self.corpus))
        subprocess.run([self.program, "-merge=1", "-set_cover_merge=1", "-use_counters=0",
                        self.corpus, self.fresh], stdin=subprocess.DEVNULL,
                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, check=True)
        return len(set(os.listdir(self.corpus)) - before)


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
    """Until all have ended. When this process is told to end, so are they, and they say what they
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
