"""What tests/docs/check-page does, step by step."""

import argparse
from pathlib import Path

from . import page as pages
from . import rules, running
from .scratch import Scratch, port_turn

PROJECT = Path(__file__).resolve().parents[3]
NOT_RUN = Path(__file__).resolve().parents[1] / "not-run.txt"


def _arguments(words, usage):
    parser = argparse.ArgumentParser(prog="tests/docs/check-page", usage=usage, add_help=False)
    parser.add_argument("--programs", type=Path, required=True)
    parser.add_argument("--project", type=Path, default=PROJECT)
    parser.add_argument("--not-run", type=Path, default=NOT_RUN)
    parser.add_argument("--update", action="store_true")
    parser.add_argument("page", type=Path)
    return parser.parse_args(words)


def expected_not_run(file, name):
    """How many blocks of the page are agreed not to be run."""
    for line in file.read_text().splitlines():
        words = line.split("#")[0].split()
        if words and words[0] == name:
            return int(words[1])
    return 0


def _check(options):
    project = options.project.resolve()
    file = options.page.resolve()
    page = pages.read(str(file.relative_to(project)), file.read_text())
    scratch = Scratch(project, options.programs.resolve())
    try:
        found = rules.findings(page, project, scratch.environment)
        with port_turn():
            outcome = running.run(page, scratch)
    finally:
        scratch.remove()
    agreed = expected_not_run(options.not_run, page.name)
    if outcome.not_run != agreed:
        found.append(f"{page.name}: {outcome.not_run} blocks say that they are not run; {options.not_run.name} has {agreed}")
    return page, outcome, found + outcome.differences


def _summary(page, outcome):
    lines = [f"{page.name}: {outcome.commands} commands run, {outcome.not_run} blocks not run"]
    lines += [f"{page.name}:{block.line}: not run: {block.not_run}" for block in page.blocks if block.not_run]
    lines += [f"{page.name}:{block.line}: run by {block.run_by}" for block in page.blocks if block.run_by]
    return "\n".join(lines)


def main(words, usage):
    options = _arguments(words, usage)
    page, outcome, found = _check(options)
    print(_summary(page, outcome))
    if options.update:
        options.page.write_text("\n".join(page.lines) + "\n")
    for text in found:
        print(text)
    return 1 if found else 0
