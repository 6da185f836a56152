"""Writes the targets and what was measured into docs/performance.md, in place of the same system's, and all figures with a
plot into build/bench."""
import datetime
import os
import platform
import subprocess

from growth import COUNTS, per_device
from measure import ROOT

PAGE = ROOT / "docs/performance.md"
SYSTEM = "{ID} {VERSION_ID}".format(**platform.freedesktop_os_release()).capitalize()
FIGURES = ROOT / "build/bench" / f"{SYSTEM.replace(' ', '-').lower()}.md"
PLOT = FIGURES.with_suffix(".svg")
BEGIN, END = f"<!-- measured by script/bench on {SYSTEM} -->\n", "<!-- end of what script/bench measured -->\n"

GNUPLOT = """set terminal svg size 760,420 font 'sans,12' background 'white'
set output '{plot}'
set title 'Instructions that each further device costs'
set logscale xy
set xlabel 'devices'
set ylabel 'thousand instructions a device'
set yrange [10:1000]
set key outside right
set grid
plot {curves}
"""


def table(head, rows):
    lines = [head, ["---"] + ["--:"] * (len(head) - 1), *rows]
    return "".join("| " + " | ".join(line) + " |\n" for line in lines)


def startup_table(figures):
    def row(name, place, figure):
        shown = name if place == "floor" else f"`{name}`"
        if figure is None:
            return [shown, place, "not installed", "", "", "", "", ""]
        return [shown, place, f"{figure['instructions'] / 1e6:.2f}", f"{figure['in_c'] / 1e6:.2f}",
                f"{figure['milliseconds']:.2f}", f"{figure['ratio']:.1f}", f"{figure['kilobytes'] / 1024:.1f}",
                str(figure["libraries"])]
    head = ["run", "on", "million instructions", "with LC_ALL=C", "ms", "ms over the first floor's", "MB", "libraries"]
    return table(head, [row(*key, figure) for key, figure in figures.items()])


def memory_ratio(figures, sizes, name, count):
    """The peak memory beyond that of a run with one device, over the size of the rig's file."""
    return (figures[name, count]["kilobytes"] - figures[name, 1]["kilobytes"]) * 1024 / sizes[count]


def growth_table(figures, sizes):
    def row(name, count):
        figure = figures[name, count]
        more = ["", "", ""]
        if count > 1:
            more = [f"{per_device(figures, name, count, 'instructions') / 1e3:.1f}",
                    f"{per_device(figures, name, count, 'milliseconds'):.4f}",
                    f"{memory_ratio(figures, sizes, name, count):.2f}"]
        return [name, f"{count:,}", f"{figure['instructions'] / 1e6:,.2f}", f"{figure['milliseconds']:,.1f}",
                f"{figure['kilobytes'] / 1024:.1f}", *more]
    head = ["run", "devices", "million instructions", "ms", "MB", "thousand instructions a device", "ms a device",
            "MB over MB of rig"]
    return table(head, [row(name, count) for name in dict.fromkeys(name for name, _ in figures) for count in COUNTS])


def targets_table(startup, growth, sizes, in_memory):
    """Each target with what was reached."""
    def row(what, reached, limit):
        return [what, f"{reached:.2f}", f"{limit:.2f}", "yes" if reached <= limit else "**no**"]
    example, with_state = startup["qutil", "example library"], startup["qutil", "built-in rig, with a state"]
    matching = (per_device(growth, "match all", 1_000, "instructions")
                - per_device(growth, "list", 1_000, "instructions"))
    rows = [row("listing, example library, million instructions", example["instructions"] / 1e6, 0.35),
            row("the same with LC_ALL=C", example["in_c"] / 1e6, 0.35),
            row("listing, built-in rig, million instructions",
                startup["qutil", "built-in rig"]["instructions"] / 1e6, 2.5),
            row("listing, built-in rig with a state, million instructions", with_state["instructions"] / 1e6, 3),
            row("its peak memory, MB", with_state["kilobytes"] / 1024, 6),
            row("matching and opening one device of many, thousand instructions", matching / 1e3, 40)]
    for name in dict.fromkeys(name for name, _ in growth):
        ratio = (per_device(growth, name, max(COUNTS), "instructions")
                 / per_device(growth, name, 1_000, "instructions"))
        rows.append(row(f"{name}: instructions a device of 100,000 over those of 1,000", ratio, 1.2))
        rows.append(row(f"{name}: MB of 100,000 devices over MB of rig",
                        memory_ratio(growth, sizes, name, max(COUNTS)), 8))
    rows.append(row("renaming 10,000 devices over as many bare transactions, ms", in_memory[0] / in_memory[1], 2))
    return table(["target", "reached", "at most", "met"], rows)


def draw(figures):
    names = list(dict.fromkeys(name for name, _ in figures))
    curves = ", ".join(f"'-' using 1:2 with linespoints linewidth 2 title '{name}'" for name in names)
    points = "".join("".join(f"{count} {per_device(figures, name, count, 'instructions') / 1e3}\n"
                             for count in COUNTS[1:]) + "e\n" for name in names)
    subprocess.run(["gnuplot"], input=GNUPLOT.format(plot=PLOT, curves=curves) + points, text=True, check=True)


def processor():
    lines = subprocess.run(["lscpu"], capture_output=True, text=True, env={"LC_ALL": "C"}).stdout.splitlines()
    return next((line.split(":")[1].strip() for line in lines if line.startswith("Model name")), "unknown")


def write(startup, growth, sizes, in_memory, on_disk, minutes):
    FIGURES.parent.mkdir(parents=True, exist_ok=True)
    draw(growth)
    text = f"""
## {SYSTEM}

Measured on {datetime.date.today()} in {minutes:.0f} minutes, on {os.cpu_count()} processors ({processor()}), Linux {platform.release().split('-')[0]}.

{targets_table(startup, growth, sizes, in_memory)}
"""
    before, _, others = PAGE.read_text().partition(BEGIN)
    PAGE.write_text(before + BEGIN + text + END + others.partition(END)[2])
    FIGURES.write_text(f"""# {SYSTEM}, {datetime.date.today()}

## One command

{startup_table(startup)}
## Growth

![Instructions a device over the number of devices]({PLOT.name})

{growth_table(growth, sizes)}
| renaming | ms | as many bare transactions, ms | ratio |
| --- | --: | --: | --: |
| 10,000 devices, state in memory | {in_memory[0]:,.0f} | {in_memory[1]:,.0f} | {in_memory[0] / in_memory[1]:.2f} |
| 1,000 devices, state on a disk | {on_disk[0]:,.0f} | {on_disk[1]:,.0f} | {on_disk[0] / on_disk[1]:.2f} |
""")
    print(f"all figures: {FIGURES}")
