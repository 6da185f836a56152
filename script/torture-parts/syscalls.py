"""Each system call of a command fails once: what is reported is saved, what is refused is not, none fails unseen."""
import collections
import concurrent.futures
import os
import re
import shutil
import subprocess
import threading

from changes import BEGINNINGS, COMMANDS, Bench, Stage, Story, difference, without_numbers
from rig import Fault

# Where no lock can be had, all calls of the kind fail.
ALWAYS = ["EINVAL", "EBADF"]
ERRORS = {
    "openat": ["EIO", "EINTR", "EMFILE", "ENOSPC"],
    "mkdir": ["EIO", "ENOSPC"],
    "fcntl": ["EIO", "EINTR", "EMFILE", *ALWAYS],
    "pread64": ["EIO", "EINTR"],
    "pwrite64": ["EIO", "EINTR", "ENOSPC"],
    "read": ["EIO", "EINTR"],
    "write": ["EIO", "EINTR", "ENOSPC"],
    "fsync": ["EIO", "EINTR", "ENOSPC"],
    "fdatasync": ["EIO", "EINTR", "ENOSPC"],
    "ftruncate": ["EIO", "EINTR", "ENOSPC"],
    "unlink": ["EIO", "ENOSPC"],
    "lseek": ["EIO"],
    "newfstatat": ["EIO"],
    "readlink": ["EIO"],
}
CLOSED = ["0", "1", "2", "01", "02", "12", "012"]
# Calls that a signal may cut short, on files of ours, and that are then simply made again.
REPEATED = {"openat", "read", "write", "pread64", "pwrite64"}
OWN_FILE = re.compile(r'(^\w+\(\d+<|>, ")(/dev/shm/|new\.fw)')
# What only some calls of a name can answer.
ONLY_WITH = {("openat", "ENOSPC"): "O_CREAT", ("fcntl", "EMFILE"): "F_DUPFD"}


class Trial:
    """One command on one beginning, and what it does when nothing fails."""

    def __init__(self, bench, name, beginning):
        self.stage = Stage(bench, name, beginning)
        self.story = Story(self.stage, ERRORS)
        for _ in self.story.play():
            pass
        self.views = {}

    def cases(self):
        """What to try: streams closed from the beginning, or the name of a call, which one of them, and the error."""
        yield from (("closed", streams) for streams in CLOSED)
        counts = collections.Counter()
        for call in self.story.calls:
            counts[call.name] += 1
            # Without the recorder the run would wait for minutes.
            if call.path == str(self.stage.bench.recorder):
                continue
            for error in ERRORS.get(call.name, []):
                if error in ALWAYS and counts[call.name] == 1:
                    yield call.name, "1+", error
                elif error not in ALWAYS and ONLY_WITH.get((call.name, error), "") in call.arguments:
                    yield call.name, str(counts[call.name]), error

    def play(self, case):
        """Returns what was wrong, None when nothing was; and what happened, in words."""
        directory = self.stage.copy(threading.get_ident())
        disturb = self.close if case[0] == "closed" else self.inject
        try:
            what, status, output, errors = disturb(directory, *case)
            seen = f"{what}\nstatus {status}\n{output}{errors}"
        except Fault as fault:
            return str(fault), ""
        try:
            if status < 0:
                raise Fault(f"ended by signal {-status}, or hung")
            # The tool's own streams are its user's affair.
            is_ours = case[0] != "closed" and not what.split("(", 1)[1].startswith(("0<", "1<", "2<"))
            self.judge(directory, output, errors, is_ours)
            if case[0] in REPEATED and case[2] == "EINTR" and OWN_FILE.search(what) and output != self.story.output:
                raise Fault("not made again after a signal")
        except Fault as fault:
            return str(fault), seen
        return None, seen

    def close(self, directory, _, streams):
        closing = " ".join(f"{stream}>&-" for stream in streams)
        wrapper = ["sh", "-c", f'exec "$@" {closing}', "sh", "env", *self.stage.traced(directory)]
        return closing, *self.stage.run(directory, self.stage.arguments, wrapper)

    def inject(self, directory, name, number, error):
        options = ["-e", f"trace={name}", "-e", f"inject={name}:error={error}:when={number}"]
        result = self.stage.strace(directory, *options)
        lines = (directory / "record").read_text(errors="replace").splitlines()
        injected = [line for line in lines if line.endswith("(INJECTED)")]
        if not injected:
            raise Fault("the call was not made")
        return injected[0], *result

    def judge(self, directory, output, errors, is_ours):
        trace = directory / "trace"
        lines = [without_numbers(line) for line in trace.read_text().splitlines()] if trace.exists() else []
        lost = "VELQ_TRACE" in errors or "cannot be preloaded" in errors
        if any(line and line in self.story.output.splitlines() for line in lines):
            raise Fault("the trace holds what was printed")
        view = self.stage.look(directory)
        rows = self.stage.rows(directory)
        allowed = self.allowed(self.story.lines if lost else lines)
        wrong = {key: rows.get(key) for key in {**rows, **allowed} if rows.get(key) not in allowed.get(key, [None])}
        if wrong:
            raise Fault(f"saved and reported differ: {wrong} after {lines[-3:]}")
        if self.views.setdefault(frozenset(rows.items()), view) != view:
            raise Fault("another run with the same state showed other devices")
        as_ever = output == self.story.output and rows == self.story.contents[-1]
        if errors.count("velq-sim: ") > 1:
            raise Fault("more than one line for one cause")
        if is_ours and not as_ever and not errors and "rror" not in output:
            raise Fault("failed silently")
        if not as_ever and "VELQ_TRACE" in errors:
            raise Fault("the loss of the trace changed what the command did")

    def allowed(self, lines):
        """What the state may hold after a run with these lines in its trace; what is not named must not be there."""
        values = {key: [value] for key, value in self.stage.before.items()}
        story = self.story
        for index, before, after in zip(story.changing, story.contents, story.contents[1:]):
            if story.lines[index] not in lines:
                continue
            # Where something was refused before, such as a section of a calibration, a change may be smaller.
            is_whole = lines[:index] == story.lines[:index]
            for key, value in difference(before, after).items():
                values[key] = [value] if is_whole else [value, *values.get(key, [None])]
        return values


