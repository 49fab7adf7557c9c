"""Plots of cost against size as SVG, drawn by hand: two logarithmic axes, a legend, nothing else."""

import math

from .table import costs, duration

_WIDTH, _HEIGHT = 900, 520
_LEFT, _RIGHT, _TOP, _BOTTOM = 86, 290, 48, 58
_COLOURS = ("#0b62a4", "#c8500a", "#2a7f3f", "#8b3a9e", "#a0182c", "#6b5a00")

_SHAPES = (("plausible", "families"), ("chain", "chain"), ("diamonds", "diamonds"))

# File, title, and the series: name of the benchmark, text in the legend, colour, dashed.
PLOTS = (
    ("performance-tree.svg", "UpdateErrorTree: all four lists after one change",
     [(f"tree-{shape}/ours", text, number, False) for number, (shape, text) in enumerate(_SHAPES)] +
     [(f"tree-{shape}/base", f"{text}, passes word for word", number, True)
      for number, (shape, text) in enumerate(_SHAPES)]),
    ("performance-by-hand.svg", "The grouping step on errors linked by hand in one direction only",
     [(f"group-{shape}-triggers-only/ours", f"{text}, triggers only", number, False)
      for number, (shape, text) in enumerate(_SHAPES)] +
     [(f"group-{shape}-parents-only/ours", f"{text}, parents only", number + 3, False)
      for number, (shape, text) in enumerate(_SHAPES)] +
     [("group-chain-triggers-only/base", "chain, passes word for word", 1, True),
      ("group-plausible-triggers-only/base", "families, passes word for word", 0, True)]),
    ("performance-loading.svg", "Loading a configuration",
     [(f"load-{shape}/ours", text, number, False) for number, (shape, text) in enumerate(_SHAPES)] +
     [(f"load-{shape}/base", f"{text}, Expat without handlers", number, True)
      for number, (shape, text) in enumerate(_SHAPES)]),
    ("performance-positions.svg", "Positions in the hierarchy",
     [(f"positions-{shape}/ours", text, number, False) for number, (shape, text) in enumerate(_SHAPES)] +
     [(f"positions-{shape}/base", f"{text}, level by level", number, True)
      for number, (shape, text) in enumerate(_SHAPES)]),
    ("performance-display.svg", "What a display asks for",
     [("synchronise-before-changes/ours", "Synchronise, before the first change", 0, False),
      ("synchronise-after-changes/ours", "Synchronise, nothing changed", 1, False),
      ("synchronise-one-change/ours", "Synchronise, one change", 2, False),
      ("build-trees/ours", "GetErrorTree", 3, False), ("format-list/ours", "FormatErrorList", 4, False),
      ("dump-texts/ours", "DumpLocalisedText", 5, False),
      ("lock-copy-unlock-time/base", "lock, copy, unlock, time", 0, True),
      ("build-trees/base", "a copy of the trees", 3, True), ("dump-texts/base", "writing the same lines", 5, True)]),
    ("performance-depth.svg", "The tree of a chain, against its levels",
     [("build-chain/ours", "BuildErrorTree", 0, False), ("rebuild-chain/ours", "RegenerateErrorTree, plain", 1, False),
      ("build-chain/base", "a copy of the tree built", 0, True),
      ("rebuild-chain/base", "a copy of the tree rebuilt", 1, True)]),
    ("performance-requests.svg", "One request, in the middle of many",
     [("raise-silent/ours", "RaiseError of the database, silent", 0, False),
      ("raise-propagating/ours", "the same, parents follow", 1, False), ("retrieve-error/ours", "RetrieveError", 2, False),
      ("client-repeat/ours", "CFaultkeeperAPI, a repeat", 3, False), ("find-code/ours", "FindFriendlyCode", 4, False),
      ("retrieve-error/base", "the look-up in the map", 2, True),
      ("client-repeat/base", "that of the client", 3, True)]),
)


