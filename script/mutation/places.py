"""Finds the places of a C++ source that a mutant may change, with clang's parser, and what each becomes.

A place is written as insertions and replacements that compose: all mutants of a file are compiled in at once, each behind
mutant::on(NUMBER). No edit adds a line, so the compiler's line numbers stay those of the original.
"""
import dataclasses
import os
import re

from clang import cindex

Kind = cindex.CursorKind

NUMBER = re.compile(r"\d[\d']*[a-zA-Z]*|0[xX][\da-fA-F']+[uUlL]*|\d*\.\d+[fFlL]?|\d+\.\d*[fFlL]?")
CHARACTER = re.compile(r"(u8|[uUL])?'(\\.|[^'\\])+'", re.S)
STRING = re.compile(r'(u8|[uUL])?(R"([^(]*)\(.*?\)\3"|"(\\.|[^"\\])*")', re.S)
COMPARISONS = ("<", "<=", ">", ">=")
OTHER = {"<": "<=", "<=": "<", ">": ">=", ">=": ">"}
EMPTY = re.compile(r"(std::nullopt|nullptr|[\w:<>, ]*(\{\s*\}|\(\s*\)))")
# What holds no code that runs, or only what must be known at compile time.
STILL = {Kind.STATIC_ASSERT, Kind.CXX_UNARY_EXPR, Kind.ENUM_DECL, Kind.TYPEDEF_DECL, Kind.TYPE_ALIAS_DECL, Kind.USING_DECLARATION,
         Kind.USING_DIRECTIVE, Kind.TYPE_REF, Kind.TEMPLATE_REF, Kind.NAMESPACE_REF, Kind.DECL_REF_EXPR, Kind.CXX_TYPEID_EXPR,
         Kind.TEMPLATE_TYPE_PARAMETER, Kind.TEMPLATE_NON_TYPE_PARAMETER, Kind.TEMPLATE_TEMPLATE_PARAMETER,
         Kind.CONCEPT_DECL, Kind.FRIEND_DECL}
FUNCTIONS = {Kind.FUNCTION_DECL, Kind.CXX_METHOD, Kind.CONSTRUCTOR, Kind.DESTRUCTOR, Kind.CONVERSION_FUNCTION, Kind.FUNCTION_TEMPLATE}
VARIABLES = {Kind.VAR_DECL, Kind.FIELD_DECL, Kind.PARM_DECL}
LITERALS = {Kind.INTEGER_LITERAL, Kind.FLOATING_LITERAL, Kind.CHARACTER_LITERAL, Kind.STRING_LITERAL, Kind.CXX_BOOL_LITERAL_EXPR}
ASSIGNMENTS = {"=", "+=", "-=", "*=", "/=", "%=", "|=", "&=", "^=", "<<=", ">>="}
NUMBERS = {cindex.TypeKind.CHAR_S, cindex.TypeKind.SCHAR, cindex.TypeKind.UCHAR, cindex.TypeKind.SHORT, cindex.TypeKind.USHORT,
           cindex.TypeKind.INT, cindex.TypeKind.UINT, cindex.TypeKind.LONG, cindex.TypeKind.ULONG, cindex.TypeKind.LONGLONG,
           cindex.TypeKind.ULONGLONG, cindex.TypeKind.FLOAT, cindex.TypeKind.DOUBLE, cindex.TypeKind.ENUM}


DEDUCED = object()


@dataclasses.dataclass(frozen=True)
class Edit:
    """Text that stands before ("before"), after ("after") or instead of ("instead") the characters from start to end."""
    where: str
    start: int
    end: int
    text: str  # "@" is the mutant's number


@dataclasses.dataclass
class Mutant:
    path: str
    start: int
    end: int
    line: int
    original: str
    became: str
    edits: tuple
    number: int = 0

    @property
    def key(self):
        return f"{self.path}:{self.start}:{self.end}:{self.became}"


@dataclasses.dataclass
class Context:
    """What a place needs to know of what it lies in."""
    result: object = None     # the type that a return statement here makes; DEDUCED when it is not written down
    switch: str = "mutant::on"
    variable: object = None   # the constexpr variable whose initializer this is


