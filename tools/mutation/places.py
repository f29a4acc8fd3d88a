"""Finds the places of a C++ source that a mutant can change, and writes the source with all of them in it.

The places are nodes of clang's syntax tree. Each becomes a call of a function of Mutant.h around the same
text, so that places within places need no copies. Constants that the compiler needs are left alone; where
a named constant is used, its use is changed instead.
"""

import bisect
import collections
import functools

from clang import cindex
from clang.cindex import CursorKind as Kind
from clang.cindex import TokenKind, TypeKind

# Operators: the function of Mutant.h, and what its mutants put in the operator's place.
COMPARISONS = {"<": ("Less", "<=", ">="), "<=": ("LessEqual", "<", ">"),
               ">": ("Greater", ">=", "<="), ">=": ("GreaterEqual", ">", "<"),
               "==": ("Equal", "!="), "!=": ("NotEqual", "==")}
ARITHMETIC = {"+": ("Plus", "-"), "-": ("Minus", "+"), "*": ("Times", "+"), "/": ("Over", "*"),
              "%": ("Modulo", "/"), "<<": ("ShiftLeft", ">>"), ">>": ("ShiftRight", "<<"),
              "&": ("BitAnd", "|"), "|": ("BitOr", "&"), "^": ("BitXor", "&")}
ASSIGNMENTS = {f"{op}=": (f"Assign{name}", f"{other}=") for op, (name, other) in ARITHMETIC.items()}
LOGICAL = {"&&": "||", "||": "&&"}
UNARY = {"++": ("Increment", "--"), "--": ("Decrement", "++"), "-": ("Negative", ""), "~": ("Complement", "")}

INTEGERS = {TypeKind.CHAR_S, TypeKind.CHAR_U, TypeKind.SCHAR, TypeKind.UCHAR, TypeKind.SHORT, TypeKind.USHORT,
            TypeKind.INT, TypeKind.UINT, TypeKind.LONG, TypeKind.ULONG, TypeKind.LONGLONG, TypeKind.ULONGLONG}
REFERENCES = {TypeKind.LVALUEREFERENCE, TypeKind.RVALUEREFERENCE}
FUNCTIONS = {Kind.FUNCTION_DECL, Kind.CXX_METHOD, Kind.CONSTRUCTOR, Kind.DESTRUCTOR, Kind.CONVERSION_FUNCTION,
             Kind.FUNCTION_TEMPLATE}
# What the compiler evaluates, or nobody does.
SKIPPED = {Kind.STATIC_ASSERT, Kind.ENUM_DECL, Kind.CXX_UNARY_EXPR, Kind.TYPE_REF, Kind.TEMPLATE_REF,
           Kind.DECL_REF_EXPR, Kind.ALIGNED_ATTR, Kind.CONCEPT_DECL if hasattr(Kind, "CONCEPT_DECL") else None}

HEAD = b'#include "tools/mutation/Mutant.h"\n#line 1\n'

Mutant = collections.namedtuple("Mutant", "file line function change")


def unwrapped(cursor):
    """The expression below implicit conversions and parentheses."""
    while cursor.kind in (Kind.UNEXPOSED_EXPR, Kind.PAREN_EXPR):
        children = list(cursor.get_children())
        if len(children) != 1:
            break
        cursor = children[0]
    return cursor


