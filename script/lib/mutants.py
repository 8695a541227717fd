"""Finds in a C++ source what script/mutate can change, and weaves all of it in at once.

A mutant is one small change: a comparison, a condition, a constant, a statement left out. Each is
guarded by a question that the program asks while it runs (mutant.h), so that one build holds them
all. Insertions never add a line, so that what the compiler says of a line holds for the original.
"""

import bisect
import collections
import re

from clang import cindex
from clang.cindex import CursorKind, TokenKind

ORDERS = {"<": ("less", "<="), "<=": ("lessEqual", "<"), ">": ("greater", ">="),
          ">=": ("greaterEqual", ">")}
SUMS = {"+": ("plus", "-"), "-": ("minus", "+")}
NUMBERS = re.compile(r"(unsigned |signed )?(int|long|long long|short|char|double|float|unsigned)\b"
                     r"|(const )?std::chrono::|__gnu_cxx::__normal_iterator")
PLACES = re.compile(r"(const )?(std::chrono::time_point|__gnu_cxx::__normal_iterator|.*\*$)")
LITERAL = re.compile(r"(\d[\d']*(?:\.\d+)?(?:e\d+)?)([a-zA-Z_]*)")
CONDITIONAL = {CursorKind.IF_STMT, CursorKind.WHILE_STMT, CursorKind.FOR_STMT, CursorKind.DO_STMT,
               CursorKind.CONDITIONAL_OPERATOR}
FUNCTIONS = {CursorKind.FUNCTION_DECL, CursorKind.CXX_METHOD, CursorKind.CONSTRUCTOR,
             CursorKind.FUNCTION_TEMPLATE, CursorKind.CONVERSION_FUNCTION, CursorKind.DESTRUCTOR}
VARIABLES = {CursorKind.VAR_DECL, CursorKind.FIELD_DECL, CursorKind.PARM_DECL}
# Memory set aside early changes nothing that can be seen.
UNSEEN = re.compile(r"[\w.>\-]*\breserve\(")

Mutant = collections.namedtuple("Mutant", "id file line what")
Token = collections.namedtuple("Token", "start end text kind")
# What stands before and after a range of the original; `weight` orders those of one range, the
# lighter inside.
Wrap = collections.namedtuple("Wrap", "start end before after weight")


