"""Prints the result of Google Benchmark as a table. A row's name is "group/what"; each row is compared with the first
of its group, by processor time, or by the clock where a server works (marked *). Of repetitions the fastest counts."""
import json
import sys

SECONDS = {"ns": 1e-9, "us": 1e-6, "ms": 1e-3, "s": 1.0}


def readable(seconds):
    for unit, factor in (("s", 1.0), ("ms", 1e-3), ("us", 1e-6), ("ns", 1e-9)):
        if seconds >= factor or unit == "ns":
            return f"{seconds / factor:8.2f} {unit:<2}"


class Row:
    """The fastest of the repetitions of one measurement."""

    def __init__(self, name, by_clock):
        self.name, self.by_clock = name, by_clock
        self.clock = self.processor = float("inf")
        self.failure, self.figures = "", {}

    def add(self, run):
        if run.get("error_occurred"):
            self.failure = run.get("error_message") or "failed"
            return
        unit = SECONDS[run["time_unit"]]
        self.clock = min(self.clock, run["real_time"] * unit)
        self.processor = min(self.processor, run["cpu_time"] * unit)
        self.figures = {key: run[key] for key in ("ratio at most", "seconds at most", "bytes per lesson") if key in run}

    @property
    def seconds(self):
        return self.clock if self.by_clock else self.processor


def read(path):
    groups = {}
    with open(path, encoding="utf-8") as file:
        runs = json.load(file)["benchmarks"]
    for run in runs:
        if run.get("run_type") == "aggregate":
            continue
        group, what, *rest = run["name"].split("/")
        row = groups.setdefault(group, {}).setdefault(what, Row(what, "real_time" in rest))
        row.add(run)
    return groups


def limit(row, ratio):
    """What must hold, and whether it did."""
    if "ratio at most" in row.figures:
        allowed = row.figures["ratio at most"]
        return f"at most {allowed:g}: {'yes' if ratio <= allowed else 'NO'}"
    if "seconds at most" in row.figures:
        allowed = row.figures["seconds at most"]
        return f"at most {allowed:g} s: {'yes' if row.seconds <= allowed else 'NO'}"
    return ""


def main():
    groups = read(sys.argv[1])
    failed = 0
    width = max((len(what) for rows in groups.values() for what in rows), default=4) + 2
    print(f"{'':<{width}}  {'by the clock':>12} {'processor':>12}  {'ratio':>6}")
    for group, rows in groups.items():
        print(f"\n{group}")
        base = None
        for row in rows.values():
            label = "  " + row.name
            if row.failure:
                failed += 1
                print(f"{label:<{width}}  {row.failure}")
                continue
            base = base or row.seconds
            ratio = row.seconds / base
            mark = "*" if row.by_clock else " "
            figures = f"{row.figures['bytes per lesson']:.0f} bytes per lesson" if "bytes per lesson" in row.figures else ""
            print(f"{label:<{width}}  {readable(row.clock):>12} {readable(row.processor):>12}  {ratio:>6.2f}{mark} "
                  f"{limit(row, ratio) or figures}".rstrip())
    return 1 if failed or not groups else 0


sys.exit(main())
