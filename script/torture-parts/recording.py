"""What strace saw of a run: its calls one by one, and what they do to a disk that may lose power."""
import re

from rig import Fault

CHANGING = ["openat", "mkdir", "write", "pwrite64", "ftruncate", "fsync", "fdatasync", "unlink"]
# Nothing uses them today. They would change files unseen.
UNKNOWN = ["rename", "renameat", "renameat2", "link", "linkat", "unlinkat", "mkdirat", "truncate", "fallocate"]
UNKNOWN += ["pwritev", "pwritev2", "writev"]
LINE = re.compile(r"(\w+)\((.*)\) += (-?\d+)")
TEXT = re.compile(r'"((?:\\x[0-9a-f]{2})*)"')
DESCRIPTOR = re.compile(r"(\d+)<((?:\\x[0-9a-f]{2})*)>")


def unescaped(text):
    return bytes.fromhex(text.replace("\\x", ""))


class Call:
    """One call: its name and arguments, the path that it concerns, and the bytes and the number that it was given."""

    def __init__(self, name, arguments, result):
        self.name, self.arguments, self.succeeded = name, arguments, result >= 0
        texts = [unescaped(text) for text in TEXT.findall(arguments)]
        descriptor = DESCRIPTOR.match(arguments)
        self.data = texts[0] if texts else b""
        self.path = (unescaped(descriptor.group(2)) if descriptor else self.data).decode(errors="replace")
        self.number = int(arguments.rsplit(", ", 1)[-1]) if name in ("pwrite64", "ftruncate") else 0


def calls(record):
    """The calls in a file that `strace -xx -y` wrote."""
    for line in record.read_text().splitlines():
        match = LINE.match(line)
        if match:
            yield Call(match.group(1), match.group(2), int(match.group(3)))


class File:
    """Bytes that are safe, and the changes that are not yet."""

    def __init__(self, synced=b""):
        self.synced = synced
        self.pending = []

    def sync(self):
        self.synced = self.content(lambda: True)
        self.pending = []

    def content(self, keeps):
        """`keeps` decides on each change that is not safe."""
        data = bytearray(self.synced)
        for change in self.pending:
            if keeps():
                change(data)
        return bytes(data)


def overwrite(data, offset, written):
    data.extend(bytes(max(0, offset - len(data))))
    data[offset:offset + len(written)] = written


def resize(data, length):
    del data[length:]
    data.extend(bytes(length - len(data)))


class Disk:
    """The files beneath a directory. What no fsync of the file, or of the directory that names it, made safe can be lost."""

    def __init__(self, directory):
        self.root = str(directory)
        paths = [directory, *directory.rglob("*")]
        self.named = {str(path): None if path.is_dir() else File(path.read_bytes()) for path in paths}
        self.safe = dict(self.named)
        self.pending = []

    def apply(self, call):
        """Makes the change of `call`. Returns False for a call that changes nothing here."""
        if not (call.path + "/").startswith(self.root + "/") or call.name not in CHANGING + UNKNOWN:
            return False
        if call.name in UNKNOWN:
            raise Fault(f"{call.name} of {call.path}: how a loss of power treats that is not known")
        return getattr(self, "do_" + call.name)(call) is not False

    def enter(self, path, entry):
        """Names a file or, with None, a directory; with False the name is removed."""
        self.pending.append((path, entry))
        put(self.named, path, entry)

    def do_mkdir(self, call):
        self.enter(call.path, None)

    def do_openat(self, call):
        if "O_TRUNC" in call.arguments:
            raise Fault(f"{call.path} is emptied as it is opened: how a loss of power treats that is not known")
        if "O_CREAT" not in call.arguments or call.path in self.named:
            return False
        self.enter(call.path, File())

    def do_write(self, call):
        file = self.named[call.path]
        file.pending.append(lambda data: data.extend(call.data))

    def do_pwrite64(self, call):
        self.named[call.path].pending.append(lambda data: overwrite(data, call.number, call.data))

    def do_ftruncate(self, call):
        self.named[call.path].pending.append(lambda data: resize(data, call.number))

    def do_unlink(self, call):
        self.enter(call.path, False)

    def do_fdatasync(self, call):
        entry = self.named[call.path]
        if entry is not None:
            return entry.sync()
        for path, made in self.pending:
            if path.rsplit("/", 1)[0] == call.path:
                put(self.safe, path, made)
        self.pending = [(path, made) for path, made in self.pending if path.rsplit("/", 1)[0] != call.path]

    do_fsync = do_fdatasync

    def after_crash(self, keeps_entry, keeps_data):
        """The files that are left when power goes, None for a directory. The functions say what unsafe is saved."""
        entries = dict(self.safe)
        for path, made in self.pending:
            if keeps_entry():
                put(entries, path, made)
        reached = [path for path in sorted(entries) if self.is_reached(path, entries)]
        return {path: entries[path] and entries[path].content(keeps_data) for path in reached}

    def is_reached(self, path, entries):
        directory = path.rsplit("/", 1)[0]
        return directory == self.root or (directory in entries and self.is_reached(directory, entries))


def put(entries, path, entry):
    if entry is False:
        entries.pop(path, None)
    else:
        entries[path] = entry
