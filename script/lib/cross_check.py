"""The second half of script/cross-check: the report of what was compiled and imported, the analyzer,
and the proof that the check notices what it is for."""

import os
import sys
import tempfile

from cross_build import PROGRAM, TEST_PROGRAMS, Build, analyze, declared, imports, source_text, tidy
from cross_proof import Proof
from cross_rest import Rest
from cross_rules import TABLE, references_not_held, undocumented


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
    for complaint in undocumented(by_arch[0], source_text(TABLE)):
        print("%s: %s" % (TABLE, complaint))
        failed = True
    return not failed


def main():
    folder, llvm, zig = sys.argv[1:4]
    builds = [Build(folder, arch) for arch in ("arm64", "x86_64")]
    passed = report(llvm, builds)

    files = builds[0].backend_files()
    looked = analyze(zig, files) + tidy(zig, files)
    complaints = [(source, said) for source, said in looked if said]
    for source in files:
        complaints += [(source, "a reference that nobody holds: " + call)
                       for call in references_not_held(source_text(source))]
    for source, said in complaints:
        print("%s:\n%s" % (source, said))
    print("\nAnalyzed %d files of platform/mac: %d with complaints" % (len(files), len(complaints)))
    rest = Rest(builds[0], zig)
    found = rest.complaints()
    for unit, said in found:
        print("%s:\n%s" % (unit, said))
    print("Checked %d files that a Mac compiles besides: %d with complaints"
          % (rest.count(), len(found)))
    complaints += found

    old = "-D__MAC_OS_X_VERSION_MAX_ALLOWED=130000"
    print("\nSpoilt on purpose:")
    with tempfile.TemporaryDirectory(prefix="spoilt-", dir=folder) as scratch:
        for source in files:
            text = source_text(source)
            if "__MAC_OS_X_VERSION_MAX_ALLOWED" in text:
                newest = next(w for w in builds[0].commands[source] if "MAX_ALLOWED" in w)
                done = builds[0].compile(source, text, os.path.join(scratch, "old.o"), {newest: old})
                if done.returncode != 0:
                    print("%s does not compile with the SDK of macOS 13:\n%s" % (source, done.stdout))
                    passed = False
        proof = Proof(builds[0], zig, scratch)
        proof.all()
        rest.prove(proof)
        proof.table(imports(llvm, os.path.join(builds[0].folder, PROGRAM)))
    if not passed or complaints or not proof.passed:
        sys.exit("cross-check: failed")
    print("cross-check: passed")


if __name__ == "__main__":
    main()
