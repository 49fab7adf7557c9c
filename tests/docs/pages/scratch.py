"""Where a page's commands are run: a fresh directory that looks like the root of a clone, as far as pages look."""

import contextlib
import fcntl
import os
import shutil
import subprocess
import tempfile
from pathlib import Path

_COPIED = ["config", "docs/examples", "docs/pictures", "examples"]  # pages may change them
_RUN_DIRECTORY = "run"  # there from the start, as its key must be free


@contextlib.contextmanager
def port_turn():
    """Port 5300 is fixed: tests on this machine take turns by locking the directory /tmp."""
    descriptor = os.open("/tmp", os.O_RDONLY)
    try:
        fcntl.flock(descriptor, fcntl.LOCK_EX)
        yield
    finally:
        os.close(descriptor)


class Scratch:
    def __init__(self, project, programs):
        self.directory = Path(tempfile.mkdtemp(prefix="faultkeeper-page-"))
        self.environment = _environment(programs, self.directory)
        for name in _COPIED:
            if (project / name).exists():
                shutil.copytree(project / name, self.directory / name)
        self._make_run_directory()

    def remove(self):
        """Removes the directory, and the table if the page has not done so."""
        if (self.directory / _RUN_DIRECTORY).is_dir() and self._table_state(_RUN_DIRECTORY) != "absent":
            self._ask("table", "--remove", "--run-dir", str(self.directory / _RUN_DIRECTORY))
        shutil.rmtree(self.directory, ignore_errors=True)

    def _make_run_directory(self):
        # A key keeps 16 bits of the directory's number, so another table may have it already.
        for attempt in range(10):
            name = f"try{attempt}"
            (self.directory / name).mkdir()
            if self._table_state(name) == "absent":
                (self.directory / name).rename(self.directory / _RUN_DIRECTORY)
                break
        for left in self.directory.glob("try*"):
            left.rmdir()

    def _table_state(self, name):
        answer = self._ask("status", "--json", "--run-dir", str(self.directory / name))
        return "absent" if '"absent"' in answer else "there"

    def _ask(self, *arguments):
        return subprocess.run(["faultkeeperctl", *arguments], env=self.environment, capture_output=True, text=True,
                              check=False).stdout


def _environment(programs, directory):
    kept = {name: value for name, value in os.environ.items()
            if not name.startswith("FAULTKEEPER_") and name not in ("COLUMNS", "NO_COLOR", "LANG", "LANGUAGE")}
    path = f"{programs}:{kept['PATH']}"
    return {**kept, "PATH": path, "HOME": str(directory), "TZ": "UTC", "LC_ALL": "C.UTF-8", "TERM": "dumb"}
