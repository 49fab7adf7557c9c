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


def _read(file):
    if not file.is_file():
        return {}
    pairs = [line.rsplit(None, 1) for line in file.read_text().splitlines() if line and not line.startswith("#")]
    return {piece: int(count) for piece, count in pairs}


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


def _note_reason(changelog, reason, raised):
    """Under the newest version's heading, at its end."""
    text = changelog.read_text()
    pieces = ", ".join(f"{piece} {change:+.1%}" for piece, change in raised.items())
    line = f"- Takes more instructions than before ({pieces}): {reason}\n"
    headings = [match.start() for match in re.finditer(r"^## ", text, re.MULTILINE)]
    end = headings[1] if len(headings) > 1 else len(text)
    section = text[:end].rstrip("\n") + "\n"
    changelog.write_text(section + line + ("\n" + text[end:] if end < len(text) else ""))


def _update(project, file, old, new, reason):
    raised = {piece: _change(old[piece], new[piece]) for piece in new
              if piece in old and _change(old[piece], new[piece]) > SAME}
    if raised and not reason.strip():
        raise Failure("pieces take more than before (" + ", ".join(raised) + "): say why with --reason \"...\", which "
                      "becomes a line of CHANGELOG.md")
    if raised:
        _note_reason(project / "CHANGELOG.md", reason.strip(), raised)
    _write(file, {piece: old[piece] if piece in old and abs(_change(old[piece], count)) <= SAME else count
                  for piece, count in new.items()})


def run(project, build, update, reason):
    """@return 0, or 1 if a piece takes too much or the committed counts are not those of these pieces"""
    file = project / "benchmarks" / "instructions.txt"
    old, new = _read(file), _count(build)
    print(_report(old, new))
    if update:
        _update(project, file, old, new, reason)
        return 0
    kept = set(old) == set(new) and all(_change(old[piece], new[piece]) <= TOLERANCE for piece in new)
    if not kept:
        print(f"\nmore than {TOLERANCE:.0%} over {file.relative_to(project)}, or other pieces than there; if that is "
              "as it should be: scripts/bench --instructions --update")
    return 0 if kept else 1
