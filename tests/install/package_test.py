"""What goes into the packages besides the programs: the manual page of the server, the formula, the
control file. `script/package check` proves the Debian package itself, in a clean root."""

import glob
import os
import re
import shutil
import subprocess
import unittest

SOURCE = os.environ["TARQO_SOURCE"]


def read(*path):
    with open(os.path.join(SOURCE, *path), encoding="utf-8") as file:
        return file.read()


def run(*command, **options):
    return subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                          check=False, timeout=60, **options)


class ManualPage(unittest.TestCase):
    """tarqo-mcp(1)."""

    def setUp(self):
        self.text = read("docs", "tarqo-mcp.1")

    def test_names_the_version_of_the_project(self):
        version = re.search(r"^project\(.* VERSION ([\d.]+)", read("CMakeLists.txt"), re.MULTILINE)
        self.assertIn('"tarqo\\-mcp %s"' % version.group(1), self.text.splitlines()[0])

    def test_tells_every_option_that_the_server_takes(self):
        taken = re.findall(r"^ +'?([a-z-]+)'?: \{ type: ",
                           read("mcp", "src", "options.ts"), re.MULTILINE)
        self.assertGreater(len(taken), 5)
        told = self.text.replace("\\-", "-")
        self.assertEqual([name for name in taken if "--" + name not in told], [])

    def test_is_formatted_without_a_warning(self):
        if not shutil.which("groff"):
            self.skipTest("groff is not installed")
        done = run("groff", "-man", "-ww", "-z", "-Tutf8", os.path.join(SOURCE, "docs/tarqo-mcp.1"))
        self.assertEqual((done.returncode, done.stdout), (0, ""))


class Packaging(unittest.TestCase):
    def test_the_formula_is_ruby(self):
        if not shutil.which("ruby"):
            self.skipTest("ruby is not installed")
        done = run("ruby", "-wc", os.path.join(SOURCE, "packaging/homebrew/tarqo-mcp.rb.in"))
        self.assertEqual((done.returncode, done.stdout), (0, "Syntax OK\n"))

    def test_the_formula_installs_the_pages_that_are_there(self):
        pages = re.findall(r'man1\.install "(.*)"', read("packaging/homebrew/tarqo-mcp.rb.in"))
        self.assertEqual([os.path.exists(os.path.join(SOURCE, page)) for page in pages], [True])

    def test_the_scripts_are_shell(self):
        scripts = ["script/package", "script/lib/package_deb.sh", "script/lib/check_deb.sh"]
        for name in scripts:
            done = run("bash", "-n", os.path.join(SOURCE, name))
            self.assertEqual((done.returncode, done.stdout), (0, ""), name)

    def test_an_unknown_argument_is_refused(self):
        done = run(os.path.join(SOURCE, "script/package"), "everything")
        self.assertEqual(done.returncode, 2)
        self.assertIn("unknown argument everything", done.stdout)

    def test_no_lock_file_names_where_packages_were_fetched(self):
        for path in glob.glob(os.path.join(SOURCE, "mcp", "package-lock.json")):
            self.assertNotIn('"resolved"', read(path))


if __name__ == "__main__":
    unittest.main()