def play_all(trial, name, beginning, options):
    """Yields for each case its label, what was wrong, and what happened."""
    cases = {"/".join([name, beginning, *case]): case for case in trial.cases()}
    if options.only:
        cases = {label: case for label, case in cases.items() if label == options.only}
    elif options.short:
        cases = dict(list(cases.items())[::10])
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as workers:
        for label, result in zip(cases, workers.map(trial.play, cases.values())):
            yield label, *result


class Capture:
    """A capture of the simulator, in a directory of its own each time."""

    CALLS = ["link", *(name for name in ERRORS if name not in ("mkdir", "pwrite64", "fdatasync", "ftruncate"))]

    def __init__(self, bench):
        self.place = bench.place
        self.program = bench.tool.parent / "velq-sim"
        self.counts = collections.Counter()
        status, _, self.whole = self.run("whole", f"trace={','.join(self.CALLS)}")
        lines = (self.place / "whole" / "record").read_text(errors="replace").splitlines()
        self.counts.update(line.split("(", 1)[0] for line in lines)
        if status != 0 or not self.whole.get("copy"):
            raise Fault(f"a capture without a fault: status {status}")

    def run(self, name, *options):
        """Returns the status, standard error, and what was written, by file name."""
        directory = self.place / name
        shutil.rmtree(directory, ignore_errors=True)
        directory.mkdir()
        tracing = [word for option in options for word in ("-e", option)]
        command = ["strace", "-o", directory / "record", *tracing, self.program, "--capture", "copy"]
        run = subprocess.run(command, cwd=directory, env={"HOME": str(directory)}, capture_output=True, text=True, timeout=20)
        return run.returncode, run.stderr, {file.name: file.read_text() for file in directory.iterdir()
                                            if file.name != "record"}

    def cases(self):
        return [(name, str(i + 1), error) for name in self.CALLS for i in range(self.counts[name])
                for error in ERRORS.get(name, ["EIO", "ENOSPC"]) if error not in ALWAYS]

    def play(self, case):
        """Returns what was wrong, None when nothing was."""
        name, number, error = case
        status, errors, files = self.run(
            str(threading.get_ident()), f"trace={name}", f"inject={name}:error={error}:when={number}")
        if name == "unlink":
            files = {"copy": files.get("copy")}
        if status == 0 and files != self.whole:
            return "reports success without the whole file"
        if status != 0 and (files or not errors):
            return f"status {status}, files {sorted(files)}, {errors!r}"
        return None


def fail_capture(bench, options):
    """Yields a line for each violation, and one that counts the processes."""
    capture = Capture(bench)
    cases = capture.cases()[::10 if options.short else 1]
    violations = 0
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as workers:
        for case, problem in zip(cases, workers.map(capture.play, cases)):
            if problem:
                violations += 1
                yield f"VIOLATION: --capture/{'/'.join(case)}: {problem}"
    yield f"--capture: {len(cases)} runs, {violations} violations"
    if violations:
        raise Fault(f"{violations} violations in captures")


def fail_each(options):
    bench = Bench(options)
    if not options.only:
        yield from fail_capture(bench, options)
    runs, violations = collections.Counter(), collections.Counter()
    for name in COMMANDS:
        for beginning in BEGINNINGS:
            if options.only and not options.only.startswith(f"{name}/{beginning}/"):
                continue
            for label, problem, seen in play_all(Trial(bench, name, beginning), name, beginning, options):
                runs[name] += 1
                violations[name] += problem is not None
                if problem:
                    yield f"VIOLATION: {problem}; repeat: script/torture syscalls --only={label}"
                if options.only:
                    yield seen
        if runs[name]:
            yield f"{name}: {runs[name]} runs, {violations[name]} violations"
    if not runs.total():
        raise Fault(f'no case is named "{options.only}"')
    if violations.total():
        raise Fault(f"{violations.total()} violations in {runs.total()} runs")
    yield f"{runs.total()} runs, 0 violations"
