"""A copy of the tree with a build of its own, in which one fault after the other is made and tried."""

import filecmp
import os
import re
import resource
import shutil
import signal
import subprocess
import tempfile
import time

TESTED = "tests/unit/"
APPLICATIONS = ("tests/unit/faultkeeperctl/", "tests/unit/faultkeeperd/", "tests/unit/store/")    # they test the programs
# A fault that only a warning tells of is still made; one that reads beyond an array's end is noticed.
FLAGS = "-O0 -w -D_GLIBCXX_ASSERTIONS -fsanitize=undefined -fno-sanitize=vptr -fno-sanitize-recover=all"
TABLE_PROJECT = 68                        # the top byte of a status table's key, unless a fault changes it
MEMORY = 4 << 30                          # bytes of address space for one test program
OUTPUT = 1 << 30                          # bytes of the largest file it may write
PATIENCE = 30                             # seconds for a test program, besides five times what it takes without a fault
COMPILING = 300                           # seconds


running = set()    # processes that lead a group


class BuildFailed(Exception):
    pass


def ProjectFiles():
    """What the unit tests are built from: what git knows or would add."""
    listed = subprocess.run(["git", "ls-files", "-z", "--cached", "--others", "--exclude-standard"], check=True,
                            stdout=subprocess.PIPE, text=True).stdout.split("\0")
    return sorted(path for path in listed if path and os.path.isfile(path) and not re.match(r"fuzz/|\.", path))


def Limit():
    resource.setrlimit(resource.RLIMIT_AS, (MEMORY, MEMORY))
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
    resource.setrlimit(resource.RLIMIT_FSIZE, (OUTPUT, OUTPUT))


def RunLimited(command, seconds, **options):
    """Exit status and process id; the status is None when the time was up. Whatever the command has started and left
    behind is ended."""
    with subprocess.Popen(command, start_new_session=True, **options) as process:
        running.add(process)
        try:
            return process.wait(seconds), process.pid
        except subprocess.TimeoutExpired:
            return None, process.pid
        finally:
            EndGroup(process)
            running.discard(process)


def EndAll():
    """Leaves nothing running when the work is broken off."""
    for process in list(running):
        EndGroup(process)


def EndGroup(process):
    try:
        os.killpg(process.pid, signal.SIGKILL)
    except ProcessLookupError:
        pass


