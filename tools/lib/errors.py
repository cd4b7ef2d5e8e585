"""Generates the tables of docs/errors.md from src/base/ErrorNumbers.h, the one table of all error numbers.
    python3 tools/lib/errors.py           writes them
    python3 tools/lib/errors.py --check   checks whether they are up to date"""
import re
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
PAGE, TABLE = "docs/errors.md", "src/base/ErrorNumbers.h"
# What the modules are called on the page; what base raises can come from everything.
PLACES = {"base": "everywhere", "data": "databases", "content": "lessons", "controls": "controls", "tree": "trees",
          "hierarchy": "hierarchy", "validation": "validator and picker", "locks": "lock list",
          "panels": "panels", "lessonmap": "lesson map", "com": "controls", "ocx": "controls"}


def read(name):
    return (ROOT / name).read_text(encoding="utf-8")


def sources(top="src"):
    for path in (ROOT / top).rglob("*.*"):
        name = path.relative_to(ROOT).as_posix()
        if name.endswith((".h", ".cpp")) and name != TABLE:
            yield name, read(name)


def numbers():
    """{name: (section, number, meaning)}, in the order of the table."""
    found, section = {}, ""
    for heading, comment, name, number in re.findall(
            r"^// # (.*)$|((?:^// .*\n)+)^inline constexpr int32_t (\w+) = (-?\d+);", read(TABLE), re.M):
        section = heading or section
        if name:
            found[name] = (section, int(number), " ".join(re.findall(r"^// (.*)$", comment, re.M)))
    return found


def codes():
    """{name: (hexadecimal, meaning)} of COM's own codes."""
    return {name: (code, when) for name, code, when in
            re.findall(r"^// ([A-Z_]+) = ([0-9A-F]{8}): (.*)$", read(TABLE), re.M)}


def places(users):
    """{name: what raises it}."""
    raised = {}
    for path, text in users:
        place = PLACES[path.split("/")[1]]
        for name in re.findall(r"\bErrorNumbers::(\w+)", text):
            raised.setdefault(name, set()).add(place)
    return {name: "everywhere" if "everywhere" in where else ", ".join(sorted(where))
            for name, where in raised.items()}


def tables():
    """{heading of a section: its table}."""
    made = {"Of COM": "| code | hexadecimal | when |\n|---|---|---|\n" +
            "".join(f"| `{name}` | {code} | {when} |\n" for name, (code, when) in codes().items())}
    raised = places(sources())
    for name, (section, number, meaning) in numbers().items():
        made.setdefault(section, "| number | hexadecimal | name in C++ | meaning | raised by |\n|---|---|---|---|---|\n")
        made[section] += f"| {number} | {number % (1 << 32):X} | `{name}` | {meaning} | {raised.get(name, '')} |\n"
    return made


def page():
    text = read(PAGE)
    for heading, table in tables().items():
        begin = text.index(f"## {heading}\n")
        start = text.index("\n| ", begin) + 1
        end = re.compile(r"^(?!\|)", re.M).search(text, start).start()
        text = text[:start] + table + text[end:]
    return text


if __name__ == "__main__":
    new = page()
    if "--check" not in sys.argv:
        (ROOT / PAGE).write_text(new, encoding="utf-8")
    elif new != read(PAGE):
        sys.exit("docs/errors.md: not up to date; run python3 tools/lib/errors.py")