class Finder:
    """Collects the mutants of one file."""

    def __init__(self, path, text):
        self.path = path
        self.data = text.encode()
        self.found = {}

    def text(self, start, end):
        return self.data[start:end].decode(errors="replace")

    def add(self, kind, start, end, became, edits, original=None):
        shown = " ".join((original or self.text(start, end)).split())
        line = self.data.count(b"\n", 0, start) + 1
        self.found.setdefault((kind, start, end), Mutant(self.path, start, end, line, shown, became, tuple(edits)))

    def wrap(self, kind, cursor, before, after, became):
        start, end = span(cursor)
        self.add(kind, start, end, became, [Edit("before", start, end, before), Edit("after", start, end, after)])

    # Walking

    def visit(self, cursor, context):
        kind = cursor.kind
        if kind in STILL or kind.is_attribute():
            return
        if kind in FUNCTIONS:
            self.function(cursor)
            return
        if kind in VARIABLES:
            context = self.variable_context(cursor, context)
        elif kind == Kind.LAMBDA_EXPR:
            context = dataclasses.replace(context, result=DEDUCED)
        elif kind.is_statement():
            self.statement(cursor, context)
        elif kind.is_expression():
            self.expression(cursor, context)
        for child in self.parts(cursor):
            self.visit(child, context)

    def parts(self, cursor):
        """The children that hold code which runs."""
        children = list(cursor.get_children())
        if cursor.kind in VARIABLES:
            after = cursor.location.offset
            return [child for child in children if span(child)[0] > after and not self.preceded(child, "[")
                    and not (cursor.kind == Kind.FIELD_DECL and cursor.is_bitfield())]
        if cursor.kind == Kind.CASE_STMT:
            return children[1:]
        if cursor.kind in (Kind.CXX_STATIC_CAST_EXPR, Kind.CXX_REINTERPRET_CAST_EXPR, Kind.CXX_CONST_CAST_EXPR):
            return children[-1:]
        if cursor.kind == Kind.MEMBER_REF_EXPR:
            return children[:1]
        if cursor.kind == Kind.IF_STMT and self.is_constexpr_if(cursor):
            return [child for child in children if span(child)[0] > self.head(cursor)[1]]
        return children

    def function(self, cursor):
        start, end = span(cursor)
        text = self.text(start, end)
        declared = text.split("{")[0]
        if re.search(r"\bconsteval\b", declared):
            return
        constant = re.search(r"\bconstexpr\b", declared)
        result = DEDUCED if re.search(r"\bauto\b", declared.split("(")[0]) else cursor.result_type
        context = Context(result=result, switch="mutant::is" if constant else "mutant::on")
        for child in cursor.get_children():
            if child.kind == Kind.COMPOUND_STMT and not self.text(*span(child)).startswith("{"):
                continue  # made by the compiler
            if child.kind == Kind.PARM_DECL or span(child)[0] > cursor.location.offset:
                self.visit(child, context)

    def variable_context(self, cursor, context):
        start = span(cursor)[0]
        name = cursor.location.offset
        if cursor.kind == Kind.VAR_DECL and re.search(r"\bconstexpr\b", self.text(start, name)):
            return dataclasses.replace(context, variable=cursor, switch="mutant::on")
        if cursor.kind == Kind.FIELD_DECL:  # its class may be used in a constant
            return dataclasses.replace(context, switch="mutant::is")
        return context

    # Places

    def expression(self, cursor, context):
        start, end = span(cursor)
        if start >= end or not balanced(self.text(start, end)):
            return
        if cursor.kind in LITERALS or (cursor.kind == Kind.CALL_EXPR and cursor.spelling.startswith('operator""')):
            self.literal(cursor, context)
            return
        children = list(cursor.get_children())
        if cursor.kind == Kind.CONDITIONAL_OPERATOR and children:
            self.negate(children[0], context)
        if len(children) < 2 or span(children[0])[0] != start or span(children[-1])[1] != end:
            return
        left, right = span(children[0]), span(children[-1])
        sign = self.text(left[1], right[0]).strip()
        if sign in ("==", "!="):
            self.negate(cursor, context, "!=" if sign == "==" else "==", sign)
        elif sign in COMPARISONS:
            self.compare(cursor, left, right, sign, context)
        elif sign in ("&&", "||"):
            self.negate(children[0], context)
            self.negate(children[-1], context)
            self.exchange(cursor, left, right, sign, context)

    def negate(self, cursor, context, became="", original=None):
        start, end = span(cursor)
        if start >= end or cursor.kind in LITERALS or not balanced(self.text(start, end)):
            return
        shown = self.text(start, end)
        edits = self.constant_edits(context)
        edits += [Edit("before", start, end, f"({context.switch}(@) != static_cast<bool>("), Edit("after", start, end, "))")]
        self.add("negate", start, end, f"!({short(shown)})" if not became else f"{original} exchanged for {became}", edits)

    def compare(self, cursor, left, right, sign, context):
        start, end = span(cursor)
        at = left[1] + self.text(left[1], right[0]).index(sign)
        name = {"<": "Less", "<=": "LessEqual", ">": "Greater", ">=": "GreaterEqual"}[sign]
        self.add("compare", start, end, f"{sign} exchanged for {OTHER[sign]}", self.constant_edits(context) + [
            Edit("before", start, end, f"mutant::compare(mutant::{name}(), {context.switch}(@), "),
            Edit("instead", at, at + len(sign), ","), Edit("after", start, end, ")")])

    def exchange(self, cursor, left, right, sign, context):
        start, end = span(cursor)
        on = f"{context.switch}(@)"
        other = "||" if sign == "&&" else "&&"
        edits = self.constant_edits(context) + [Edit("before", start, end, f"({on} != (")]
        for side in (left, right):
            edits += [Edit("before", *side, f"({on} != static_cast<bool>("), Edit("after", *side, "))")]
        self.add("exchange", start, end, f"{sign} exchanged for {other}", edits + [Edit("after", start, end, "))")])

    def literal(self, cursor, context):
        start, end = span(cursor)
        text = self.text(start, end)
        other = other_literal(text)
        if other is None or self.is_template_argument(start, end):
            return
        variable = context.variable
        if variable is not None and STRING.fullmatch(text) and variable.type.get_canonical().spelling == "const char *const":
            self.add("literal", start, end, other, self.named_text(variable, start, end, text, other))
            return
        self.add("literal", start, end, other, self.constant_edits(context) + [
            Edit("before", start, end, f"({context.switch}(@) ? {other} : "), Edit("after", start, end, ")")])

    def named_text(self, variable, start, end, text, other):
        """A constexpr pointer stays one: it points to an array that the chosen mutant changes before main."""
        at = span(variable)[0]
        inline = "inline" if variable.semantic_parent.kind in (Kind.NAMESPACE, Kind.TRANSLATION_UNIT) else "static"
        made = f"{inline} char mutant_@[] = {text}; {inline} const bool mutant_@_set = mutant::set(@, mutant_@, {other}); "
        return [Edit("before", at, span(variable)[1], made), Edit("instead", start, end, "static_cast<const char*>(mutant_@)")]

    def constant_edits(self, context):
        """Makes the constexpr variable around a place one that is initialized at run time."""
        variable = context.variable
        if variable is None:
            return []
        start, name = span(variable)[0], variable.location.offset
        at = start + self.data[start:name].index(b"constexpr")
        inside = variable.semantic_parent.kind in (Kind.CLASS_DECL, Kind.STRUCT_DECL, Kind.CLASS_TEMPLATE)
        return [Edit("instead", at, at + len("constexpr"), "inline" if inside else ""),
                Edit("before", name, name, "const ")]

    def statement(self, cursor, context):
        kind = cursor.kind
        if kind == Kind.IF_STMT and not self.is_constexpr_if(cursor):
            self.condition(cursor, context)
        elif kind in (Kind.WHILE_STMT, Kind.FOR_STMT):
            self.condition(cursor, context)
        elif kind == Kind.DO_STMT:
            self.negate(list(cursor.get_children())[-1], context)
        elif kind == Kind.RETURN_STMT:
            self.returned(cursor, context)
        begin = self.head(cursor)[1] if kind in (Kind.IF_STMT, Kind.WHILE_STMT, Kind.FOR_STMT) else 0
        for child in cursor.get_children():
            if child.kind.is_expression() and kind != Kind.RETURN_STMT and span(child)[0] > begin:
                self.left_out(child, context)

    def condition(self, cursor, context):
        opening, closing = self.head(cursor)
        inside = [child for child in cursor.get_children() if opening < span(child)[0] < closing]
        if cursor.kind == Kind.FOR_STMT:
            parts = split(self.text(opening + 1, closing))
            if len(parts) != 3:
                return
            first = opening + 1 + len(parts[0].encode()) + 1
            last = first + len(parts[1].encode())
            for step in inside:
                if step.kind.is_expression() and span(step)[0] > last:
                    self.leave_out(step, context)
            inside = [child for child in inside if first <= span(child)[0] < last]
        declared = [child for child in inside if child.kind == Kind.VAR_DECL]
        if declared:
            start, end = span(declared[0])
            if cursor.kind == Kind.IF_STMT and len(split(self.text(opening + 1, closing))) == 1:
                edit = Edit("after", start, end, f"; {context.switch}(@) != static_cast<bool>({declared[0].spelling})")
                self.add("negate", start, end, f"negated: {declared[0].spelling}", [edit])
        elif inside and inside[-1].kind.is_expression():
            self.negate(inside[-1], context)

    def returned(self, cursor, context):
        children = list(cursor.get_children())
        if not children or context.result is None:
            return
        value = children[0]
        start, end = span(value)
        text = self.text(start, end)
        deduced = context.result is DEDUCED
        kind = (value.type if deduced else context.result).get_canonical().kind
        if value.kind in LITERALS or other_literal(text) is not None or not balanced(text):
            return
        if kind == cindex.TypeKind.BOOL:
            self.negate(value, context)
        elif kind in NUMBERS and not text.startswith("{"):
            self.wrap("return", value, f"mutant::next({context.switch}(@), ", ")", f"the next after {short(text)}")
        elif kind in (cindex.TypeKind.RECORD, cindex.TypeKind.POINTER) and not deduced and not EMPTY.fullmatch(text):
            begin = span(cursor)[0]
            close = self.data.find(b";", end)
            if self.text(end, close).strip() == "":
                self.add("return", begin, close + 1, "return {}", [
                    Edit("before", begin, close + 1, f"{{ if ({context.switch}(@)) return {{}}; "),
                    Edit("after", begin, close + 1, " }")])

    def left_out(self, cursor, context):
        """An expression that stands as a statement: a call, an assignment, a count."""
        start, end = span(cursor)
        close = self.data.find(b";", end)
        if start >= end or close < 0 or self.text(end, close).strip() or not balanced(self.text(start, end)):
            return
        if self.text(0, start).rstrip()[-1:] not in ("{", "}", ";", ")", ":") and not re.search(r"\b(else|do)\s*$", self.text(0, start)):
            return
        if cursor.kind == Kind.CXX_STATIC_CAST_EXPR and "(" not in self.text(start, end).split(">", 1)[-1][1:]:
            return
        self.leave_out(cursor, context)

    def leave_out(self, cursor, context):
        self.wrap("statement", cursor, f"({context.switch}(@) ? void() : static_cast<void>(", "))", "left out")

    # Reading

    def head(self, cursor):
        """Where the parentheses after if, while or for open and close."""
        opening = self.data.index(b"(", span(cursor)[0])
        return opening, opening + closing_of(self.data[opening:].decode(errors="replace"))

    def is_constexpr_if(self, cursor):
        return re.match(r"if\s+(constexpr|consteval|!)", self.text(*span(cursor))) is not None

    def preceded(self, cursor, sign):
        return self.text(0, span(cursor)[0]).rstrip().endswith(sign)

    def is_template_argument(self, start, end):
        before, after = self.text(0, start).rstrip()[-1:], self.text(end, end + 80).lstrip()[:2]
        return (before == "<" and after[:1] in (">", ",")) or (before == "," and after[:1] == ">" and after != ">=")


