"""What script/cross-check has built, with the commands it was built by, and how clang and the linker's
tools look at it."""

import concurrent.futures
import json
import os
import re
import shlex
import subprocess
import sys

ROOT = os.getcwd()
BACKEND = "platform/mac/"
SDK = os.path.join(ROOT, BACKEND, "sdk")
PROGRAM = "tarqo-ax"
TEST_PROGRAMS = ("tests/contract/contract_tests_mac",
                 "tests/apps/TarqoContract.app/Contents/MacOS/TarqoContract")


def source_text(path):
    with open(os.path.join(ROOT, path), encoding="utf-8") as file:
        return file.read()


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
