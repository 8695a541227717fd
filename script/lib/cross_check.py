"""The second half of script/cross-check: the analyzer, the report of imports, and the proof that the
check notices what it is for."""

import concurrent.futures
import json
import os
import re
import shlex
import shutil
import subprocess
import sys
import tempfile

ROOT = os.getcwd()
BACKEND = "platform/mac/"
SDK = os.path.join(ROOT, BACKEND, "sdk")
PROGRAM = "tarqo-ax"
TEST_PROGRAMS = ("tests/contract/contract_tests_mac",
                 "tests/apps/TarqoContract.app/Contents/MacOS/TarqoContract")


def run(command, folder=None):
    return subprocess.run(command, cwd=folder, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                          text=True, check=False)


class Build:
    """One architecture's build folder, with the very commands that it was built by."""

    def __init__(self, folder, arch):
        self.arch = arch
        self.folder = os.path.join(folder, arch)
        entries = json.loads(run(["ninja", "-t", "compdb"], self.folder).stdout)
        self.commands = {}
        for entry in entries:
            output = os.path.join(self.folder, entry.get("output", ""))
            source = os.path.relpath(os.path.join(self.folder, entry["file"]), ROOT)
            if " -c " in entry["command"] and os.path.exists(output):
                self.commands[source] = shlex.split(entry["command"])

    def other_files(self):
        """How many files are not the backend's; several are compiled as one, which includes them."""
        count = 0
        for source in set(self.commands) - set(self.backend_files()):
            with open(os.path.join(ROOT, source), encoding="utf-8") as file:
                count += max(1, len(re.findall(r'^#include ".*\.cpp"', file.read(), re.MULTILINE)))
        return count

    def backend_files(self):
        return sorted(f for f in self.commands if f.startswith(BACKEND))

    def compile(self, source, text, output, swap=None):
        """Compiles a file's own command over another text; `swap` replaces words of the command."""
        written = output + os.path.splitext(source)[1]
        with open(written, "w", encoding="utf-8") as file:
            file.write(text)
        command = [(swap or {}).get(word, word) for word in self.commands[source]]
        command[command.index("-c") + 1] = written
        command[command.index("-o") + 1] = output
        return run(command, self.folder)

    def link_command(self):
        commands = run(["ninja", "-t", "commands", PROGRAM], self.folder).stdout.splitlines()
        return next(line for line in reversed(commands) if " -o %s " % PROGRAM in line)


def resource_flags(zig):
    """What Apple's clang finds by itself: Darwin's C headers, and a C++ library of its version."""
    clang = os.path.dirname(run(["clang", "-print-resource-dir"]).stdout.strip())
    libraries = os.path.join(clang, "..", "..", "include", "c++", "v1")
    if not os.path.isdir(libraries):
        sys.exit("There is no libc++ for clang; run script/setup cross")
    headers = os.path.join(os.path.dirname(zig), "lib", "libc", "include")
    flags = ["-nostdinc++", "-nostdlibinc", "-isystem", libraries]
    for name in ("any-macos.13-any", "aarch64-macos.13-none", "any-macos-any"):
        flags += ["-isystem", os.path.join(headers, name)]
    return flags


def clang_flags(zig, source):
    """For the newest system, so that what was taken out since is an error."""
    return resource_flags(zig) + [
        "-target", "arm64-apple-macos26", "-std=c++20", "-fobjc-arc", "-fblocks", "-I", ROOT,
        "-isystem", os.path.join(SDK, "include"), "-D__MAC_OS_X_VERSION_MAX_ALLOWED=260000",
        "-Werror", "-x", "objective-c++" if source.endswith(".mm") else "c++"]


def each(sources, look):
    """What `look` says of every file, as (file, complaint); empty when it has none."""
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        return list(pool.map(look, sources))


def analyze(zig, sources, texts=None):
    """Lets clang's analyzer look for leaked and over-released references."""
    flags = ["--analyze", "-Xclang", "-analyzer-output=text", "-Xclang", "-analyzer-werror",
             "-o", os.devnull]
    for option in ("core", "osx", "cplusplus", "deadcode", "nullability"):
        flags += ["-Xclang", "-analyzer-checker=" + option]

    def look(source):
        path = (texts or {}).get(source, os.path.join(ROOT, source))
        done = run(["clang++"] + clang_flags(zig, source) + flags + [path])
        return source, done.stdout if done.returncode != 0 else ""

    return each(sources, look)


def tidy(zig, sources):
    """The project's own rules, but for those of the analyzer, which has looked already."""
    def look(source):
        done = run(["clang-tidy", "--quiet", "--checks=-clang-analyzer-*", source, "--"]
                   + clang_flags(zig, source))
        return source, done.stdout if re.search(r"(warning|error):", done.stdout) else ""

    return each(sources, look)


GIVES = re.compile(r"\b(?:AX|CF|CG)\w*(?:Create|Copy)\w*\(")
LENDS = re.compile(r"\badopt\(\s*(?:AX|CF|CG)\w*Get\w*\(")


