"""Compares instruction counts with those that are committed."""
from growth import commands
from measure import EXAMPLE, QUTIL, ROOT, Command, Failure

EXPECTED = ROOT / "bench/expected"
MOST = 1.15
DEVICES = 100


def count(directory):
    """Counts by name. In the C locale: any other costs what happens to be installed of locales."""
    growing, _ = commands(directory, DEVICES)
    watched = {f"{name}, {DEVICES} devices": command for name, command in growing.items()}
    watched["list, built-in rig"] = Command(QUTIL, VELQ_STATE=directory / "none")
    watched["list, example library"] = Command(QUTIL, LD_LIBRARY_PATH=EXAMPLE)
    return {name: command.instructions("C") for name, command in watched.items()}


def expect(directory):
    EXPECTED.write_text("".join(f"{instructions:>10} {name}\n" for name, instructions in count(directory).items()))


def check(directory):
    """Prints each count beside the expected one. Raises Failure when one has grown by more than 15 %."""
    expected = {name: int(number) for number, name in
                (line.split(maxsplit=1) for line in EXPECTED.read_text().splitlines())}
    counts = count(directory)
    if counts.keys() != expected.keys():
        raise Failure(f"{EXPECTED}: expected lines for {'; '.join(counts)}")
    for name, instructions in counts.items():
        print(f"{instructions:>10} {instructions / expected[name]:5.2f} times the expected  {name}")
    grown = [name for name in counts if counts[name] > expected[name] * MOST]
    if grown:
        raise Failure(f"more than {MOST} times the expected instructions: {'; '.join(grown)}")
