"""Memory of the programs with a full configuration, and size of the libraries."""

import ctypes
import os
import re
import signal
import socket
import struct
import subprocess
import tempfile
import time
from pathlib import Path

from .building import Failure

ERRORS = 400
_PROJECT_NUMBER = 68
_HEADER, _RECORD, _FLAGS = 32, 36, 6
_PATIENCE = 30.0
_C = ctypes.CDLL(None, use_errno=True)
_C.shmat.restype = ctypes.c_void_p

_SIMULATE = f"simulate, {2 * ERRORS} steps"
NOT_BUILT = "not built (scripts/test powerpc builds it)"


class _RunDirectory:
    """A fresh directory whose table key nobody uses; table and lock are removed at the end."""

    def __enter__(self):
        self._aside = []
        for _ in range(100):
            directory = tempfile.TemporaryDirectory(prefix="faultkeeper-bench-")
            self._aside.append(directory)
            self.key = _C.ftok(directory.name.encode(), _PROJECT_NUMBER)
            if _C.shmget(self.key, 0, 0) == -1 and _C.semget(self.key, 0, 0) == -1:
                self.path = Path(directory.name)
                return self
        raise Failure("no directory with a free table key")

    def __exit__(self, *_):
        _C.shmctl(_C.shmget(self.key, 0, 0), 0, None)  # IPC_RMID
        _C.semctl(_C.semget(self.key, 0, 0), 0, 0)
        for directory in self._aside:
            directory.cleanup()

    def raised(self):
        """Errors that the table shows as raised."""
        address = _C.shmat(_C.shmget(self.key, 0, 0), None, 0o10000)  # SHM_RDONLY
        if address in (None, ctypes.c_void_p(-1).value):
            return 0
        table = ctypes.string_at(address, _HEADER + ERRORS * _RECORD)
        _C.shmdt(ctypes.c_void_p(address))
        return sum(struct.unpack_from("=H", table, _HEADER + _RECORD * place + _FLAGS)[0] & 1 for place in range(ERRORS))

    def records(self):
        """Identifiers in the table's order."""
        address = _C.shmat(_C.shmget(self.key, 0, 0), None, 0o10000)
        table = ctypes.string_at(address, _HEADER + ERRORS * _RECORD)
        _C.shmdt(ctypes.c_void_p(address))
        return [struct.unpack_from("=ih", table, _HEADER + _RECORD * place) for place in range(ERRORS)]


def _wait_for(what, condition):
    end = time.monotonic() + _PATIENCE
    while not condition():
        if time.monotonic() > end:
            raise Failure(f"waited in vain for {what}")
        time.sleep(0.01)


def _memory(process, field):
    """In MiB."""
    text = Path(f"/proc/{process.pid}/status").read_text()
    return int(re.search(rf"{field}:\s*(\d+) kB", text).group(1)) / 1024


def _raise_all(run, port):
    """Reports every error, in families, so that parents follow, too."""
    with socket.create_connection(("127.0.0.1", port)) as connection:
        for code, kind in run.records():
            connection.sendall(f"d4:argsli{code}ei{kind}ei0ee4:name10:RaiseErrore".encode())
        _wait_for("all reports", lambda: run.raised() == ERRORS)


def _owner(build, configuration, run, state):
    log = run.path / "log"
    with log.open("wb") as errors:
        process = subprocess.Popen([build.program("faultkeeperd"), "--config", configuration, "--run-dir", run.path,
                                    "--port", "0", "--state", state], stdin=subprocess.DEVNULL, stdout=errors, stderr=errors)
    try:
        _wait_for("the owner", lambda: process.poll() is not None or "ready:" in log.read_text())
        found = re.search(r"port (\d+)", log.read_text())
        if found is None:
            raise Failure(f"the owner did not start:\n{log.read_text()}")
        return process, int(found.group(1))
    except BaseException:
        process.kill()
        process.wait()
        raise


def _longest_key(build, configuration, run):
    """Of the faults that are active."""
    words = [build.program("faultkeeperctl"), "--config", configuration, "--run-dir", run.path, "--json", "list"]
    result = subprocess.run(words, stdout=subprocess.PIPE, text=True, check=True)
    return max(re.findall(r'"stateKey": "([0-9A-F]+)"', result.stdout), key=len)


def _write_script(run):
    """Every error raised and cleared, for being played. @return its path"""
    script = run.path / "script"
    script.write_text("".join(f"{word} {code}:{kind}\n" for word in ("raise", "clear") for code, kind in run.records()))
    return script


def _commands(build, configuration, run, state):
    """Commands of faultkeeperctl that are looked at, by name."""
    return {"list": ["list"], "history": ["history"], "hierarchy": ["hierarchy"], "status": ["status"],
            "list, JSON": ["--json", "list"], "hierarchy, JSON": ["--json", "hierarchy"], "check": ["check"],
            "decode": ["decode", _longest_key(build, configuration, run)],
            "strings": ["strings", "--with-originals", "-"], "journal": ["journal", "--state", state],
            _SIMULATE: ["simulate", _write_script(run)]}


