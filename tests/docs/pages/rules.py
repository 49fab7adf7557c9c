"""What a page must keep to besides what its console blocks print."""

import re
import subprocess

from . import page as pages
from . import selections

# A line of code that begins with one of these is a command, and commands belong into console blocks.
_COMMANDS = {
    "apt", "apt-get", "bash", "cat", "cd", "cmake", "cp", "cpack", "ctest", "dot", "dpkg", "echo", "export",
    "faultkeeperctl", "faultkeeperd", "git", "grep", "ipcrm", "ipcs", "kill", "ln", "man", "mkdir", "nc", "ninja", "pkg-config",
    "printf", "rm", "sed", "sudo", "systemctl", "systemd-sysusers", "systemd-tmpfiles", "xmllint"}
_SHELLS = {"sh", "bash", "shell", "shell-session"}
_LISTINGS = {"xml", "c++", "cpp", "cmake"}  # shown from a file, which is named behind the language

_ASSIGNMENT = re.compile(r"^[A-Za-z_]+=\S*$")
_SPAN = re.compile(r"(?<!`)`([^`]+)`(?!`)")
_LINK = re.compile(r"\[[^\]]*\]\(([^)\s]+)\)")
_OPTION = re.compile(r"--[a-z][a-z-]*")
_HEADING = re.compile(r"^#+ +(.*)$")


def _is_command(line):
    words = line.split()
    while words and _ASSIGNMENT.match(words[0]):
        words = words[1:]
    return bool(words) and (words[0] in _COMMANDS or line.startswith("$ ") or
                            words[0].startswith(("./", "scripts/", "build/")))


def _commands_elsewhere(page):
    for block in page.blocks:
        if block.language == "console" or block.language in _LISTINGS:
            continue
        for number, line in enumerate(block.lines, block.line):
            if block.language in _SHELLS or _is_command(line):
                yield f"{page.name}:{number}: a command belongs into a console block: {line.strip()}"
                break



def _unindented(lines):
    used = [len(line) - len(line.lstrip()) for line in lines if line.strip()]
    return [line[min(used, default=0):] for line in lines]


def _is_excerpt(block, text):
    """Whether the lines stand in the file as they stand in the page, indentation of all of them apart."""
    shown = _unindented(block.lines)
    lines = text.splitlines()
    return any(_unindented(lines[at:at + len(shown)]) == shown for at in range(len(lines) - len(shown) + 1))


def _listings(page, project):
    for block in page.blocks:
        if block.language not in _LISTINGS:
            continue
        where = f"{page.name}:{block.line}"
        if len(block.words) < 2:
            yield f"{where}: a listing says which file it is from: ```{block.language} path/of/the/file"
        elif not (project / block.words[1]).is_file():
            yield f"{where}: there is no {block.words[1]}"
        elif not _is_excerpt(block, (project / block.words[1]).read_text()):
            yield f"{where}: {block.words[1]} has other lines"


class _Programs:
    """What the programs say of their commands and options."""

    def __init__(self, environment):
        self._environment = environment
        self._general = self._help("faultkeeperctl", "--help")
        self._commands = set(re.findall(r"^  ([a-z]+) ", self._general, re.MULTILINE))

    def complaint(self, words):
        """What is wrong with a command line of ours; "" if nothing is."""
        if words[0] == "faultkeeperd":
            return self._unknown_option(words, self._help("faultkeeperd", "--help"))
        if len(words) < 2 or not re.match(r"^[a-z]+$", words[1]):
            return self._unknown_option(words, self._general)
        if words[1] not in self._commands | {"help"}:
            return f"there is no command {words[1]}"
        return self._unknown_option(words, self._general + self._help("faultkeeperctl", words[1], "--help"))

    def _help(self, *arguments):
        return subprocess.run(arguments, env=self._environment, capture_output=True, text=True, check=True).stdout

    @staticmethod
    def _unknown_option(words, known):
        for option in _OPTION.findall(" ".join(words)):
            if not re.search(re.escape(option) + r"(?![a-z-])", known):
                return f"{words[0]} has no {option} here"
        return ""


def _mentions(page, project, environment):
    """Commands within a sentence or a table are not run: their programs, commands and options must exist."""
    programs = _Programs(environment)
    for number, line in page.text:
        for span in _SPAN.findall(line):
            words = span.split()
            complaint = ""
            if words and words[0] in ("faultkeeperctl", "faultkeeperd"):
                complaint = programs.complaint(words)
            elif words and words[0].startswith("scripts/") and not (project / words[0]).exists():
                complaint = f"there is no {words[0]}"
            elif words and words[0] == "ctest":
                complaint = selections.selects_nothing(span, project)
            if complaint:
                yield f"{page.name}:{number}: {complaint}: `{span}`"
        for complaint in selections.left_out(_SPAN.findall(line), project):
            yield f"{page.name}:{number}: {complaint}"


def _anchor(heading):
    kept = re.sub(r"[^\w\- ]", "", heading.strip().lower())
    return kept.replace(" ", "-")


def _anchors(lines):
    return {_anchor(match.group(1)) for line in lines if (match := _HEADING.match(line))}


def _links(page, project):
    here = (project / page.name).parent
    for number, line in page.text:
        for target in _LINK.findall(line):
            if "://" in target or target.startswith("mailto:"):
                continue
            path, _, anchor = target.partition("#")
            file = here / path if path else project / page.name
            if not file.exists():
                yield f"{page.name}:{number}: a link leads nowhere: {target}"
            elif anchor and anchor not in _anchors(file.read_text().splitlines()):
                yield f"{page.name}:{number}: {path or 'the page'} has no heading for #{anchor}"


def _run_by_ci(project):
    """The scripts that .ci/run starts, and those that they start."""
    found = {".ci/run"}
    new = found
    while new:
        started = set()
        for name in new:
            lines = [line for line in (project / name).read_text().splitlines() if not line.lstrip().startswith("#")]
            started |= set(re.findall(r"(?:^|\s)(scripts/[a-z-]+)(?=\s|$)", "\n".join(lines), re.MULTILINE))
        new = {name for name in started - found if (project / name).is_file()}
        found |= new
    return found


def _run_by_test(project, test):
    """The scripts that a test starts by its own command."""
    for file in sorted(project.glob("tests/**/CMakeLists.txt")):
        command = re.search(r"NAME " + re.escape(test) + r"\s[^()]*", file.read_text())
        if command:
            return set(re.findall(r"scripts/[a-z-]+", command.group()))
    return set()


def _claims(page, project):
    """What a page says is run by .ci/run or by a test must stand there."""
    for block in page.blocks:
        if not block.run_by:
            continue
        ran = _run_by_ci(project) if block.run_by == ".ci/run" else _run_by_test(project, block.run_by)
        for step in pages.steps(block):
            if step.command[0].split()[0] not in ran:
                yield f"{page.name}:{step.line}: {block.run_by} does not run {step.command[0]}"


def findings(page, project, environment):
    return [*_commands_elsewhere(page), *_listings(page, project), *_mentions(page, project, environment),
            *_links(page, project), *_claims(page, project)]
