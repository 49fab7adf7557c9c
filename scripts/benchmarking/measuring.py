"""Running the benchmark programs and reading what they say."""

import json
import os
import platform
import re
import statistics
import subprocess
import tempfile
from pathlib import Path

from .building import Failure

PROGRAMS = ("database_benchmarks", "inside_benchmarks", "view_benchmarks", "presentation_benchmarks",
            "client_benchmarks", "reporting_benchmarks")
STORED = "--stored"  # has reporting_benchmarks measure an owner that has a state store
ERRORS = "--errors"  # the same with another table than a full one
SMALLER = ("10", "100")
REPETITIONS = 9
FEWER = 5            # of those with a smaller table, which have no limits
SECONDS_EACH = 0.1  # at least so long in each repetition
_NANOSECONDS = {"ns": 1.0, "us": 1e3, "ms": 1e6, "s": 1e9}


def _run_program(command, pattern, quick, file):
    """Repetitions of all benchmarks are shuffled, so that what disturbs the machine meets a pair's both sides."""
    repetitions = 1 if quick else FEWER if ERRORS in command else REPETITIONS
    command = [*command, f"--benchmark_out={file}", "--benchmark_out_format=json", "--benchmark_color=false",
               f"--benchmark_repetitions={repetitions}",
               f"--benchmark_min_time={0.01 if quick else SECONDS_EACH}"]
    if not quick:
        command.append("--benchmark_enable_random_interleaving=true")
    if pattern:
        command.append(f"--benchmark_filter={pattern}")
    result = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, check=False)
    if result.returncode != 0:
        raise Failure(f"{command[0]} ended with {result.returncode}:\n{result.stderr[-3000:]}")
    return result.stderr


def _nanoseconds(entry, processor_time):
    """Of one operation. What measures by itself has real time only."""
    scale = entry["cpu_time"] / entry["real_time"] if processor_time and _whole(entry) else 1.0
    if "items_per_second" in entry:
        return scale * 1e9 / entry["items_per_second"]
    return scale * entry["real_time"] * _NANOSECONDS[entry["time_unit"]]


def _whole(entry):
    return entry["run_name"].endswith("/real_time") and entry["real_time"] > 0


def _collect(entries, processor_time):
    """Medians by "what/role" and size."""
    samples = {}
    extras = {}
    for entry in entries:
        if entry.get("run_type") == "aggregate":
            continue
        if entry.get("error_occurred"):
            raise Failure(f"{entry['name']}: {entry['error_message']}")
        what, role, size = entry["run_name"].split("/")[:3]
        key = (f"{what}/{role}", int(size))
        samples.setdefault(key, []).append(_nanoseconds(entry, processor_time))
        for counter in ("p99", "trees", "told_per_request", "without_change"):
            if counter in entry:
                extras.setdefault(key, {}).setdefault(counter, []).append(entry[counter])
    results = {}
    for (name, size), values in samples.items():
        result = {"nanoseconds": statistics.median(values), "least": min(values), "most": max(values),
                  "repetitions": len(values)}
        for counter, found in extras.get((name, size), {}).items():
            result[counter] = statistics.median(found)
        results.setdefault(name, {})[size] = result
    return results


def _matches(command, pattern):
    if not pattern:
        return True
    listing = subprocess.run([*command, "--benchmark_list_tests=true"], stdout=subprocess.PIPE, text=True,
                             check=True).stdout
    return any(re.search(pattern, name) for name in listing.split())


def _commands(build):
    commands = [[str(build.program(name))] for name in PROGRAMS]
    reporting = str(build.program("reporting_benchmarks"))
    commands += [[reporting, ERRORS, errors] for errors in SMALLER]
    owner_help = subprocess.run([build.program("faultkeeperd"), "--help"], stdout=subprocess.PIPE, text=True, check=True)
    if "--state" in owner_help.stdout:
        commands.append([reporting, STORED])
        commands += [[reporting, STORED, ERRORS, errors] for errors in SMALLER]
    return commands


def run(build, pattern, quick, processor_time):
    """Runs everything that matches. Results by name and size."""
    results = {}
    for command in _commands(build):
        if not _matches(command, pattern):
            continue
        print("running", " ".join([Path(command[0]).name, *command[1:]]), flush=True)
        with tempfile.TemporaryDirectory() as scratch:
            file = Path(scratch) / "results.json"
            _run_program(command, pattern, quick, file)
            entries = json.loads(file.read_text())["benchmarks"]
        for key, sizes in _collect(entries, processor_time).items():
            results.setdefault(key, {}).update(sizes)
    if not results:
        raise Failure("no benchmark has such a name")
    return results


def machine():
    """What the figures were measured on."""
    model = re.search(r"model name\s*:\s*(.*)", Path("/proc/cpuinfo").read_text())
    compiler = subprocess.run(["c++", "--version"], stdout=subprocess.PIPE, text=True, check=False).stdout.splitlines()
    return {"processor": model.group(1) if model else platform.machine(), "processors": os.cpu_count(),
            "system": f"{platform.system()} {platform.release()}", "compiler": compiler[0] if compiler else "",
            "load": os.getloadavg()[0]}
