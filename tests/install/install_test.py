"""What `cmake --install` puts where, and that it works from there."""

import glob
import json
import os
import re
import shutil
import subprocess
import tempfile
import unittest

CMAKE = os.environ["TARQO_CMAKE"]
BUILD = os.environ["TARQO_BUILD"]
SOURCE = os.environ["TARQO_SOURCE"]


def run(command, **options):
    return subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                          encoding="utf-8", check=False, timeout=60, **options)


def install(prefix, destdir=None):
    environment = {name: value for name, value in os.environ.items() if name != "DESTDIR"}
    if destdir:
        environment["DESTDIR"] = destdir
    # Every rule is in this component. Naming it keeps the list of what a user has installed from
    # this build, which may be root's: a component's own list is written instead.
    done = run([CMAKE, "--install", BUILD, "--prefix", prefix, "--component", "Unspecified"],
               env=environment)
    if done.returncode != 0:
        raise AssertionError(done.stdout)


def files_below(folder):
    return sorted(os.path.relpath(os.path.join(parent, name), folder)
                  for parent, _, names in os.walk(folder) for name in names)


def read(*path):
    with open(os.path.join(*path), encoding="utf-8") as file:
        return file.read()


class Installed(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        cls.prefix = os.path.join(cls.folder.name, "prefix with space")
        install(cls.prefix)
        cls.helper = os.path.join(cls.prefix, "bin", "tarqo-ax")
        cls.documents = os.path.join(cls.prefix, "share", "doc", "tarqo-ax")

    @classmethod
    def tearDownClass(cls):
        cls.folder.cleanup()


class Install(Installed):
    def test_puts_the_helper_its_page_and_its_documents_and_nothing_else(self):
        expected = ["bin/tarqo-ax", "share/man/man1/tarqo-ax.1"]
        documents = ["README.md", "CHANGELOG.md", "CONTRIBUTING.md", "script/lib/tarqo_client.py"]
        documents += [name for name in ("LICENSE",) if os.path.exists(os.path.join(SOURCE, name))]
        documents += [os.path.relpath(path, SOURCE) for kind in ("md", "svg", "png")
                      for path in glob.glob(os.path.join(SOURCE, "docs", "**", "*." + kind),
                                            recursive=True)]
        expected += ["share/doc/tarqo-ax/" + name for name in documents]
        self.assertEqual(files_below(self.prefix), sorted(expected))

    def test_honours_destdir(self):
        with tempfile.TemporaryDirectory() as staged:
            install("/usr", destdir=staged)
            self.assertEqual(files_below(os.path.join(staged, "usr")), files_below(self.prefix))
            self.assertEqual(os.listdir(staged), ["usr"])

    def test_the_installed_helper_prints_its_version(self):
        done = run([self.helper, "--version"])
        self.assertEqual(done.returncode, 0)
        self.assertRegex(done.stdout, r"\Atarqo-ax \d+\.\d+\.\d+\n\Z")

    def test_the_installed_helper_serves_a_request_without_a_desktop(self):
        done = run([self.helper], input='{"id":1,"method":"host"}\n', env={})
        self.assertEqual(done.returncode, 0, done.stdout)
        response = json.loads(done.stdout)
        self.assertEqual(response["id"], 1)
        self.assertIn("known", response["result"])

    def test_the_links_of_the_installed_readme_lead_somewhere(self):
        links = re.findall(r"\]\(([^)#:]+)\)", read(self.documents, "README.md"))
        self.assertTrue(links)
        for link in links:
            self.assertTrue(os.path.exists(os.path.join(self.documents, link)), link)


class ManualPage(Installed):
    """The installed page: tarqo-ax(1)."""

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.path = os.path.join(cls.prefix, "share", "man", "man1", "tarqo-ax.1")
        cls.text = read(cls.path)

    def test_names_the_version_of_the_helper(self):
        version = run([self.helper, "--version"]).stdout.strip()
        self.assertIn('"%s"' % version.replace("-", r"\-"), self.text.splitlines()[0])

    def test_lists_every_method_that_the_server_knows(self):
        server = "".join(read(path) for path in glob.glob(os.path.join(SOURCE, "server", "*.cpp")))
        known = re.findall(r'Row\{"(\w+)"', server) + re.findall(r'kClose = "(\w+)"', server)
        self.assertGreater(len(known), 1)
        section = self.text.split(".SS Methods\n")[1].split(".SS ")[0]
        listed = re.findall(r"^\.TP\n\.B (\w+)$", section, re.MULTILINE)
        self.assertEqual(sorted(listed), sorted(known))

    def test_has_every_section_that_a_reader_looks_for(self):
        sections = re.findall(r"^\.SH (.+)$", self.text, re.MULTILINE)
        self.assertEqual(sections, ["NAME", "SYNOPSIS", "DESCRIPTION", "OPTIONS", "EXIT STATUS",
                                    "ENVIRONMENT", "FILES", "EXAMPLES", "SEE ALSO"])

    def test_is_formatted_without_a_warning(self):
        if not shutil.which("groff"):
            self.skipTest("groff is not installed")
        done = run(["groff", "-man", "-ww", "-z", self.path])
        self.assertEqual((done.returncode, done.stdout), (0, ""))

    def test_its_examples_can_be_copied(self):
        """A plain quotation mark, minus, caret, tilde or accent is shown as another character on
        most systems; "\\(aq" and the like are shown as written."""
        blocks = re.findall(r"^\.EX\n(.*?)^\.EE$", self.text, re.MULTILINE | re.DOTALL)
        self.assertTrue(blocks)
        for block in blocks:
            self.assertEqual(re.findall(r"(?<!\\)[-'^~`].*", block), [])


if __name__ == "__main__":
    unittest.main()
