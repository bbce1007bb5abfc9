# Where a small defect can be put into a C++ file, found on Clang's syntax tree: each place is a stretch of bytes and the
# text to stand there instead. Comments, strings, types, assertions at compile time and what macros are made of are not
# touched.
import re
from dataclasses import dataclass

from clang.cindex import CursorKind, Index, TranslationUnit, TypeKind

COMPARISONS = {
    "<": ["<=", ">="], "<=": ["<", ">"], ">": [">=", "<="], ">=": [">", "<"], "==": ["!="], "!=": ["=="],
}  # fmt: skip
ARITHMETIC = {"+": "-", "-": "+", "*": "/", "/": "*", "%": "*", "+=": "-=", "-=": "+=", "*=": "/=", "/=": "*=", "%=": "*="}
BITS = {
    "&": "|", "|": "&", "^": "|", "<<": ">>", ">>": "<<", "&=": "|=", "|=": "&=", "^=": "|=", "<<=": ">>=", ">>=": "<<=",
}  # fmt: skip
LOGIC = {"&&": "||", "||": "&&"}
NOTHING = b"static_cast<void>(0)"

FUNCTIONS = {
    CursorKind.FUNCTION_DECL, CursorKind.CXX_METHOD, CursorKind.CONSTRUCTOR, CursorKind.DESTRUCTOR,
    CursorKind.CONVERSION_FUNCTION, CursorKind.FUNCTION_TEMPLATE,
}  # fmt: skip
VARIABLES = {CursorKind.VAR_DECL, CursorKind.FIELD_DECL, CursorKind.PARM_DECL}
# What is in them are types, which have no behaviour of their own, or is not evaluated, such as what sizeof asks for.
LEFT_ALONE = {
    CursorKind.STATIC_ASSERT, CursorKind.ENUM_DECL, CursorKind.TYPE_ALIAS_DECL, CursorKind.TYPEDEF_DECL,
    CursorKind.TEMPLATE_TYPE_PARAMETER, CursorKind.TEMPLATE_NON_TYPE_PARAMETER, CursorKind.CXX_BASE_SPECIFIER,
    CursorKind.ALIGNED_ATTR, CursorKind.TYPE_ALIAS_TEMPLATE_DECL, CursorKind.SIZE_OF_PACK_EXPR,
    CursorKind.TEMPLATE_REF, CursorKind.TYPE_REF, CursorKind.FRIEND_DECL, CursorKind.CXX_UNARY_EXPR,
}  # fmt: skip
WRAPPED = {CursorKind.UNEXPOSED_EXPR, CursorKind.PAREN_EXPR}
BODIES = {CursorKind.IF_STMT, CursorKind.WHILE_STMT, CursorKind.FOR_STMT, CursorKind.CXX_FOR_RANGE_STMT, CursorKind.DO_STMT}
COMMENT = re.compile(rb"/\*.*?\*/|//[^\n]*", re.S)
INTEGER = re.compile(rb"(0[xX][0-9a-fA-F']+|0[bB][01']+|[0-9][0-9']*)([A-Za-z_]\w*)?")


@dataclass(frozen=True)
class Place:
    kind: str
    function: str
    begin: int
    end: int
    text: bytes

    def put_into(self, source: bytes) -> bytes:
        return source[: self.begin] + self.text + source[self.end :]


def inner(cursor):
    while cursor.kind in WRAPPED:
        children = list(cursor.get_children())
        if len(children) != 1:
            break
        cursor = children[0]
    return cursor


def qualified_name(cursor):
    names = []
    while cursor is not None and cursor.kind != CursorKind.TRANSLATION_UNIT:
        if cursor.spelling:
            names.append(cursor.spelling)
        cursor = cursor.semantic_parent
    return "::".join(reversed(names))


def integer_neighbours(text):
    """The literals of the numbers beside: one more, and one less where that is not negative."""
    match = INTEGER.fullmatch(text)
    if not match:
        return []
    digits, suffix = match.group(1).replace(b"'", b""), match.group(2) or b""
    if len(digits) > 1 and digits[0:1] == b"0" and digits[1:2].isdigit():
        return []
    value = int(digits, 0)
    hexadecimal = digits[:2] in (b"0x", b"0X")
    found = [value + 1] + ([value - 1] if value > 0 else [])
    return [(b"0x%x" % number if hexadecimal else b"%d" % number) + suffix for number in found]


