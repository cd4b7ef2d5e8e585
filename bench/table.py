"""Prints the result of Google Benchmark as a table. A row's name is "group/what"; each row is compared with the first
of its group, by processor time, or by the clock where a server works (marked *). Of repetitions the fastest counts.
A name "group/first/second" means two rows that were measured alternately: their ratio is the median of the turns'."""
import json
import re
import sys

SECONDS = {"ns": 1e-9, "us": 1e-6, "ms": 1e-3, "s": 1.0}
FIGURES = ("ratio at most", "seconds at most", "bytes per lesson", "bytes at most", "MiB", "MiB at most")
GROWTH = 1.2  # at most, of ours beside the engine's own, from the smallest number to the largest


def readable(seconds):
    for unit, factor in (("s", 1.0), ("ms", 1e-3), ("us", 1e-6), ("ns", 1e-9)):
        if seconds >= factor or unit == "ns":
            return f"{seconds / factor:8.2f} {unit:<2}"


class Row:
    """The fastest of the repetitions of one measurement."""

    def __init__(self, name, by_clock):
        self.name, self.by_clock = name, by_clock
        self.clock = self.processor = float("inf")
        self.failure, self.figures, self.ratio = "", {}, None

    def add(self, run, clock, processor):
        self.clock = min(self.clock, clock)
        self.processor = min(self.processor, processor)
        self.figures = {key: run[key] for key in FIGURES if key in run}
        self.ratio = run.get("ratio")

    @property
    def seconds(self):
        return self.clock if self.by_clock else self.processor


def read(paths):
    groups, runs = {}, []
    for path in paths:
        with open(path, encoding="utf-8") as file:
            runs += json.load(file)["benchmarks"]
    for run in runs:
        if run.get("run_type") == "aggregate":
            continue
        group, *names = [part for part in run["name"].split("/") if not re.match("(iterations|repeats):", part)]
        by_clock = "real_time" in names
        names = [name for name in names if name != "real_time"]
        rows = [groups.setdefault(group, {}).setdefault(name, Row(name, by_clock)) for name in names]
        if run.get("error_occurred"):
            rows[-1].failure = run.get("error_message") or "failed"
        elif len(rows) == 1:
            unit = SECONDS[run["time_unit"]]
            rows[0].add(run, run["real_time"] * unit, run["cpu_time"] * unit)
        else:
            for row, which in zip(rows, ("first", "second")):
                row.add(run if which == "second" else {}, run[which + " clock"], run[which + " processor"])
    return groups


def growths(groups):
    """Adds a group for each family of groups whose names differ in a number and whose rows were measured in turn."""
    families = {}
    for group, rows in groups.items():
        first, *others = rows.values()
        number = re.search(r"\d+", group)
        if number and len(others) == 1 and others[0].ratio and "ratio at most" in others[0].figures and not first.failure:
            name = group[: number.start()] + "{}" + group[number.end():]
            families.setdefault(name, []).append((int(number.group()), first, others[0]))
    for name, members in families.items():
        (low, *small), (high, *large) = min(members), max(members)
        if low == high:
            continue
        rows = groups.setdefault(name.format(f"{high} beside {low}") + ": times as long", {})
        for less, more in zip(small, large):
            rows[less.name] = Row(less.name, less.by_clock)
            rows[less.name].clock = more.clock / less.clock
            rows[less.name].processor = more.processor / less.processor
        last = rows[small[1].name]
        last.ratio, last.figures = large[1].ratio / small[1].ratio, {"ratio at most": GROWTH}


def limit(row, ratio):
    """What must hold, and whether it did."""
    figures = row.figures
    said = "".join(f"{figures[key]:.0f} {key}, " for key in ("bytes per lesson", "MiB") if key in figures)
    for key, value, unit in (("ratio at most", ratio, ""), ("seconds at most", row.seconds, " s"),
                             ("bytes at most", figures.get("bytes per lesson"), ""), ("MiB at most", figures.get("MiB"), "")):
        if key in figures:
            return f"{said}at most {figures[key]:g}{unit}: {'yes' if value <= figures[key] else 'NO'}"
    return said.rstrip(", ")


def main():
    groups = read(sys.argv[1:])
    measured = len(groups)
    growths(groups)
    failed = 0
    width = max((len(what) for rows in groups.values() for what in rows), default=4) + 4
    print(f"{'':<{width}}  {'by the clock':>12} {'processor':>12}  {'ratio':>6}")
    for number, (group, rows) in enumerate(groups.items()):
        print(f"\n{group}")
        base = None
        for row in rows.values():
            label = "  " + row.name
            if row.failure:
                failed += 1
                print(f"{label:<{width}}  {row.failure}")
                continue
            if row.seconds == float("inf"):
                continue  # its partner has the reason
            base = base or row.seconds
            ratio = row.ratio or row.seconds / base
            mark = "*" if row.by_clock else " "
            shown = readable if number < measured else lambda times: f"{times:8.1f} x "
            print(f"{label:<{width}}  {shown(row.clock):>12} {shown(row.processor):>12}  {ratio:>6.2f}{mark} "
                  f"{limit(row, ratio)}".rstrip())
    return 1 if failed or not groups else 0


if __name__ == "__main__":
    sys.exit(main())
