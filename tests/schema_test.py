#!/usr/bin/python3
"""rig.schema.json accepts and refuses what velq-sim --check does: schema_test.py VELQ-SIM SOURCES. Takes the rigs that
tests and fuzzers keep, and every rig that differs from a small whole one in a single value or key. The keys that the
reader knows are those of the schema and are in the manual page, and the checker calls all of operations.def."""
import json, pathlib, re, subprocess, sys, tempfile

import jsonschema

program, sources = sys.argv[1], pathlib.Path(sys.argv[2])
schema = jsonschema.Draft202012Validator(json.loads((sources / "src/simulator/rig/rig.schema.json").read_text()))
VALUES = [None, True, 0.5, -2**31 - 1, -2, -1, 0, 15, 16, 2**16 - 1, 2**16, 2**31 - 1, 2**31, 2**32 - 1, 2**32,
          2**64 - 1, 2**64, "", "x" * 256, "x" * 1001, "a\0", "0x", "0X1", "0x0f", "0x10", "0xffff", "0x10000",
          "0x07fffffff", "0x80000000", "0xffffffff", "0x100000000", "0x1" + 16 * "0", [], [0, 0], {}]
# What a schema cannot say: how keys of one document, or values beside each other, belong together.
BEYOND = re.compile("duplicate key|levels|a number other than|a device |of a device"
                    "|board_id: expected a number from 0 to [02]\n")


def variants(value):
    """Every value that differs in one place: another value there, or a key more or less."""
    yield from VALUES
    if isinstance(value, dict):
        yield {**value, "colour": 1}
        yield from ({other: value[other] for other in value if other != key} for key in value)
        yield from ({**value, key: variant} for key in value for variant in variants(value[key]))
    elif isinstance(value, list):
        yield from (value[:i] + [variant] + value[i + 1:] for i in range(len(value)) for variant in variants(value[i]))


def accepts(text):
    try:
        return schema.is_valid(json.loads(text))
    except (ValueError, RecursionError):
        return False


item = {"name": "i", "in_use": 1, "backup": 2, "walk": [3], "fails": True}
section = {"description": "s", "instruction": "i", "items": [item]}
whole = {"$schema": "rig.schema.json", "devices": [
    {"number": 3, "description": "D", "product_id": 5, "board_id": 1, "highest_board_id": 2, "board_version": "1",
     "driver_version": "2", "location": "l", "base_addresses": [1], "interrupts": [1],
     "firmware": [{"description": "c", "version": 1, "notice": "n", "password": "p", "progress": [0]}],
     "calibration": [{"name": "n", "description": "d", "instruction": "i", "sections": [section]}]},
    {"number": 4, "description": "F", "board_id": 0, "children": [3]}]}
rigs = ["fuzz/corpus/rig/group.json", "tests/installed/rig.json", "src/simulator/rig/builtin_rig.json"]
kept = [(sources / rig).read_bytes() for rig in rigs]
wrong = 0
known = set()
with tempfile.NamedTemporaryFile() as file:
    for text in [*kept, *map(json.dumps, variants(whole))]:
        pathlib.Path(file.name).write_bytes(text if isinstance(text, bytes) else text.encode())
        check = subprocess.run([program, "--check", file.name], capture_output=True, text=True)
        if accepts(text) != (check.returncode == 0) and not BEYOND.search(check.stderr):
            print(f"{text[:300]}: the schema says {accepts(text)}; {check.stdout}{check.stderr}")
            wrong += 1
        for names in re.findall("unknown key; expected one of (.*)", check.stderr):
            known.update(names.split(", "))


def compare(what, expected, found):
    global wrong
    if expected - found:
        print(f"{what}: {', '.join(sorted(expected - found))} missing")
        wrong += 1


source = {file: file.read_text() for file in (sources / "src").glob("**/*.*") if file.suffix in (".cpp", ".h")}
called = "".join(text for file, text in source.items() if {"compliance", "reading"} & set(file.parts))
operations = re.findall(r"^VELQ_\w+\([^,]+, (\w+)", (sources / "include/velq/operations.def").read_text(), re.M)
compare("the schema", known, set(re.findall(r'"([$\w]+)": ', json.dumps(schema.schema))))
compare("the manual page", known, set(re.findall(r"[$\w]+", (sources / "man/velq-sim.1").read_text())))
# They overwrite firmware, or change calibrations for good.
excepted = {"FirmwareItem_confirmNotice", "FirmwareItem_start", "FirmwareItem_getProgress", "CalibrationSection_start",
            "CalibrationSolution_loadGoldenBackup", "CalibrationSolution_updateAsCurrent"}
compare("the checker", set(operations) - excepted, set(re.findall(r"\w+", called)))
sys.exit(wrong > 0 or len(known) < 20 or len(operations) < 40)
