"""The small faults that can be made in a source file, sorted by kind."""

import hashlib
import itertools
import re

OPERATORS = {
    "==": ("!=",), "!=": ("==",), "<": ("<=", ">"), "<=": ("<", ">"), ">": (">=", "<"), ">=": (">", "<"),
    "&&": ("||",), "||": ("&&",), "+": ("-",), "-": ("+",), "*": ("/",), "/": ("*",), "%": ("/",),
    "&": ("|",), "|": ("&",), "<<": (">>",), ">>": ("<<",), "+=": ("-=",), "-=": ("+=",), "|=": ("&=",), "&=": ("|=",),
}
UNSPACED = {"++": ("--",), "--": ("++",), "!": ("",)}

KEYWORDS = {"return", "if", "for", "while", "do", "switch", "case", "default", "else", "using", "const", "static", "auto",
            "goto", "try", "catch", "typedef", "struct", "class", "enum", "namespace", "constexpr", "public", "private",
            "protected", "friend", "template", "static_assert"}
SYMMETRIC = {"min", "max"}    # of integers: whichever comes first, the result is the same
NO_CALL = {"if", "for", "while", "switch", "return", "sizeof", "catch", "static_assert", "decltype", "alignas", "noexcept"}

LONGEST = 80    # characters of code in what is said about a fault

INTEGER = re.compile(r"(?P<digits>0[xX][0-9a-fA-F']+|[0-9][0-9']*)(?P<suffix>[uUlLzZ]*)$")


class Fault:
    """A text that takes the place of another."""

    def __init__(self, source, kind, place, begin, end, replacement, what):
        self.path = source.path
        self.line = source.Line(place)
        self.lineText = source.LineText(place)
        self.kind = kind
        self.begin = begin
        self.end = end
        self.replacement = replacement
        self.what = what

    def Apply(self, text):
        return text[:self.begin] + self.replacement + text[self.end:]

    def Key(self):
        return (self.path, self.begin, self.end, self.replacement)


def Short(text):
    """A text on one line, long ones cut off."""
    line = " ".join(text.split())
    return line if len(line) <= LONGEST else f"{line[:LONGEST]}..."


def Exchange(source, kind, place, replacement):
    token = source.tokens[place]
    name = f"`{token.text}`{Ordinal(source, place)}"
    what = f"{name} becomes `{replacement}`" if replacement else f"{name} is left out"
    return Fault(source, kind, place, token.begin, token.end, replacement, what)


def Ordinal(source, place):
    """" (2)" for the second of its kind on a line, "" if it is the only one."""
    line = source.Line(place)
    alike = [other for other, token in enumerate(source.tokens)
             if token.text == source.tokens[place].text and source.Line(other) == line]
    return f" ({alike.index(place) + 1})" if len(alike) > 1 else ""


def OperatorFaults(source):
    for place, token in enumerate(source.tokens):
        if token.kind != "mark" or source.Is(place - 1, "operator") or place in source.idle:
            continue
        others = UNSPACED.get(token.text, ()) + (OPERATORS.get(token.text, ()) if source.Spaced(place) else ())
        if token.text in ("<<", ">>") and source.tokens[place + 1].kind != "number" and \
                not re.match("k[A-Z]", source.tokens[place + 1].text):
            continue    # a stream
        for other in others:
            yield Exchange(source, "operator", place, other)


def ConstantFaults(source):
    for place, token in enumerate(source.tokens):
        if place in source.idle:
            continue
        if token.text in ("true", "false"):
            yield Exchange(source, "constant", place, "false" if token.text == "true" else "true")
        elif token.kind == "number":
            yield from NumberFaults(source, place)


def NumberFaults(source, place):
    match = INTEGER.match(source.tokens[place].text)
    if match is None:
        return
    digits = match["digits"].replace("'", "")
    hexadecimal = digits[:2] in ("0x", "0X")
    value = int(digits, 16 if hexadecimal else 10)
    for other in (value + 1, value - 1):
        if other >= 0:
            yield Exchange(source, "constant", place, (hex(other) if hexadecimal else str(other)) + match["suffix"])


def Statements(source):
    """First and last token of each statement that ends with a semicolon and stands in a function."""
    for place, token in enumerate(source.tokens):
        if token.function is None or not BeginsStatement(source, place):
            continue
        last = place
        while last < len(source.tokens) and not source.Is(last, ";", "}"):
            partner = source.tokens[last].partner
            last = partner + 1 if partner is not None and partner > last else last + 1
        if source.Is(last, ";"):
            yield place, last


