"""Measures one command: instructions, time, peak memory, shared libraries."""
import pathlib
import re
import statistics
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
QUTIL = ROOT / "build/release/bin/qutil"
EXAMPLE = ROOT / "build/release/examples/minimal-library"
FLOORS = ROOT / "build/bench"


class Failure(Exception):
    pass


def build(packages):
    """Builds all that is measured, with those packages installed that script/setup has under this name."""
    subprocess.run([ROOT / "script/setup", packages], check=True)
    subprocess.run([ROOT / "script/build", "release", "qutil", "velq-probe", "minimal_library"], check=True)
    if not (FLOORS / "build.ninja").exists():
        subprocess.run(["cmake", "-S", ROOT / "bench", "-B", FLOORS, "-G", "Ninja"], check=True,
                       stdout=subprocess.DEVNULL)
    subprocess.run(["ninja", "-C", FLOORS, "--quiet"], check=True, stdout=sys.stderr)


def probe():
    """The probe of the build that is measured."""
    return next((ROOT / "build/release").glob("lib*/**/libvelq-probe.so"))


class Command:
    """A command with its whole environment. `fresh` is a state that each run begins without."""

    def __init__(self, *words, fresh=None, **variables):
        self.words = [str(word) for word in words]
        self.fresh = fresh
        self.environment = {"PATH": "/usr/bin:/bin", "LC_ALL": "C.UTF-8", "HOME": "/nonexistent",
                            **{name: str(value) for name, value in variables.items()}}

    def under(self, *wrapper, **variables):
        """Runs it to the end behind the words of `wrapper` and returns the completed process."""
        if self.fresh:
            for suffix in "", "-journal":
                pathlib.Path(f"{self.fresh}{suffix}").unlink(missing_ok=True)
        return subprocess.run([*map(str, wrapper), *self.words], env={**self.environment, **variables},
                              stdin=subprocess.DEVNULL, capture_output=True, text=True)

    def output(self):
        return self.under().stdout

    def instructions(self, locale="C.UTF-8"):
        run = self.under("valgrind", "--tool=callgrind", "--callgrind-out-file=/dev/null", LC_ALL=locale)
        counted = re.search(r"Collected : (\d+)", run.stderr)
        if not counted:
            raise Failure(f"{' '.join(self.words)}: {run.stderr}")
        return int(counted[1])

    def libraries(self):
        """How many shared objects were initialised, those included that were loaded late."""
        return len(set(re.findall(r"calling init: (\S+)", self.under(LD_DEBUG="libs").stderr)))

    def time_once(self):
        """Milliseconds and kilobytes of one run."""
        nanoseconds, kilobytes, status = map(int, self.under(FLOORS / "run").stdout.split())
        if status & 0x7F or status == 127 << 8:
            raise Failure(f"{' '.join(self.words)} ended with status {status:#x}")
        return nanoseconds / 1e6, kilobytes

    def time(self, times):
        """The medians of `times` runs."""
        return tuple(statistics.median(column) for column in zip(*(self.time_once() for _ in range(times))))
