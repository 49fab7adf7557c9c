"""What pages say of how to run tests: that a selection selects something, and all that its line speaks of."""

import re
import shlex

_TEST = re.compile(r"\bTEST(?:_[FP])?\((\w+),\s*(\w+)\)")
_BUILD = "build/dev/"


def _tests_in(file):
    """Names as ctest has them, but for what parameters add."""
    return {f"{suite}.{name}" for suite, name in _TEST.findall(file.read_text())}


def _all_tests(project):
    names = {"page_" + re.sub(r"[/.]", "_", str(page.relative_to(project))) for page in project.glob("docs/*.md")}
    for file in [*project.glob("tests/**/*"), *project.glob("config/**/CMakeLists.txt")]:
        if file.suffix == ".cpp":
            names |= _tests_in(file)
        elif file.name == "CMakeLists.txt":
            names |= set(re.findall(r"add_test\(NAME (\w+)", file.read_text()))
    return names


def _value(words, *options):
    found = [words[at + 1] for at in range(len(words) - 1) if words[at] in options]
    return found[0] if found else None


class _Selection:
    """A call of ctest, written within a sentence or a table."""

    def __init__(self, span, project):
        words = shlex.split(span.replace("\\|", "|"))  # bars are written so in tables
        self.pattern = _value(words, "-R")
        directory = _value(words, "--test-dir")
        self._directory = project / (directory or _BUILD).rstrip("/").replace(_BUILD.rstrip("/"), ".", 1)

    def selects(self, name, file):
        return re.search(self.pattern or "", name) and self._directory.resolve() in file.resolve().parents


def selects_nothing(span, project):
    """What is wrong with a selection of tests; "" if nothing is."""
    pattern = _Selection(span, project).pattern
    if pattern is None or any(re.search(pattern, name) for name in _all_tests(project)):
        return ""
    return f"no test is selected by {pattern}"


def _files_of(span, project):
    if re.fullmatch(r"\w+Test", span):
        return sorted(project.glob(f"tests/**/{span}.cpp"))
    if re.fullmatch(r"tests/[\w/]+", span):
        return sorted((project / span).glob("**/*Test.cpp"))
    return []


def left_out(spans, project):
    """What is wrong with a line that names tests and says how to run them: those that would not be run."""
    selections = [_Selection(span, project) for span in spans if span.startswith("ctest ")]
    if not selections:
        return
    for file in {file: None for span in spans for file in _files_of(span, project)}:
        for name in sorted(_tests_in(file)):
            if not any(selection.selects(name, file) for selection in selections):
                yield f"{name} is not selected"
