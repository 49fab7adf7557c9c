"""Runs a page's console blocks and says where the page differs."""

import difflib
from dataclasses import dataclass

from . import page as pages
from . import variables
from .shell import Ended, Shell


@dataclass
class Outcome:
    differences: list  # texts for people
    commands: int = 0  # that were run
    not_run: int = 0  # blocks that say that they are not


def _differs(step, output):
    said = [variables.comparable(line) for line in step.output]
    printed = [variables.comparable(line) for line in output]
    return said != printed


def _patch(page, step, output):
    said = pages.shown(step) + [variables.comparable(line) for line in step.output]
    printed = pages.shown(step) + [variables.comparable(line) for line in output]
    where = f"{page.name}:{step.line}"
    return "\n".join(difflib.unified_diff(said, printed, where, where + ", as printed", lineterm="", n=100))


def _kept(step, output):
    """What was printed, with the page's own values wherever only a value is another."""
    said = [variables.comparable(line) for line in step.output]
    printed = [variables.comparable(line) for line in output]
    result = list(output)
    for match in difflib.SequenceMatcher(a=said, b=printed, autojunk=False).get_matching_blocks():
        result[match.b:match.b + match.size] = step.output[match.a:match.a + match.size]
    return result


def _status_shown(following):
    return following is not None and "$?" in following.command[0]


def _run_block(page, block, shell, scratch, outcome):
    """Returns the lines that the block would have, had it been written now."""
    written = []
    found = pages.steps(block)
    for step, following in zip(found, [*found[1:], None]):
        text, status = shell.run("\n".join(step.command))
        output = variables.as_printed_for_the_reader(text, scratch.directory).splitlines()
        outcome.commands += 1
        if _differs(step, output):
            outcome.differences.append(_patch(page, step, output))
        if status != 0 and not _status_shown(following):
            outcome.differences.append(
                f"{page.name}:{step.line}: \"{step.command[0]}\" ends with {status}: let \"echo $?\" follow, or mend it")
        written += pages.shown(step) + [line.rstrip() for line in _kept(step, output)]
    return written


def _replace(page, block, written):
    begin = block.line - 1
    page.lines[begin:begin + len(block.lines)] = [(block.indent + line).rstrip() for line in written]


def run(page, scratch):
    """Runs everything that is to be run. The page's lines become those that it should have."""
    outcome = Outcome([])
    replacements = []
    shell = Shell(scratch.directory, scratch.environment)
    try:
        for block in page.blocks:
            if block.language == "console" and block.not_run:
                outcome.not_run += 1
            elif block.language == "console" and not block.run_by:
                replacements.append((block, _run_block(page, block, shell, scratch, outcome)))
    except Ended as reason:
        outcome.differences.append(f"{page.name}:{block.line}: {reason}")
    except ValueError as reason:
        outcome.differences.append(f"{page.name}: {reason}")
    left = shell.end()
    if left:
        outcome.differences.append(f"{page.name}: its commands leave {left} processes running")
    for block, written in reversed(replacements):
        _replace(page, block, written)
    return outcome
