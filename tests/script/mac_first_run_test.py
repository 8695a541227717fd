"""What script/mac-first-run does on a Mac: here on copies of it, with small programs in the place of the
Mac's own commands and of the helper."""

import os
import shutil
import subprocess
import tempfile
import unittest

ROOT = os.environ["TARQO_ROOT"]

# Builds a helper that answers from files, and the application that shows whether there are tests.
CMAKE = '''#!/bin/sh
echo "cmake $*" >> calls
case "$*" in
  *--build*) test ! -e no-build || exit 2
    mkdir -p build/release && cp helper build/release/tarqo-ax ;;
  *TARQO_TESTS=ON*) mkdir -p build/release/tests/apps/TarqoContract.app ;;
esac
'''
HELPER = '''#!/bin/sh
read -r request
case "$request" in
  *host*) echo '{"id":1,"result":{"known":true,"name":"Terminal","pid":7}}' ;;
  *preflight*) cat preflight ;;
esac
'''
GRANTED = '{"id":1,"result":{"accessibility":true,"screenCapture":true}}\n'
SAYS = '#!/bin/sh\necho "%s $*" >> calls\necho "this is %s"\n'


class FirstRun(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.mkdtemp(prefix="tarqo-first-run-")
        self.addCleanup(shutil.rmtree, self.folder)
        for name in ("script/lib", "bin"):
            os.makedirs(os.path.join(self.folder, name))
        for name in ("script/mac-first-run", "script/lib/usage.sh"):
            shutil.copy(os.path.join(ROOT, name), os.path.join(self.folder, name))
        for name in ("sw_vers", "xcrun", "clang++", "codesign", "otool", "xcode-select", "brew", "ninja",
                     "python3", "git"):
            self.write("bin/" + name, SAYS % (name, name))
        self.write("bin/uname", '#!/bin/sh\ntest "$1" = -s && echo Darwin || echo arm64\n')
        self.write("bin/cmake", CMAKE)
        self.write("helper", HELPER)
        self.write("preflight", GRANTED)
        for name in ("setup", "mac-contract"):
            self.write("script/" + name, SAYS % (name, name))

    def write(self, name, text):
        path = os.path.join(self.folder, name)
        with open(path, "w", encoding="utf-8") as file:
            file.write(text)
        os.chmod(path, 0o755)

    def read(self, name):
        with open(os.path.join(self.folder, name), encoding="utf-8") as file:
            return file.read()

    def run_it(self):
        """Its status and all it said; nobody is there to be asked."""
        # Of this system's own commands none that a test leaves out on purpose.
        path = os.path.join(self.folder, "bin")
        tools = os.path.join(self.folder, "tools")
        os.makedirs(tools, exist_ok=True)
        for name in ("sh", "bash", "dirname", "mkdir", "tee", "sed", "awk", "date", "cp", "cat"):
            if not os.path.exists(os.path.join(tools, name)):
                os.symlink(shutil.which(name), os.path.join(tools, name))
        done = subprocess.run([os.path.join(self.folder, "script/mac-first-run")],
                              env={"PATH": path + ":" + tools, "LC_ALL": "C.UTF-8"},
                              stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT, text=True, check=False)
        return done.returncode, done.stdout

    def report(self):
        return self.read("build/mac-first-run/report.txt")

    def test_builds_signs_and_runs_contract_and_demonstration(self):
        status, said = self.run_it()
        self.assertEqual(status, 0, said)
        calls = self.read("calls")
        self.assertLess(calls.index("--build"), calls.index("codesign --force --sign -"))
        self.assertIn("mac-contract", calls)
        self.assertIn("python3 script/lib/demo.py build/release/tarqo-ax", calls)
        for part in ("this is sw_vers", "Both grants are there.", "== contract: status 0",
                     "== demonstration: status 0", "(nobody was asked)", "0 steps failed."):
            self.assertIn(part, self.report())

    def test_builds_the_helper_alone_where_there_is_no_homebrew(self):
        os.remove(os.path.join(self.folder, "bin/brew"))
        os.remove(os.path.join(self.folder, "bin/ninja"))
        status, said = self.run_it()
        self.assertEqual(status, 0, said)
        self.assertIn("-DTARQO_TESTS=OFF", self.read("calls"))
        self.assertIn("contract: left out", self.report())

    def test_quotes_the_dialog_of_the_grant_that_is_missing(self):
        for code, words in (("ax_not_trusted", "“Terminal” would like to control this computer"),
                            ("screen_capture_denied", "“Terminal” would like to record this computer")):
            self.write("preflight", '{"error":{"code":"%s"},"id":1}\n' % code)
            status, said = self.run_it()
            self.assertEqual(status, 1)
            self.assertIn(words, said)
            self.assertIn("STOPPED: a grant is missing", self.report())
            self.assertNotIn("mac-contract", self.read("calls"))

    def test_says_what_failed_and_goes_on(self):
        self.write("script/mac-contract", "#!/bin/sh\necho one test failed; exit 3\n")
        status, _ = self.run_it()
        self.assertEqual(status, 1)
        for part in ("one test failed", "== contract: status 3", "== demonstration: status 0",
                     "1 steps failed."):
            self.assertIn(part, self.report())

    def test_stops_when_it_does_not_build(self):
        self.write("no-build", "")
        status, _ = self.run_it()
        self.assertEqual(status, 1)
        self.assertIn("STOPPED: it does not build", self.report())

    def test_is_for_a_mac(self):
        self.write("bin/uname", "#!/bin/sh\necho Linux\n")
        status, said = self.run_it()
        self.assertEqual(status, 1)
        self.assertIn("this is no Mac", said)


if __name__ == "__main__":
    unittest.main()
