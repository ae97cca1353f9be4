"""The mutants of one source file: what libclang says can be changed there, and to what.

A mutant is one edit of the text. It is known by its file, its function and its line before and after the edit, so that it
stays the same mutant when lines above it come and go; equal ones in one function are numbered.
"""
import dataclasses
import hashlib
import re

from clang import cindex
from clang.cindex import CursorKind as Kind
from clang.cindex import TokenKind, TypeKind

RELATIONS = {"<": ["<=", ">="], "<=": ["<", ">"], ">": [">=", "<="], ">=": [">", "<"], "==": ["!="], "!=": ["=="]}
ARITHMETIC = {"+": "-", "-": "+", "*": "/", "/": "*", "%": "*", "&": "|", "|": "&", "^": "|", "<<": ">>", ">>": "<<",
              "+=": "-=", "-=": "+=", "*=": "/=", "/=": "*=", "%=": "*=", "&=": "|=", "|=": "&=", "^=": "|=",
              "<<=": ">>=", ">>=": "<<="}
LOGIC = {"&&": "||", "||": "&&"}
LOCKS = ("lock_guard", "unique_lock", "scoped_lock", "shared_lock")
FUNCTIONS = (Kind.FUNCTION_DECL, Kind.CXX_METHOD, Kind.CONSTRUCTOR, Kind.DESTRUCTOR, Kind.CONVERSION_FUNCTION,
             Kind.FUNCTION_TEMPLATE)
SCOPES = FUNCTIONS + (Kind.NAMESPACE, Kind.CLASS_DECL, Kind.STRUCT_DECL, Kind.CLASS_TEMPLATE, Kind.UNION_DECL,
                      Kind.CLASS_TEMPLATE_PARTIAL_SPECIALIZATION)
# A statement that is one of these can go.
REMOVABLE = (Kind.CALL_EXPR, Kind.BINARY_OPERATOR, Kind.COMPOUND_ASSIGNMENT_OPERATOR, Kind.UNARY_OPERATOR,
             Kind.BREAK_STMT, Kind.CONTINUE_STMT, Kind.CXX_THROW_EXPR, Kind.UNEXPOSED_EXPR, Kind.CXX_DELETE_EXPR)
BODIES = (Kind.IF_STMT, Kind.FOR_STMT, Kind.WHILE_STMT, Kind.CXX_FOR_RANGE_STMT, Kind.DO_STMT, Kind.CASE_STMT,
          Kind.DEFAULT_STMT)


@dataclasses.dataclass(frozen=True)
class Mutant:
    file: str         # below the root of the sources
    function: str     # qualified; of a constant outside functions its name
    kind: str         # relation, arithmetic, constant, condition, statement, lock, arguments, text
    line: int
    offset: int       # in bytes, as libclang counts
    length: int
    replacement: str
    before: str       # the line, or the lines joined, without the mutation
    after: str
    number: int = 1   # among mutants of one function that read alike
    body: tuple = ()  # where the outermost function's body begins and ends, if the edit lies in one

    def key(self):
        return (self.file, self.function, self.before, self.after, self.number)

    def id(self):
        return hashlib.sha1("\0".join(map(str, self.key())).encode()).hexdigest()[:12]

    def apply(self, text):
        """`text` is the file's bytes."""
        end = self.offset + self.length
        # As many lines as before: what says its line, as an assertion does, says the same.
        missing = text[self.offset:end].count(b"\n") - self.replacement.encode().count(b"\n")
        return text[:self.offset] + self.replacement.encode() + b"\n" * missing + text[end:]