def span(cursor):
    return cursor.extent.start.offset, cursor.extent.end.offset


def short(text):
    text = " ".join(text.split())
    return text if len(text) <= 60 else text[:57] + "..."


def skeleton(text):
    """The text with its literals and comments blanked, as long as before."""
    pattern = r'//[^\n]*|/\*.*?\*/|R"([^(]*)\(.*?\)\1"|"(?:\\.|[^"\\])*"|(?<![\da-fA-F])\'(?:\\.|[^\'\\])+\''
    return re.sub(pattern, lambda match: " " * len(match.group()), text, flags=re.S)


def balanced(text):
    depth = 0
    for sign in skeleton(text):
        depth += (sign in "([{") - (sign in ")]}")
        if depth < 0:
            return False
    return depth == 0


def closing_of(text):
    depth = 0
    for place, sign in enumerate(skeleton(text)):
        depth += (sign in "([{") - (sign in ")]}")
        if depth == 0:
            return len(text[:place].encode())
    raise ValueError("no closing parenthesis")


def split(text):
    """The parts between semicolons that stand in no bracket."""
    parts, depth, begin = [], 0, 0
    for place, sign in enumerate(skeleton(text)):
        depth += (sign in "([{") - (sign in ")]}")
        if sign == ";" and depth == 0:
            parts.append(text[begin:place])
            begin = place + 1
    return parts + [text[begin:]]


