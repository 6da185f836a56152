"""What a command costs beside minimal programs and well-known ones."""
import shutil
import statistics

from measure import EXAMPLE, FLOORS, QUTIL, ROOT, Command

BUILT_IN_RIG = ROOT / "src/simulator/rig/builtin_rig.json"
ARGUMENTS = {"qutil": [], "qutil /?": ["/?"], "qutil /dn:0": ["/dn:0"], "qutil '/dd:*'": ["/dd:*"]}
OTHERS = ("lsusb", "gpiodetect", "iio_info", "sigrok-cli -d demo --scan", "dfu-util -l")
TIMES = 41


def tool_commands(directory):
    """The four commands on the example library, on the simulator without a state, and with one."""
    state = directory / "startup.state"
    Command(QUTIL, "/dn:2", "-cd:Renamed", VELQ_STATE=state).output()
    places = {"example library": {"LD_LIBRARY_PATH": EXAMPLE}, "built-in rig": {"VELQ_STATE": directory / "none"},
              "built-in rig, with a state": {"VELQ_STATE": state}}
    return {(name, place): Command(QUTIL, *arguments, **variables)
            for place, variables in places.items() for name, arguments in ARGUMENTS.items()}


def floors(directory):
    text = Command(QUTIL, VELQ_STATE=directory / "none").output()
    read_all = (FLOORS / "read_all", text, BUILT_IN_RIG)
    return {("C, prints the same bytes", "floor"): Command(FLOORS / "print_c", text),
            ("C, sets the locale too", "floor"): Command(FLOORS / "print_locale_c", text),
            ("C++, static runtime", "floor"): Command(FLOORS / "print_static_cpp", text),
            ("C++, dynamic runtime", "floor"): Command(FLOORS / "print_cpp", text),
            ("C++, parses the rig first", "floor"): Command(*read_all),
            ("C++, reads the state too", "floor"): Command(*read_all, directory / "startup.state")}


def measure(command, reference):
    """One row's figures. Runs of the command and of `reference` alternate, so that both see the same machine."""
    counts = [command.instructions() for _ in range(3)]
    pairs = [(command.time_once(), reference.time_once()) for _ in range(TIMES)]
    milliseconds = statistics.median(mine[0] for mine, _ in pairs)
    return {"instructions": statistics.median(counts), "in_c": command.instructions("C"), "milliseconds": milliseconds,
            "ratio": milliseconds / statistics.median(other[0] for _, other in pairs),
            "kilobytes": statistics.median(mine[1] for mine, _ in pairs), "libraries": command.libraries()}


def measure_all(directory):
    """Figures by name and place, None for what is not installed."""
    commands = {**tool_commands(directory), **floors(directory)}
    for line in OTHERS:
        commands[line, "other tool"] = Command(*line.split()) if shutil.which(line.split()[0]) else None
    reference = commands["C, prints the same bytes", "floor"]
    return {key: command and measure(command, reference) for key, command in commands.items()}
