"""Draws what was measured: report.html with plots by gnuplot, and each plot as a picture, beside the results.
usage: report.py FOLDER RESULT.json..."""
import html
import os
import re
import subprocess
import sys

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
from table import read  # noqa: E402

SIZED = re.compile(r"^(\w+) (\d+) (lessons|locks), (.*)$")
COLOURS = {"own interface": "#888888", "own interface, rows only": "#888888", "Qt": "#d08020"}
OURS = "#2060b0"
LOOK = """set encoding utf8
set border 3
set tics nomirror
set grid ytics lc rgb "#dddddd"
set key top left
set style line 1 lw 2
"""


class Plot:
    """A plot: data blocks, then commands; what it shows in words."""

    def __init__(self, name, words, script):
        self.name, self.words, self.script = name, words, script

    def draw(self, folder, terminal, ending):
        target = os.path.join(folder, f"{self.name}.{ending}")
        script = f'set terminal {terminal}\nset output "{target}"\n{LOOK}{self.script}\nunset output\n'
        done = subprocess.run(["gnuplot"], input=script, text=True, capture_output=True, check=False)
        if done.returncode != 0:
            sys.exit(f"gnuplot cannot draw {self.name}: {done.stderr}")
        return target


def block(name, lines):
    return f"${name} << EOD\n" + "\n".join(lines) + "\nEOD\n"


def shapes(groups):
    """{(what, unit): {who: {count: (seconds, ratio, allowed)}}} of what was measured at several sizes. What was measured
    beside one and beside another counts once, as it was beside the engine's own interface."""
    found = {}
    for group, rows in groups.items():
        match = SIZED.match(group)
        if not match or any(row.by_clock for row in rows.values()):
            continue
        what, count, unit, _ = match.groups()
        for row in rows.values():
            if row.failure or row.seconds == float("inf"):
                continue
            sizes = found.setdefault((what, unit), {}).setdefault(row.name, {})
            if int(count) not in sizes:
                sizes[int(count)] = (row.seconds, row.ratio, row.figures.get("ratio at most"))
    return found


def time_plot(what, unit, series):
    script, lines = "", []
    for number, (who, sizes) in enumerate(series.items()):
        script += block(f"D{number}", [f"{count} {values[0] * 1000}" for count, values in sorted(sizes.items())])
        name = who if who in ("Qt",) or who not in COLOURS else "SQLite's " + who
        lines.append(f'$D{number} using 1:2 with linespoints lw 2 pt 7 lc rgb "{COLOURS.get(who, OURS)}" title "{name}"')
    script += (f'set logscale xy\nset format x "10^{{%T}}"\nset xlabel "{unit}"\nset ylabel "processor time (ms)"\n'
               f'set title "{what}"\nplot ' + ", ".join(lines))
    return Plot(f"{what.lower()}-{unit}", f"{what}: processor time against the number of {unit}.", script)


def ratio_plot(groups):
    lines = []
    for (what, unit), series in shapes(groups).items():
        for sizes in series.values():
            for count, (_, ratio, allowed) in sorted(sizes.items()):
                if ratio and allowed:
                    lines.append(f'"{what} {count:,} {unit}" {ratio} {allowed}')
    if not lines:
        return []
    script = block("R", lines) + (
        'set style fill solid 0.9\nset boxwidth 0.6\nset xtics rotate by -35\nset yrange [0:*]\nset rmargin 14\n'
        'set ylabel "times what the engine itself needs"\nset title "Beside SQLite\'s own interface"\nset key outside top center horizontal\n'
        f'plot $R using 0:2:xtic(1) with boxes lc rgb "{OURS}" title "measured", '
        '$R using 0:3:(0.36) with xerrorbars pt 0 lw 2 lc rgb "#b02020" title "at most"')
    return [Plot("ratios", "Ratios to the engine's own interface, in the same run, and what is allowed.", script)]


def memory_plot(groups):
    bars = [(name, row.figures["MiB"], row.figures.get("MiB at most")) for rows in groups.values()
            for name, row in rows.items() if "MiB" in row.figures and not row.failure]
    if not bars:
        return []
    script = block("M", [f'"{name}" {value} {allowed or "NaN"}' for name, value, allowed in bars]) + (
        'set style fill solid 0.9\nset boxwidth 0.5\nset yrange [0:*]\nset xrange [-0.7:*]\nset ylabel "MiB"\n'
        f'set title "Peak memory of a program"\nplot $M using 0:2:xtic(1) with boxes lc rgb "{OURS}" title "measured", '
        '$M using 0:3:(0.3) with xerrorbars pt 0 lw 2 lc rgb "#b02020" title "at most"')
    return [Plot("memory", "The most memory that a whole program takes.", script)]


def main():
    folder, *results = sys.argv[1:]
    groups = read(results)
    plots = [time_plot(*name, series) for name, series in shapes(groups).items()
             if max(len(sizes) for sizes in series.values()) > 1]
    plots += ratio_plot(groups) + memory_plot(groups)
    table = subprocess.run([sys.executable, os.path.join(os.path.dirname(__file__), "table.py"), *results],
                           capture_output=True, text=True, check=False).stdout
    page = ["<!DOCTYPE html><html lang=en><meta charset=utf-8><title>DAXControls: measured</title>",
            "<style>body{font-family:sans-serif;max-width:60em;margin:2em auto}svg{width:100%;height:auto}"
            "pre{overflow-x:auto}</style><h1>What was measured</h1>"]
    for plot in plots:
        plot.draw(folder, "pngcairo size 900,540 font 'sans,11'", "png")
        with open(plot.draw(folder, "svg size 900,540 font 'sans,13'", "svg"), encoding="utf-8") as drawn:
            page.append(f"<p>{html.escape(plot.words)}</p>" + re.sub(r"^.*?(?=<svg)", "", drawn.read(), flags=re.S))
    page.append(f"<h2>All figures</h2><pre>{html.escape(table)}</pre></html>")
    with open(os.path.join(folder, "report.html"), "w", encoding="utf-8") as out:
        out.write("\n".join(page))


main()