class File_Scan:
    """The places of one file, as one translation unit sees it."""

    def __init__(self, name, source, macros):
        self.name = name
        self.source = source
        self.macros = macros
        self.places = []
        self.owner = ""

    def add(self, kind, begin, end, text):
        if begin >= end or any(begin < last and end > first for first, last in self.macros):
            return
        if self.source[begin:end] != text:
            self.places.append(Place(kind, self.owner, begin, end, text))

    def is_here(self, cursor):
        begin = cursor.extent.start
        return begin.file is not None and begin.file.name == self.name

    def text_of(self, cursor):
        return self.source[cursor.extent.start.offset : cursor.extent.end.offset]

    def visit_children(self, cursor):
        children = [child for child in cursor.get_children() if self.is_here(child)]
        for index, child in enumerate(children):
            if cursor.kind in VARIABLES and self.belongs_to_the_type(cursor, child):
                continue
            if cursor.kind in FUNCTIONS and child.kind == CursorKind.INTEGER_LITERAL:
                continue
            if self.is_statement(cursor, index, children):
                self.leave_out(cursor, child)
            self.visit(child, cursor)

    def belongs_to_the_type(self, variable, child):
        begin = child.extent.start.offset
        return begin < variable.location.offset or self.source[:begin].rstrip().endswith(b"[") or variable.is_bitfield()

    @staticmethod
    def is_statement(parent, index, children):
        if parent.kind in (CursorKind.COMPOUND_STMT, CursorKind.CASE_STMT, CursorKind.DEFAULT_STMT):
            return parent.kind != CursorKind.CASE_STMT or index > 0
        if parent.kind == CursorKind.DO_STMT:
            return index == 0
        if parent.kind == CursorKind.IF_STMT:
            return index > 0
        return parent.kind in BODIES and index == len(children) - 1

    def leave_out(self, parent, statement):
        begin, end = statement.extent.start.offset, statement.extent.end.offset
        for first, last in self.macros:
            if first == begin:
                if self.source[last:].lstrip().startswith(b";"):
                    self.places.append(Place("left out", self.owner, first, last, NOTHING))
                return
        expression = inner(statement)
        if expression.kind == CursorKind.BINARY_OPERATOR:
            wanted = self.operator_of(*expression.get_children())[2] == "="
        elif expression.kind == CursorKind.UNARY_OPERATOR:
            wanted = self.text_of(expression)[:2] in (b"++", b"--") or self.text_of(expression)[-2:] in (b"++", b"--")
        else:
            wanted = expression.kind in (
                CursorKind.CALL_EXPR, CursorKind.COMPOUND_ASSIGNMENT_OPERATOR, CursorKind.CXX_DELETE_EXPR,
                CursorKind.CXX_THROW_EXPR,
            )  # fmt: skip
        if wanted:
            self.add("left out", begin, end, b"" if parent.kind == CursorKind.COMPOUND_STMT else NOTHING)

    def visit(self, cursor, parent):
        if cursor.kind in LEFT_ALONE:
            return
        owner = self.owner
        if cursor.kind in FUNCTIONS or (cursor.kind in VARIABLES and not owner):
            self.owner = qualified_name(cursor)
        handler = getattr(self, "visit_" + cursor.kind.name, None)
        if handler:
            handler(cursor, parent)
        self.visit_children(cursor)
        self.owner = owner

    def operator_of(self, left, right):
        begin, end = left.extent.end.offset, right.extent.start.offset
        between = self.source[begin:end]
        bare = COMMENT.sub(lambda comment: b" " * len(comment.group()), between)
        text = bare.strip()
        first = begin + bare.find(text) if text else begin
        return first, first + len(text), text.decode(errors="replace")

    def exchange_operator(self, left, right):
        begin, end, text = self.operator_of(left, right)
        for other in COMPARISONS.get(text, []):
            kind = "bound" if other.rstrip("=") == text.rstrip("=") and text not in ("==", "!=") else "comparison"
            self.add(kind, begin, end, other.encode())
        for kind, table in (("arithmetic", ARITHMETIC), ("bits", BITS), ("logic", LOGIC)):
            if text in table:
                self.add(kind, begin, end, table[text].encode())

    def visit_BINARY_OPERATOR(self, cursor, _parent):
        children = list(cursor.get_children())
        if len(children) == 2:
            self.exchange_operator(*children)

    visit_COMPOUND_ASSIGNMENT_OPERATOR = visit_BINARY_OPERATOR

    def visit_CALL_EXPR(self, cursor, _parent):
        arguments = list(cursor.get_arguments())
        if cursor.spelling.startswith("operator") and len(arguments) == 2 and cursor.spelling not in ("operator[]", "operator()"):
            self.exchange_operator(*arguments)

    def visit_UNARY_OPERATOR(self, cursor, parent):
        begin, end = cursor.extent.start.offset, cursor.extent.end.offset
        text = self.source[begin:end]
        for step, other in ((b"++", b"--"), (b"--", b"++")):
            if text.startswith(step):
                self.add("arithmetic", begin, begin + 2, other)
                return
            if text.endswith(step):
                self.add("arithmetic", end - 2, end, other)
                return
        if text[:1] == b"!":
            self.add("negation", begin, begin + 1, b"")
        elif text[:1] == b"~":
            self.add("bits", begin, begin + 1, b"")
        elif text[:1] == b"-":
            self.add("arithmetic", begin, begin + 1, b"")

    def visit_INTEGER_LITERAL(self, cursor, parent):
        begin, end = cursor.extent.start.offset, cursor.extent.end.offset
        before, after = self.source[:begin].rstrip(), self.source[end:].lstrip()
        is_argument_of_a_template = before.endswith(b"<") or after.startswith(b">")
        if is_argument_of_a_template and parent.kind != CursorKind.BINARY_OPERATOR:
            return
        for other in integer_neighbours(self.source[begin:end]):
            self.add("constant", begin, end, other)

    def visit_FLOATING_LITERAL(self, cursor, _parent):
        begin, end = cursor.extent.start.offset, cursor.extent.end.offset
        self.add("constant", begin, end, b"(" + self.source[begin:end] + b" + 1)")

    def visit_CXX_BOOL_LITERAL_EXPR(self, cursor, _parent):
        text = self.text_of(cursor)
        if text in (b"true", b"false"):
            other = b"false" if text == b"true" else b"true"
            self.add("constant", cursor.extent.start.offset, cursor.extent.end.offset, other)

    def negate(self, condition):
        plain = inner(condition)
        if plain.kind == CursorKind.BINARY_OPERATOR:
            children = list(plain.get_children())
            if len(children) == 2 and self.operator_of(*children)[2] in COMPARISONS:
                return
        if plain.kind in (CursorKind.UNARY_OPERATOR, CursorKind.CXX_BOOL_LITERAL_EXPR) and self.text_of(plain)[:1] != b"*":
            return
        begin, end = condition.extent.start.offset, condition.extent.end.offset
        self.add("negation", begin, end, b"!(" + self.source[begin:end] + b")")

    def visit_IF_STMT(self, cursor, _parent):
        children = list(cursor.get_children())
        if children[0].kind.is_expression() and not self.text_of(cursor)[2:].lstrip().startswith(b"constexpr"):
            self.negate(children[0])

    def visit_WHILE_STMT(self, cursor, _parent):
        children = list(cursor.get_children())
        if children[0].kind.is_expression():
            self.negate(children[0])

    def visit_DO_STMT(self, cursor, _parent):
        self.negate(list(cursor.get_children())[1])

    def visit_CONDITIONAL_OPERATOR(self, cursor, _parent):
        self.negate(list(cursor.get_children())[0])

    def visit_RETURN_STMT(self, cursor, _parent):
        children = list(cursor.get_children())
        if not children:
            return
        value, plain = children[0], inner(children[0])
        begin, end = value.extent.start.offset, value.extent.end.offset
        text = self.source[begin:end]
        kind = value.type.get_canonical().kind
        if text in (b"{}", b"nullptr") or plain.kind in (
            CursorKind.INTEGER_LITERAL, CursorKind.FLOATING_LITERAL, CursorKind.CXX_BOOL_LITERAL_EXPR,
        ):  # fmt: skip
            return
        if kind == TypeKind.BOOL:
            self.negate_return(value)
        elif kind == TypeKind.ENUM:
            self.add("return", begin, end, b"static_cast<decltype(" + text + b")>(static_cast<int>(" + text + b") + 1)")
        elif TypeKind.CHAR_U.value <= kind.value <= TypeKind.INT128.value:
            self.add("return", begin, end, b"static_cast<decltype(" + text + b")>((" + text + b") + 1)")
        elif kind in (TypeKind.FLOAT, TypeKind.DOUBLE):
            self.add("return", begin, end, b"(" + text + b") + 1")
        elif kind in (TypeKind.POINTER, TypeKind.RECORD):
            self.add("return", begin, end, b"{}")

    def negate_return(self, value):
        plain = inner(value)
        if plain.kind in (CursorKind.BINARY_OPERATOR, CursorKind.UNARY_OPERATOR):
            return
        begin, end = value.extent.start.offset, value.extent.end.offset
        self.add("return", begin, end, b"!(" + self.source[begin:end] + b")")


