"""Commands that change something, the directory in which each runs, and what they leave there."""
import json
import os
import pathlib
import re
import shutil
import signal
import sqlite3
import subprocess
import tempfile

from recording import CHANGING, UNKNOWN, Disk, calls
from rig import Fault, build

# By name: the arguments, standard input, and whether a rig of the directory's own is needed, which has a group already.
COMMANDS = {
    "listing": ([], "", False),
    "-cd:": (["/dn:0", "-cd:New"], "", False),
    "-ci:": (["/dn:2", "-ci:5"], "", False),
    "-fwo:": (["/dn:0", "-fwo:new.fw", "1"], "", False),
    "-cali:ai.auto": (["/dn:0", "-cali:ai.auto"], "y\ny\n", False),
    "-cali:ai.reverse": (["/dn:0", "-cali:ai.reverse"], "", False),
    "-fusion": (["/dd:Pair", "-fusion", "QS-2004,BID#0", "QS-2004,BID#1"], "", False),
    "-defusion": (["/dd:Group", "-defusion"], "", True),
}
BEGINNINGS = ["fresh", "existing"]
EVERYTHING = ["/dd:.*"]
LONGEST_RUN = 20


class Bench:
    """The programs, and a place in memory for the directories; removed with the object."""

    def __init__(self, options):
        subprocess.run([options.root / "script" / "setup", "check"], check=True)
        configure = ["cmake", "--preset", "dev", "-DQUTIL_TESTS=ON"]
        subprocess.run(configure, cwd=options.root, check=True, capture_output=True)
        tree = build(options.root, "dev", "qutil", "velq", "velq-probe", "velq-sim", "sleep_recorder")
        self.tool = options.tool
        self.rig = options.root / "src" / "simulator" / "rig" / "builtin_rig.json"
        self.recorder = tree / "tests" / "sleep_recorder.so"
        self.preload = f"{next(tree.glob('lib*/**/libvelq-probe.so'))}:{self.recorder}"
        self.own = tempfile.TemporaryDirectory(prefix="qutil-torture-", dir="/dev/shm")
        self.place = pathlib.Path(self.own.name)


class Stage:
    """One command, on no state or on one that another change has made."""

    def __init__(self, bench, name, beginning):
        self.bench, self.name, self.beginning = bench, name, beginning
        self.arguments, self.input, self.has_rig = COMMANDS[name]
        self.template = self.directory("template")
        self.template.mkdir()
        (self.template / "new.fw").write_bytes(b"payload")
        suffix = ["dfu-suffix", "-p", "0x3216", "-d", "0x0500", "-a", self.template / "new.fw"]
        subprocess.run(suffix, check=True, capture_output=True)
        if self.has_rig:
            rig = json.loads(bench.rig.read_text())
            rig["devices"].append({"number": 300, "description": "Group", "product_id": "0x2004", "children": [6, 7]})
            (self.template / "rig.json").write_text(json.dumps(rig))
        if beginning == "existing":
            self.run(self.template, ["/dn:1", "-cd:Other"])
        self.before = self.rows(self.template)
        if bool(self.before) != (beginning == "existing"):
            raise Fault(f"{name}: the state to begin with holds {self.before}")

    def directory(self, what):
        """All at the same depth, for that decides how many system calls a run makes."""
        return self.bench.place / f"{self.name}.{self.beginning}.{what}"

    def copy(self, what):
        directory = self.directory(what)
        shutil.rmtree(directory, ignore_errors=True)
        shutil.copytree(self.template, directory)
        return directory

    def state(self, directory):
        return directory / ("rig.json.state" if self.has_rig else "made/velq-sim/state")

    def environment(self, directory):
        place = {"XDG_STATE_HOME": str(directory / "made")}
        if self.has_rig:
            place = {"VELQ_RIG": str(directory / "rig.json"), "VELQ_STATE": str(self.state(directory))}
        return {**place, "LC_ALL": "C", "PATH": "/usr/bin:/bin"}

    def run(self, directory, arguments=EVERYTHING, wrapper=()):
        """Runs to the end, which is forced after LONGEST_RUN seconds. Returns status, output and errors."""
        command = [*wrapper, self.bench.tool, *arguments]
        pipes = {"stdin": subprocess.PIPE, "stdout": subprocess.PIPE, "stderr": subprocess.PIPE}
        process = subprocess.Popen(command, cwd=directory, env=self.environment(directory), start_new_session=True, **pipes)
        try:
            output, errors = process.communicate(self.input.encode(), LONGEST_RUN)
        except subprocess.TimeoutExpired:
            os.killpg(process.pid, signal.SIGKILL)
            output, errors = process.communicate()
        return process.returncode, output.decode(errors="replace"), errors.decode(errors="replace")

    def strace(self, directory, *options):
        """Runs the command with trace, without sleeps and under strace, which writes the file "record"."""
        variables = [word for pair in self.traced(directory) for word in ("-E", pair)]
        return self.run(directory, self.arguments, ["strace", "-o", directory / "record", "-y", *options, *variables])

    def traced(self, directory):
        """The variables with which a run is traced and does not sleep."""
        return [f"LD_PRELOAD={self.bench.preload}", f"VELQ_TRACE={directory}/trace"]

    def rows(self, directory):
        """What the state contains, by device and item. Fault when the database is damaged."""
        state = self.state(directory)
        if not state.exists() or state.stat().st_size == 0:
            return {}
        database = sqlite3.connect(state)
        try:
            if database.execute("PRAGMA integrity_check").fetchall() != [("ok",)]:
                raise Fault("the database is not whole")
            if database.execute("SELECT count(*) FROM sqlite_schema").fetchone() == (0,):
                return {}
            rows = database.execute("SELECT device, item, value FROM change")
            return {(device, item): value for device, item, value in rows}
        except sqlite3.Error as error:
            raise Fault(f"the database is not whole: {error}") from error
        finally:
            database.close()

    def look(self, directory):
        """What a run without faults shows of all devices; Fault when it complains. Before rows(), which may heal."""
        status, output, errors = self.run(directory)
        if errors or status != 0:
            raise Fault(f"the next run complains: {errors.strip()!r}, status {status}")
        return output