class Finder:
    def __init__(self, name, text, unit):
        self.name, self.text, self.unit = name, text, unit
        self.path = unit.spelling
        extent = unit.get_extent(self.path, (0, len(text)))
        self.tokens = [token for token in unit.get_tokens(extent=extent) if token.kind != TokenKind.COMMENT]
        self.at = {token.extent.start.offset: index for index, token in enumerate(self.tokens)}
        self.starts = sorted(self.at)
        self.edits = []
        self.seen = set()
        self.body = ()

    # Where things stand.

    def own(self, cursor):
        start, end = cursor.extent.start, cursor.extent.end
        return start.file is not None and start.file.name == self.path and end.file is not None \
            and end.file.name == self.path

    def written(self, cursor):
        """Whether the file has the cursor's text as it stands, which a macro's expansion does not."""
        start, end = cursor.extent.start.offset, cursor.extent.end.offset
        return self.own(cursor) and start in self.at and start < end

    def spelled(self, cursor):
        return self.text[cursor.extent.start.offset:cursor.extent.end.offset].decode()

    def token_between(self, first, second, wanted):
        """The operator between the texts of two operands, parentheses apart."""
        low, high = first.extent.end.offset, second.extent.start.offset
        for token in self.tokens:
            if low <= token.extent.start.offset < high and token.spelling in wanted:
                return token
        return None

    def add(self, kind, function, start, end, replacement):
        found = (start, end, replacement)
        if found not in self.seen:
            self.seen.add(found)
            inside = self.body and self.body[0] < start and end < self.body[1]
            self.edits.append((start, end, kind, function, replacement, self.body if inside else ()))

    # What can be changed.

    def visit(self, cursor, function):
        if cursor.kind == Kind.STATIC_ASSERT or not self.own(cursor) and cursor.kind != Kind.TRANSLATION_UNIT:
            return
        if cursor.kind in SCOPES and cursor.spelling:
            function = f"{function}::{cursor.spelling}" if function else cursor.spelling
        elif cursor.kind == Kind.VAR_DECL and cursor.semantic_parent is not None \
                and cursor.semantic_parent.kind in (Kind.NAMESPACE, Kind.TRANSLATION_UNIT):
            function = f"{function}::{cursor.spelling}" if function else cursor.spelling
        children = list(cursor.get_children())
        outermost = not self.body
        if cursor.kind in FUNCTIONS and outermost:
            for child in children:
                if child.kind == Kind.COMPOUND_STMT and self.written(child):
                    self.body = (child.extent.start.offset, child.extent.end.offset)
        self.statements(cursor, children, function)
        self.operators(cursor, children, function)
        self.literals(cursor, function)
        self.conditions(cursor, children, function)
        self.arguments(cursor, function)
        for child in children:
            if self.is_extent_of_array(cursor, child):
                continue
            if cursor.kind in FUNCTIONS and child.kind in (Kind.TYPE_REF, Kind.NAMESPACE_REF, Kind.TEMPLATE_REF):
                continue
            self.visit(child, function)
        if outermost:
            self.body = ()

    @staticmethod
    def is_extent_of_array(cursor, child):
        # One element more of an array that nobody looks at is no other program.
        return cursor.kind in (Kind.VAR_DECL, Kind.FIELD_DECL) and cursor.type.kind == TypeKind.CONSTANTARRAY \
            and child.kind == Kind.INTEGER_LITERAL

    def statements(self, cursor, children, function):
        if cursor.kind == Kind.COMPOUND_STMT:
            inside = children
        elif cursor.kind in BODIES:
            inside = [child for child in children if self.is_statement(child)]
        else:
            return
        for child in inside:
            if not self.written(child) or not self.is_statement(child):
                continue
            start, end = child.extent.start.offset, child.extent.end.offset
            if child.kind == Kind.DECL_STMT:
                if any(lock in self.spelled(child).split("(")[0].split("{")[0] for lock in LOCKS):
                    self.add("lock", function, start, end, ";")
            elif child.kind in REMOVABLE:
                self.add("statement", function, start, end, "")
            elif child.kind == Kind.RETURN_STMT and self.spelled(child) == "return":
                self.add("statement", function, start, end, "")

    def is_statement(self, cursor):
        """Whether a semicolon ends it: an expression inside another has something else behind it."""
        if cursor.kind == Kind.DECL_STMT:
            return True
        index = self.index_behind(cursor.extent.end.offset)
        first = self.at.get(cursor.extent.start.offset)
        return index is not None and first is not None and self.tokens[index].spelling == ";" and first > 0 \
            and self.tokens[first - 1].spelling in (";", "{", "}", ")", "else", "do", ":")

    def index_behind(self, offset):
        low, high = 0, len(self.starts)
        while low < high:
            middle = (low + high) // 2
            if self.starts[middle] < offset:
                low = middle + 1
            else:
                high = middle
        return self.at[self.starts[low]] if low < len(self.starts) else None

    def operators(self, cursor, children, function):
        if cursor.kind in (Kind.BINARY_OPERATOR, Kind.COMPOUND_ASSIGNMENT_OPERATOR) and len(children) == 2:
            token = self.token_between(children[0], children[1], {**RELATIONS, **ARITHMETIC, **LOGIC})
        elif cursor.kind == Kind.CALL_EXPR and cursor.spelling.startswith("operator") and len(children) == 3:
            token = self.token_between(children[0], children[2], RELATIONS)
        else:
            token = None
        if token is not None:
            start, end = token.extent.start.offset, token.extent.end.offset
            for other in RELATIONS.get(token.spelling, []):
                self.add("relation", function, start, end, other)
            for table, kind in ((ARITHMETIC, "arithmetic"), (LOGIC, "condition")):
                if token.spelling in table:
                    self.add(kind, function, start, end, table[token.spelling])
        if cursor.kind == Kind.UNARY_OPERATOR and self.written(cursor) and len(children) == 1:
            first = self.tokens[self.at[cursor.extent.start.offset]]
            last = self.tokens[max(0, (self.index_behind(cursor.extent.end.offset) or len(self.tokens)) - 1)]
            for token in (first, last):
                start, end = token.extent.start.offset, token.extent.end.offset
                if token.spelling in ("++", "--"):
                    self.add("arithmetic", function, start, end, "--" if token.spelling == "++" else "++")
            start, end = first.extent.start.offset, first.extent.end.offset
            if first.spelling in ("!", "~", "-"):
                self.add("condition" if first.spelling == "!" else "arithmetic", function, start, end, "")
        if cursor.kind == Kind.DECL_REF_EXPR and cursor.spelling in ("min", "max"):
            name = self.index_behind(cursor.extent.start.offset)
            while name is not None and self.tokens[name].spelling not in ("min", "max"):
                name += 1
            if name is not None and self.tokens[name].spelling == cursor.spelling:
                start, end = self.tokens[name].extent.start.offset, self.tokens[name].extent.end.offset
                self.add("relation", function, start, end, "max" if cursor.spelling == "min" else "min")

    def literals(self, cursor, function):
        if not self.written(cursor):
            return
        start, end, text = cursor.extent.start.offset, cursor.extent.end.offset, self.spelled(cursor)
        if cursor.kind == Kind.INTEGER_LITERAL:
            match = re.fullmatch(r"(0[xX][0-9A-Fa-f']+|[0-9][0-9']*)([uUlLzZ]*)", text)
            if match:
                value, suffix = int(match[1].replace("'", ""), 0 if match[1][:2] in ("0x", "0X") else 10), match[2]
                for other in (value + 1, value - 1):
                    if other >= 0:
                        self.add("constant", function, start, end, f"{other}{suffix}")
        elif cursor.kind == Kind.FLOATING_LITERAL:
            self.add("constant", function, start, end, f"({text} + 1)")
        elif cursor.kind == Kind.CXX_BOOL_LITERAL_EXPR and text in ("true", "false"):
            self.add("constant", function, start, end, "false" if text == "true" else "true")
        elif cursor.kind == Kind.CHARACTER_LITERAL and re.fullmatch(r"'[ -Z^-~]'", text):
            self.add("constant", function, start, end, f"'{chr(ord(text[1]) + 1)}'" if text[1] not in "&Z" else "'?'")
        elif cursor.kind == Kind.STRING_LITERAL:
            self.add("text", function, start, end, other_text(text))

    def conditions(self, cursor, children, function):
        if cursor.kind == Kind.CONDITIONAL_OPERATOR and len(children) == 3:
            self.negate(children[0], function)
        elif cursor.kind in (Kind.IF_STMT, Kind.WHILE_STMT) and self.written(cursor):
            # The condition stands between the parentheses; a declaration there is left as it is.
            index = self.at[cursor.extent.start.offset] + 1
            if self.tokens[index].spelling == "constexpr":
                return
            depth, close = 0, None
            for token in self.tokens[index:]:
                depth += {"(": 1, ")": -1}.get(token.spelling, 0)
                if depth == 0:
                    close = token.extent.start.offset
                    break
            inside = [child for child in children
                      if child.kind.is_expression() and close and child.extent.end.offset <= close]
            if inside:
                self.negate(inside[-1], function)
        elif cursor.kind == Kind.FOR_STMT:
            for child in children:
                # The middle one of three.
                index = self.index_behind(child.extent.end.offset)
                first = self.at.get(child.extent.start.offset)
                if child.kind.is_expression() and index is not None and self.tokens[index].spelling == ";" \
                        and first and self.tokens[first - 1].spelling == ";":
                    self.negate(child, function)

    def negate(self, condition, function):
        if not self.written(condition):
            return
        children = list(condition.get_children())
        plain = condition
        while plain.kind in (Kind.UNEXPOSED_EXPR, Kind.PAREN_EXPR) and len(children) == 1:
            plain = children[0]
            children = list(plain.get_children())
        # Relations and "not" have negations of their own among the operators.
        if plain.kind == Kind.BINARY_OPERATOR and len(children) == 2 \
                and self.token_between(children[0], children[1], {**RELATIONS}) is not None \
                and self.token_between(children[0], children[1], {**ARITHMETIC, **LOGIC}) is None:
            return
        if plain.kind == Kind.CALL_EXPR and plain.spelling in {f"operator{relation}" for relation in RELATIONS}:
            return
        if plain.kind == Kind.UNARY_OPERATOR and self.spelled(plain).startswith("!"):
            return
        start, end = condition.extent.start.offset, condition.extent.end.offset
        self.add("condition", function, start, end, f"!({self.spelled(condition)})")

    def arguments(self, cursor, function):
        # Of two numbers the smaller one is the smaller one in either order.
        if cursor.kind != Kind.CALL_EXPR or cursor.spelling.startswith("operator") or cursor.spelling in ("min", "max"):
            return
        arguments = list(cursor.get_arguments())
        for first, second in zip(arguments, arguments[1:]):
            if first is None or second is None or not self.written(first) or not self.written(second):
                continue
            same = first.type.get_canonical().spelling == second.type.get_canonical().spelling
            if same and self.spelled(first) != self.spelled(second):
                low, high = first.extent.end.offset, second.extent.start.offset
                if low <= high:
                    between = self.text[low:high].decode()
                    self.add("arguments", function, first.extent.start.offset, second.extent.end.offset,
                             self.spelled(second) + between + self.spelled(first))


