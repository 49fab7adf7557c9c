"""A page as the blocks of code that it shows and the text between them."""

import re
from dataclasses import dataclass, field

_FENCE = re.compile(r"^( *)(`{3,})(.*)$")
_NOT_RUN = re.compile(r"^\*Not run here: (.+)\.\*$")
_RUN_BY = re.compile(r"^\*Run by (?:the test )?`(.+)`\.\*$")


@dataclass
class Block:
    """Lines of code as they stand in the page, without indentation."""
    line: int  # of the first of them, from 1
    words: list  # behind the fence; none for lines that are merely indented
    lines: list
    indent: str = ""
    not_run: str = ""  # why its commands are not run, from the line above it
    run_by: str = ""  # ".ci/run" or a test, if that does it

    @property
    def language(self):
        return self.words[0] if self.words else ""


@dataclass
class Page:
    name: str  # as the project's root sees it
    lines: list
    blocks: list = field(default_factory=list)
    text: list = field(default_factory=list)  # (line number, line) of everything outside of blocks


@dataclass
class Step:
    """A command and what it is said to print."""
    line: int
    command: list  # its lines, without the prompts
    output: list


def _mark(block, above):
    while above and not above[-1].strip():
        above = above[:-1]
    if above:
        not_run = _NOT_RUN.match(above[-1].strip())
        block.not_run = not_run.group(1) if not_run else ""
        run_by = _RUN_BY.match(above[-1].strip())
        block.run_by = run_by.group(1) if run_by else ""


def _fenced(lines, begin, opening):
    indent, fence, info = opening.groups()
    end = begin + 1
    while end < len(lines) and lines[end].strip() != fence:
        end += 1
    inside = [line[len(indent):] if line.startswith(indent) else line for line in lines[begin + 1:end]]
    return end, Block(begin + 2, info.split(), inside, indent)


def _indented(lines, begin):
    end = begin
    while end < len(lines) and (lines[end].startswith("    ") or not lines[end].strip()):
        end += 1
    while not lines[end - 1].strip():
        end -= 1
    return end - 1, Block(begin + 1, [], [line[4:] for line in lines[begin:end]])


def read(name, text):
    page = Page(name, text.splitlines())
    at = 0
    while at < len(page.lines):
        line = page.lines[at]
        opening = _FENCE.match(line)
        block = None
        if opening:
            last, block = _fenced(page.lines, at, opening)
        elif line.startswith("    ") and line.strip() and (at == 0 or not page.lines[at - 1].strip()):
            last, block = _indented(page.lines, at)
        if block:
            _mark(block, page.lines[:at])
            page.blocks.append(block)
            at = last
        else:
            page.text.append((at + 1, line))
        at += 1
    return page


def steps(block):
    """The commands of a console block: "$ " begins one, "> " right behind it goes on with it."""
    found = []
    for number, line in enumerate(block.lines, block.line):
        if line.startswith("$ "):
            found.append(Step(number, [line[2:]], []))
        elif found and not found[-1].output and (line.startswith("> ") or line == ">"):
            found[-1].command.append(line[2:])
        elif found:
            found[-1].output.append(line)
        elif line.strip():
            raise ValueError(f"line {number}: a console block begins with a command, \"$ ...\"")
    return found


def shown(step):
    """A command as a console block shows it."""
    return ["$ " + step.command[0], *(("> " + line).rstrip() for line in step.command[1:])]
