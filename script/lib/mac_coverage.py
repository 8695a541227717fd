"""The second half of script/mac-coverage: runs the counted programs and reads which lines they ran."""

import os
import subprocess
import sys
import tempfile

ENOUGH_PERCENT = 95.0
SOURCES = os.path.join(os.getcwd(), "platform/mac/")
SHARDS = [sys.executable, "-B", "tests/platform/mac/in_shards.py", "8"]


def commands(folder):
    """What is run, at the same time: all of it waits more than it works."""
    def program(name):
        return os.path.join(folder, name)

    contract, whole = program("mac_contract_counted"), program("mac_whole_helper_counted")
    return [[program("mac_tests_counted")],
            [program("mac_unicode_counted")],
            [contract],
            [contract, "--gtest_filter=CaptureContract.*", "--macos", "13"],
            [whole, "--gtest_filter=*LeavesNothing*:MacBackend.*"],
            SHARDS + [whole, "--gtest_filter=*CallFails*"],
            SHARDS + [whole, "--gtest_filter=*CallThrows*"]]


def run_all(folder, scratch):
    """Whether all of them passed, those that failed beside the others perhaps alone; the counts are in
    scratch."""
    environment = dict(os.environ, LLVM_PROFILE_FILE=os.path.join(scratch, "%p.profraw"))
    running = [(command, subprocess.Popen(command, env=environment, stdout=subprocess.PIPE,
                                          stderr=subprocess.STDOUT, text=True, errors="replace"))
               for command in commands(folder)]
    passed = True
    for _, process in running:
        process.communicate()
    for command in [command for command, process in running if process.returncode != 0]:
        again = subprocess.run(command, env=environment, stdout=subprocess.PIPE,
                               stderr=subprocess.STDOUT, text=True, errors="replace", check=False)
        if again.returncode != 0:
            print("%s ended with %d:\n%s" % (" ".join(command), again.returncode, again.stdout[-4000:]))
            passed = False
    return passed


def lines_of(llvm, folder, scratch):
    """The counts of the lines of each file, by number."""
    merged = os.path.join(scratch, "merged.profdata")
    raw = [os.path.join(scratch, name) for name in os.listdir(scratch) if name.endswith(".profraw")]
    subprocess.run([os.path.join(llvm, "llvm-profdata"), "merge", "-o", merged] + raw, check=True)
    programs = sorted({word for command in commands(folder) for word in command
                       if word.endswith("_counted")})
    objects = [word for program in programs[1:] for word in ("-object", program)]
    listing = subprocess.run([os.path.join(llvm, "llvm-cov"), "export", "-format=lcov",
                              "-instr-profile", merged, programs[0]] + objects,
                             stdout=subprocess.PIPE, text=True, check=True).stdout
    files, lines = {}, {}
    for row in listing.splitlines():
        if row.startswith("SF:"):
            path = row[3:]
            lines = files.setdefault(path, {}) if path.startswith(SOURCES) else {}
        elif row.startswith("DA:"):
            number, count = row[3:].split(",")[:2]
            lines[int(number)] = max(int(count), lines.get(int(number), 0))
    return {path: lines for path, lines in files.items() if lines}


def ranges(numbers):
    """"3-5 9", of 3, 4, 5 and 9."""
    found = []
    for number in sorted(numbers):
        if found and found[-1][1] == number - 1:
            found[-1][1] = number
        else:
            found.append([number, number])
    return " ".join(str(a) if a == b else "%d-%d" % (a, b) for a, b in found)


def main():
    folder, llvm = sys.argv[1:3]
    folder = os.path.join(folder, "tests/platform/mac/coverage")
    with tempfile.TemporaryDirectory(prefix="tarqo-counts-") as scratch:
        passed = run_all(folder, scratch)
        files = lines_of(llvm, folder, scratch)
    absent = {name for name in os.listdir(SOURCES) if name.endswith((".cpp", ".mm"))}
    absent -= {os.path.basename(path) for path in files}
    everything = ran = 0
    for path, lines in sorted(files.items()):
        missed = [number for number, count in lines.items() if count == 0]
        everything += len(lines)
        ran += len(lines) - len(missed)
        print("%-28s %4d of %4d lines%s" % (os.path.basename(path), len(lines) - len(missed), len(lines),
                                            "; not " + ranges(missed) if missed else ""))
    for name in sorted(absent):
        print("%s: no line was counted" % name)
    percent = 100.0 * ran / max(1, everything)
    print("platform/mac: %.1f %% of %d lines" % (percent, everything))
    if not passed or absent or percent < ENOUGH_PERCENT:
        sys.exit("mac-coverage: failed (at least %.0f %% are wanted)" % ENOUGH_PERCENT)


if __name__ == "__main__":
    main()