def other_literal(text):
    """What a literal becomes: of the same type, for a text also of the same length. None when it is none."""
    if text in ("true", "false"):
        return "false" if text == "true" else "true"
    if NUMBER.fullmatch(text):
        whole = re.fullmatch(r"([1-9]\d*|0)([a-zA-Z]*)", text.replace("'", ""))
        return f"{int(whole.group(1)) + 1}{whole.group(2)}" if whole else f"({text} + 1)"
    if CHARACTER.fullmatch(text):
        return f"static_cast<decltype({text})>({text} + 1)"
    if not STRING.match(text):
        return None
    first = STRING.match(text)
    if first.group() == '""' and first.end() == len(text):
        return '"~"'
    opening = text.index("(" if "R" in text[:text.index('"')] else '"') + 1
    for place in range(opening, first.end() - 1):
        if re.match(r"[a-zA-Z]", text[place]) and not re.search(r"(\\[^\s]{0,8}|%[^a-zA-Z]*)$", text[opening:place]):
            return text[:place] + ("q" if text[place] not in "qQ" else "w") + text[place + 1:]
    return '"~"' if first.end() == len(text) else None


def mutants_of(source, arguments, wanted):
    """The mutants of a translation unit's files for which wanted(path) holds, by path; its diagnostics are left alone."""
    unit = cindex.Index.create().parse(source, args=arguments)
    finders = {}
    for cursor in unit.cursor.get_children():
        file = cursor.location.file
        path = os.path.abspath(file.name) if file else None
        if path is None or not wanted(path):
            continue
        if path not in finders:
            with open(path, encoding="utf-8") as opened:
                finders[path] = Finder(path, opened.read())
        walk(finders[path], cursor)
    errors = [str(found) for found in unit.diagnostics if found.severity >= cindex.Diagnostic.Error]
    return {path: list(finder.found.values()) for path, finder in finders.items()}, errors


