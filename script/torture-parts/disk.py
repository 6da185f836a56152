"""A state that cannot be written, or cannot be read: nothing is lost, nothing is claimed, reading goes on."""
import os
import resource
import shutil
import signal
import sqlite3
import subprocess
import sys

from rig import Fault, Rig

# The permissions count for root, too, once these are given up.
PLAIN = ["setpriv", "--bounding-set=-dac_override,-dac_read_search", "--inh-caps=-dac_override,-dac_read_search"]
UNPRIVILEGED = PLAIN if os.geteuid() == 0 else []
NAME = "New" + "name" * 10


def check_refusal(rig, what, *, listed, problem="", **more):
    """One change and one look at the list. Returns whether the change was saved; a refusal is one line that names the state."""
    output, errors = rig.run("/dn:7", f"-cd:{NAME}", **more)
    saved = " has changed from " in output
    line = f"velq-sim: {rig.state}: {problem}"
    if not saved and ("setDescription error!" not in output or not errors.startswith(line) or errors.count("\n") != 1):
        raise Fault(f"{what}: {output!r} {errors!r}, expected {line!r}")
    if saved and problem:
        raise Fault(f"{what}: the change was taken")
    names = [NAME if n == 7 and saved else text for n, text in enumerate(listed)]
    list_output = rig.run(**more)[0]
    if list_output.splitlines()[1:] != [f"{n},{text}" for n, text in enumerate(names)]:
        raise Fault(f"{what}: the list became {list_output!r}")
    return saved, errors


def names_in(rig):
    return [items["description"] for items in rig.contents().values()]


def sweep(rig, step, limit):
    """Tries a change with more and more room, which `limit` sets and resets, until one fits. Returns how often it did not."""
    rig.run("/dd:W*", "-cd:?????.1")
    listed, refused, reasons = names_in(rig), 0, set()
    while True:
        with limit(refused * step) as more:
            saved, errors = check_refusal(rig, f"room for {refused * step} bytes", listed=listed, **more)
        if (names_in(rig)[7] == NAME) != saved:
            raise Fault(f"room for {refused * step} bytes: reported and saved differ")
        if saved:
            return refused, reasons
        reasons.add(errors.split(": ", 2)[2].strip())
        refused += 1


class SmallFiles:
    """No file may be longer than `room` bytes."""

    def __init__(self, room):
        self.room = room

    def __enter__(self):
        return {"preexec_fn": self.restrict}

    def __exit__(self, *_):
        pass

    def restrict(self):
        signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
        resource.setrlimit(resource.RLIMIT_FSIZE, (self.room, self.room))


class FullDisk:
    """The file system of the state has `room` bytes left."""

    def __init__(self, directory, room):
        self.filler = directory / "filler"
        self.room = room

    def __enter__(self):
        free = shutil.disk_usage(self.filler.parent).free
        self.filler.write_bytes(b"x" * max(0, free - self.room))
        return {}

    def __exit__(self, *_):
        self.filler.unlink()


def fill_mounted(tool, directory):
    """Runs in its own mount namespace, in which the directory is a small file system."""
    rig = Rig(type("Options", (), {"tool": tool}), directory)
    refused, reasons = sweep(rig, 4096, lambda room: FullDisk(rig.directory, room))
    print(f"full file system: {refused} changes refused, the next one saved, nothing lost ({'; '.join(sorted(reasons))})")


def full_file_system(options, directory):
    mount = 'mount -t tmpfs -o size=512k none "$1" && shift && exec "$@"'
    namespace = ["unshare", "--map-root-user", "--mount", "sh", "-c", mount, "sh", directory]
    if subprocess.run([*namespace, "true"], capture_output=True).returncode != 0:
        return "full file system: NOT RUN, mounting is not permitted here"
    command = [*namespace, sys.executable, __file__, str(options.tool), directory]
    run = subprocess.run(command, capture_output=True, text=True)
    if run.returncode != 0:
        raise Fault(run.stderr)
    return run.stdout.strip()


def make_cases(rig):
    """Unusable states: what it is, how to make it, the line. Each starts from a state that holds a change."""
    def truncate():
        os.truncate(rig.state, rig.state.stat().st_size // 2)

    def foreign_database():
        rig.state.unlink()
        with sqlite3.connect(rig.state) as database:
            database.execute("CREATE TABLE change (device, item, value)")

    def other_rig():
        rig.write({n: f"Other {n}" for n in range(20)})

    changed, plain = [*names_in(rig)], [items["description"] for items in rig.initial.values()]
    return [
        ("read-only file", lambda: rig.state.chmod(0o400), "cannot be opened for writing: Permission denied", changed),
        ("read-only directory", lambda: rig.directory.chmod(0o500), "its directory cannot be written: Permission denied", changed),
        ("unreadable file", lambda: rig.state.chmod(0), "cannot be opened: Permission denied", plain),
        ("read-only directory, no file", lambda: (rig.state.unlink(), rig.directory.chmod(0o500)), "cannot be created: Permission denied", plain),
        ("no directory", lambda: setattr(rig, "state", rig.directory / "none" / "state"), "cannot be created: No such file or directory", plain),
        ("no database", lambda: rig.state.write_bytes(b"text " * 2000), "cannot be used: file is not a database", plain),
        ("half a database", truncate, "cannot be used: database disk image is malformed", plain),
        ("another program's database", foreign_database, "is not a database of this simulator", plain),
        ("state of another rig", other_rig, "was written for another rig", [f"Other {n}" for n in range(20)]),
    ]


def bytes_of(path):
    try:
        return path.read_bytes()
    except FileNotFoundError:
        return None


def unusable(options):
    count = len(make_cases(Rig(options)))
    for index in range(count):
        rig = Rig(options)
        rig.run("/dd:W*", "-cd:?????.changed")
        what, spoil, problem, listed = make_cases(rig)[index]
        spoil()
        before = bytes_of(rig.state)
        check_refusal(rig, what, listed=listed, problem=problem, wrapper=UNPRIVILEGED)
        rig.directory.chmod(0o700)
        if bytes_of(rig.state) != before:
            raise Fault(f"{what}: the file was touched")
    return f"{count} unusable states: one line and a failure status each, the file untouched, reading went on"


def fill_and_forbid(options):
    refused, reasons = sweep(Rig(options), 512, SmallFiles)
    yield f"limited files: {refused} changes refused, the next one saved, nothing lost ({'; '.join(sorted(reasons))})"
    directory = Rig(options)
    yield full_file_system(options, str(directory.directory))
    yield unusable(options)


if __name__ == "__main__":
    fill_mounted(*sys.argv[1:])