class Story:
    """A run without faults: its calls, its output, and what the state held after each line of the trace."""

    def __init__(self, stage, watched):
        self.directory = stage.copy("story")
        self.disk = Disk(self.directory)
        options = ["-xx", "-s", "1000000", "-e", "trace=" + ",".join({*watched, *CHANGING, *UNKNOWN})]
        self.status, self.output, self.errors = stage.strace(self.directory, *options)
        self.calls = list(calls(self.directory / "record"))
        self.stage = stage
        self.contents = [stage.before]
        self.lines = []  # of the trace, all of them
        self.changing = []  # which of these came with the next contents

    def play(self):
        """Yields each call once its change has been made to the disk. Fills contents and lines on the way."""
        for call in self.calls:
            if not call.succeeded or not self.disk.apply(call):
                continue
            if call.path == f"{self.directory}/trace":
                rows = self.rows_on(self.disk.after_crash(always, always))
                if rows != self.contents[-1]:
                    self.contents.append(rows)
                    self.changing.append(len(self.lines))
                self.lines.append(without_numbers(call.data.decode()))
            yield call
        if self.status != 0 or self.errors or (self.stage.arguments and not self.changing):
            raise Fault(f"{self.stage.name} without a fault: {self.output!r} {self.errors!r}, no change was seen")

    def rows_on(self, files):
        return self.stage.rows(restore(files, self.directory, self.stage.directory("image")))


def always():
    return True


def restore(files, origin, directory):
    """Creates a directory of files that were in `origin`."""
    shutil.rmtree(directory, ignore_errors=True)
    directory.mkdir()
    for path, content in files.items():
        target = directory / pathlib.Path(path).relative_to(origin)
        if content is None:
            target.mkdir()
        else:
            target.write_bytes(content)
    return directory


def without_numbers(line):
    """A line of a trace without the numbers of its handles, which depend on what went before."""
    return re.sub(r"(?<=[a-z])#\d+", "", line.strip())


def difference(before, after):
    """What has to be put into `before` to make it `after`; None for what has to go."""
    return {key: after.get(key) for key in {**before, **after} if before.get(key) != after.get(key)}
