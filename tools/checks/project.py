"""What the checks share: which files the project has, and how a check ends."""
import os
import re
import sys

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
FOLDERS = ["src", "apps", "package", "tests", "bench", "cmake", "tools", "docs", ".ci"]
CODE = (".h", ".cpp")
BINARY = (".png", ".ico", ".bmp", ".ttf", ".db", ".res")
INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]', re.M)


def files(*endings, folders=None):
    """The project's files, as paths from its root with forward slashes, sorted."""
    found = []
    for folder in folders or FOLDERS:
        for place, below, names in os.walk(os.path.join(ROOT, folder)):
            below[:] = [name for name in below if name != "__pycache__"]
            found += [os.path.relpath(os.path.join(place, name), ROOT).replace(os.sep, "/") for name in names]
    if folders is None:
        found += [name for name in os.listdir(ROOT) if name != ".git" and os.path.isfile(os.path.join(ROOT, name))]
    return sorted(name for name in found if not endings or name.endswith(endings))


def read(name):
    with open(os.path.join(ROOT, name), encoding="utf-8", newline="") as file:
        return file.read()


def includes(name):
    """(is quoted, what) of every include in a file."""
    return [(mark == '"', what) for mark, what in INCLUDE.findall(read(name))]


def finish(problems, done):
    for problem in problems:
        print(problem)
    print(f"{len(problems)} problem{'s' * (len(problems) > 1)}" if problems else done)
    sys.exit(1 if problems else 0)
