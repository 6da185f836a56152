"""A rig of 64 boards, the tool run on it, and what its state contains."""
import json
import os
import pathlib
import sqlite3
import subprocess
import tempfile

DEVICES = 64
WORKERS = 8


class Fault(Exception):
    """Something that must not happen; the message says what."""


def build(root, preset, *targets, **environment):
    """Builds targets of a preset, in an environment with additions; returns its build tree."""
    subprocess.run([root / "script" / "build", preset, *targets], check=True, env=os.environ | environment)
    return root / "build" / preset


class Rig:
    """A directory with rig.json and state, removed with the object. Board n belongs to worker n % 8 and is described "W3_19.0000"."""

    def __init__(self, options, directory=None):
        self.tool = str(options.tool)
        self.own = None if directory else tempfile.TemporaryDirectory(prefix="qutil-torture-")
        self.directory = pathlib.Path(directory or self.own.name)
        self.state = self.directory / "state"
        self.initial = {n: {"board id": 0, "description": f"W{n % WORKERS}_{n:02}.0000"} for n in range(DEVICES)}
        self.write({n: items["description"] for n, items in self.initial.items()})

    def write(self, descriptions):
        boards = [{"number": n, "description": text, "highest_board_id": 2**31 - 1} for n, text in descriptions.items()]
        (self.directory / "rig.json").write_text(json.dumps({"devices": boards}))

    def start(self, *arguments, **more):
        environment = {"VELQ_RIG": str(self.directory / "rig.json"), "VELQ_STATE": str(self.state), "LC_ALL": "C"}
        command = [*more.pop("wrapper", []), self.tool, *arguments]
        pipes = {"stdin": subprocess.DEVNULL, "stdout": subprocess.PIPE, "stderr": subprocess.PIPE}
        return subprocess.Popen(command, env={**environment, "PATH": os.environ["PATH"]}, **{**pipes, **more})

    def run(self, *arguments, **more):
        """Runs to the end; returns standard output and standard error."""
        return self.start(*arguments, text=True, **more).communicate()

    def contents(self):
        """All items of all boards, as the state has them. Throws Fault when the database is not whole."""
        items = {n: dict(values) for n, values in self.initial.items()}
        if not self.state.exists() or self.state.stat().st_size == 0:
            return items
        database = sqlite3.connect(self.state, timeout=60)
        try:
            verdict = database.execute("PRAGMA integrity_check").fetchall()
            if verdict != [("ok",)]:
                raise Fault(f"integrity_check: {verdict}")
            for device, item, value in database.execute("SELECT device, item, value FROM change"):
                items[device][item] = value
        finally:
            database.close()
        return items
