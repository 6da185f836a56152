"""Makes rigs that look like real ones: every device has what installed boards have, one in a hundred also firmware and calibration."""
import json

MODELS = (("QA-3216", 0x3216), ("QA-1808", 0x1808), ("QD-0096", 0x96), ("QC-0408", 0x408), ("QS-2004", 0x2004))

FIRMWARE = [{"description": "Bus FPGA", "version": "0x0112", "notice": "Restart the computer after the overwrite."}]
CALIBRATION = [{
    "name": "AI.Auto", "description": "Analog input auto calibration", "instruction": "Let the board warm up.",
    "sections": [{"description": "Offset", "instruction": "Short all analog inputs to ground.",
                  "items": [{"name": "AI offset", "in_use": "0x80", "backup": "0x7e", "walk": ["0x40", "0x7c"]}]}]}]


def description(number):
    return f"{MODELS[number % len(MODELS)][0]},Rack {number // 16},BID#{number % 16}"


def device(number):
    fields = {
        "number": number, "description": description(number), "product_id": f"0x{MODELS[number % len(MODELS)][1]:x}",
        "board_id": number % 16, "board_version": "2.1", "driver_version": "4.0.7.0",
        "location": f"PCI bus {number // 16} slot {number % 16}",
        "base_addresses": [f"0x{0xd000 + number * 0x40:x}"], "interrupts": [16 + number % 8]}
    if number % 100 == 0:
        fields |= {"firmware": FIRMWARE, "calibration": CALIBRATION}
    return fields


def write(count, path):
    """Writes a rig of `count` devices, one a line."""
    with open(path, "w") as file:
        file.write('{"devices": [\n' + ",\n".join(json.dumps(device(number)) for number in range(count)) + "\n]}\n")
