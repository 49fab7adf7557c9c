"""Counting instructions of a fixed set of pieces, which does not depend on how busy the machine is."""

import os
import re
import subprocess
import tempfile
from pathlib import Path

from .building import Failure
from .table import layout

TOLERANCE = 0.05  # beyond it the run fails
SAME = 0.005      # within it a committed count stays as it is

# Which of a C library's copies are taken depends on the processor; here always the plain ones.
_TUNABLES = "glibc.cpu.hwcaps=-AVX512F,-AVX512VL,-AVX512BW,-AVX2,-ERMS,-FSRM"

_FILE = "benchmarks/instructions.txt"
_CHANGELOG = "CHANGELOG.md"
_MORE = "Takes more instructions than before"
_RENEW = "renew it: scripts/bench --instructions --update"
_WRITTEN = f"scripts/bench --instructions --update --reason \"...\" writes the line: - {_MORE} (PIECE +1.0%): ..."

_PREFACE = """\
# Instructions of each piece as callgrind counts them, those of the system's calls left out. Renewed by
# scripts/bench --instructions --update, compared by scripts/bench --instructions.
"""


def _count(build):
    with tempfile.TemporaryDirectory() as scratch:
        file = Path(scratch) / "counts"
        command = ["valgrind", "--tool=callgrind", "--collect-atstart=no", f"--callgrind-out-file={file}",
                   str(build.program("counted_pieces"))]
        result = subprocess.run(command, cwd=scratch, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
                                check=False, env={**os.environ, "GLIBC_TUNABLES": _TUNABLES})
        if result.returncode != 0:
            raise Failure(f"counted_pieces ended with {result.returncode}:\n{result.stderr[-3000:]}")
        counts = {}
        for dump in sorted(Path(scratch).glob("counts.*"), key=lambda path: int(path.suffix[1:])):
            text = dump.read_text()
            name = re.search(r"^desc: Trigger: Client Request: (.*)$", text, re.MULTILINE)
            total = re.search(r"^(?:totals|summary): (\d+)", text, re.MULTILINE)
            if name and total:
                counts[name.group(1)] = int(total.group(1))
    if not counts:
        raise Failure("callgrind has counted nothing")
    return counts


def _counts(text):
    pairs = [line.rsplit(None, 1) for line in text.splitlines() if line and not line.startswith("#")]
    return {piece: int(count) for piece, count in pairs}


def _read(file):
    return _counts(file.read_text()) if file.is_file() else {}


def _write(file, counts):
    width = max(len(piece) for piece in counts)
    file.write_text(_PREFACE + "".join(f"{piece.ljust(width)}  {count:>12}\n" for piece, count in counts.items()))


def _change(old, new):
    return new / old - 1


def _report(old, new):
    lines = []
    for piece in [*new, *(piece for piece in old if piece not in new)]:
        if piece not in new:
            lines.append([piece, "", str(old[piece]), "", "GONE"])
        elif piece not in old:
            lines.append([piece, str(new[piece]), "", "", "NEW"])
        else:
            change = _change(old[piece], new[piece])
            lines.append([piece, str(new[piece]), str(old[piece]), f"{change:+.2%}",
                          "MORE" if change > TOLERANCE else "less" if change < -TOLERANCE else "ok"])
    return layout(["piece", "instructions", "committed", "change", ""], lines)


def _raised(old, new, above):
    """{piece: by how much} of the pieces that take more than before, by more than `above`. Where others are gone, those that
    are new may be the same under another name, so they count as raised, too."""
    gone = set(old) - set(new)
    return {piece: f"{_change(old[piece], count):+.1%}" if piece in old else "new"
            for piece, count in new.items() if (_change(old[piece], count) > above if piece in old else gone)}


def _note_reason(changelog, reason, raised):
    """Under the newest version's heading, at its end."""
    text = changelog.read_text()
    pieces = ", ".join(f"{piece} {change}" for piece, change in raised.items())
    line = f"- {_MORE} ({pieces}): {reason}\n"
    headings = [match.start() for match in re.finditer(r"^## ", text, re.MULTILINE)]
    end = headings[1] if len(headings) > 1 else len(text)
    section = text[:end].rstrip("\n") + "\n"
    changelog.write_text(section + line + ("\n" + text[end:] if end < len(text) else ""))


def _update(project, file, old, new, reason):
    raised = _raised(old, new, SAME)
    if raised and not reason.strip():
        raise Failure("pieces take more than before or have other names (" + ", ".join(raised) + "): say why with "
                      f"--reason \"...\", which becomes a line of {_CHANGELOG}")
    if raised:
        _note_reason(project / _CHANGELOG, reason.strip(), raised)
    _write(file, {piece: old[piece] if piece in old and abs(_change(old[piece], count)) <= SAME else count
                  for piece, count in new.items()})


def _before(project, name):
    """A file as it was before the last commit, "" where that is not known: no git, or no history."""
    try:
        result = subprocess.run(["git", "-C", str(project), "show", f"HEAD^:./{name}"], stdout=subprocess.PIPE,
                                stderr=subprocess.DEVNULL, text=True, check=False)
    except OSError:
        return ""
    return result.stdout if result.returncode == 0 else ""


def _reasons(changelog):
    """The points that say why pieces take more, each in one line."""
    points = re.split(r"^(?=- |#)", changelog, flags=re.MULTILINE)
    return [" ".join(point.split()) for point in points if point.startswith(f"- {_MORE} (")]


def _without_reason(project, committed):
    """Pieces whose committed counts were raised since the last commit's parent, without a new point in CHANGELOG.md."""
    before = _counts(_before(project, _FILE))
    known = _reasons(_before(project, _CHANGELOG))
    added = [point for point in _reasons((project / _CHANGELOG).read_text()) if point not in known]
    return [piece for piece in (_raised(before, committed, 0) if before else {})
            if not any(re.search(rf"[(,] ?{re.escape(piece)} (\+|new)", point) for point in added)]


def run(project, build, update, reason):
    """@return 0, or 1 if a piece takes too much, the committed counts are not those of these pieces, or counts were raised
    without a reason"""
    file = project / _FILE
    old, new = _read(file), _count(build)
    print(_report(old, new))
    if update:
        _update(project, file, old, new, reason)
        return 0
    findings = []
    if set(old) != set(new):
        findings.append(f"the pieces are not those of {_FILE}; {_RENEW}")
    if any(_change(old[piece], new[piece]) > TOLERANCE for piece in new if piece in old):
        findings.append(f"more than {TOLERANCE:.0%} over {_FILE}; if that is as it should be, {_RENEW}")
    unexplained = _without_reason(project, old)
    if unexplained:
        findings.append(f"{_FILE} allows more than before the last commit, and {_CHANGELOG} does not say why: "
                        f"{'; '.join(unexplained)}. {_WRITTEN}")
    for finding in findings:
        print(f"\n{finding}")
    return 1 if findings else 0
