"""What libFuzzer and valgrind find, and where patterns exhaust the stack or the patience."""
import os
import re
import resource
import shutil
import signal
import subprocess
import tempfile
import time

from rig import Fault, Rig, build

FUZZERS = ["tool", "rig"]


def fuzz(options):
    subprocess.run([options.root / "script" / "setup", "check"], check=True)
    directory = build(options.root, "fuzz", "fuzzers") / "fuzz"
    for name in FUZZERS:
        found = directory / "found" / name
        found.mkdir(parents=True, exist_ok=True)
        if name == "rig":
            shutil.copy(options.root / "src" / "simulator" / "rig" / "builtin_rig.json", found)
        limits = [f"-max_total_time={options.seconds}", "-timeout=60", "-max_len=2048"]
        reports = ["-print_final_stats=1", f"-artifact_prefix={found}-"]
        command = [directory / f"fuzz_{name}", *limits, *reports, found, options.root / "fuzz" / "corpus" / name]
        run = subprocess.run(command, env={**os.environ, "LC_ALL": "C"}, capture_output=True, text=True, errors="replace")
        if run.returncode != 0:
            lines = [line for line in run.stderr.splitlines() if "ERROR" in line or "error" in line or "Test unit" in line]
            raise Fault("\n".join([name, *lines]))
        executions = re.search(r"number_of_executed_units: (\d+)", run.stderr).group(1)
        yield f"{name}: {executions} executions in {options.seconds} s, no finding"


def valgrind(options):
    subprocess.run([options.root / "script" / "setup", "check"], check=True)
    tests = build(options.root, "dev", QUTIL_TESTS="ON") / "tests"
    with tempfile.TemporaryDirectory(prefix="qutil-valgrind-") as logs:
        suppressed = options.root / "script" / "torture-parts" / "valgrind.supp"
        wrapper = [shutil.which("valgrind"), f"--suppressions={suppressed}", f"--log-file={logs}/%p", "--error-exitcode=99"]
        environment = {**os.environ, "QUTIL_TEST_WRAPPER": " ".join(wrapper)}
        # A unit test has a process of its own, as in CTest: what it sets lasts as long as the simulator in it.
        listed = subprocess.check_output([tests / "unit_test", "--gtest_list_tests"], text=True)
        runs = []
        for command, shards in ([*wrapper, tests / "unit_test"], listed.count("\n  ")), ([tests / "tool_test"], os.cpu_count()):
            for shard in range(shards):
                part = {"GTEST_TOTAL_SHARDS": str(shards), "GTEST_SHARD_INDEX": str(shard)}
                runs.append(subprocess.Popen([*command, "--gtest_brief=1"], env=environment | part))
        passed = not any([run.wait() for run in runs])
        texts = [open(entry, errors="replace").read() for entry in os.scandir(logs)]
    ended = [text for text in texts if "ERROR SUMMARY" in text]
    bad = [text for text in ended if "ERROR SUMMARY: 0 errors" not in text]
    if bad or not passed:
        raise Fault(f"{len(bad)} of {len(ended)} processes with errors\n" + "".join(bad[:1]))
    yield f"{len(ended)} processes without an error, {len(texts) - len(ended)} killed by their test"


SHAPES = {
    "plain characters": lambda n: "a" * n,
    "groups within groups": lambda n: "(" * n + ")" * n,
    "alternatives": lambda n: "b|" * n,
    "repetitions": lambda n: "b+" * n,
    "groups of alternatives": lambda n: "(b|c)" * n,
    "repetitions of repetitions": lambda n: "(" * n + "b" + "+)" * n,
}
LONGEST_WAIT = 20
LONGEST_ARGUMENT = 128 * 1024 - 5


def limit_stack():
    resource.setrlimit(resource.RLIMIT_STACK, (8 << 20, 8 << 20))


def stack(options):
    rig = Rig(options)

    def ends(pattern):
        process = rig.start("/dd:" + pattern, "-none", preexec_fn=limit_stack)
        process.communicate()
        return process.returncode

    rig.write({0: "a" * 255})
    causes = {-signal.SIGSEGV: "exhaust a stack of 8 MiB", -signal.SIGABRT: "are rejected as too many"}
    for what, make in SHAPES.items():
        lowest, highest = 1, LONGEST_ARGUMENT // len(make(1))
        while highest - lowest > highest // 100:
            middle = (lowest + highest) // 2
            lowest, highest = (lowest, middle) if ends(make(middle)) in causes else (middle, highest)
        yield f"{what}: {lowest} are taken, {highest} {causes[ends(make(highest))]}"
    for pattern, description in [*(("(a+)+b", "a" * n) for n in range(20, 25)), *(("AB" + "*" * n + "x", "AB-2345") for n in range(2, 6))]:
        rig.write({0: description})
        begin = time.monotonic()
        process = rig.start("/dd:" + pattern, "-none")
        try:
            process.communicate(timeout=LONGEST_WAIT)
            took = f"{time.monotonic() - begin:.2f} s"
        except subprocess.TimeoutExpired:
            process.kill()
            process.communicate()
            took = f"more than {LONGEST_WAIT} s"
        yield f"{pattern} on {description}: {took}"
