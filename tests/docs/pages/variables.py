"""What may be another value each time a command is run. Everything else in a page is compared letter by letter.

A value in the page stands for any value of the same kind in the same place: a time for a time, a process for a process.
Blanks at the ends of lines do not count, as editors cut them off.
"""

import re

# One kind a line: how it is shown in a difference, and what it looks like. Where a pattern has a group, the group is the
# value and the rest has to be the same. docs/testing.md lists them, too.
KINDS = [
    ("TIME", r"\b\d{4}-\d\d-\d\d[T ]\d\d:\d\d:\d\d(?:\.\d+)?(?:[+-]\d\d:\d\d)?"),
    ("PROCESS", r"\bprocess (\d+)\b"),
    ("TABLE-KEY", r"\b0x44[0-9a-f]{6}\b"),
    ("SESSION", r"\b[0-9a-f]{32}\b"),
    ("FINGERPRINT", r"\bconfiguration +([0-9a-f]{16})\b"),
    ("SECONDS", r"\buptime +(\d+)\b"),
    ("SECONDS", r"Seconds\": (\d+)"),
]

PAGES_DIRECTORY = "/home/you/faultkeeper"  # where the reader of a page is

_COMPILED = [(kind, re.compile(pattern)) for kind, pattern in KINDS]


def _placed(kind):
    def replace(match):
        if not match.re.groups:
            return f"<{kind}>"
        begin, end = match.start(1) - match.start(), match.end(1) - match.start()
        whole = match.group()
        return f"{whole[:begin]}<{kind}>{whole[end:]}"
    return replace


def comparable(line):
    """The line with every value replaced by its kind."""
    line = line.rstrip()
    for kind, pattern in _COMPILED:
        line = pattern.sub(_placed(kind), line)
    return line


def as_printed_for_the_reader(text, directory):
    """The text with the scratch directory's name replaced by the one that pages use."""
    return text.replace(str(directory), PAGES_DIRECTORY)
