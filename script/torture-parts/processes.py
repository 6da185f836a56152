"""Eight processes that change the same state at once, and one of them killed again and again."""
import os
import random
import re
import threading
import time

from rig import DEVICES, WORKERS, Fault, Rig

NUMBERED = re.compile(r"Change the Board ID of device (\d+)\(.*\) success\.")
RENAMED = re.compile(r"Device description has changed from .* to W\d_(\d+)\.\d+$", re.M)


def board(number, count):
    return f"W{number % WORKERS}_{number:02}.{count:04}"


def change_one(rig, number, count, expected):
    """Makes change `count` of a worker, on one board, and notes what it must leave behind."""
    option = f"-cd:{board(number, count)}" if count % 2 else f"-ci:{count}"
    before = expected[number]["description"]
    output, errors = rig.run(f"/dn:{number}", option)
    if len(RENAMED.findall(output) + NUMBERED.findall(output)) != 1 or "error" in output or errors:
        raise Fault(f"{option} of board {number} answered {output!r} {errors!r}")
    if count % 2:
        expected[number]["description"] = board(number, count)
    else:
        expected[number] = {"board id": count, "description": before.split("#")[0] + f"#{count}"}


class Workers:
    """Threads that each change the boards of one worker, a process a change."""

    def __init__(self, rig, numbers, changes):
        self.expected = {n: dict(values) for n, values in rig.initial.items()}
        self.made = 0
        self.faults = []
        self.stopping = False
        self.threads = [threading.Thread(target=self._work, args=(rig, w, changes), daemon=True) for w in numbers]
        for thread in self.threads:
            thread.start()

    def _work(self, rig, worker, changes):
        count = 0
        while count < changes and not self.stopping and not self.faults:
            count += 1
            try:
                change_one(rig, worker + WORKERS * (count % (DEVICES // WORKERS)), count, self.expected)
                self.made += 1
            except Fault as fault:
                self.faults.append(fault)

    def end(self, rig, ignored=None):
        """Waits for all; throws Fault when a change failed or is not there."""
        for thread in self.threads:
            thread.join()
        if self.faults:
            raise self.faults[0]
        saved = rig.contents()
        lost = [n for n in saved if n % WORKERS != ignored and saved[n] != self.expected[n]]
        if lost:
            raise Fault(f"boards {lost} lost changes: {[(saved[n], self.expected[n]) for n in lost]}")


def change_at_once(options):
    rig = Rig(options)
    changes = 1000 // WORKERS // (10 if options.short else 1)
    begin = time.monotonic()
    workers = Workers(rig, range(WORKERS), changes)
    workers.end(rig)
    seconds = time.monotonic() - begin
    yield f"{workers.made} changes of {DEVICES} boards by {WORKERS} processes at once in {seconds:.1f} s, 0 lost, database whole"


class Victim:
    """Worker 0: one process changes all of its boards, and is killed on the way."""

    def __init__(self, rig):
        self.rig = rig
        self.round = 0
        self.line_seconds = 0.02
        self.tallies = {"killed": 0, "reported": 0, "saved unreported": 0, "cut off": 0}

    def option(self):
        return f"-cd:?????.{self.round:04}" if self.round % 2 else f"-ci:{self.round}"

    def steps(self):
        """What this round changes, in order, and after how many changes each report comes."""
        boards = [n for n in range(DEVICES) if n % WORKERS == 0]
        if self.round % 2:
            return [(n, "description", board(n, self.round)) for n in boards]
        return [step for n in boards for step in ((n, "board id", self.round), (n, "description", f"{board(n, self.round - 1)}#{self.round}"))]

    def play(self):
        """One round. Throws Fault unless what was saved is a beginning of the changes and contains all that were reported."""
        self.round += 1
        renames = self.round % 2 == 1
        steps = self.steps()
        before = self.rig.contents()
        output, killed = self.run(self.option())
        reported = [int(n) for n in (RENAMED if renames else NUMBERED).findall(output)]
        least = len(reported) * len(steps) // 8 - (0 if renames or not reported else 1)
        after = self.rig.contents()
        saved = next((k for k in range(least, len(steps) + 1) if after_steps(before, steps[:k], after)), None)
        if saved is None:
            raise Fault(f"round {self.round}: {len(reported)} reported, {before} became {after}")
        if killed:
            self.tallies["killed"] += 1
            self.tallies["reported"] += len(reported)
            self.tallies["saved unreported"] += saved - least
            self.tallies["cut off"] += 0 < saved < len(steps)
        self.heal()

    def run(self, option):
        """On a terminal, where each line is seen as soon as it is printed. The kill comes shortly after a random line."""
        master, slave = os.openpty()
        begin = time.monotonic()
        process = self.rig.start("/dd:W0_*", option, stdout=slave, stderr=slave)
        os.close(slave)
        output, fatal_line = b"", random.randint(0, 10)
        timer = None
        while True:
            lines = output.count(b"\n")
            if timer is None and lines >= fatal_line:
                self.line_seconds = (time.monotonic() - begin) / lines if lines else self.line_seconds
                timer = threading.Timer(random.uniform(0, 1.5 * self.line_seconds), process.kill)
                timer.start()
            try:
                output += os.read(master, 4096)
            except OSError:
                break
        killed = process.wait() == -9
        if timer:
            timer.cancel()
        os.close(master)
        return output.decode().replace("\r\n", "\n"), killed

    def heal(self):
        """Brings boards that the kill left behind to where the others are."""
        self.rig.run("/dd:W0_*", self.option())


def after_steps(before, steps, after):
    expected = {n: dict(values) for n, values in before.items() if n % WORKERS == 0}
    for number, item, value in steps:
        expected[number][item] = value
    return all(after[n] == values for n, values in expected.items())


def kill_at_random(options):
    rig = Rig(options)
    victim = Victim(rig)
    workers = Workers(rig, range(1, WORKERS), 10**9)
    try:
        while victim.tallies["killed"] < (10 if options.short else 200) and not workers.faults:
            victim.play()
    finally:
        workers.stopping = True
        workers.end(rig, ignored=0)
    tallies = ", ".join(f"{count} {what}" for what, count in victim.tallies.items())
    yield f"{victim.round} rounds: {tallies}; 0 reported were lost, 0 half there; {workers.made} changes of the 7 others, 0 lost; database whole"
