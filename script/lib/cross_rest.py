"""What a Mac compiles besides the helper and its contract: the tests on the simulated desktop, that
desktop as a program, the fuzzers. They call none of Apple's frameworks and differ in nothing between
the architectures, so they are only checked, for one of them, and not made into code."""

import json
import os
import re
import shlex

from cross_build import ROOT, each, run


class Rest:
    """What the build folder of an architecture knows how to compile and has not compiled."""

    def __init__(self, build, zig):
        self._folder = build.folder
        self._zig = zig
        self._words = {}
        for entry in json.loads(run(["ninja", "-t", "compdb"], self._folder).stdout):
            output = os.path.join(self._folder, entry.get("output", ""))
            if (" -c " in entry["command"] and "cross_gtest" not in output
                    and not os.path.exists(output)):
                source = os.path.join(self._folder, entry["file"])
                self._words[source] = self._own_words(shlex.split(entry["command"]))

    @staticmethod
    def _own_words(words):
        """Of a command of `zig c++` what is not about the target and the object file."""
        words = words[words.index("-target") + 2:]
        for option in ("-MT", "-MF", "-o", "-c"):
            at = words.index(option)
            del words[at:at + 2]
        return [word for word in words if word != "-MD" and not word.startswith("-mmacosx")]

    def _check(self, source, words):
        """As `zig c++` calls the clang in it, but that one makes no code. The headers of its C++
        library include no others that they need not, as is so in later versions."""
        library = os.path.join(os.path.dirname(self._zig), "lib")
        flags = ["-fsyntax-only", "-target", "arm64-apple-macos13", "-nostdinc++", "-nostdlibinc",
                 "-D_LIBCPP_HAS_NO_VENDOR_AVAILABILITY_ANNOTATIONS",
                 "-D_LIBCPP_REMOVE_TRANSITIVE_INCLUDES"]
        for name in ("libcxx/include", "libcxxabi/include", "include", "libc/include/any-macos.13-any",
                     "libc/include/aarch64-macos.13-none", "libc/include/any-macos-any"):
            flags += ["-isystem", os.path.join(library, name)]
        return run([self._zig, "clang", "--driver-mode=g++"] + flags + words + [source], self._folder)

    def _complaint(self, unit):
        """Several files are checked as one. When that fails they are checked one by one, for they
        may only have used the same name, which is theirs to do."""
        words = self._words[unit]
        if self._check(unit, words).returncode == 0:
            return unit, ""
        return unit, "".join(done.stdout for done in (self._check(source, words)
                                                      for source in sources_of(unit))
                             if done.returncode != 0)

    def count(self):
        return sum(len(sources_of(unit)) for unit in self._words)

    def complaints(self):
        return [(os.path.relpath(unit, ROOT), said)
                for unit, said in each(sorted(self._words), self._complaint) if said]

    def prove(self, proof):
        """A warning that GCC does not have must be an error here."""
        spoilt = proof.path("simulator.cpp")
        source = os.path.join(ROOT, "simulator/main.cpp")
        unit = next(unit for unit in self._words if source in sources_of(unit))
        with open(source, encoding="utf-8") as file:
            text = file.read()
        with open(spoilt, "w", encoding="utf-8") as file:
            file.write(text + "\nint spoilt(int one) { return [one] { return 0; }(); }\n")
        if self._check(source, self._words[unit]).returncode != 0:
            raise SystemExit("simulator/main.cpp does not compile")
        proof.expect("a warning of clang's own in the simulated desktop",
                     self._check(spoilt, self._words[unit]), "unused-lambda-capture")


def sources_of(unit):
    """The files that a generated one includes; any other is its own."""
    with open(unit, encoding="utf-8") as file:
        found = re.findall(r'^#include "(/.*\.cpp)"', file.read(), re.MULTILINE)
    return found or [unit]
