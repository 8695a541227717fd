"""Runs the tests of a program in several processes at a time, which googletest deals them out to: for
tests that wait far more than they work.

    in_shards.py SHARDS PROGRAM [ARGUMENT...]

Prints what those that failed have said, and fails when any did, or when none ran a test."""

import os
import re
import subprocess
import sys


def main():
    shards, command = int(sys.argv[1]), sys.argv[2:]
    running = []
    for index in range(shards):
        environment = dict(os.environ, GTEST_TOTAL_SHARDS=str(shards), GTEST_SHARD_INDEX=str(index))
        running.append(subprocess.Popen(command, env=environment, stdout=subprocess.PIPE,
                                        stderr=subprocess.STDOUT, text=True, errors="replace"))
    passed, failed = 0, False
    for index, process in enumerate(running):
        said, _ = process.communicate()
        ended = re.search(r"\[  PASSED  \] (\d+) test", said)
        passed += int(ended.group(1)) if ended else 0
        if process.returncode != 0:
            failed = True
            print("Shard %d of %d ended with %d:\n%s" % (index, shards, process.returncode, said))
    print("%d tests passed in %d processes" % (passed, shards))
    return 1 if failed or passed == 0 else 0


if __name__ == "__main__":
    sys.exit(main())
