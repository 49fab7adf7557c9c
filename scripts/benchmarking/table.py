"""From results to the rows of the table."""

import math
from dataclasses import asdict, dataclass

from .lines import LINES, SERIES, Growth, GrowthBeside, Line, Memory, Rate

GROWTH_FROM = 400


@dataclass
class Row:
    what: str
    measured: str
    baseline: str
    ratio: str
    limit: str
    verdict: str

    def as_dict(self):
        return asdict(self)

    def cells(self):
        return [self.what, self.measured, self.baseline, self.ratio, self.limit, self.verdict]


HEADINGS = ["what", "measured", "baseline", "ratio", "limit", ""]


def duration(nanoseconds):
    for unit, size in (("s", 1e9), ("ms", 1e6), ("µs", 1e3)):
        if nanoseconds >= size:
            return f"{nanoseconds / size:.3g} {unit}"
    return f"{nanoseconds:.3g} ns"


def _rate(per_second):
    return f"{per_second / 1e6:.3g} M/s" if per_second >= 1e6 else f"{per_second / 1e3:.3g} k/s"


def _number(value):
    return f"{value:.3g}" if value < 1000 else f"{value:.0f}"


def exponent(sizes):
    """Least squares in log-log over {size: nanoseconds}; None with fewer than three sizes."""
    points = [(math.log(size), math.log(cost)) for size, cost in sizes.items() if cost > 0]
    if len(points) < 3:
        return None
    mean_x = sum(x for x, _ in points) / len(points)
    mean_y = sum(y for _, y in points) / len(points)
    return (sum((x - mean_x) * (y - mean_y) for x, y in points) / sum((x - mean_x) ** 2 for x, _ in points))


def costs(results, name, from_size=0):
    return {size: result["nanoseconds"] for size, result in results.get(name, {}).items() if size >= from_size}


def _verdict(kept, limit):
    if limit is None:
        return ""
    return "ok" if kept else "MISSED"


def _ratio_row(line, results):
    ours = results.get(line.ours, {}).get(line.size)
    base = results.get(line.base, {}).get(line.size) if line.base else None
    if ours is None or (line.base and base is None):
        return None
    if base is None:
        return Row(line.what, duration(ours["nanoseconds"]), "", "", "", "")
    ratio = ours["nanoseconds"] / base["nanoseconds"]
    return Row(line.what, duration(ours["nanoseconds"]), f"{duration(base['nanoseconds'])}: {line.baseline}",
               _number(ratio), "" if line.limit is None else _number(line.limit),
               _verdict(line.limit is None or ratio <= line.limit, line.limit))


def _growth_row(line, results):
    sizes = costs(results, line.ours, GROWTH_FROM)
    value = exponent(sizes)
    if value is None:
        return None
    return Row(line.what, f"exponent {value:.3f}", f"{min(sizes)} to {max(sizes)} errors", "",
               "" if line.limit is None else f"{line.limit:g}",
               _verdict(line.limit is None or value <= line.limit, line.limit))


def _growth_beside_row(line, results):
    sizes = costs(results, line.ours, GROWTH_FROM)
    base = {size: cost for size, cost in costs(results, line.base, GROWTH_FROM).items() if size in sizes}
    ours, other = exponent(sizes), exponent(base)
    if ours is None or other is None:
        return None
    return Row(line.what, f"exponent {ours:.3f}", f"exponent {other:.3f}: {line.baseline}", "",
               f"baseline's + {line.above:g}", _verdict(ours <= other + line.above, line.above))


def _rate_row(line, results):
    ours = results.get(line.ours, {}).get(line.size)
    base = results.get(line.base, {}).get(line.size)
    if ours is None or base is None:
        return None
    rate = 1e9 / ours["nanoseconds"]
    ratio = base["nanoseconds"] / ours["nanoseconds"]
    limits = ([f"{_rate(line.least)}"] if line.least else []) + ([f"{line.times:g} ×"] if line.times else [])
    kept = rate >= line.least and (line.times is None or ratio >= line.times)
    return Row(line.what, _rate(rate), f"{_rate(1e9 / base['nanoseconds'])}: {line.baseline}", _number(ratio),
               "at least " + ", ".join(limits) if limits else "", _verdict(kept, limits or None))


def _memory_row(line, footprints):
    value = footprints.get("memory", {}).get(line.key)
    if value is None:
        return None
    return Row(line.what, f"{value:.2f} MiB", "", "", "" if line.limit is None else f"{line.limit:g} MiB",
               _verdict(line.limit is None or value <= line.limit, line.limit))


def rows(results, footprints):
    """The rows that there are results for, in the order of the lines."""
    found = []
    for line in LINES:
        if isinstance(line, Line):
            row = _ratio_row(line, results)
        elif isinstance(line, Growth):
            row = _growth_row(line, results)
        elif isinstance(line, GrowthBeside):
            row = _growth_beside_row(line, results)
        elif isinstance(line, Rate):
            row = _rate_row(line, results)
        else:
            assert isinstance(line, Memory)
            row = _memory_row(line, footprints)
        if row is not None:
            found.append(row)
    return found


def growth(results):
    """What grows how: name, exponent and sizes of ours, exponent and sizes of the baseline."""
    found = []
    for what, name in SERIES:
        cells = [what]
        for role in ("ours", "base"):
            sizes = costs(results, f"{name}/{role}")
            large = costs(results, f"{name}/{role}", GROWTH_FROM)
            chosen = large if len(large) >= 3 else sizes
            value = exponent(chosen)
            cells += ["", ""] if value is None else [f"{value:.2f}", f"{min(chosen)} to {max(chosen)}"]
        if any(cells[1:]):
            found.append(cells)
    return found


GROWTH_HEADINGS = ["growth with the size", "exponent", "errors", "baseline's", "errors"]


def layout(headings, lines):
    """Columns side by side."""
    widths = [max(len(row[column]) for row in [headings, *lines]) for column in range(len(headings))]
    laid_out = ["  ".join(cell.ljust(width) for cell, width in zip(row, widths)).rstrip()
                for row in [headings, ["-" * width for width in widths], *lines]]
    return "\n".join(laid_out)


def text(found, growing):
    parts = [layout(HEADINGS, [row.cells() for row in found])]
    if growing:
        parts.append(layout(GROWTH_HEADINGS, growing))
    missed = [row.what for row in found if row.verdict == "MISSED"]
    kept = sum(row.verdict == "ok" for row in found)
    parts.append(f"{kept} of {kept + len(missed)} limits are kept" +
                 (": missed are " + "; ".join(missed) if missed else ""))
    return "\n\n".join(parts)
