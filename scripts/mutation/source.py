"""A C++ source file as tokens, with what encloses each of them: enough to place faults, no compiler."""

import re

TOKEN = re.compile(
    r"""(?P<skipped> \s+ | //[^\n]* | /\*.*?\*/
                   | ^\#else\b.*?^\#endif\b    # what another system would compile
                   | ^[ \t]*\#(?:[^\n\\]|\\.|\\\n)* )
      | (?P<text> (?:u8|[uUL])?R"(?P<fence>[^()\\\s]*)\(.*?\)(?P=fence)"
                | (?:u8|[uUL])?"(?:[^"\\\n]|\\.)*" | (?:u8|[uUL])?'(?:[^'\\\n]|\\.)*' )
      | (?P<number> \.?[0-9](?:[eEpP][+-]|'?[\w.])* )
      | (?P<word> [A-Za-z_]\w* )
      | (?P<mark> <<=|>>=|\.\.\.|->\*|::|->|\+\+|--|<<|>>|<=|>=|==|!=|&&|\|\||[-+*/%&|^]=|. )""",
    re.VERBOSE | re.DOTALL | re.MULTILINE)

OPENING = {"(": ")", "[": "]", "{": "}"}


class Token:
    """`partner` is the place of the matching bracket, `function` that of the brace that opens the innermost function
    around the token, `bracket` that of the innermost bracket of any kind; None where there is none."""

    def __init__(self, kind, text, begin):
        self.kind = kind
        self.text = text
        self.begin = begin
        self.end = begin + len(text)
        self.partner = None
        self.bracket = None
        self.function = None


class Source:
    """What a file says and where faults may go."""

    def __init__(self, path, text):
        self.path = path
        self.text = text
        self._lines = [line.strip() for line in text.split("\n")]
        self.tokens = [Token(match.lastgroup if match.lastgroup != "fence" else "text", match.group(), match.start())
                       for match in TOKEN.finditer(text) if match.group("skipped") is None]
        self._Match()
        self._FindFunctions()
        self.idle = self._FindIdle()

    def Line(self, place):
        return self.text.count("\n", 0, self.tokens[place].begin) + 1

    def LineText(self, place):
        """The line around a token; " (2)" is added to the second of several that read the same."""
        line = self.Line(place)
        text = self._lines[line - 1]
        alike = [other for other, otherText in enumerate(self._lines, 1) if otherText == text]
        return f"{text} ({alike.index(line) + 1})" if len(alike) > 1 else text

    def Text(self, first, last):
        """The text from one token to another, both included."""
        return self.text[self.tokens[first].begin:self.tokens[last].end]

    def Spaced(self, place):
        """Has the token a blank on both sides, as an operator between two values has?"""
        token = self.tokens[place]
        return self.text[token.begin - 1].isspace() and self.text[token.end:token.end + 1].isspace()

    def Is(self, place, *texts):
        return 0 <= place < len(self.tokens) and self.tokens[place].text in texts

    def IsVoid(self, brace):
        """Does the function that this brace opens return nothing? None for functions without a name."""
        place = brace
        while place > 0 and not self.Is(place - 1, ";", "}", "{", ">") or self._InInitialiser(place):
            place -= 1
            if self.Is(place, ")"):
                place = self.tokens[place].partner
                if self.Is(place - 1, "]"):
                    return None
            elif self.Is(place, "]"):
                return None
        head = [token.text for token in self.tokens[place:brace]]
        opening = head.index("(") if "(" in head else 0
        return "void" in head[:opening] or "~" in head or head[:opening][-3:-1] == [head[opening - 1], "::"] or \
            not [word for word in head[:opening - 1] if word not in ("explicit", "inline", "constexpr")]

    def _InInitialiser(self, place):
        """Is the token before this one the end of `m_name{...}` in a constructor's list?"""
        return self.Is(place - 1, "}") and self.Is(place, ",", "{") and self.tokens[place - 1].partner is not None and \
            self.tokens[self.tokens[place - 1].partner - 1].kind == "word"

    def _Match(self):
        stack = []
        for place, token in enumerate(self.tokens):
            if stack and token.text == OPENING[self.tokens[stack[-1]].text] and token.kind == "mark":
                self.tokens[stack[-1]].partner = place
                token.partner = stack.pop()
            token.bracket = stack[-1] if stack else None
            if token.kind == "mark" and token.text in OPENING:
                stack.append(place)

    def _FindFunctions(self):
        for place, token in enumerate(self.tokens):
            outer = None if token.bracket is None else self.tokens[token.bracket]
            if outer is not None:
                token.function = token.bracket if self._OpensFunction(token.bracket) else outer.function

    def _OpensFunction(self, place):
        if not self.Is(place, "{"):
            return False
        before = place - 1
        while self.Is(before, "const", "noexcept", "override", "mutable"):
            before -= 1
        if self.Is(before, "]"):
            return True
        if not self.Is(before, ")"):
            return False
        opening = self.tokens[before].partner
        return not self.Is(opening - 1, "if", "for", "while", "switch", "catch", "constexpr")

    def _FindIdle(self):
        """The places inside of static_assert(...), which the compiler checks, and of reserve(...), which only makes room."""
        return {inside for place, token in enumerate(self.tokens) if token.text in ("static_assert", "reserve")
                for inside in range(place, self.tokens[place + 1].partner + 1)}
