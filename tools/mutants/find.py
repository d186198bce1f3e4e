# SPDX-License-Identifier: GPL-3.0-or-later
"""Finds what can be changed in a source, and writes the source with all of the changes in it."""

import re

from clang.cindex import CursorKind as Kind
from clang.cindex import TranslationUnit, TypeKind

BOUNDS = {"<": ("Less", "<=", ">="), "<=": ("LessEqual", "<", ">"),
          ">": ("Greater", ">=", "<="), ">=": ("GreaterEqual", ">", "<")}
EQUAL = {"==": "!=", "!=": "=="}
LOGICAL = {"&&": "||", "||": "&&"}
ARITHMETIC = {"+": ("Plus", "-"), "-": ("Minus", "+"), "*": ("Times", "/"), "/": ("Over", "*"),
              "%": ("Rest", "*"), "&": ("And", "|"), "|": ("Or", "&"), "<<": ("ShiftLeft", ">>"),
              ">>": ("ShiftRight", "<<")}
ASSIGN = {"+=": ("PlusAssign", "-="), "-=": ("MinusAssign", "+="), "*=": ("TimesAssign", "/="),
          "/=": ("OverAssign", "*="), "&=": ("AndAssign", "|="), "|=": ("OrAssign", "&=")}
LITERALS = (Kind.INTEGER_LITERAL, Kind.FLOATING_LITERAL, Kind.CHARACTER_LITERAL,
            Kind.CXX_BOOL_LITERAL_EXPR)
NUMBERS = (TypeKind.BOOL, TypeKind.CHAR_S, TypeKind.SCHAR, TypeKind.UCHAR, TypeKind.SHORT,
           TypeKind.USHORT, TypeKind.INT, TypeKind.UINT, TypeKind.LONG, TypeKind.ULONG,
           TypeKind.LONGLONG, TypeKind.ULONGLONG, TypeKind.FLOAT, TypeKind.DOUBLE,
           TypeKind.CHAR16, TypeKind.CHAR32, TypeKind.WCHAR)
ENUMS_OR_BUILT_IN = NUMBERS + (TypeKind.POINTER, TypeKind.DEPENDENT, TypeKind.ENUM)
NEVER_RUN = (Kind.STATIC_ASSERT, Kind.ENUM_CONSTANT_DECL, Kind.ALIGNED_ATTR, Kind.UNEXPOSED_ATTR)
COMMENT = re.compile(rb"//[^\n]*|/\*.*?\*/", re.S)


def parse(paths, arguments):
    """The sources as one, as they are compiled: for every path the cursors at the top of it, and
    what the compiler has to say."""
    joined = "".join(f'#include "{path}"\n' for path in paths)
    unit = TranslationUnit.from_source("joined.cpp", arguments, [("joined.cpp", joined)],
                                       TranslationUnit.PARSE_DETAILED_PROCESSING_RECORD)
    found = {str(path): [] for path in paths}
    for cursor in unit.cursor.get_children():
        file = cursor.extent.start.file
        if file is not None and file.name in found:
            found[file.name].append(cursor)
    return found, [str(said) for said in unit.diagnostics if said.severity >= 3]


class Change:
    """One change: its number, where it is, and how it reads in the source."""

    def __init__(self, number, path, line, name):
        self.number, self.path, self.line, self.name = number, path, line, name


