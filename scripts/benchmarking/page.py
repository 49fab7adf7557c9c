"""Renewing what docs/performance.md shows of a run."""

import re

from . import footprint
from .building import Failure
from .table import GROWTH_HEADINGS, HEADINGS

_BEGIN = "<!-- measured: written by scripts/bench -->"
_END = "<!-- end of what was measured -->"


def _markdown(headings, lines):
    cells = [[cell.replace("|", "\\|") for cell in row] for row in [headings, *lines]]
    rule = ["---"] * len(headings)
    return "\n".join("| " + " | ".join(row) + " |" for row in [cells[0], rule, *cells[1:]])


def renew(page, machine, rows, growing, footprints):
    """Replaces what stands between the two marks."""
    text = page.read_text()
    if _BEGIN not in text or _END not in text:
        raise Failure(f"{page} has lost its marks")
    measured = "\n\n".join([
        f"{machine['processors']} processors ({machine['processor']}), {machine['system']}, {machine['compiler']}; "
        f"load average at the end of the run {machine['load']:.2f}, the benchmarks' own included.",
        _markdown(HEADINGS, [row.cells() for row in rows]),
        _markdown(GROWTH_HEADINGS, growing),
        _markdown(footprint.HEADINGS, footprint.rows(footprints))])
    pattern = re.escape(_BEGIN) + ".*" + re.escape(_END)
    page.write_text(re.sub(pattern, lambda _: f"{_BEGIN}\n\n{measured}\n\n{_END}", text, flags=re.DOTALL))