def BeginsStatement(source, place):
    bracket = source.tokens[place].bracket
    if source.tokens[place].text in ("{", "}", ")", ",", ".", ";", "else") or bracket is None or not source.Is(bracket, "{"):
        return False
    if source.Is(place - 1, ";", "else") or source.Is(place - 1, "{", "}") and IsBlock(source, bracket):
        return True
    if not source.Is(place - 1, ")"):
        return False
    return source.Is(source.tokens[place - 1].partner - 1, "if", "for", "while")


def IsBlock(source, brace):
    return source.Is(brace - 1, ")", "else", "do", "try", "const", "noexcept", "override", ";", "{", "}")


def IsDroppable(source, first, last):
    """A call, an assignment, a step out of a loop; no declaration, nor what only makes room ahead of time."""
    if source.tokens[first].text in ("break", "continue"):
        return True
    if source.tokens[first].text in KEYWORDS:
        return False
    place = first
    while place < last:
        token = source.tokens[place]
        if token.kind == "word" and source.tokens[place + 1].kind == "word":
            return False
        if token.text in ("reserve", "shrink_to_fit"):
            return False
        if token.text in ("=", "+=", "-=", "|=", "&=", "++", "--", "<<"):
            return True
        if token.text == "(":
            return place > first and source.tokens[place - 1].kind == "word" or place == first
        if token.text in ("[", "{"):
            place = token.partner
        elif token.text in ("<", "&") or token.text == "*" and place > first:
            return False
        place += 1
    return False


def DroppedStatements(source):
    for first, last in Statements(source):
        if IsDroppable(source, first, last):
            begin, end = source.tokens[first].begin, source.tokens[last].end
            yield Fault(source, "statement", first, begin, end, ";", f"`{Short(source.text[begin:end])}` is left out")


def EarlyReturns(source):
    for first, last in Statements(source):
        if source.Is(first, "break", "continue") or source.Is(first, "return") and source.Is(first + 1, ";", "{"):
            continue
        void = source.IsVoid(source.tokens[first].function)
        if void is None:
            continue
        begin = source.tokens[first].begin
        for early in ("return;",) if void else ("return {};",):
            if not source.Is(first, "return") or Short(source.Text(first, last)) not in ("return false;", "return 0;"):
                yield Fault(source, "early return", first, begin, begin, f"{early} ",
                            f"`{early}` before `{Short(source.Text(first, last))}`")


def Arguments(source, opening):
    """First and last token of each argument between brackets."""
    closing = source.tokens[opening].partner
    first = place = opening + 1
    while place < closing:
        if source.Is(place, ","):
            yield first, place - 1
            first = place + 1
        partner = source.tokens[place].partner
        place = partner + 1 if partner is not None and partner > place else place + 1
    if first < closing:
        yield first, closing - 1


def SwappedArguments(source):
    for place, token in enumerate(source.tokens):
        if token.function is None or token.partner is None or token.partner < place or place in source.idle:
            continue
        before = source.tokens[place - 1]
        call = token.text == "(" and (before.kind == "word" and before.text not in NO_CALL or before.text == ">")
        values = token.text == "{" and source.Is(place - 1, "=", "(", ",", "return")
        if not call and not values or before.text in SYMMETRIC:
            continue
        arguments = list(Arguments(source, place))
        for (first, last), (nextFirst, nextLast) in zip(arguments, arguments[1:]):
            one, other = source.Text(first, last), source.Text(nextFirst, nextLast)
            if one != other:
                begin, end = source.tokens[first].begin, source.tokens[nextLast].end
                between = source.text[source.tokens[last].end:source.tokens[nextFirst].begin]
                yield Fault(source, "arguments", first, begin, end, other + between + one,
                            f"`{Short(one)}` and `{Short(other)}` change places")


def NegatedConditions(source):
    for place, token in enumerate(source.tokens):
        if token.function is None or token.text not in ("if", "while") or not source.Is(place + 1, "("):
            continue
        first, last = place + 2, source.tokens[place + 1].partner - 1
        begin, end = source.tokens[first].begin, source.tokens[last].end
        condition = source.text[begin:end]
        yield Fault(source, "condition", first, begin, end, f"!({condition})", f"`{Short(condition)}` is negated")


KINDS = (OperatorFaults, ConstantFaults, DroppedStatements, EarlyReturns, SwappedArguments, NegatedConditions)


def Draw(sources, seed):
    """All faults of the files in an order that looks random, the kinds taking turns; none comes twice. What a fault is
    decides on its place, so a change in the sources leaves the order of all other faults as it was."""
    def Lot(fault):
        return hashlib.sha256(f"{seed} {fault.path} {fault.lineText} {fault.what}".encode()).digest()

    kinds = [sorted((fault for source in sources for fault in kind(source)), key=Lot) for kind in KINDS]
    seen = set()
    for turn in itertools.zip_longest(*kinds):
        for fault in turn:
            if fault is not None and fault.Key() not in seen:
                seen.add(fault.Key())
                yield fault
