"""Proves that script/cross-check notices what it is for, by spoiling what it checks."""

import os
import shutil
import subprocess
import sys

from cross_build import BACKEND, PROGRAM, SDK, analyze, run, source_text
from cross_rules import TABLE, references_not_held, undocumented


class Proof:
    """Spoils the sources in a scratch folder, one way at a time."""

    def __init__(self, build, zig, folder):
        self._build = build
        self._zig = zig
        self._folder = folder
        self.passed = True

    def expect(self, what, done, *words):
        """The spoilt step must have failed, with these words in what it says."""
        noticed = done.returncode != 0 and all(word in done.stdout for word in words)
        print("  %-58s %s" % (what, "noticed" if noticed else "NOT NOTICED"))
        if not noticed:
            print(done.stdout)
            self.passed = False

    def path(self, name):
        return os.path.join(self._folder, name)

    def spoilt(self, source, old, new):
        text = source_text(source)
        if old not in text:
            sys.exit("%s no longer holds %r; choose something else to spoil" % (source, old))
        return text.replace(old, new)

    def unspoilt(self):
        """What passes must pass here too, or else every failure below proves nothing."""
        source = BACKEND + "mac_workspace.mm"
        done = self._build.compile(source, source_text(source), self.path("whole.o"))
        again = run(["sh", "-c", self.relinked({}, "whole")], self._build.folder)
        if done.returncode != 0 or again.returncode != 0:
            sys.exit("The sources do not compile in the scratch folder:\n%s%s"
                     % (done.stdout, again.stdout))

    def relinked(self, words, name):
        command = self._build.link_command().replace("-o " + PROGRAM, "-o " + self.path(name))
        for old, new in words.items():
            if old not in command:
                sys.exit("The link command no longer holds %r" % old)
            command = command.replace(old, new)
        return command

    def wrong_selector(self):
        source = BACKEND + "mac_workspace.mm"
        text = self.spoilt(source, "runningApplicationWithProcessIdentifier:",
                           "runningApplicationForProcessIdentifier:")
        self.expect("a selector that does not exist",
                    self._build.compile(source, text, self.path("selector.o")),
                    "runningApplicationForProcessIdentifier")

    def misspelt_function(self):
        source = BACKEND + "mac_permissions.cpp"
        text = self.spoilt(source, "CGPreflightScreenCaptureAccess()", "CGPreflightCaptureAccess()")
        self.expect("a function that is not declared",
                    self._build.compile(source, text, self.path("function.o")),
                    "CGPreflightCaptureAccess")

    def misspelt_declaration(self):
        """Declared by the misspelt name too, it compiles: then the stub does not have it."""
        source = BACKEND + "mac_permissions.cpp"
        include = self.path("include")
        shutil.copytree(os.path.join(SDK, "include"), include)
        header = os.path.join(include, "CoreGraphics", "CoreGraphics.h")
        with open(header, encoding="utf-8") as file:
            text = file.read()
        with open(header, "w", encoding="utf-8") as file:
            file.write(text.replace("CGPreflightScreenCaptureAccess", "CGPreflightCaptureAccess"))
        text = self.spoilt(source, "CGPreflightScreenCaptureAccess()", "CGPreflightCaptureAccess()")
        own = next(word for word in self._build.commands[source]
                   if word.endswith("platform/mac/sdk/include"))
        done = self._build.compile(source, text, self.path("declaration.o"), {own: include})
        if done.returncode != 0:
            sys.exit("The misspelt declaration does not compile:\n" + done.stdout)
        command = self._build.link_command().replace("-o " + PROGRAM, "%s -o %s" % (
            self.path("declaration.o"), self.path("declaration")))
        self.expect("a function that no framework has",
                    run(["sh", "-c", command], self._build.folder), "_CGPreflightCaptureAccess")

    def missing_framework(self):
        self.expect("a framework that is not linked",
                    run(["sh", "-c", self.relinked({"-framework Vision": ""}, "framework")],
                        self._build.folder), "VNRecognizeTextRequest")

    def wrong_argument(self):
        source = BACKEND + "mac_workspace.mm"
        text = self.spoilt(source, "activateWithOptions:kNoOptions", 'activateWithOptions:@"none"')
        self.expect("an argument of another type",
                    self._build.compile(source, text, self.path("argument.o")), "NSString")

    def unguarded_call(self):
        source = BACKEND + "mac_screen_capture.mm"
        text = self.spoilt(source, "@available(macOS 14.0, *)", "true")
        self.expect("a call that the oldest system does not have",
                    self._build.compile(source, text, self.path("unguarded.o")), "14.0")

    def analyzed(self, what, source, old, new, word):
        path = self.path(what.replace(" ", "-") + os.path.splitext(source)[1])
        with open(path, "w", encoding="utf-8") as file:
            file.write(self.spoilt(source, old, new))
        (_, said), = analyze(self._zig, [source], {source: path})
        self.expect(what, subprocess.CompletedProcess([], 1 if said else 0, said), word)

    def references(self):
        self.analyzed("a reference that is not released", BACKEND + "mac_images.cpp",
                      "  const CGImageRef source = cgImageOf(image);",
                      "  const CGImageRef source = cgImageOf(image);\n"
                      "  const CFMutableDataRef more = CFDataCreateMutable(nullptr, kNoLimit);\n"
                      "  static_cast<void>(CFDataGetLength(more));", "leak")
        self.analyzed("a lent reference that is released", BACKEND + "mac_window_server.cpp",
                      "  std::vector<WindowInfo> windows;",
                      "  std::vector<WindowInfo> windows;\n"
                      "  CFRelease(CFArrayGetValueAtIndex(list.get(), 0));", "Incorrect decrement")

    def holders(self):
        source = BACKEND + "mac_images.cpp"
        for what, new in (("a holder that retains what it was given", "retain(CFDataCreateMutable("),
                          ("a holder that adopts what it was lent", "adopt(CFDataGetMutable(")):
            held = list(references_not_held(self.spoilt(source, "adopt(CFDataCreateMutable(", new)))
            self.expect(what, subprocess.CompletedProcess([], len(held), "".join(held)))

    def table(self, used):
        text = source_text(TABLE)
        for what, spoilt in (("an imported function that the table does not name",
                              text.replace("`CGEventPost`", "`post`")),
                             ("a call that the table seeks in the wrong file",
                              text.replace("`mac_images.cpp`", "`mac_clock.mm`"))):
            said = list(undocumented(used, spoilt))
            self.expect(what, subprocess.CompletedProcess([], len(said), "\n".join(said)))

    def all(self):
        self.unspoilt()
        self.wrong_selector()
        self.wrong_argument()
        self.misspelt_function()
        self.misspelt_declaration()
        self.missing_framework()
        self.unguarded_call()
        self.references()
        self.holders()