def places_in(main_file, arguments, files):
    """The places of those `files` that the translation unit of `main_file` takes in: a list for each of them."""
    unit = Index.create().parse(main_file, args=arguments, options=TranslationUnit.PARSE_DETAILED_PROCESSING_RECORD)
    errors = [str(note) for note in unit.diagnostics if note.severity >= 3]
    if errors:
        raise RuntimeError(f"{main_file} cannot be read by Clang: {errors[0]}")
    macros, declarations = {}, {}
    for cursor in unit.cursor.get_children():
        name = cursor.location.file.name if cursor.location.file else None
        if name not in files:
            continue
        if cursor.kind == CursorKind.MACRO_INSTANTIATION:
            macros.setdefault(name, []).append((cursor.extent.start.offset, cursor.extent.end.offset))
        elif cursor.kind.is_declaration():
            declarations.setdefault(name, []).append(cursor)
    found = {}
    for include in {name for name in files if name == main_file} | {item.include.name for item in unit.get_includes()}:
        if include not in files:
            continue
        with open(include, "rb") as file:
            scan = File_Scan(include, file.read(), macros.get(include, []))
        for declaration in declarations.get(include, []):
            scan.visit(declaration, unit.cursor)
        found[include] = sorted(set(scan.places), key=lambda place: (place.begin, place.end, place.kind, place.text))
    return found
