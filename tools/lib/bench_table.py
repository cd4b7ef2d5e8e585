"""Prints the result of Google Benchmark as a table with ratios. A group is the part of a name before its first "/"."""
import json
import sys

SECONDS = {"ns": 1e-9, "us": 1e-6, "ms": 1e-3, "s": 1.0}


def readable(seconds):
    for unit, factor in (("s", 1.0), ("ms", 1e-3), ("us", 1e-6), ("ns", 1e-9)):
        if seconds >= factor or unit == "ns":
            return f"{seconds / factor:8.2f} {unit}"


with open(sys.argv[1], encoding="utf-8") as file:
    rows = [row for row in json.load(file)["benchmarks"] if row.get("run_type") != "aggregate"]
width = max([len(row["name"]) for row in rows] + [4])
print(f"{'what':<{width}}  {'time':>11}  {'ratio':>7}")
bases, failed = {}, 0
for row in rows:
    group = row["name"].split("/")[0]
    if row.get("error_occurred"):
        print(f"{row['name']:<{width}}  {row.get('error_message', 'failed')}")
        failed += 1
        continue
    if group not in bases and bases:
        print()
    seconds = row["real_time"] * SECONDS[row["time_unit"]]
    base = bases.setdefault(group, seconds)
    print(f"{row['name']:<{width}}  {readable(seconds):>11}  {seconds / base:>7.2f}")
sys.exit(1 if failed or not rows else 0)