def references_not_held(text):
    """The analyzer does not see through the holder of references, nor references handed out through
    an argument; so each call that gives one must stand directly in `adopt(...)` or fill a holder's
    `out()`, and none that lends one may stand in `adopt`. Yields the calls that break this."""
    text = re.sub(r"//[^\n]*", "", text)
    for found in GIVES.finditer(text):
        depth, end = 1, found.end()
        while depth > 0 and end < len(text):
            depth += {"(": 1, ")": -1}.get(text[end], 0)
            end += 1
        if not (text[:found.start()].rstrip().endswith("adopt(") or ".out()" in text[found.end():end]):
            yield text[found.start():end]
    for found in LENDS.finditer(text):
        yield found.group(0)


def imports(llvm, program):
    """Symbols by the library they come from."""
    found = {}
    listing = run([os.path.join(llvm, "llvm-nm"), "-m", "-u", program]).stdout
    for symbol, library in re.findall(r"external (\S+) .*\(from (\S+)\)", listing):
        found.setdefault(library, set()).add(symbol)
    return found


def declared(library):
    """The symbols of a library's stub; none for those that zig brings along."""
    for path in ("Frameworks/%s.framework/%s.tbd" % (library, library), "lib/%s.tbd" % library):
        full = os.path.join(SDK, path)
        if os.path.exists(full):
            with open(full, encoding="utf-8") as file:
                text = file.read()
            symbols = set()
            for kind, names in re.findall(r"(symbols|objc-classes):\s*\[([^\]]*)\]", text):
                for name in names.replace("'", "").replace(",", " ").split():
                    symbols.add(name if kind == "symbols" else "_OBJC_CLASS_$_" + name)
            return symbols
    return None


def report(llvm, builds):
    """Prints what was compiled and imported; fails on a stub with symbols that nobody imports."""
    for build in builds:
        print("%s: %d files of platform/mac and %d others"
              % (build.arch, len(build.backend_files()), build.other_files()))
    by_arch = [imports(llvm, os.path.join(b.folder, PROGRAM)) for b in builds]
    used = {}
    for found in by_arch + [imports(llvm, os.path.join(builds[0].folder, other))
                            for other in TEST_PROGRAMS]:
        for library, symbols in found.items():
            used.setdefault(library, set()).update(symbols)
    failed = False
    for library in sorted(set().union(*by_arch)):
        symbols = set().union(*(found.get(library, set()) for found in by_arch))
        names = sorted(s.replace("_OBJC_CLASS_$_", "", 1) if "_OBJC_CLASS_$_" in s else s[1:]
                       for s in symbols)
        stub = declared(library)
        print("\n%s, %d symbols%s" % (library, len(names), "" if stub is not None else
                                      " (of the compiler's own list)"))
        if stub is not None:
            print("  " + " ".join(names))
            if library == "libobjc":  # Which of these are called is the compiler's choice.
                continue
            for extra in sorted(stub - used[library]):
                print("  %s is declared in the stub of %s and used by nothing" % (extra, library))
                failed = True
    return not failed


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

    @staticmethod
    def text(source):
        with open(os.path.join(ROOT, source), encoding="utf-8") as file:
            return file.read()

    def spoilt(self, source, old, new):
        text = self.text(source)
        if old not in text:
            sys.exit("%s no longer holds %r; choose something else to spoil" % (source, old))
        return text.replace(old, new)

    def unspoilt(self):
        """What passes must pass here too, or else every failure below proves nothing."""
        source = BACKEND + "mac_workspace.mm"
        done = self._build.compile(source, self.text(source), self.path("whole.o"))
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


def main():
    folder, llvm, zig = sys.argv[1:4]
    builds = [Build(folder, arch) for arch in ("arm64", "x86_64")]
    passed = report(llvm, builds)

    files = builds[0].backend_files()
    looked = analyze(zig, files) + tidy(zig, files)
    complaints = [(source, said) for source, said in looked if said]
    for source in files:
        complaints += [(source, "a reference that nobody holds: " + call)
                       for call in references_not_held(Proof.text(source))]
    for source, said in complaints:
        print("%s:\n%s" % (source, said))
    print("\nAnalyzed %d files of platform/mac: %d with complaints" % (len(files), len(complaints)))

    old = "-D__MAC_OS_X_VERSION_MAX_ALLOWED=130000"
    print("\nSpoilt on purpose:")
    with tempfile.TemporaryDirectory(prefix="spoilt-", dir=folder) as scratch:
        for source in files:
            text = Proof.text(source)
            if "__MAC_OS_X_VERSION_MAX_ALLOWED" in text:
                newest = next(w for w in builds[0].commands[source] if "MAX_ALLOWED" in w)
                done = builds[0].compile(source, text, os.path.join(scratch, "old.o"), {newest: old})
                if done.returncode != 0:
                    print("%s does not compile with the SDK of macOS 13:\n%s" % (source, done.stdout))
                    passed = False
        proof = Proof(builds[0], zig, scratch)
        proof.all()
    if not passed or complaints or not proof.passed:
        sys.exit("cross-check: failed")
    print("cross-check: passed")


if __name__ == "__main__":
    main()