class Source:
    """One file: its tokens, its expressions, and the changes found in it."""

    def __init__(self, path, name, flags, first_id, dropped):
        self.name = name
        with open(path, "rb") as file:
            self.bytes = file.read()
        unit = cindex.Index.create().parse(path, args=flags)
        errors = [d for d in unit.diagnostics if d.severity >= cindex.Diagnostic.Error]
        if errors:
            raise SystemExit("mutate: cannot read %s: %s" % (name, errors[0]))
        self._path = path
        self._tokens = [Token(t.extent.start.offset, t.extent.end.offset, t.spelling, t.kind)
                        for t in unit.get_tokens(extent=unit.cursor.extent)
                        if t.kind != TokenKind.COMMENT]
        self._starts = [token.start for token in self._tokens]
        self._next_id = first_id
        self._dropped = dropped
        self._types = {}  # (start, end) of an expression -> its type
        self._kinds = {}
        self._ending = collections.defaultdict(set)  # end -> starts
        self._beginning = collections.defaultdict(set)  # start -> ends
        self._excluded = []
        self._compile_time = []  # bodies of constexpr functions
        self._comparisons = set()
        self._variables = []
        self._cursors = []
        self.mutants = []
        self._wraps = []
        self._replaced = {}  # start of a token -> other text
        for child in unit.cursor.get_children():
            if child.location.file and child.location.file.name == path:
                self._gather(child)
        self._find()

    # ---- what is there

    def _gather(self, cursor):
        start, end = cursor.extent.start.offset, cursor.extent.end.offset
        self._cursors.append((cursor, start, end))
        kind = cursor.kind
        if kind.is_expression() and end > start:
            self._types.setdefault((start, end), cursor.type.get_canonical().spelling)
            self._kinds.setdefault((start, end), set()).add(kind)
            self._ending[end].add(start)
            self._beginning[start].add(end)
        children = list(cursor.get_children())
        if kind == CursorKind.CALL_EXPR and UNSEEN.match(self._text(start, end)):
            self._excluded.append((start, end))
        if kind in (CursorKind.STATIC_ASSERT, CursorKind.ENUM_DECL):
            self._excluded.append((start, end))
        elif kind == CursorKind.CASE_STMT and children:
            self._excluded.append((start, children[0].extent.end.offset))
        elif kind in VARIABLES:
            # What stands before the name is the type.
            self._excluded.append((start, max(start, cursor.location.offset)))
            self._variables.append((start, end, cursor))
        elif kind in FUNCTIONS and children and self._says_constexpr(start, children[-1]):
            self._compile_time.append((start, end))
        for child in children:
            self._gather(child)

    def _says_constexpr(self, start, body):
        first = bisect.bisect_left(self._starts, start)
        last = bisect.bisect_left(self._starts, body.extent.start.offset)
        return any(token.text == "constexpr" for token in self._tokens[first:last])

    def _line(self, offset):
        return self.bytes.count(b"\n", 0, offset) + 1

    def _text(self, start, end):
        return self.bytes[start:end].decode()

    def _is_excluded(self, start, end):
        return any(a <= start and end <= b for a, b in self._excluded)

    def _is_negation(self, start, end):
        """The compiler makes "a != b" one of "a == b" as well."""
        at = bisect.bisect_left(self._starts, start)
        return (CursorKind.UNARY_OPERATOR in self._kinds.get((start, end), ())
                and self._tokens[at].text == "!")

    # ---- the changes

    def _new(self, start, what):
        """The question whether this mutant is alive; none when it does not compile."""
        number = self._next_id
        self._next_id += 1
        mutant = Mutant(number, self.name, self._line(start), what)
        if (mutant.file, mutant.line) in self._dropped:
            self._dropped[mutant.file, mutant.line] += 1
            return None
        self.mutants.append(mutant)
        compiled = any(a <= start < b for a, b in self._compile_time)
        return "::mutate::live%s(%d)" % ("AtRunTime" if compiled else "", number)

    def _wrap(self, start, end, before, after, weight):
        self._wraps.append(Wrap(start, end, before, after, weight))

    def _flip(self, start, end, what, weight):
        alive = self._new(start, what)
        if alive:
            self._wrap(start, end, "(static_cast<bool>(", ") != %s)" % alive, weight)

    def _find(self):
        for at in range(1, len(self._tokens) - 1):
            self._operator(at)
            self._literal(at)
        done = set()
        for cursor, start, end in self._cursors:
            key = (cursor.kind, start, end)
            if key in done or self._is_excluded(start, end):
                continue
            done.add(key)
            if cursor.kind in CONDITIONAL:
                self._condition(cursor)
            elif cursor.kind == CursorKind.COMPOUND_STMT:
                self._statements(cursor)
            elif cursor.kind == CursorKind.RETURN_STMT:
                self._returned(cursor)
            elif self._is_negation(start, end) and cursor.kind == CursorKind.UNARY_OPERATOR:
                self._flip(start, end, "drop the !", 2)
            elif cursor.kind == CursorKind.CXX_BOOL_LITERAL_EXPR:
                is_true = self._text(start, end) == "true"
                self._flip(start, end, "true -> false" if is_true else "false -> true", 2)
        for start, end, cursor in self._variables:
            if any(start <= wrap.start and wrap.end <= end for wrap in self._wraps):
                self._no_constant(start, cursor)

    def _operands(self, at):
        """The ends of the expression that the token is the operator of, or none."""
        token, before, after = self._tokens[at], self._tokens[at - 1], self._tokens[at + 1]
        whole = [(start, end) for start in self._ending[before.end]
                 for end in self._beginning[after.start]
                 if (start, end) in self._types and start < token.start and end > token.end]
        found = min(whole, key=lambda pair: pair[1] - pair[0], default=None)
        return None if found and self._is_excluded(*found) else found

    def _operator(self, at):
        token = self._tokens[at]
        if token.text not in ("==", "!=", "&&", "||", *ORDERS, *SUMS):
            return
        found = self._operands(at)
        if not found:
            return
        start, end = found
        if token.text in ("==", "!="):
            self._comparisons.add(found)
            self._flip(start, end, "== -> !=" if token.text == "==" else "!= -> ==", 1)
        elif token.text in ORDERS:
            self._comparisons.add(found)
            name, edge = ORDERS[token.text]
            first = self._new(start, "%s -> %s" % (token.text, edge))
            second = first and self._new(start, "%s -> its opposite" % token.text)
            if second:
                self._replaced[token.start] = "), ("
                self._wrap(start, end, "::mutate::%s(%s, %s, (" % (name, first, second), "))", 1)
        elif token.text in SUMS:
            right = self._types[self._tokens[at + 1].start, end]
            # Two times, or two places in a sequence, have a difference and no sum.
            if NUMBERS.match(self._types[found]) and not PLACES.match(right):
                name, other = SUMS[token.text]
                alive = self._new(start, "%s -> %s" % (token.text, other))
                if alive:
                    self._replaced[token.start] = "), ("
                    self._wrap(start, end, "::mutate::%s(%s, (" % (name, alive), "))", 1)
        else:
            self._junction(token, start, end)

    def _junction(self, token, start, end):
        """"a && b" is "!(!a || !b)": with both sides and the whole negated, one is the other."""
        alive = self._new(start, "&& -> ||" if token.text == "&&" else "|| -> &&")
        if alive:
            self._replaced[token.start] = ") != %s) %s (static_cast<bool>(" % (alive, token.text)
            self._wrap(start, end, "(((static_cast<bool>(", ") != %s)) != %s)" % (alive, alive), 1)

    def _literal(self, at):
        token, before, after = self._tokens[at], self._tokens[at - 1], self._tokens[at + 1]
        match = LITERAL.fullmatch(token.text)
        argument = (before.text == "<" and after.text in (">", ",")) or (
            before.text == "," and after.text == ">")
        if (token.kind != TokenKind.LITERAL or not match or argument
                or (token.start, token.end) not in self._types
                or self._is_excluded(token.start, token.end)):
            return
        digits, suffix = match.groups()
        value = float(digits.replace("'", ""))
        small = value == 0 or (value < 10 and not suffix and "." not in digits)
        if small and suffix.lower() not in ("", "u", "f"):
            return  # No time, whatever it is multiplied with.
        other = "%s + 1" % token.text if small else "%s * 2" % token.text
        alive = self._new(token.start, "%s -> %s" % (token.text, other))
        if alive:
            after = " + (%s ? 1 : 0))" if small else " * (%s ? 2 : 1))"
            self._wrap(token.start, token.end, "(", after % alive, 0)

    def _condition(self, cursor):
        children = list(cursor.get_children())
        if cursor.kind == CursorKind.CONDITIONAL_OPERATOR:
            condition = children[0]
        elif cursor.kind == CursorKind.DO_STMT:
            condition = children[1]
        else:
            body = next((i for i, child in enumerate(children)
                         if child.kind == CursorKind.COMPOUND_STMT), 0)
            tested = [child for child in children[:body] if child.kind.is_expression()
                      and child.type.get_canonical().spelling == "bool"] or (
                          children[body - 1:body] if cursor.kind != CursorKind.FOR_STMT else [])
            if not tested:
                return
            condition = tested[0]
            declared = children[0]
            if declared.kind == CursorKind.VAR_DECL:
                self._declared_condition(declared)
                return
        start, end = condition.extent.start.offset, condition.extent.end.offset
        words = self._text(cursor.extent.start.offset, start)
        if ((start, end) not in self._comparisons and not self._is_negation(start, end)
                and "if constexpr" not in words and end > start):
            self._flip(start, end, "negate the condition", 3)

    def _declared_condition(self, variable):
        """if (auto a = b()) becomes if (auto a = b(); a is not what it is)."""
        start, end = variable.extent.start.offset, variable.extent.end.offset
        alive = self._new(start, "negate the condition")
        if alive:
            test = "; static_cast<bool>(%s) != %s" % (variable.spelling, alive)
            self._wrap(start, end, "", test, 9)

    def _statements(self, block):
        for statement in block.get_children():
            start, end = statement.extent.start.offset, statement.extent.end.offset
            text = self._text(start, end)
            if (not statement.kind.is_expression() or end <= start or UNSEEN.match(text)
                    or re.fullmatch(r"\(void\)\w+", text)):
                continue
            alive = self._new(start, "leave out: " + " ".join(text.split()))
            if alive:
                self._wrap(start, end, "if (!%s) { " % alive, "; }", 9)

    def _returned(self, cursor):
        children = list(cursor.get_children())
        if not children:
            return
        start, end = children[0].extent.start.offset, children[0].extent.end.offset
        if (children[0].type.get_canonical().spelling == "bool" and end > start
                and (start, end) not in self._comparisons
                and not self._is_negation(start, end)
                and CursorKind.CXX_BOOL_LITERAL_EXPR not in self._kinds[start, end]):
            self._flip(start, end, "return the opposite", 4)

    def _no_constant(self, start, cursor):
        """A constant that a mutant changes is none for the compiler any more."""
        first = bisect.bisect_left(self._starts, start)
        for token in self._tokens[first:]:
            if token.start >= cursor.location.offset:
                return
            if token.text == "constexpr":
                member = cursor.semantic_parent.kind in (CursorKind.STRUCT_DECL,
                                                         CursorKind.CLASS_DECL)
                self._replaced[token.start] = "inline const" if member else "const"
                return

    # ---- all of it woven in

    def woven(self):
        before = collections.defaultdict(list)
        after = collections.defaultdict(list)
        for wrap in self._wraps:
            size = wrap.end - wrap.start
            before[wrap.start].append((-size, -wrap.weight, wrap.before))
            after[wrap.end].append((size, wrap.weight, wrap.after))
        ends = {token.start: token.end for token in self._tokens}
        pieces = ['#include "mutant.h"\n#line 1\n']
        at = 0
        for offset in sorted({*before, *after, *self._replaced}):
            pieces.append(self._text(at, offset) if offset > at else "")
            at = max(at, offset)
            pieces += [text for *_, text in sorted(after[offset])]
            pieces += [text for *_, text in sorted(before[offset])]
            if offset in self._replaced:
                pieces.append(self._replaced[offset])
                at = ends[offset]
        pieces.append(self._text(at, len(self.bytes)))
        return "".join(pieces)
