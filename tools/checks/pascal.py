"""The Pascal sample compiles early bound, against units that Free Pascal's own importer makes of both type libraries, and
runs under Wine: a reader of the type libraries that shares nothing with ours. tools/test runs this where tools/setup pascal
can install the compiler, after tools/build win64."""
import glob
import os
import shutil
import subprocess

from project import ROOT, finish

WORK = os.path.join(ROOT, "build", "pascal", "win64")
UNITS = os.path.join(WORK, "units")
SAMPLE = os.path.join(ROOT, "docs", "examples", "pascal")
BUILT = os.path.join(ROOT, "build", "win64")
EXPECTED = """1. the connector is valid
2. picked: Safety at work [velmora_safety]
3. the catalog is valid
4. loaded: 146 nodes
"""
# One of each event that the sample raises.
EVENTS = ["5. selected: Übung macht den Meister 2, locks: 1", "5. the hierarchy has changed",
          "5. selected: Added in Pascal, locks: 0", "the user wants to delete what is selected", "6. page: Welcome",
          "6. pages checked: 2", "7. the map has changed: 2", "8. the maps of this program: p2 and p1,p3",
          "9. the user wants to delete 4 locks", "9. left over: 0 locks", "9. selected: ",
          "error in the locks: The database file"]
problems = []


def run(what, command, **more):
    try:
        done = subprocess.run(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                              timeout=300, check=False, **more)
    except subprocess.TimeoutExpired:
        problems.append(f"{what}: has not ended")
        return ""
    said = done.stdout.decode("utf-8", "replace").replace("\r\n", "\n")
    if done.returncode != 0:
        problems.append(f"{what}: exit code {done.returncode}, said: {said.strip()[-2000:]}")
    return said


def sources():
    """The folder of the compiler's own sources."""
    found = sorted(glob.glob("/usr/share/fpcsrc/*/rtl/win64"))
    return os.path.dirname(os.path.dirname(found[-1])) if found else ""


def compile_units(source):
    """The system's units for Windows, of which Debian has the sources only."""
    rtl, windows = os.path.join(source, "rtl"), os.path.join(source, "packages", "winunits-base", "src")
    places = [f"-F{kind}{os.path.join(rtl, name)}" for kind, names in (
        ("i", ("inc", "x86_64", "win", "win/wininc", "objpas", "objpas/sysutils", "objpas/classes", "win64")),
        ("u", ("win", "inc", "objpas", "x86_64"))) for name in names]
    more = [f"-Fu{windows}"] + [f"-Fu{os.path.join(source, 'packages', name, 'src')}"
                                for name in ("fcl-registry", "fcl-base")]
    more += [f"-F{kind}{os.path.join(source, 'packages', 'rtl-objpas', 'src', name)}"
             for kind in "iu" for name in ("inc", "win")]
    for name in ("rtl/win64/system.pp", "rtl/inc/uuchar.pp", "rtl/objpas/objpas.pp", "rtl/win64/buildrtl.pp",
                 "packages/winunits-base/src/typelib.pas", "packages/winunits-base/src/eventsink.pp",
                 "packages/winunits-base/src/stdole2.pas"):
        if not problems:
            own = ["-Us", "-Sg"] if name.endswith("system.pp") else []
            run(f"compiling {name}", compiler() + places + (more if "winunits" in name else []) + own +
                [os.path.join(source, name)])


def compiler():
    return ["ppcx64", "-n", "-Twin64", "-O1", "-v0e", f"-FU{UNITS}", f"-FE{WORK}", f"-Fu{UNITS}"]


def wine(what, program, *words):
    environment = dict(os.environ, DAX_WINE_DISPLAY="none", DAX_WINE_TIMEOUT="200", DAX_WINE_BIN=os.path.join(BUILT, "bin"),
                       DAX_WINE_PREFIX=os.path.join(ROOT, "build", "pascal", "wine"))
    return run(what, [os.path.join(ROOT, "tools", "wine"), os.path.join(WORK, program), *words], env=environment)


def windows_path(path):
    return "Z:" + path.replace("/", "\\")


def use():
    connector = os.path.join(WORK, "connector.db")
    dax = os.path.join(ROOT, "build", "native", "bin", "dax")
    run("making a connector", [dax, "sample", connector, "--connector"])
    course = os.path.join(WORK, "velmora_safety.db")
    run("making a course", [dax, "sample", course])
    said = wine("the sample", "typicalstart.exe", windows_path(connector), "anna", "velmora_safety", "SAF-2")
    for line in EVENTS:
        if line not in said:
            problems.append(f"the sample did not say '{line}', but: {said}")
    if not said.startswith(EXPECTED) or not said.endswith("10. recorded for anna\n"):
        problems.append(f"the sample said: {said}")
    added = run("asking the course", ["sqlite3", course, "SELECT Count(*) FROM velmoraLessons WHERE lessonTitle = "
                                      "'Added in Pascal'"])
    left = run("asking the course", ["sqlite3", course, "SELECT Count(*) FROM velmoraUserLocks"])
    if added.strip() != "1" or left.strip() != "19":
        problems.append(f"the sample left {added.strip()} lessons of its own and {left.strip()} locks")


shutil.rmtree(WORK, ignore_errors=True)
os.makedirs(UNITS)
run("tools/build win64", [os.path.join(ROOT, "tools", "build"), "win64", "daxControls33", "contentObjects"])
run("tools/build native", [os.path.join(ROOT, "tools", "build"), "native", "dax"])
if not sources():
    problems.append("there are no sources of the compiler's units; tools/setup pascal installs them")
if not problems:
    compile_units(sources())
if not problems:
    run("compiling the importer", compiler() + [os.path.join(ROOT, "tools", "lib", "import_types.pas")])
for library in ("ContentObjects", "DAXControls"):
    if not problems:
        wine(f"importing {library}", "import_types.exe",
             windows_path(os.path.join(BUILT, "src", "ocx", "generated", f"{library}.tlb")), windows_path(UNITS))
if not problems:
    run("compiling the sample", compiler() + [f"-Fu{SAMPLE}", os.path.join(SAMPLE, "typicalstart.pas")])
if not problems:
    use()
finish(problems, "the sample was compiled against units imported from both type libraries, and ran")
