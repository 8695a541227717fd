"""Rules of the macOS backend that no compiler knows: who holds references, and what the document lists."""

import re

from cross_build import BACKEND, source_text

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


TABLE = "docs/macos.md"


def undocumented(used, table):
    """The table of calls against the sources: yields each imported function or class that it does
    not name, and each call that it finds in a file which does not hold it."""
    rows = [line.split("|")[1:4] for line in table.splitlines()
            if re.match(r"\| .*`mac_\w+\.\w+`", line)]
    named = set()
    for operations, files, _ in rows:
        text = "".join(source_text(BACKEND + file) for file in re.findall(r"`(mac_[\w.]+)`", files))
        # Of "`X`, as `Y`" the file holds Y, of "`/usr/bin/open`, by `X` for `Y`" X.
        calls = re.sub(r"`[^`]+`(?: `[^`]+`)*, as | for `[^`]+`", " ", operations)
        for call in re.findall(r"`([^`]+)`", calls):
            named.add(call)
            for piece in [piece for piece in call.split(":") if piece] or [call]:
                if "/" not in piece and not re.search(r"\b%s\b" % re.escape(piece), text):
                    yield "%s is not in %s" % (call, files.strip())
    for library, symbols in used.items():
        if library.startswith("lib"):
            continue
        for symbol in sorted(symbols):
            name = re.sub("^_(OBJC_CLASS_\\$_)?", "", symbol)
            if name not in named and not name.startswith(("__", "_", "NSArray")):
                yield "%s of %s is imported" % (name, library)
