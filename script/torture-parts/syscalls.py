"""Every system call of a command fails once: what is reported is kept, what is refused is not, and nothing fails in silence."""
import collections
import concurrent.futures
import os
import re
import threading

from changes import BEGINNINGS, COMMANDS, Bench, Stage, Story, difference, without_numbers
from rig import Fault

ERRORS = {
    "openat": ["EIO", "EINTR", "EMFILE", "ENOSPC"],
    "mkdir": ["EIO", "ENOSPC"],
    "fcntl": ["EIO", "EINTR", "EMFILE"],
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
        """The failures to try: the name of a call, which one of them, and the error."""
        counts = collections.Counter()
        for call in self.story.calls:
            counts[call.name] += 1
            # Without the recorder the run would wait for minutes.
            if call.path == str(self.stage.bench.recorder):
                continue
            for error in ERRORS.get(call.name, []):
                if ONLY_WITH.get((call.name, error), "") in call.arguments:
                    yield call.name, counts[call.name], error

    def play(self, case):
        """Returns what was wrong, None when nothing was; and what happened, in words."""
        name, number, error = case
        folder = self.stage.copy(threading.get_ident())
        options = ["-e", f"trace={name}", "-e", f"inject={name}:error={error}:when={number}"]
        status, output, errors = self.stage.strace(folder, *options)
        injected = [line for line in (folder / "record").read_text(errors="replace").splitlines() if line.endswith("(INJECTED)")]
        seen = f"{injected}\nstatus {status}\n{output}{errors}"
        try:
            if len(injected) != 1:
                raise Fault("the call was not made")
            if status < 0:
                raise Fault(f"ended by signal {-status}, or hung")
            self.judge(folder, injected[0], output, errors)
            if error == "EINTR" and name in REPEATED and OWN_FILE.search(injected[0]) and output != self.story.output:
                raise Fault("not made again after a signal")
        except Fault as fault:
            return str(fault), seen
        return None, seen

    def judge(self, folder, injected, output, errors):
        trace = folder / "trace"
        lines = [without_numbers(line) for line in trace.read_text().splitlines()] if trace.exists() else []
        lost = "VELQ_TRACE" in errors or "cannot be preloaded" in errors
        view = self.stage.look(folder)
        rows = self.stage.rows(folder)
        allowed = self.allowed(self.story.lines if lost else lines)
        wrong = {key: rows.get(key) for key in {**rows, **allowed} if rows.get(key) not in allowed.get(key, [None])}
        if wrong:
            raise Fault(f"kept and reported differ: {wrong} after {lines[-3:]}")
        if self.views.setdefault(frozenset(rows.items()), view) != view:
            raise Fault("another run with the same state showed other devices")
        as_ever = output == self.story.output and rows == self.story.contents[-1]
        # The tool's own streams are its user's affair.
        is_ours = not injected.split("(", 1)[1].startswith(("0<", "1<", "2<"))
        if is_ours and not as_ever and not errors and "rror" not in output:
            raise Fault("failed without a word")
        if not as_ever and "VELQ_TRACE" in errors:
            raise Fault("the loss of the trace changed what the command did")

    def allowed(self, lines):
        """The values that the state may hold after a run with these lines in its trace; what is not named must not be there."""
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
    """Gives for each case its label, what was wrong, and what happened."""
    cases = {"/".join([name, beginning, *map(str, case)]): case for case in trial.cases()}
    if options.only:
        cases = {label: case for label, case in cases.items() if label == options.only}
    elif options.short:
        cases = dict(list(cases.items())[::10])
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as workers:
        for label, result in zip(cases, workers.map(trial.play, cases.values())):
            yield label, *result


def fail_each(options):
    bench = Bench(options)
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