def other_text(literal):
    """The literal with its first letter changed, but not one that printf reads or that an escape is made of."""
    position = literal.index('"') + 1
    while position < len(literal) - 1:
        conversion = re.compile(r"%[-+ #0-9.*]*(?:hh|h|ll|l|z|j|t)?[a-zA-Z%]|\\.").match(literal, position)
        if conversion:
            position = conversion.end()
        elif literal[position].isalnum():
            return literal[:position] + ("Y" if literal[position] in "xX" else "X") + literal[position + 1:]
        else:
            position += 1
    return literal[:-1] + '~"'


def line_around(text, start, end):
    """The whole lines of an edit, blanks run together, and where they begin and end."""
    low = text.rfind(b"\n", 0, start) + 1
    high = text.find(b"\n", end)
    return low, len(text) if high < 0 else high


def joined(text):
    """Lines of code as one, without comments, so that a mutant stays the same when a comment is written anew."""
    lines = [re.sub(r"(^|\s)//[^\"]*$", "", line) for line in text.decode().split("\n")]
    return " ".join(" ".join(lines).split())


def find_mutants(name, path, arguments, library=None):
    """The mutants of the file at `path`, called `name`, compiled with `arguments`, in the order of their lines.

    Raises ValueError when libclang does not understand the file."""
    if library and not cindex.Config.loaded:
        cindex.Config.set_library_file(library)
    text = path.read_bytes()
    unit = cindex.Index.create().parse(str(path), args=arguments)
    errors = [str(problem) for problem in unit.diagnostics if problem.severity >= cindex.Diagnostic.Error]
    if errors:
        raise ValueError(f"{name}: {errors[0]}")
    finder = Finder(name, text, unit)
    finder.visit(unit.cursor, "")
    mutants, alike = [], {}
    for start, end, kind, function, replacement, body in sorted(finder.edits):
        low, high = line_around(text, start, end)
        before = joined(text[low:high])
        after = joined(text[low:start] + replacement.encode() + text[end:high])
        if before == after:
            continue
        number = alike[function, before, after] = alike.get((function, before, after), 0) + 1
        mutants.append(Mutant(name, function, kind, text.count(b"\n", 0, start) + 1, start, end - start, replacement,
                              before, after, number, body))
    return mutants
