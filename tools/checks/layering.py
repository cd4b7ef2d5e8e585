"""Modules use only the modules below them, windows stay in their own folders, and no includes run in a circle.

The modules and their arrows are read from CMakeLists.txt (dax_module NAME USED...), so there is one table of them."""
import graphlib
import os
import re

from project import CODE, ROOT, files, finish, includes, read

WINDOWS = {"windows.h", "windowsx.h", "commctrl.h", "objbase.h", "oleauto.h", "ole2.h", "oaidl.h", "ocidl.h", "olectl.h",
           "unknwn.h", "tchar.h", "initguid.h", "shellapi.h", "shlobj.h", "uxtheme.h", "gdiplus.h", "activscp.h"}
ODBC = {"sql.h", "sqlext.h", "sqltypes.h", "sqlucode.h"}
ODBC_HEADER = "src/data/odbc/Odbc.h"
SQLITE_HEADER = "src/data/sqlite/SQLite.h"
WINDOWS_PLACES = ("src/com/", "src/ocx/", "apps/workbench/", "apps/script/", "tests/windows/", "tests/ocx/", "tests/workbench/")
POSIX = {"locale.h", "langinfo.h", "unistd.h", "fcntl.h", "sys/stat.h", "sys/types.h", "sys/file.h", "termios.h",
         "io.h"}  # of one system or the other
STANDARD = re.compile(r"[a-z_0-9]+")  # headers of the C++ library have no ending


def read_modules():
    """What each module may use, itself included; and errors in the table."""
    below, complaints = {}, []
    for name, used in re.findall(r"^\s*dax_(?:windows_)?module\((\w+)([^)]*)\)", read("CMakeLists.txt"), re.M):
        below[name] = {name}
        for other in used.split():
            if other not in below:
                complaints.append(f"CMakeLists.txt: module {name} uses {other}, which does not stand before it")
            below[name] |= below.get(other, set())
    return below, complaints


def resolve(name, what, known):
    """The project's file that a quoted include means, or None."""
    for folder in (os.path.dirname(name), "src", "tests", "/".join(name.split("/")[:2])):
        path = os.path.normpath(f"{folder}/{what}").replace(os.sep, "/")
        if path in known:
            return path
    return None


def may_use_windows(name):
    return "/win32/" in name or name.startswith(WINDOWS_PLACES)


def check_arrow(name, target, modules):
    """Why this file may not include that one, or None."""
    words, aim = name.split("/"), target.split("/")
    if "win32" in aim and not may_use_windows(name):
        return "a portable file includes one of a window"
    if words[0] == "src":
        if aim[0] != "src":
            return "the library includes from outside src"
        if words[1] in modules and aim[1] not in modules[words[1]]:
            return f"module {words[1]} does not stand on {aim[1]}"
    if words[0] == "apps":
        if aim[0] == "apps" and aim[1] != words[1]:
            return "one program includes from another"
        if aim[0] not in ("apps", "src"):
            return "a program includes from the tests"
        if aim[:2] == ["src", "ocx"]:
            return "a host uses the control library through COM only"
    return None


def check_system(name, what):
    what = what.lower()
    if what in WINDOWS and not may_use_windows(name) and name != ODBC_HEADER:
        return f"<{what}> belongs in win32/ folders and hosts"
    if what in ODBC and name != ODBC_HEADER:
        return f"<{what}> belongs in {ODBC_HEADER}"
    if what == "sqlite3.h" and name.startswith(("src/", "apps/")):
        return None if name == SQLITE_HEADER else f"<{what}> belongs in {SQLITE_HEADER}"
    product = name.startswith(("src/", "apps/")) and not may_use_windows(name) and name != ODBC_HEADER
    if product and what not in POSIX and not STANDARD.fullmatch(what):
        return f"<{what}> is not of the platform"
    return None


modules, problems = read_modules()
names = files(*CODE, folders=["src", "apps", "tests", "bench"])
known = set(names)
graph = {name: [] for name in names}
for folder in sorted(os.listdir(os.path.join(ROOT, "src"))):
    if folder not in modules and folder != "ocx":
        problems.append(f"src/{folder}: no module of that name in CMakeLists.txt")
for name in names:
    for quoted, what in includes(name):
        target = resolve(name, what, known) if quoted else None
        wrong = check_arrow(name, target, modules) if target else check_system(name, what) if not quoted else None
        if target:
            graph[name].append(target)
        if wrong:
            problems.append(f"{name}: includes {what}: {wrong}")
try:
    graphlib.TopologicalSorter(graph).prepare()
except graphlib.CycleError as circle:
    problems.append("a circle of includes: " + " <- ".join(circle.args[1]))
finish(problems, f"{len(names)} files in {len(modules)} modules")
