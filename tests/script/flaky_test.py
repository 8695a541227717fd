"""What script/test does with a test that fails at first: its own functions, over a small ctest
project that is made here."""

import os
import subprocess
import tempfile
import unittest

STEPS = os.path.join(os.environ["TARQO_ROOT"], "script", "lib", "steps.sh")

# As script/test calls them; `step` runs the tests, `finish` prints the last lines.
RUN = '. "$0"; step "the tests" everyTest "$@"; finish'

ALWAYS_PASSES = 'add_test(always_passes true)\n'
ALWAYS_FAILS = 'add_test(always_fails false)\n'
# Has no program to run: ctest calls that "Not Run", and it is a failure too.
CANNOT_RUN = 'add_test(cannot_run ./no-such-program)\n'


def fails_first(name):
    mark = "ran." + name.encode().hex()
    return ('add_test("%s" sh -c "test -e %s || { touch %s; exit 1; }")\n' % (name, mark, mark))


SKIPS_SECOND = ('add_test(skips_second sh -c "test -e ran && exit 77; touch ran; exit 1")\n'
                'set_tests_properties(skips_second PROPERTIES SKIP_RETURN_CODE 77)\n')


class Run:
    """A run over a project of these tests: its status, all its lines, and those after the step."""

    def __init__(self, *tests):
        with tempfile.TemporaryDirectory() as folder:
            with open(os.path.join(folder, "CTestTestfile.cmake"), "w", encoding="utf-8") as file:
                file.write("".join(tests))
            self.run(folder, "-j", "2")

    def run(self, folder, *options):
        done = subprocess.run(["bash", "-uo", "pipefail", "-c", RUN, STEPS, folder, *options],
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                              check=False)
        self.status = done.returncode
        self.lines = done.stdout.splitlines()
        end = next(i for i, line in enumerate(self.lines) if line.startswith("== the tests: "))
        self.last = self.lines[end + 1:]


class RunOfWhatIsNotThere(Run):
    """After a run that left a list of failed tests, one in which ctest finds no test."""

    def run(self, folder, *options):
        super().run(folder, *options)
        super().run(folder, "-R", "no_such_test")


class Flaky(unittest.TestCase):
    def test_a_clean_run_says_so_and_nothing_else(self):
        run = Run(ALWAYS_PASSES)
        self.assertEqual(run.status, 0)
        self.assertRegex("\n".join(run.last), r"\AAll steps passed in \d+ s\.\Z")
        self.assertNotIn("FLAKY", "\n".join(run.lines))

    def test_a_test_that_passes_only_when_repeated_is_named_in_the_last_line(self):
        run = Run(ALWAYS_PASSES, fails_first("fails_first"))
        self.assertEqual(run.status, 0)
        self.assertRegex("\n".join(run.last),
                         r"\AAll steps passed in \d+ s; 1 test was FLAKY: fails_first\Z")
        self.assertIn("FLAKY, failed and then passed: fails_first", run.lines)

    def test_several_flaky_tests_are_counted_and_all_named(self):
        run = Run(fails_first("b.<&>"), ALWAYS_PASSES, fails_first("a/1"))
        self.assertEqual(run.status, 0)
        self.assertRegex("\n".join(run.last),
                         r"\AAll steps passed in \d+ s; 2 tests were FLAKY: a/1 b\.<&>\Z")

    def test_a_test_that_fails_twice_fails_the_run(self):
        run = Run(ALWAYS_PASSES, ALWAYS_FAILS)
        self.assertEqual(run.status, 1)
        self.assertEqual(run.last, ["Failed: always_fails", "Failed: the tests"])

    def test_a_failed_run_names_its_flaky_tests_too(self):
        run = Run(ALWAYS_PASSES, fails_first("fails_first"), ALWAYS_FAILS, CANNOT_RUN)
        self.assertEqual(run.status, 1)
        self.assertEqual(run.last, ["Failed: always_fails", "Failed: cannot_run",
                                    "Failed: the tests", "1 test was FLAKY: fails_first"])

    def test_what_is_skipped_when_repeated_has_not_passed(self):
        run = Run(SKIPS_SECOND)
        self.assertEqual(run.status, 1)
        self.assertEqual(run.last, ["Failed: skips_second", "Failed: the tests"])

    def test_of_two_tests_with_one_name_none_hides_the_other(self):
        for tests in ((fails_first("same"), "add_test(same false)\n"),
                      ("add_test(same false)\n", fails_first("same"))):
            run = Run(*tests)
            self.assertEqual(run.status, 1)
            self.assertEqual(run.last, ["Failed: same", "Failed: the tests"])

    def test_a_project_without_tests_fails(self):
        run = Run("")
        self.assertEqual(run.status, 1)
        self.assertEqual(run.last, ["Failed: the tests"])

    def test_what_failed_in_an_earlier_run_does_not_stand_for_this_one(self):
        run = RunOfWhatIsNotThere(fails_first("fails_first"))
        self.assertEqual(run.status, 1)
        self.assertEqual(run.last, ["Failed: the tests"])


if __name__ == "__main__":
    unittest.main()