def walk(finder, cursor):
    if cursor.kind in (Kind.NAMESPACE, Kind.LINKAGE_SPEC, Kind.CLASS_DECL, Kind.STRUCT_DECL, Kind.CLASS_TEMPLATE):
        for child in cursor.get_children():
            walk(finder, child)
    else:
        finder.visit(cursor, Context())


def rewritten(text, mutants):
    """The text with all edits of the mutants in place."""
    data, pieces = text.encode(), []
    for mutant in mutants:
        for edit in mutant.edits:
            inserted = edit.text.replace("@", str(mutant.number))
            if edit.where == "after":
                pieces.append(((edit.end, 0, -edit.start, -mutant.number), edit.end, edit.end, inserted))
            elif edit.where == "before":
                pieces.append(((edit.start, 1, -edit.end, mutant.number), edit.start, edit.start, inserted))
            else:
                pieces.append(((edit.start, 2, 0, 0), edit.start, edit.end, inserted))
    out, at, last = [], 0, None
    for order, start, end, inserted in sorted(pieces):
        shared = order[1] == 2 or inserted == "const "
        if shared and (start, end, inserted) == last:
            continue  # mutants of one constexpr variable share what they need of it
        out += [data[at:start], inserted.encode()]
        at = end
        if shared:
            last = (start, end, inserted)
    return b"".join(out + [data[at:]]).decode()
