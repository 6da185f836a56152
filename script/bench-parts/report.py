"""Writes what was measured for each target into this system's column in docs/performance.md, and all figures with a plot
into build/bench."""
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
BEGIN, END = "<!-- written by script/bench -->\n", "<!-- end -->\n"

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


def targets(startup, growth, sizes, in_memory):
    """Each target, what it allows at most, and what was reached."""
    def row(what, reached, limit):
        return what, f"{limit:.2f}", f"{reached:.2f}" if reached <= limit else f"**{reached:.2f}**"
    example, with_state = startup["qutil", "example library"], startup["qutil", "built-in rig, with a state"]
    matching = (per_device(growth, "match all", 1_000, "instructions")
                - per_device(growth, "list", 1_000, "instructions"))
    most, names = max(COUNTS), {name for name, _ in growth}
    growing = max(per_device(growth, name, most, "instructions") / per_device(growth, name, 1_000, "instructions")
                  for name in names)
    return [("measured on", "", str(datetime.date.today())),
            row("list, example library, million instructions", example["instructions"] / 1e6, 0.35),
            row("the same with `LC_ALL=C`", example["in_c"] / 1e6, 0.35),
            row("list, built-in rig, million instructions", startup["qutil", "built-in rig"]["instructions"] / 1e6, 2.5),
            row("list, built-in rig with a state, million instructions", with_state["instructions"] / 1e6, 3),
            row("its peak memory, MB", with_state["kilobytes"] / 1024, 6),
            row("to match and open one device of many, thousand instructions", matching / 1e3, 40),
            row("instructions per device: with 100,000 devices / with 1,000", growing, 1.2),
            row("memory for 100,000 devices / size of the rig",
                max(memory_ratio(growth, sizes, name, most) for name in names if "traced" not in name), 8),
            row("time to rename 10,000 devices / time of 10,000 bare transactions", in_memory[0] / in_memory[1], 2)]


def with_column(old, rows):
    """The page's table with this system's column replaced; other columns stay if they are of the same targets."""
    lines = [line.strip("| ").split("|") for line in old.strip().splitlines()]
    columns = {name: column for name, *column in zip(*([cell.strip() for cell in line] for line in lines[:1] + lines[2:]))}
    names, limits, reached = map(list, zip(*rows))
    if columns.get("target") != names:
        columns = {}
    columns |= {"target": names, "at most": limits, SYSTEM: reached}
    return table(list(columns), list(zip(*columns.values())))


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
    before, _, rest = PAGE.read_text().partition(BEGIN)
    old, _, after = rest.partition(END)
    PAGE.write_text(before + BEGIN + with_column(old, targets(startup, growth, sizes, in_memory)) + END + after)
    FIGURES.write_text(f"""# {SYSTEM}, {datetime.date.today()}

Measured in {minutes:.0f} minutes, on {os.cpu_count()} processors ({processor()}), Linux {platform.release().split('-')[0]}.

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