class Source:
    """The places of one file, and what they become."""

    def __init__(self, root, name, arguments):
        self.name = name
        self.text = (root / name).read_bytes()
        self.lines = [0] + [i + 1 for i, byte in enumerate(self.text) if byte == ord("\n")]
        self.mutants = []  # in the order in which they are numbered
        self.places = []  # (start, end, the numbers of its mutants here)
        self.edits = []  # (offset, order, end, text, mutants of the place)
        self.seen = set()
        self.times = collections.Counter()  # how often each function has each change
        unit = cindex.Index.create().parse(str(root / name), arguments,
                                           options=cindex.TranslationUnit.PARSE_DETAILED_PROCESSING_RECORD)
        errors = [d for d in unit.diagnostics if d.severity >= cindex.Diagnostic.Error]
        if errors:
            raise SystemExit(f"{name}: {errors[0]}")
        own = [c for c in unit.cursor.get_children() if c.location.file and c.location.file.name == str(root / name)]
        self.macros = sorted((c.extent.start.offset, c.extent.end.offset) for c in own
                             if c.kind == Kind.MACRO_INSTANTIATION)
        for cursor in own:
            if not cursor.kind.is_preprocessing():
                self.visit(cursor, None, "", None)

    # --- The walk over the tree -------------------------------------------------------------------

    def visit(self, cursor, parent, function, result):
        """Looks at a node and at all below it; `function` is the one around it, `result` what it returns."""
        start, end = cursor.extent.start.offset, cursor.extent.end.offset
        if cursor.kind in SKIPPED and cursor.kind != Kind.DECL_REF_EXPR or self.in_macro(start, end):
            return
        if cursor.kind == Kind.CALL_EXPR and cursor.spelling.startswith("__builtin_"):
            return  # asks for memory ahead, or wants constants
        if cursor.kind in FUNCTIONS:
            function, result = self.qualified(cursor), cursor.result_type.get_canonical()
        elif cursor.kind == Kind.LAMBDA_EXPR:
            result = None
        children = list(cursor.get_children())
        if cursor.kind == Kind.IF_STMT and self.text[start:end].startswith(b"if constexpr"):
            children = [child for child in children if not child.kind.is_expression()]
        if parent is not None and (start, end, cursor.kind) not in self.seen:
            self.seen.add((start, end, cursor.kind))
            self.change(cursor, parent, children, function, result)
        if cursor.kind == Kind.DECL_REF_EXPR or cursor.kind == Kind.VAR_DECL and self.is_constant(cursor, children):
            return
        if cursor.kind == Kind.CASE_STMT:
            children = children[1:]
        for child in children:
            # Template arguments, bounds of arrays and widths of bit-fields.
            declared = cursor.kind.is_declaration() and cursor.kind not in FUNCTIONS and child.kind.is_expression()
            if declared and (child.extent.end.offset <= cursor.location.offset or cursor.is_bitfield()
                             or self.text[:child.extent.start.offset].rstrip().endswith(b"[")):
                continue
            self.visit(child, cursor, function, result)

    def change(self, cursor, parent, children, function, result):
        """Adds the mutants of one node."""
        kind = cursor.kind
        if self.is_statement(cursor, parent, children):
            shown = self.snippet(cursor)
            self.wrap(cursor, function, "(om_mutant::Is({n}) ? (void)0 : (void)(", "))", [f"`{shown}` dropped"])
        if kind == Kind.BINARY_OPERATOR and len(children) == 2:
            self.binary(cursor, children, function)
        elif kind == Kind.CALL_EXPR and cursor.spelling.startswith("operator") and len(children) == 3:
            self.overloaded(cursor, children, function)
        elif kind == Kind.COMPOUND_ASSIGNMENT_OPERATOR:
            self.operator(cursor, children, function, ASSIGNMENTS)
        elif kind == Kind.UNARY_OPERATOR:
            self.unary(cursor, children, function)
        elif kind == Kind.INTEGER_LITERAL or kind in (Kind.DECL_REF_EXPR, Kind.MEMBER_REF_EXPR) and \
                self.names_constant(cursor):
            self.constant(cursor, function)
        elif kind == Kind.FLOATING_LITERAL:
            self.wrap(cursor, function, "om_mutant::OneMore({n}, ", ")", [f"`{self.snippet(cursor)}` + 1"])
        elif kind == Kind.CXX_BOOL_LITERAL_EXPR:
            self.wrap(cursor, function, "om_mutant::Flip({n}, ", ")", [f"`{self.snippet(cursor)}` flipped"])
        elif kind == Kind.RETURN_STMT and children:
            self.returned(children[0], function, result)
        condition = self.condition(cursor, children)
        if condition is not None and not self.decides(condition):
            self.wrap(condition, function, "om_mutant::Flip({n}, ", ")", [f"condition `{self.snippet(condition)}` negated"])

    # --- Kinds of places --------------------------------------------------------------------------

    def binary(self, cursor, children, function):
        op = self.operator_between(cursor, children[0])
        if op and op.spelling in LOGICAL:
            # With n on, all is negated, which makes one of the two operators the other one.
            other = LOGICAL[op.spelling]
            own = self.wrap(cursor, function, "om_mutant::Flip({n}, om_mutant::Flip({n}, ", "))",
                            [f"`{self.snippet(cursor, op, other)}`"])
            end = children[0].extent.end.offset
            self.edit(end, end, ")", own, closing=True)
            start = children[1].extent.start.offset
            self.edit(start, start, "om_mutant::Flip({n}, ", own)
        else:
            self.operator(cursor, children, function, {**COMPARISONS, **ARITHMETIC})

    def overloaded(self, cursor, children, function):
        """Comparisons of classes. Their children are the operands, the operator between them."""
        operands = [c for c in children if not c.spelling.startswith("operator") or c.kind == Kind.CALL_EXPR]
        if len(operands) == 2:
            self.operator(cursor, operands, function, COMPARISONS)

    def operator(self, cursor, operands, function, table):
        op = self.operator_between(cursor, operands[0])
        if op is None or op.spelling not in table or op.spelling.startswith("operator"):
            return
        name, *others = table[op.spelling]
        own = self.wrap(cursor, function, f"om_mutant::{name}({{n}}, ", ")",
                        [f"`{self.snippet(cursor, op, other)}`" for other in others])
        self.edit(op.extent.start.offset, op.extent.end.offset, ",", own)

    def unary(self, cursor, children, function):
        operand = children[0]
        tokens = [t for t in cursor.get_tokens() if t.kind == TokenKind.PUNCTUATION]
        if not tokens:
            return  # what a macro's name is replaced by
        prefix = operand.extent.start.offset > cursor.extent.start.offset
        op = tokens[0] if prefix else tokens[-1]
        if op.spelling == "!":
            self.wrap(cursor, function, "om_mutant::Flip({n}, ", ")", [f"`{self.snippet(cursor, op, '')}`"])
        elif op.spelling in UNARY:
            name, other = UNARY[op.spelling]
            own = self.wrap(cursor, function, f"om_mutant::{name}{'' if prefix else 'After'}({{n}}, ", ")",
                            [f"`{self.snippet(cursor, op, other)}`"])
            self.edit(op.extent.start.offset, op.extent.end.offset, "", own)

    def constant(self, cursor, function):
        shown = self.snippet(cursor)
        if cursor.type.get_canonical().kind == TypeKind.BOOL:
            self.wrap(cursor, function, "om_mutant::Flip({n}, ", ")", [f"`{shown}` flipped"])
        else:
            self.wrap(cursor, function, "om_mutant::OffByOne({n}, ", ")", [f"`{shown}` + 1", f"`{shown}` - 1"])

    def returned(self, value, function, result):
        inner = unwrapped(value)
        kind = (result or inner.type.get_canonical()).kind
        if inner.kind in (Kind.INTEGER_LITERAL, Kind.CXX_BOOL_LITERAL_EXPR, Kind.CXX_NULL_PTR_LITERAL_EXPR,
                          Kind.INIT_LIST_EXPR, Kind.FLOATING_LITERAL) or kind in REFERENCES or self.names_constant(inner):
            return
        shown = f"returned `{self.snippet(value)}`"
        if kind == TypeKind.BOOL:
            if not self.decides(value):
                self.wrap(value, function, "om_mutant::Flip({n}, ", ")", [f"{shown} negated"])
        elif kind in INTEGERS or kind in (TypeKind.DOUBLE, TypeKind.FLOAT):
            self.wrap(value, function, "om_mutant::OneMore({n}, ", ")", [f"{shown} + 1"])
        elif kind in (TypeKind.POINTER, TypeKind.RECORD):
            self.wrap(value, function, "om_mutant::Empty({n}, ", ")", [f"{shown} empty"])

    # --- What a node is ---------------------------------------------------------------------------

    @staticmethod
    def is_statement(cursor, parent, children):
        """Whether it is an expression that stands as a statement and does something."""
        if parent.kind not in (Kind.COMPOUND_STMT, Kind.CASE_STMT, Kind.DEFAULT_STMT):
            return False
        inner = unwrapped(cursor)
        return inner.kind in (Kind.CALL_EXPR, Kind.COMPOUND_ASSIGNMENT_OPERATOR, Kind.CXX_DELETE_EXPR,
                              Kind.CXX_THROW_EXPR, Kind.BINARY_OPERATOR, Kind.UNARY_OPERATOR)

    @staticmethod
    def condition(cursor, children):
        """The condition of a statement, where that is an expression; of `for` they are comparisons in any case."""
        found = None
        if cursor.kind == Kind.IF_STMT:
            body = next((i for i, child in enumerate(children) if child.kind == Kind.COMPOUND_STMT), 0)
            found = children[body - 1] if body > 0 else None
        elif cursor.kind in (Kind.WHILE_STMT, Kind.CONDITIONAL_OPERATOR) and children:
            found = children[0]
        elif cursor.kind == Kind.DO_STMT and len(children) == 2:
            found = children[1]
        if found is None or not found.kind.is_expression():
            return None
        # A variable that is declared there is named once more, where it stands.
        inside = any(c.extent.start.offset <= found.extent.start.offset < c.extent.end.offset
                     for c in children[:children.index(found)])
        return None if inside else found

    def decides(self, condition):
        """Whether a truth value has mutants of its own that negate it."""
        inner = unwrapped(condition)
        if inner.kind == Kind.UNARY_OPERATOR:
            return self.text[inner.extent.start.offset:][:1] == b"!"
        return inner.kind in (Kind.BINARY_OPERATOR, Kind.CXX_BOOL_LITERAL_EXPR) or \
            inner.kind == Kind.CALL_EXPR and inner.spelling in {f"operator{op}" for op in COMPARISONS}

    def is_constant(self, variable, children):
        """Whether the compiler may evaluate a variable's initializer."""
        head = self.text[variable.extent.start.offset:variable.location.offset].split()
        if b"constexpr" in head or b"constinit" in head:
            return True
        return variable.type.get_canonical().is_const_qualified() and \
            variable.type.get_canonical().kind in INTEGERS | {TypeKind.BOOL} and \
            bool(children) and self.is_known(children[-1])

    def is_known(self, expression):
        kinds = (Kind.INTEGER_LITERAL, Kind.UNEXPOSED_EXPR, Kind.PAREN_EXPR, Kind.BINARY_OPERATOR, Kind.UNARY_OPERATOR,
                 Kind.CXX_BOOL_LITERAL_EXPR, Kind.CXX_STATIC_CAST_EXPR, Kind.CXX_UNARY_EXPR, Kind.TYPE_REF)
        return (expression.kind in kinds or self.names_constant(expression)) and \
            all(self.is_known(child) for child in expression.get_children())

    def names_constant(self, cursor):
        """Whether a name stands for a constant number."""
        if cursor.kind not in (Kind.DECL_REF_EXPR, Kind.MEMBER_REF_EXPR):
            return False
        named = cursor.referenced
        kind = cursor.type.get_canonical().kind
        if named is None or named.kind != Kind.VAR_DECL or kind not in INTEGERS | {TypeKind.BOOL}:
            return False
        return constant_declaration(named)

    # --- Writing ----------------------------------------------------------------------------------

    def wrap(self, cursor, function, before, after, changes):
        """Adds mutants whose place is a whole node; `{n}` in the text is the number of the first."""
        start, end = cursor.extent.start.offset, cursor.extent.end.offset
        line = bisect.bisect_right(self.lines, start)
        first = len(self.mutants)
        for change in changes:
            self.times[function, change] += 1
            time = self.times[function, change]
            self.mutants.append(Mutant(self.name, line, function, change + (f" ({time})" if time > 1 else "")))
        own = range(first, len(self.mutants))
        self.places.append((start, end, own))
        self.edit(start, start, before, own)
        self.edit(end, end, after, own, closing=True)
        return own

    def edit(self, start, end, text, own, closing=False):
        # At one offset, what closes comes first, the innermost before the others; then what opens.
        self.edits.append(((start, 0, -len(self.edits)) if closing else (start, 1, len(self.edits)), end, text, own))

    def written(self, first, left_out):
        """Writes the file with its mutants, numbered from `first` on, but for those left out."""
        self.pieces, done = [(HEAD, 0, None)], 0  # text, where it stands in the file, mutants of what was added
        for (start, _, _), end, text, own in sorted(self.edits, key=lambda edit: edit[0]):
            if not any(first + i in left_out for i in own):
                self.pieces.append((self.text[done:start], done, None))
                self.pieces.append((text.replace("{n}", str(first + own[0])).encode(), start, own))
                done = end
        self.pieces.append((self.text[done:], done, None))
        self.written_places = [place for place in self.places if not any(first + i in left_out for i in place[2])]
        return b"".join(text for text, _, _ in self.pieces)

    def blamed(self, line, column):
        """The mutants of what stands at a place of the written file, and whether it is what was added there."""
        written = b"".join(text for text, _, _ in self.pieces)
        at = len(HEAD)
        for _ in range(line - 1):
            at = written.index(b"\n", at) + 1
        at += column - 1
        for text, start, own in self.pieces:
            if at < len(text):
                break
            at -= len(text)
        if own is not None:
            return own, True
        around = [place for place in self.written_places if place[0] <= start + at < place[1]]
        if around:
            return min(around, key=lambda place: place[1] - place[0])[2], False
        return [i for place in self.written_places for i in place[2] if self.mutants[i].line == line] or None, False

    # --- Text -------------------------------------------------------------------------------------

    def operator_between(self, cursor, left):
        """The operator's token, behind the left operand."""
        for token in cursor.get_tokens():
            if token.extent.start.offset >= left.extent.end.offset and token.kind == TokenKind.PUNCTUATION:
                return token
        return None

    def snippet(self, cursor, op=None, other=""):
        """The text of a node on one line; with another operator, what becomes of it."""
        start, end = cursor.extent.start.offset, cursor.extent.end.offset
        if op is None:
            return self.flat(start, end)
        changed = f"{self.flat(start, op.extent.start.offset)} {other} {self.flat(op.extent.end.offset, end)}"
        return f"{self.flat(start, end)}` becomes `{' '.join(changed.split())}"

    def flat(self, start, end):
        return " ".join(self.text[start:end].decode().split())

    def in_macro(self, start, end):
        i = bisect.bisect_right(self.macros, (start, float("inf")))
        return i > 0 and start < self.macros[i - 1][1] and end <= self.macros[i - 1][1]

    @staticmethod
    def qualified(cursor):
        names = [cursor.spelling]
        above = cursor.semantic_parent
        while above is not None and above.kind != Kind.TRANSLATION_UNIT:
            names += [above.spelling] if above.spelling else []
            above = above.semantic_parent
        return "::".join(reversed(names))


@functools.lru_cache(maxsize=None)
def declaration_head(file, start, name):
    with open(file, "rb") as source:
        return source.read()[start:name].split()


def constant_declaration(variable):
    if variable.location.file is None:
        return False
    head = declaration_head(variable.location.file.name, variable.extent.start.offset, variable.location.offset)
    return b"constexpr" in head