class _Axes:
    """Where sizes and costs lie in the picture."""

    def __init__(self, series):
        sizes = [size for _, points, _, _ in series for size in points]
        values = [cost for _, points, _, _ in series for cost in points.values()]
        self.first_size, self.last_size = math.log10(min(sizes)), math.log10(max(sizes))
        self.first_decade = math.floor(math.log10(min(values)))
        self.last_decade = max(self.first_decade + 1, math.ceil(math.log10(max(values))))
        self.sizes = sorted(set(sizes))

    def x(self, size):
        part = (math.log10(size) - self.first_size) / (self.last_size - self.first_size)
        return _LEFT + part * (_WIDTH - _LEFT - _RIGHT)

    def y(self, cost):
        part = (math.log10(cost) - self.first_decade) / (self.last_decade - self.first_decade)
        return _HEIGHT - _BOTTOM - part * (_HEIGHT - _TOP - _BOTTOM)


def _text(x, y, text, anchor="middle", extra=""):
    escaped = text.replace("&", "&amp;").replace("<", "&lt;")
    return f'<text x="{x:.1f}" y="{y:.1f}" text-anchor="{anchor}"{extra}>{escaped}</text>'


def _grid(axes):
    parts = []
    bottom, right = _HEIGHT - _BOTTOM, _WIDTH - _RIGHT
    for decade in range(axes.first_decade, axes.last_decade + 1):
        y = axes.y(10.0 ** decade)
        parts.append(f'<line x1="{_LEFT}" y1="{y:.1f}" x2="{right}" y2="{y:.1f}" class="grid"/>')
        parts.append(_text(_LEFT - 8, y + 4, duration(10.0 ** decade), "end"))
    last = -math.inf
    for size in axes.sizes:
        x = axes.x(size)
        parts.append(f'<line x1="{x:.1f}" y1="{_TOP}" x2="{x:.1f}" y2="{bottom}" class="grid"/>')
        if x - last > 34:
            parts.append(_text(x, bottom + 18, f"{size:,}".replace(",", " ")))
            last = x
    parts.append(_text((_LEFT + right) / 2, _HEIGHT - 14, "errors"))
    parts.append(_text(16, (_TOP + bottom) / 2, "time of one call", "middle",
                       f' transform="rotate(-90 16 {(_TOP + bottom) / 2:.1f})"'))
    return parts


def _curve(axes, points, colour, dashed):
    coordinates = [(axes.x(size), axes.y(cost)) for size, cost in sorted(points.items())]
    line = " ".join(f"{x:.1f},{y:.1f}" for x, y in coordinates)
    dash = ' stroke-dasharray="6 4"' if dashed else ""
    parts = [f'<polyline points="{line}" fill="none" stroke="{colour}" stroke-width="2"{dash}/>']
    fill = "#ffffff" if dashed else colour
    parts += [f'<circle cx="{x:.1f}" cy="{y:.1f}" r="3.2" fill="{fill}" stroke="{colour}" stroke-width="1.5"/>'
              for x, y in coordinates]
    return parts


def _legend(series):
    parts = []
    x = _WIDTH - _RIGHT + 16
    for number, (text, _, colour, dashed) in enumerate(series):
        y = _TOP + 10 + 22 * number
        dash = ' stroke-dasharray="6 4"' if dashed else ""
        parts.append(f'<line x1="{x}" y1="{y}" x2="{x + 28}" y2="{y}" stroke="{colour}" stroke-width="2"{dash}/>')
        parts.append(_text(x + 36, y + 4, text, "start"))
    return parts


def svg(title, series):
    """@param series: text, {size: nanoseconds}, colour, dashed"""
    axes = _Axes(series)
    parts = [f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {_WIDTH} {_HEIGHT}" width="{_WIDTH}" '
             f'height="{_HEIGHT}" font-family="sans-serif" font-size="12" fill="#222222" role="img">',
             f"<title>{title}</title>",
             "<style>.grid { stroke: #dddddd; stroke-width: 1 }</style>",
             f'<rect width="{_WIDTH}" height="{_HEIGHT}" fill="#ffffff"/>',
             _text(_LEFT, 26, title, "start", ' font-size="15" font-weight="bold"')]
    parts += _grid(axes)
    for _, points, colour, dashed in series:
        parts += _curve(axes, points, colour, dashed)
    parts += _legend(series)
    return "\n".join([*parts, "</svg>"]) + "\n"


def draw(results, directory):
    """Writes the plots that there are results for."""
    for file, title, wanted in PLOTS:
        series = [(text, costs(results, name), _COLOURS[colour % len(_COLOURS)], dashed)
                  for name, text, colour, dashed in wanted if len(costs(results, name)) > 1]
        if series:
            (directory / file).write_text(svg(title, series))
