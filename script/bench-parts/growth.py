"""How the cost of a command grows with the number of devices."""
import concurrent.futures
import os
import statistics

import make_rig
from measure import FLOORS, QUTIL, Command, Failure, probe

COUNTS = (1, 10, 100, 1_000, 10_000, 100_000)
LINES = {"list": lambda n: n + 1, "match all": lambda n: 2 + 11 * n, "match one": lambda n: 13,
         "match all, traced": lambda n: 2 + 11 * n, "rename all": lambda n: 2 + 2 * n, "set one id": lambda n: 2}


def commands(directory, count):
    """The commands on a rig of `count` devices, checked by their output, and the rig's file."""
    rig = directory / f"{count}.json"
    make_rig.write(count, rig)
    arguments = {"list": [], "match all": ["/dd:*"], "match one": [f"/dd:{make_rig.description(count - 1)}"],
                 "match all, traced": ["/dd:*"], "rename all": ["/dd:*", "-cd:*x"],
                 "set one id": [f"/dn:{count - 1}", "-ci:3"]}
    made = {}
    for name, words in arguments.items():
        state = directory / f"{count}.{name.replace(' ', '-')}.state"
        traced = {"LD_PRELOAD": probe(), "VELQ_TRACE": "/dev/null"} if "traced" in name else {}
        made[name] = Command(QUTIL, *words, fresh=state, VELQ_RIG=rig, VELQ_STATE=state, **traced)
        lines = made[name].output().count("\n")
        if lines != LINES[name](count):
            raise Failure(f"{name} of {count}: {lines} lines of output, not {LINES[name](count)}")
    return made, rig


def measure_all(directory):
    """Figures by command and count, and the sizes of the rigs in bytes by count."""
    figures, sizes, counting = {}, {}, {}
    for count in COUNTS:
        made, rig = commands(directory, count)
        sizes[count] = rig.stat().st_size
        for name, command in made.items():
            milliseconds, kilobytes = command.time(21 if count < 10_000 else 3)
            figures[name, count] = {"milliseconds": milliseconds, "kilobytes": kilobytes}
            counting[name, count] = command
    # Counting is slow, and other load does not disturb it: several at once, the longest first.
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        longest_first = sorted(counting, key=lambda key: figures[key]["milliseconds"], reverse=True)
        results = {key: pool.submit(counting[key].instructions) for key in longest_first}
        for key, result in results.items():
            figures[key]["instructions"] = result.result()
    return figures, sizes


def per_device(figures, name, count, what):
    """What a device adds to the cost of a command with a single one."""
    return (figures[name, count][what] - figures[name, 1][what]) / (count - 1)


def compare_transactions(directory, count, times):
    """Milliseconds of renaming `count` devices and of as many bare transactions, medians of alternating runs."""
    made, _ = commands(directory, count)
    bare_file = directory / "bare.state"
    bare = Command(FLOORS / "transactions", bare_file, count, fresh=bare_file)
    pairs = [(made["rename all"].time_once()[0], bare.time_once()[0]) for _ in range(times)]
    return tuple(statistics.median(column) for column in zip(*pairs))
