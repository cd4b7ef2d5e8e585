"""The manual agrees with what it describes: the reference with the type libraries' snapshots, the error numbers with the
source, the members in samples that cannot be run with the type libraries, and test commands with the tests there are."""
import fnmatch
import os
import re
import runpy
import sys

from project import ROOT, files, finish, read

sys.path.insert(0, os.path.join(ROOT, "tools", "lib"))
import errors  # noqa: E402

ENGINES = ("SQLite", "PostgreSQL", "MariaDB")
problems = []


def check_error_numbers():
    """Whatever is raised has a name of the table, every name is used, and the page comes from the table."""
    named, codes = set(errors.numbers()), set()
    used = set()
    passed_on = re.compile(r"code|number|result|\w+\.Number\(\)|(NumberForHost|NumberOf)\(.*")
    for name, text in [*errors.sources(), *errors.sources("apps")]:
        used.update(re.findall(r"\bErrorNumbers::(\w+)", text))
        for argument in re.findall(r"\b(?:throw|return) (?:dax::)?Error\(\s*([^,;]+),", text):
            if 'u"' in argument:
                continue  # only a description
            if not argument.startswith("ErrorNumbers::") and not passed_on.fullmatch(argument):
                problems.append(f"{name}: Error({argument}, …): use a name of src/base/ErrorNumbers.h")
        if name.startswith(("src/com", "src/ocx", "src/controls/win32")):
            for line in re.findall(r"^.*(?:\breturn\b|\bComError\(|\bReturnNone\().*$", text, re.M):
                codes.update(re.findall(r"(?<![=!]= )\b(?:[A-Z]+_)?E_[A-Z]+\b", line))
    for name in sorted(named - used):
        problems.append(f"src/base/ErrorNumbers.h: nothing raises {name}")
    for code in sorted(codes ^ set(errors.codes())):
        problems.append(f"src/base/ErrorNumbers.h and the COM shell: {code} is only in one of them")
    if errors.page() != read("docs/errors.md"):
        problems.append("docs/errors.md: not up to date; run python3 tools/lib/errors.py")


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