class Source:
    """A source with the changes that were found in it."""

    def __init__(self, path, shown, cursors, book):
        self.path, self.shown, self.book = str(path), shown, book
        self.bytes = path.read_bytes()
        self.edits = []  # (position, rank, text): rank orders what is put at one position
        self.seen = set()
        self.macros = [self.extent(cursor) for cursor in cursors if cursor.kind == Kind.MACRO_INSTANTIATION]
        for cursor in cursors:
            self.visit(cursor, [], "")

    def is_here(self, cursor):
        file = cursor.extent.start.file
        return file is not None and file.name == self.path

    @staticmethod
    def extent(cursor):
        return cursor.extent.start.offset, cursor.extent.end.offset

    def text(self, start, end):
        return self.bytes[start:end].decode()

    def between(self, left, right):
        """The operator between two operands."""
        text = self.bytes[self.extent(left)[1]:self.extent(right)[0]]
        return COMMENT.sub(b"", text).strip().decode()

    # Books a change of the bytes from start to end and gives its number.
    def change(self, function, start, end, new):
        begin = self.bytes.rfind(b"\n", 0, start) + 1
        stop = self.bytes.find(b"\n", start)
        old = self.text(start, end)
        marked = f"{self.text(begin, start)}{{{old} => {new}}}{self.text(end, max(end, stop))}"
        name = f"{function}: {' '.join(marked.split())}"
        return self.book(self.shown, self.bytes.count(b"\n", 0, start) + 1, name)

    def wrap(self, start, end, before, after):
        length = end - start
        self.edits.append((start, (1, -length), before))
        self.edits.append((end, (0, length), after))

    def replace(self, start, end, text):
        self.edits.append((start, (2, 0), (end, text)))

    # Where the operator between the two operands is.
    def operator(self, left, right, text):
        at = self.bytes.find(text.encode(), self.extent(left)[1])
        # A comment before it could have the same characters.
        for comment in COMMENT.finditer(self.bytes, self.extent(left)[1], self.extent(right)[0]):
            if comment.start() <= at < comment.end():
                at = self.bytes.find(text.encode(), comment.end())
        return at, at + len(text)

    def written(self):
        """The source with all its changes in it."""
        out, position = [], 0
        for at, _, what in sorted(self.edits, key=lambda edit: edit[:2]):
            out.append(self.bytes[position:at])
            position = at
            if isinstance(what, tuple):
                position, what = what
            out.append(what.encode())
        out.append(self.bytes[position:])
        ignored = "".join(f'#pragma GCC diagnostic ignored "-W{name}"\n' for name in (
            "narrowing", "conversion", "float-conversion", "overflow", "type-limits", "parentheses",
            "sign-compare", "unused-value", "return-type"))
        return ('#include "davo_mutants.h"\n' + ignored).encode() + b"".join(out)

    def visit(self, cursor, parents, function):
        if cursor.kind in NEVER_RUN:
            return
        if cursor.kind in (Kind.FUNCTION_DECL, Kind.CXX_METHOD, Kind.CONSTRUCTOR, Kind.FUNCTION_TEMPLATE,
                           Kind.STRUCT_DECL, Kind.CLASS_DECL):
            function = cursor.spelling
        if self.is_here(cursor) and self.is_constant(cursor):
            return
        start, end = self.extent(cursor)
        in_macro = any(begin <= start and end <= stop for begin, stop in self.macros)
        if self.is_here(cursor) and cursor.kind.is_expression() and not in_macro and end > start:
            self.look(cursor, parents, function, start, end)
        children = list(cursor.get_children())
        if cursor.kind == Kind.CASE_STMT:
            children = children[1:]
        for child in children:
            self.visit(child, parents + [cursor], function)

    def is_constant(self, cursor):
        """Whether it declares a constant, which changes where it is used instead."""
        if cursor.kind != Kind.VAR_DECL:
            return False
        start, end = self.extent(cursor)
        head = self.text(start, end).split("=")[0]
        return "constexpr" in head.split()

    def look(self, cursor, parents, function, start, end):
        key = (start, end, cursor.kind in LITERALS)
        if cursor.kind == Kind.BINARY_OPERATOR or cursor.kind == Kind.CALL_EXPR and \
                cursor.spelling in ("operator==", "operator!=", "operator<", "operator<=", "operator>", "operator>="):
            operands = self.operands(cursor)
            if operands and (start, end, "operator") not in self.seen:
                self.seen.add((start, end, "operator"))
                self.binary(cursor, *operands, function)
                return
        if key in self.seen:
            return
        if cursor.kind == Kind.COMPOUND_ASSIGNMENT_OPERATOR:
            self.seen.add(key)
            self.assignment(cursor, function, start, end)
        elif cursor.kind in LITERALS:
            self.seen.add(key)
            if parents[-1].kind == Kind.WHILE_STMT:
                return  # "while (true)"
            self.literal(cursor, function, start, end)
        elif cursor.kind == Kind.UNARY_OPERATOR:
            self.seen.add(key)
            self.unary(cursor, parents, function, start, end)
        elif cursor.kind in (Kind.DECL_REF_EXPR, Kind.MEMBER_REF_EXPR) and self.constant_used(cursor):
            self.seen.add(key)
            self.use(cursor, start, end)
        elif self.is_condition(cursor, parents):
            self.seen.add(key)
            # "!=" that the compiler makes of an "==".
            if any(self.is_comparison(inner) for inner in cursor.walk_preorder()
                   if self.extent(inner) == (start, end)):
                return
            number = self.change(function, start, end, f"!{self.text(start, end)}")
            self.wrap(start, end, f"(davo_mutants::On<{number}>() != bool(", "))")

    def operands(self, cursor):
        children = list(cursor.get_children())
        pair = children if cursor.kind == Kind.BINARY_OPERATOR else list(cursor.get_arguments())
        pair = sorted(pair, key=lambda operand: operand.extent.start.offset)
        if len(pair) != 2 or not all(self.is_here(operand) for operand in pair):
            return None
        if any(self.extent(operand)[0] == self.extent(operand)[1] for operand in pair):
            return None
        return pair

    def binary(self, cursor, left, right, function):
        text = self.between(left, right)
        if text not in BOUNDS and text not in EQUAL and text not in LOGICAL and text not in ARITHMETIC:
            return
        start, end = self.extent(left)[0], self.extent(right)[1]
        at, after = self.operator(left, right, text)
        if text in BOUNDS:
            name, bound, negated = BOUNDS[text]
            numbers = f"{self.change(function, at, after, bound)}, {self.change(function, at, after, negated)}"
            self.wrap(start, end, f"davo_mutants::{name}<{numbers}>((", "))")
            self.replace(at, after, "), (")
        elif text in EQUAL:
            number = self.change(function, at, after, EQUAL[text])
            self.wrap(start, end, f"(davo_mutants::On<{number}>() != bool(", "))")
        elif text in LOGICAL:
            on = f"davo_mutants::On<{self.change(function, at, after, LOGICAL[text])}>()"
            self.wrap(start, end, f"({on} != (({on} != bool(", "))))")
            self.replace(at, after, f")) {text} ({on} != bool(")
        else:
            kinds = [operand.type.get_canonical().kind for operand in (left, right)]
            if any(kind not in ENUMS_OR_BUILT_IN for kind in kinds) or kinds == [TypeKind.POINTER] * 2:
                return
            name, other = ARITHMETIC[text]
            number = self.change(function, at, after, other)
            self.wrap(start, end, f"davo_mutants::{name}<{number}>((", "))")
            self.replace(at, after, "), (")

    def assignment(self, cursor, function, start, end):
        left, right = cursor.get_children()
        text = self.between(left, right)
        if text not in ASSIGN:
            return
        name, other = ASSIGN[text]
        at, after = self.operator(left, right, text)
        number = self.change(function, at, after, other)
        self.wrap(start, end, f"davo_mutants::{name}<{number}>((", "))")
        self.replace(at, after, "), (")

    def literal(self, cursor, function, start, end):
        old = self.text(start, end)
        if cursor.kind == Kind.CXX_BOOL_LITERAL_EXPR:
            new = {"true": "false", "false": "true"}.get(old)
        elif cursor.kind == Kind.FLOATING_LITERAL:
            new = f"{old} + 10 %" if float(old.strip("fFlL")) else "1.0"
        else:
            new = f"{old} + 1"
        if new is None or not re.fullmatch(r"true|false|[\d.xXeEuUlLfF'+-]+[a-fA-F\d]*[a-z]*|u?L?'.*'", old):
            return
        number = self.change(function, start, end, new)
        self.wrap(start, end, f"davo_mutants::Value<{number}>(", ")")

    def unary(self, cursor, parents, function, start, end):
        (operand,) = cursor.get_children()
        inner, stop = self.extent(operand)
        if inner > start:
            text, place = self.text(start, inner).strip(), (start, inner)
        else:
            text, place = self.text(stop, end).strip(), (stop, end)
        if text == "!":
            number = self.change(function, start, inner, "")
            self.wrap(start, end, f"(davo_mutants::On<{number}>() != ", ")")
        elif text == "-" and operand.type.get_canonical().kind in NUMBERS:
            number = self.change(function, start, inner, "")
            self.wrap(start, end, f"davo_mutants::Negative<{number}>(", ")")
            self.replace(start, inner, "")
        elif text in ("++", "--"):
            # What a loop counts with only makes it run for ever.
            if parents and parents[-1].kind == Kind.FOR_STMT:
                return
            number = self.change(function, *place, "--" if text == "++" else "++")
            which = "Before" if inner > start else "After"
            self.replace(*place, "")
            self.wrap(start, end, f"davo_mutants::{which}<{number}>((", f"), {str(text == '++').lower()})")

    def constant_used(self, cursor):
        """Whether it names a constant number of this project."""
        meant = cursor.referenced
        if meant is None or meant.kind != Kind.VAR_DECL or meant.location.file is None:
            return False
        if cursor.type.get_canonical().kind not in NUMBERS or "/src/" not in meant.location.file.name:
            return False
        text = " ".join(token.spelling for token in meant.get_tokens())
        return "constexpr" in text.split("=")[0].split()

    def use(self, cursor, start, end):
        meant = cursor.referenced
        name = self.text(start, end)
        line = meant.location.line
        new = f"!{name}" if cursor.type.get_canonical().kind == TypeKind.BOOL else (
            f"{name} + 10 %" if cursor.type.get_canonical().kind in (TypeKind.FLOAT, TypeKind.DOUBLE)
            else f"{name} + 1")
        shown = self.book.shown_path(meant.location.file.name)
        owner = meant.semantic_parent.spelling if meant.semantic_parent.kind in (
            Kind.FUNCTION_DECL, Kind.CXX_METHOD, Kind.CONSTRUCTOR) else ""
        plain = meant.spelling
        number = self.book(shown, line, f"{owner}: {{{plain} => {new.replace(name, plain)}}}", shared=True)
        self.wrap(start, end, f"davo_mutants::Value<{number}>(", ")")

    def is_condition(self, cursor, parents):
        """Whether it is a yes or no, not put together of others, on which something depends."""
        if cursor.kind in (Kind.PAREN_EXPR, Kind.BINARY_OPERATOR, Kind.UNARY_OPERATOR) + LITERALS:
            return False
        above = [parent for parent in parents]
        start, end = self.extent(cursor)
        # Conversions that nobody wrote.
        while above and above[-1].kind in (Kind.UNEXPOSED_EXPR, Kind.CALL_EXPR) and self.extent(above[-1]) == (start, end):
            above.pop()
        while above and above[-1].kind == Kind.PAREN_EXPR:
            above.pop()
        if not above:
            return False
        inner = self.inside(cursor)
        if inner.kind in (Kind.PAREN_EXPR, Kind.BINARY_OPERATOR, Kind.UNARY_OPERATOR, Kind.CONDITIONAL_OPERATOR,
                          Kind.LAMBDA_EXPR) + LITERALS or self.is_comparison(inner):
            return False
        parent = above[-1]
        if parent.kind in (Kind.IF_STMT, Kind.WHILE_STMT):
            return self.in_parentheses(parent, start, end)
        if parent.kind == Kind.CONDITIONAL_OPERATOR:
            return self.extent(next(parent.get_children()))[0] == start
        if parent.kind == Kind.BINARY_OPERATOR:
            operands = self.operands(parent)
            return bool(operands) and self.between(*operands) in LOGICAL
        if parent.kind in (Kind.RETURN_STMT, Kind.VAR_DECL):
            return cursor.type.get_canonical().kind == TypeKind.BOOL
        return False

    def inside(self, cursor):
        """What conversions that nobody wrote are around."""
        while True:
            children = list(cursor.get_children())
            if cursor.kind not in (Kind.UNEXPOSED_EXPR, Kind.CALL_EXPR) or self.is_comparison(cursor):
                return cursor
            same = [child for child in children if self.extent(child) == self.extent(cursor)]
            if not same:
                return cursor
            cursor = same[0]

    @staticmethod
    def is_comparison(cursor):
        return cursor.kind == Kind.CALL_EXPR and cursor.spelling in (
            "operator==", "operator!=", "operator<", "operator<=", "operator>", "operator>=")

    def in_parentheses(self, statement, start, end):
        """Whether these bytes are the condition of "if (...)" or its last part."""
        depth = 0
        for token in statement.get_tokens():
            at = token.extent.start.offset
            if token.spelling == "(":
                depth += 1
            elif token.spelling == ")":
                depth -= 1
                if depth == 0:
                    return end <= at and self.bytes[end:at].strip() == b""
        return False
