"""The manual agrees with what it describes: the reference with the type libraries' snapshots, the error numbers with the
source, the members in samples that cannot be run with the type libraries, and test commands with the tests there are."""
import fnmatch
import os
import re
import runpy
import sys

from project import ROOT, files, finish, read

ENGINES = ("SQLite", "PostgreSQL", "MariaDB")
problems = []


def raised_numbers():
    """{number: where} of all that the source raises, wherever its number is defined."""
    sources = files(".h", ".cpp", folders=["src"])
    texts = {name: read(name) for name in sources}
    named = {}
    for name, text in texts.items():
        for block in re.findall(r"namespace ErrorNumbers \{(.*?)\n\}", text, re.S):
            named.update({f"ErrorNumbers::{word}": (int(number), name)
                          for word, number in re.findall(r"int32_t (\w+) = (-?\d+);", block)})
    found = dict(named.values())
    passed_on = re.compile(r"code|number|result|\w+\.Number\(\)|(HostsNumber|NumberOf)\(.*")
    for name, text in texts.items():
        local = {word: int(number) for line in re.findall(r"constexpr int32_t ([^;]*);", text)
                 for word, number in re.findall(r"(\w+) = (-?\d+)", line)}
        for argument in re.findall(r"\b(?:throw|return) (?:dax::)?Error\(\s*([^,;]+),", text):
            if argument in local or re.fullmatch(r"-?\d+", argument):
                found.setdefault(local.get(argument) or int(argument), name)
            elif argument not in named and not passed_on.fullmatch(argument):
                problems.append(f"{name}: which number is raised by Error({argument}, …)?")
    return found


def check_error_numbers():
    """Every number of the source, in both of its forms, and no other, is in the tables; and every code of the shell."""
    raised, page = raised_numbers(), read("docs/errors.md")
    rows = {int(number): int(hexadecimal, 16)
            for number, hexadecimal in re.findall(r"^\| (-?\d+) \| (\w+) \|", page, re.M)}
    for number in sorted(set(raised) - set(rows)):
        problems.append(f"docs/errors.md: {number} is missing, which {raised[number]} raises")
    for number in sorted(set(rows) - set(raised)):
        problems.append(f"docs/errors.md: nothing raises {number}")
    for number, hexadecimal in rows.items():
        if number % (1 << 32) != hexadecimal:
            problems.append(f"docs/errors.md: {number} is not {hexadecimal:X}")
    codes = set()
    for name in files(".h", ".cpp", folders=["src/com", "src/ocx"]):
        for line in re.findall(r"^.*(?:\breturn\b|\bComError\(|\bNothing\().*$", read(name), re.M):
            codes.update(re.findall(r"(?<![=!]= )\b(?:[A-Z]+_)?E_[A-Z]+\b", line))
    listed = set(re.findall(r"^\| `(\w+)` \|", page, re.M))
    for code in sorted(codes ^ listed):
        problems.append(f"docs/errors.md and the COM shell: {code} is only in one of them")


def all_tests():
    """The names of the tests, of each program, as GoogleTest filters see them."""
    programs = {}
    for name in files(".cpp", folders=["tests"]):
        known = programs.setdefault(name.split("/")[1], set())
        for kind, suite, test in re.findall(r"^TEST(_[FP])?\((\w+),\s*(\w+)\)", read(name), re.M):
            known.add(f"{suite}.{test}")
            if kind == "_P":
                known.update(f"Engines/{suite}.{test}/{engine}" for engine in ENGINES)
    return programs


def check_test_commands():
    programs = all_tests()
    for page in files(".md", folders=["docs"]) + ["README.md"]:
        for program, patterns in re.findall(r"(\w+)_tests(?:\.exe)? --gtest_filter='([^']*)'", read(page)):
            for pattern in patterns.split(":"):
                if not fnmatch.filter(programs.get(program, ()), pattern):
                    problems.append(f"{page}: {program}_tests has no test {pattern}")


def check_samples_not_run():
    """What these samples call on a control is a member of some class."""
    members = set()
    for library in ("DAXControls", "ContentObjects"):
        text = read(f"tests/ocx/{library}.snapshot.txt")
        members.update(re.findall(r"^  member .*? (\w+)\(", text, re.M))
        members.update(re.findall(r"^  value (\w+)", text, re.M))
    foreign = {"Object", "Move", "Dock", "GetOcx"}  # what the host adds to every control
    for name in files(".txt", folders=["docs/examples/not-run"]):
        text = read(name)
        if "NOT RUN" not in text.splitlines()[0]:
            problems.append(f"{name}: does not say in its first line that it was not run")
        called = re.findall(r"\b(?:editor|panel|locks)[._](\w+)", text, re.I)
        called += re.findall(r"\b((?:lt|gmt|ldt)[A-Z]\w+)", text)
        for member in sorted(set(called) - members - foreign):
            problems.append(f"{name}: no class of the type libraries has a member {member}")


check_error_numbers()
check_test_commands()
check_samples_not_run()
sys.argv = ["manual.py", "--check"]
try:
    runpy.run_path(os.path.join(ROOT, "tools", "lib", "manual.py"), run_name="__main__")
except SystemExit as end:
    problems.append(str(end))
finish(problems, "reference, error numbers, test commands and samples agree with the source")
