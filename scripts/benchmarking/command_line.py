"""What scripts/bench does, step by step."""

import argparse
import json
import sys
from pathlib import Path

from . import building, counting, footprint, measuring, page, plots, table

PROJECT = Path(__file__).resolve().parents[2]


def _arguments(words, usage):
    parser = argparse.ArgumentParser(
        prog="scripts/bench", usage=usage, add_help=False)
    parser.add_argument("--help", "-h", action="store_true")
    parser.add_argument("--quick", action="store_true")
    parser.add_argument("--filter", default="")
    parser.add_argument("--processor-time", action="store_true")
    parser.add_argument("--check", action="store_true")
    parser.add_argument("--no-docs", action="store_true")
    parser.add_argument("--json", type=Path)
    parser.add_argument("--build", type=Path, default=PROJECT / "build" / "bench")
    parser.add_argument("--instructions", action="store_true")
    parser.add_argument("--update", action="store_true")
    parser.add_argument("--reason", default="")
    return parser.parse_args(words)


def _measure(options):
    build = building.Build(PROJECT, options.build.resolve())
    build.make("benchmarks")
    results = measuring.run(build, options.filter, options.quick, options.processor_time)
    footprints = {} if options.filter else footprint.measure(PROJECT, build)
    rows = table.rows(results, footprints)
    growth = table.growth(results)
    print()
    print(table.text(rows, growth))
    record = {"machine": measuring.machine(), "results": results, "footprint": footprints,
              "table": [row.as_dict() for row in rows], "growth": growth}
    file = options.json or build.directory / "results.json"
    file.write_text(json.dumps(record, indent=1) + "\n")
    if not (options.quick or options.filter or options.processor_time or options.no_docs):
        plots.draw(results, PROJECT / "docs")
        page.renew(PROJECT / "docs" / "performance.md", record["machine"], rows, growth, footprints)
    missed = [row.what for row in rows if row.verdict == "MISSED"]
    return 1 if options.check and missed else 0


def _count(options):
    build = building.Build(PROJECT, options.build.resolve())
    build.make("counted_pieces", "write_configuration", "peak_memory", "faultkeeperd", "faultkeeperctl")
    result = counting.run(PROJECT, build, options.update, options.reason)
    print()
    print(footprint.text(footprint.measure(PROJECT, build)))
    return result


def main(words, usage):
    options = _arguments(words, usage)
    if options.help:
        print(usage.strip())
        return 0
    try:
        return _count(options) if options.instructions else _measure(options)
    except building.Failure as failure:
        print(f"scripts/bench: {failure}", file=sys.stderr)
        return 1
