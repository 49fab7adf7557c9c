"""Building what is measured."""

import subprocess


class Failure(Exception):
    """Something that ends the run, told to the user as it is."""


class Build:
    """The release preset's build in a directory of its own, with the benchmarks."""

    def __init__(self, project, directory):
        self.project = project
        self.directory = directory

    def make(self, *targets):
        self._run(["cmake", "--preset", "release", "-S", str(self.project), "-B", str(self.directory),
                   "-DFAULTKEEPER_BENCHMARKS=ON"])
        self._run(["cmake", "--build", str(self.directory), "--target", *targets])

    def program(self, name):
        """Path of a program, in whichever folder of the build it is."""
        for folder in ("benchmarks", "apps/faultkeeperd", "apps/faultkeeperctl"):
            path = self.directory / folder / name
            if path.is_file():
                return path
        raise Failure(f"{name} was not built")

    def _run(self, command):
        result = subprocess.run(command, cwd=self.project, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                                check=False)
        if result.returncode != 0:
            raise Failure(f"{' '.join(command)} failed:\n{result.stdout}")