def _command_peaks(build, configuration, run, state):
    """The most memory of the commands on this configuration, its owner and its store. What a simulation takes depends on
    the length of its script, so it is told by itself."""
    peaks = {}
    for name, command in _commands(build, configuration, run, state).items():
        words = [build.program("peak_memory"), build.program("faultkeeperctl"), "--config", configuration,
                 "--run-dir", run.path, *command]
        result = subprocess.run(words, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, check=False)
        found_something = name == "check" and result.returncode == 1
        if result.returncode != 0 and not found_something:
            raise Failure(f"faultkeeperctl {name}: {result.stderr}")
        peaks[name] = int(result.stdout) / 1024
    simulation = peaks.pop(_SIMULATE)
    largest = max(peaks, key=peaks.get)
    return {f"faultkeeperctl peak ({largest})": peaks[largest], f"faultkeeperctl peak ({_SIMULATE})": simulation}


def _measure_owner(build, configuration, state, name, others):
    """@param others: what else is measured while all errors are raised"""
    with _RunDirectory() as run:
        process, port = _owner(build, configuration, run, state)
        try:
            found = {f"{name} ready": _memory(process, "VmRSS")}
            _raise_all(run, port)
            found[f"{name} resident"] = _memory(process, "VmRSS")
            found.update(others(build, configuration, run, state))
            found[f"{name} peak"] = _memory(process, "VmHWM")
            return found
        finally:
            process.send_signal(signal.SIGTERM)
            process.wait()


def _measure_programs(build, configuration):
    with tempfile.TemporaryDirectory(prefix="faultkeeper-bench-") as storage:
        store = Path(storage) / "state"
        found = _measure_owner(build, configuration, "none", "faultkeeperd", lambda *_: {})
        found.update(_measure_owner(build, configuration, store, "faultkeeperd with a store", _command_peaks))
        return found


def _sections(path):
    """(type, flags, size) of each section of an ELF file, whatever machine it is for."""
    data = path.read_bytes()
    if data[:4] != b"\x7fELF":
        raise Failure(f"{path} is no ELF file")
    wide, order = data[4] == 2, "<" if data[5] == 1 else ">"
    offset, = struct.unpack_from(order + ("Q" if wide else "I"), data, 0x28 if wide else 0x20)
    size, count = struct.unpack_from(order + "HH", data, 0x3A if wide else 0x2E)
    for number in range(count):
        at = offset + number * size
        if wide:
            _, kind, flags, _, _, length = struct.unpack_from(order + "IIQQQQ", data, at)
        else:
            _, kind, flags, _, _, length = struct.unpack_from(order + "IIIIII", data, at)
        yield kind, flags, length


def _text_and_data(path):
    """Bytes that are loaded and never written, and bytes of data, zeros included."""
    writable, loaded = 1, 2
    text = sum(size for _, flags, size in _sections(path) if flags & loaded and not flags & writable)
    data = sum(size for _, flags, size in _sections(path) if flags & loaded and flags & writable)
    return text, data


def _measure_sizes(project, build):
    found = {}
    for machine, directory in (("x86-64" if os.uname().machine == "x86_64" else os.uname().machine, build.directory),
                               ("PowerPC", project / "build" / "powerpc")):
        for library in ("src/libFaultkeeperAPI.so", "host/libFaultkeeperHost.so"):
            path = directory / library
            found[f"{path.name}, {machine}"] = None
            if path.is_file():
                text, data = _text_and_data(path.resolve())
                found[f"{path.name}, {machine}"] = {"text": text, "data": data}
    return found


def measure(project, build):
    """{"memory": {what: MiB}, "sizes": {library: {"text": bytes, "data": bytes}, or None}}"""
    with tempfile.TemporaryDirectory(prefix="faultkeeper-bench-") as configuration:
        subprocess.run([build.program("write_configuration"), str(ERRORS), configuration], check=True)
        memory = _measure_programs(build, configuration)
    return {"memory": memory, "sizes": _measure_sizes(project, build)}


def rows(footprints):
    """What, and how much, for a table."""
    found = [[what, f"{value:.2f} MiB"] for what, value in footprints.get("memory", {}).items()]
    for library, sizes in footprints.get("sizes", {}).items():
        found.append([library, NOT_BUILT if sizes is None else
                      f"{sizes['text'] / 1024:.1f} KiB text, {sizes['data'] / 1024:.1f} KiB data"])
    return found


HEADINGS = [f"with {ERRORS} errors", ""]


def text(footprints):
    from .table import layout
    return layout(HEADINGS, rows(footprints))