class Workshop:
    """Used by one thread at a time."""

    def __init__(self, folder, jobs):
        self.tree = os.path.join(folder, "tree")
        self.build = os.path.join(folder, "build")
        self.temporary = tempfile.mkdtemp(prefix="faultkeeper-mutate-")
        os.chmod(self.temporary, 0o755)    # some tests become another user
        self.log = os.path.join(folder, "log")
        self.jobs = jobs
        self.programs = []

    def Close(self):
        self._Clean(0)
        os.rmdir(self.temporary)

    def Prepare(self):
        """Brings the copy up to date and builds all unit tests."""
        self._CopyTree()
        self._Check(["cmake", "-S", self.tree, "-B", self.build, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Debug",
                     "-DCMAKE_CXX_COMPILER=g++", f"-DCMAKE_CXX_FLAGS_DEBUG={FLAGS}", "-DFAULTKEEPER_DEVELOPER_MODE=ON"])
        self.programs = self._Programs()
        self._Check(["ninja", "-C", self.build, f"-j{self.jobs}", *self.programs])

    def Try(self, fault, durations):
        """(False, "") if the fault does not compile; else True and which test caught it, None if none did."""
        path = os.path.join(self.tree, fault.path)
        with open(path, encoding="utf-8") as file:
            sound = file.read()
        try:
            self._Write(path, fault.Apply(sound))
            return self._TryPrograms(Ordered(self.programs, fault.path, durations), durations)
        finally:
            self._Write(path, sound)

    def Measure(self):
        """How long each test program takes without a fault; fails when one of them does."""
        durations = {}
        for program in self.programs:
            begin = time.monotonic()
            caught = self.Run(program, 20 * PATIENCE)
            if caught is not None:
                raise BuildFailed(f"without any fault, {caught} fails already; see {self.log}")
            durations[program] = time.monotonic() - begin
        return durations

    def Run(self, program, seconds):
        """Which test of the program failed, None if none did."""
        environment = dict(os.environ, TMPDIR=self.temporary, GTEST_FAIL_FAST="1", GTEST_COLOR="no",
                           FAULTKEEPER_TRUNCATION_STEP="97")    # every byte takes too long for that many runs
        with open(self.log, "wb") as log:
            status, pid = RunLimited([os.path.join(self.build, program)], seconds, stdin=subprocess.DEVNULL, stdout=log,
                                     stderr=log, env=environment, preexec_fn=Limit,
                                     cwd=os.path.join(self.build, os.path.dirname(program)))
        self._Clean(pid)
        return None if status == 0 else self._FailedTest(program, status)

    def _TryPrograms(self, programs, durations):
        for count, program in enumerate(programs):
            # The likely ones are linked one by one; once they are through, all the others will be needed.
            wanted = [program] if count < 2 else programs
            if count <= 2 and not self._Compiles(wanted):
                return False, ""
            caught = self.Run(program, PATIENCE + 5 * durations[program])
            if caught is not None:
                return True, caught
        return True, None

    def _Compiles(self, programs):
        with open(self.log, "wb") as log:
            return RunLimited(["ninja", "-C", self.build, f"-j{self.jobs}", *programs], COMPILING, stdout=log,
                              stderr=log)[0] == 0

    def _FailedTest(self, program, status):
        with open(self.log, encoding="utf-8", errors="replace") as log:
            output = log.read()
        failed = re.search(r"^\[  FAILED  \] ([\w/]+\.[\w/]+)", output, re.MULTILINE)
        if failed is not None:
            return failed[1]
        begun = re.findall(r"\[ RUN      \] ([\w/]+\.[\w/]+)", output)
        how = "no end" if status is None else f"signal {-status}" if status < 0 else f"exit {status}"
        return f"{begun[-1] if begun else os.path.basename(program)} ({how})"

    def _Programs(self):
        listed = subprocess.run(["ninja", "-C", self.build, "-t", "targets", "all"], check=True, stdout=subprocess.PIPE,
                                text=True).stdout
        return [program for program in re.findall(r"^(\S+): CXX_EXECUTABLE_LINKER", listed, re.MULTILINE)
                if program.startswith(TESTED) and not program.startswith(APPLICATIONS)]

    def _CopyTree(self):
        """Copies what differs, so that only that is built again."""
        wanted = set(ProjectFiles())
        for folder, _, names in os.walk(self.tree):
            for name in names:
                path = os.path.join(folder, name)
                if os.path.relpath(path, self.tree) not in wanted:
                    os.remove(path)
        for path in wanted:
            copy = os.path.join(self.tree, path)
            if not os.path.exists(copy) or not filecmp.cmp(path, copy, shallow=False):
                os.makedirs(os.path.dirname(copy), exist_ok=True)
                shutil.copyfile(path, copy)
                shutil.copymode(path, copy)

    def _Write(self, path, text):
        with open(path, "w", encoding="utf-8") as file:
            file.write(text)

    def _Check(self, command):
        with open(self.log, "wb") as log:
            if subprocess.run(command, stdout=log, stderr=log).returncode != 0:
                raise BuildFailed(f"{command[0]} fails; see {self.log}")

    def _Clean(self, pid):
        """Removes the directories, tables and locks that a test has left behind when it failed or was ended."""
        names = os.listdir(self.temporary)
        paths = [os.path.join(self.temporary, name) for name in names]
        RemoveTables(pid, {TableKey(path) for path in paths})
        for path in paths:
            if os.path.isdir(path) and not os.path.islink(path):
                RestoreAccess(path)
                shutil.rmtree(path, ignore_errors=True)
            else:
                os.remove(path)


def RestoreAccess(path):
    for folder, names, _ in os.walk(path):
        for name in names:
            os.chmod(os.path.join(folder, name), 0o700)


def TableKey(directory):
    status = os.lstat(directory)
    return TABLE_PROJECT << 24 | (status.st_dev & 0xFF) << 16 | status.st_ino & 0xFFFF


def RemoveTables(pid, keys):
    """Removes the shared memory that a process has made or that has one of the keys, and the semaphore of the same key,
    unless somebody is attached to it: keys hold only 16 bits of a directory's number."""
    with open("/proc/sysvipc/shm", encoding="ascii") as listed:
        segments = [[int(field) for field in line.split()] for line in listed.readlines()[1:]]
    for key, segment, _, _, creator, _, attached, *_ in segments:
        key &= 0xFFFFFFFF
        if attached == 0 and (creator == pid or key in keys):
            for what in (["-m", str(segment)], ["-S", hex(key)]):
                subprocess.run(["ipcrm", *what], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)


def Ordered(programs, path, durations):
    """The test programs, beginning with those named after the file, then those of its folder, then the quick ones."""
    stem = os.path.splitext(os.path.basename(path))[0]
    folder = os.path.dirname(path)[len("src/"):]

    def Rank(program):
        name = os.path.basename(program)
        return (not name == f"unit_{stem}Test", not stem in name,
                not os.path.dirname(program) == TESTED + folder, durations[program], program)
    return sorted(programs, key=Rank)
