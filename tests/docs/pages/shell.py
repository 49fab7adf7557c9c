"""The one bash that runs all commands of a page, so that what one of them exports, starts or changes is there for the next."""

import os
import select
import shlex
import subprocess
import time
import uuid

PATIENCE = 120  # seconds for one command, in an emulator on a busy machine; each takes a fraction of one

_MARK_FUNCTION = "faultkeeper_mark() { local status=$?; printf '\\n%s %d\\n' \"$1\" $status; return $status; }\n"


class Ended(Exception):
    """The shell is gone or does not come back; what it printed last is the text."""


class Shell:
    def __init__(self, directory, environment):
        self._patience = PATIENCE
        self._process = subprocess.Popen(
            ["bash", "--noprofile", "--norc"], cwd=directory, env=environment, start_new_session=True,
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        self._write(_MARK_FUNCTION)

    def run(self, command):
        """What the command and those before it in the background print until it ends, and its exit status."""
        mark = f"end-{uuid.uuid4().hex}"
        self._write(f"eval {shlex.quote(command)} </dev/null\nfaultkeeper_mark {mark}\n")
        text, status = self._read_to(mark)
        return text, status

    def end(self):
        """Ends the shell and whatever it has left running; returns how many processes that were."""
        self._process.stdin.close()
        try:
            self._process.wait(self._patience)
        except subprocess.TimeoutExpired:
            self._process.kill()
            self._process.wait()
        left = self._session()
        for signal in (15, 9):
            for process in self._session():
                os.kill(process, signal)
            deadline = time.monotonic() + 10
            while self._session() and time.monotonic() < deadline:
                time.sleep(0.05)
        self._process.stdout.close()
        return len(left)

    def _write(self, text):
        try:
            self._process.stdin.write(text.encode())
            self._process.stdin.flush()
        except BrokenPipeError:
            raise Ended("the shell has ended") from None

    def _read_to(self, mark):
        text = ""
        rest = b""
        deadline = time.monotonic() + PATIENCE
        while True:
            if not select.select([self._process.stdout], [], [], max(0, deadline - time.monotonic()))[0]:
                self._patience = 0  # nor will it end by itself
                raise Ended(text + f"... no end after {PATIENCE} s")
            piece = os.read(self._process.stdout.fileno(), 65536)
            if not piece:
                raise Ended(text + "the shell has ended")
            rest += piece
            text = rest.decode(errors="replace")
            begin = text.find("\n" + mark + " ")
            if begin >= 0 and text.endswith("\n"):
                return text[:begin], int(text[begin:].split()[1])

    def _session(self):
        """The living processes that the shell has started."""
        found = []
        for name in os.listdir("/proc"):
            try:
                if name.isdigit() and os.getsid(int(name)) == self._process.pid and _alive(name):
                    found.append(int(name))
            except ProcessLookupError:
                continue
        return found


def _alive(process):
    try:
        with open(f"/proc/{process}/stat") as file:
            return file.read().rpartition(")")[2].split()[0] not in "ZX"
    except (FileNotFoundError, ProcessLookupError):
        return False
