"""Power is cut after each change that a command makes to the disk: what it had reported by then is there afterwards."""
import pathlib
import random

from changes import BEGINNINGS, COMMANDS, Bench, Stage, Story, always, difference, restore
from rig import Fault

SHUFFLES = 6


def never():
    return False


def losses(chance, shuffles):
    """What to retain of names and of data that are not safe yet."""
    for names in (never, always):
        for data in (never, always):
            yield names, data
    for _ in range(shuffles):
        yield (lambda: chance.random() < 0.5), (lambda: chance.random() < 0.5)


class Cuts:
    """All disks that a loss of power during one command can leave, each with what had been reported by then."""

    def __init__(self, stage, shuffles):
        self.stage = stage
        self.story = Story(stage, [])
        self.disks = {}
        self.count = 0
        chance = random.Random(stage.name + stage.beginning)
        for number, call in enumerate(self.story.play()):
            for names, data in losses(chance, shuffles):
                files = self.story.disk.after_crash(names, data)
                self.count += 1
                moment = f"after change {number}, {call.name} of {pathlib.Path(call.path).name}"
                self.disks.setdefault(tuple(files.items()), {})[len(self.story.changing)] = moment

    def violations(self):
        for files, reported in self.disks.items():
            try:
                directory = restore(dict(files), self.story.directory, self.stage.directory("image"))
                self.stage.look(directory)
                rows = self.stage.rows(directory)
            except Fault as fault:
                yield f"{next(iter(reported.values()))}: {fault}"
                continue
            for count, moment in reported.items():
                if rows not in self.story.contents[count:count + 2]:
                    lost = difference(rows, self.story.contents[count])
                    yield f"{moment}: {count} changes were reported, and this is not there: {lost}"


def cut_power(options):
    bench = Bench(options)
    cuts = disks = found = 0
    for name in COMMANDS:
        for beginning in BEGINNINGS:
            case = f"{name}/{beginning}"
            if options.only not in (None, case):
                continue
            tried = Cuts(Stage(bench, name, beginning), 1 if options.short else SHUFFLES)
            violations = list(dict.fromkeys(tried.violations()))
            for violation in violations:
                yield f"VIOLATION: {violation}; repeat: script/torture power --only={case}"
            yield f"{case}: cut {tried.count} times, {len(tried.disks)} different disks, {len(violations)} violations"
            cuts, disks, found = cuts + tried.count, disks + len(tried.disks), found + len(violations)
    if found:
        raise Fault(f"{found} violations")
    yield f"cut {cuts} times, {disks} different disks, 0 violations"
