"""What tools/package packs works where it is unpacked, from there alone: each archive holds what it should; the command
line of each system works where no ODBC driver can be reached, also beside other programs on the same file; the C++
samples compile against the packed headers; the controls are used without registration, then registered, then unregistered
again, in a Wine prefix of their own; the self-test passes there, and fails where something is wrong.
    python3 package/check_archives.py unpack     unpacks what is in dist, in build/package, for the others
    python3 package/check_archives.py linux|win64|win32"""
import concurrent.futures
import fcntl
import glob
import os
import re
import shutil
import struct
import subprocess
import sys
import tempfile
import threading
import time

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "tools", "checks"))
from project import ROOT, finish  # noqa: E402

import msi  # noqa: E402

WORK = os.path.join(ROOT, "build", "package")
FOLDER = f"daxcontrols-{msi.version_of_project()}"
LINUX = os.path.join(WORK, "linux", f"{FOLDER}-linux")
MACHINES = {64: (0x8664, "x86_64-w64-mingw32-g++-posix"), 32: (0x14C, "i686-w64-mingw32-g++-posix")}
PROGRAMS = {"daxControls33.ocx", "contentObjects.dll", "DAXWorkbench.exe", "dax.exe", "daxscript.exe"}
EVERYWHERE = {"docs/reference.md", "docs/command-line.md", "docs/daxscript.md", "docs/json/tree.schema.json", "docs/schema.md", "docs/self-test.md", "docs/images/GroupEditor.png"}
WINDOWS_FILES = PROGRAMS | EVERYWHERE | {
    "daxControls33.manifest", "contentObjects.manifest", "DAXControls.tlb", "ContentObjects.tlb",
    "include/DAXControls.h", "include/ContentObjects.h", "register.cmd", "unregister.cmd", "selftest.cmd", "LICENSE.txt", "README.txt",
    "samples/hierarchy.vbs", "samples/identifiers.js", "samples/cpp/automation.cpp", "samples/cpp/container.cpp",
    "samples/not-run/CourseForm.vba.txt"}
LINUX_FILES = EVERYWHERE | {"dax", "LICENSE", "README", "samples/course.sh"}
problems = []
# No ODBC driver can be reached from here, as on a machine that has nothing but our files.
NO_DRIVERS = dict(os.environ, ODBCSYSINI=os.path.join(WORK, "none"), ODBCINI=os.path.join(WORK, "none", "odbc.ini"))


def run(what, command, expected=0, says="", **more):
    # Into a file: remaining processes, such as Wine's services, would keep a pipe open.
    with tempfile.TemporaryFile("w+", errors="replace") as output:
        code = subprocess.run(command, stdin=subprocess.DEVNULL, stdout=output, stderr=subprocess.STDOUT, check=False,
                              timeout=600, **more).returncode
        output.seek(0)
        said = output.read()
    if (expected is not None and code != expected) or says not in said:
        problems.append(f"{what}: exit code {code}, said: {said.strip()[-1500:]}")
    return said


def windows(bits):
    return os.path.join(WORK, f"win{bits}", f"{FOLDER}-win{bits}")


def wine(bits, what, *command, **more):
    # An empty folder of programs: nothing that the build left may help, or be registered, here. The folders are named
    # win32 and win64, by which tools/wine distinguishes 64 and 32 bit.
    environment = dict(NO_DRIVERS, DAX_WINE_PREFIX=os.path.join(WORK, f"win{bits}", "wine"), DAX_WINE_DISPLAY="none",
                       DAX_WINE_BIN=os.path.join(WORK, "none"), DAX_WINE_TIMEOUT="540")
    return run(f"{what} ({bits} bit)", [os.path.join(ROOT, "tools", "wine"), *command], cwd=windows(bits), env=environment,
               **more)


def unpack():
    shutil.rmtree(WORK, ignore_errors=True)
    os.makedirs(os.path.join(WORK, "none"))
    for system, ending in (("linux", "tar.gz"), ("win64", "zip"), ("win32", "zip")):
        shutil.unpack_archive(os.path.join(ROOT, "dist", f"{FOLDER}-{system}.{ending}"), os.path.join(WORK, system))


def remove_what_was_made(bits):
    """After an attempt that failed. The installers' check uses the same folder at the same time."""
    for name in ("wine", "host"):
        shutil.rmtree(os.path.join(WORK, f"win{bits}", name), ignore_errors=True)
    for path in glob.glob(os.path.join(windows(bits), "*.db*")):
        os.remove(path)


def check_files(folder, wanted):
    for name in sorted(wanted):
        if not os.path.isfile(os.path.join(folder, name)):
            problems.append(f"{os.path.relpath(folder, WORK)}: lacks {name}")
    for place, _, names in os.walk(folder):
        for name in names:
            shown = os.path.relpath(os.path.join(place, name), WORK)
            with open(os.path.join(place, name), "rb") as file:
                content = file.read()
            if f"{ROOT}/src/ocx".encode() in content:
                problems.append(f"{shown}: names the folder it was built in")
            for link in re.findall(rb"\]\(([^)#:]+)", content) if name.endswith(".md") else []:
                if not os.path.exists(os.path.join(place, link.decode())):
                    problems.append(f"{shown}: there is no {link.decode()}")


def check_programs(bits):
    """The binaries are for the machine that the archive names, and the C++ samples compile from the archive."""
    machine, compiler = MACHINES[bits]
    for name in sorted(PROGRAMS):
        with open(os.path.join(windows(bits), name), "rb") as file:
            image = file.read(4096)
        header = struct.unpack_from("<I", image, 0x3C)[0]
        if struct.unpack_from("<H", image, header + 4)[0] != machine:
            problems.append(f"win{bits}/{name}: is not for {bits} bit")
        if "sqlite3_" in run(f"looking into {name}", [compiler.replace("g++-posix", "objdump"), "-p", name],
                             cwd=windows(bits)):
            problems.append(f"win{bits}/{name}: exports or imports functions of SQLite")
    for name in ("automation", "container"):
        run(f"compiling {name}.cpp for {bits} bit",
            [compiler, "-std=c++20", "-static", "-I", "../../include", f"{name}.cpp", "-o", f"../../{name}.exe",
             "-lole32", "-loleaut32", "-luuid"], cwd=os.path.join(windows(bits), "samples", "cpp"))


def use_course(dax):
    """A course is made, validated, loaded, edited, saved, and its locks are listed: `dax` runs the command line."""
    dax("dax --version", "--version", says="with SQLite 3.")
    dax("a server's driver", "validate", "Driver={PostgreSQL Unicode};Server=127.0.0.1;Database=d", expected=1,
        says="is not installed")
    dax("dax sample", "sample", "course.db", says="Made a sample course")
    dax("dax validate", "validate", "course.db", says="validated")
    dax("dax tree", "tree", "course.db", says="25 groups, 120 lessons")
    dax("dax edit", "edit", "course.db", "add", "lesson", "A new one", "identifier", "NEW-1", says="Saved: 1 added")
    dax("dax lesson", "lesson", "course.db", "NEW-1", says="lesson: A new one")
    dax("dax locks", "locks", "course.db", says="23 locks, 4 invalid")


def dax_on_linux(what, *words, **more):
    return run(f"{what} on Linux", ["./dax", *words], cwd=LINUX, env=NO_DRIVERS, **more)


def dax_on_windows(bits):
    return lambda what, *words, **more: wine(bits, what, os.path.join(windows(bits), "dax.exe"), *words, **more)


def use_on_linux():
    use_course(dax_on_linux)
    run("the shell sample", ["samples/course.sh", "script.db"], cwd=LINUX, says="The first one  [NEW-1]",
        env=dict(NO_DRIVERS, PATH=f"{LINUX}:{os.environ['PATH']}"))


def sql(course, *statements):
    """The sqlite3 shell, a program that shares nothing with ours; waits up to a minute for a lock."""
    return run("the sqlite3 shell", ["sqlite3", "-bail", course, ".timeout 60000", *statements]).strip()


def two_programs(bits, journal):
    """A native program and one under Wine on one file: conflicts are reported, no wait exceeds its limit, nothing is lost."""
    course = os.path.join(windows(bits), f"{journal}.db")
    under_wine = dax_on_windows(bits)
    under_wine("dax sample", "sample", course)
    sql(course, f"PRAGMA journal_mode = {journal}")
    holder = subprocess.Popen(["sqlite3", course], stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
    holder.stdin.write("BEGIN IMMEDIATE; UPDATE velmoraUserLocks SET username = 'holder';\n.shell echo held\n")
    holder.stdin.flush()
    holder.stdout.readline()
    begin = time.monotonic()
    under_wine(f"an edit while another holds the {journal} file", "edit", course, "add", "lesson", "Held", expected=3,
               says="locked")
    if time.monotonic() - begin > 30:
        problems.append(f"{bits} bit: an edit waited {time.monotonic() - begin:.0f} s for another program")
    holder.communicate("COMMIT;\n")
    saved = []

    def edit(dax, name):
        for number in range(8):
            while "Saved: 1 added" not in (said := dax("edits at once", "edit", course, "add", "lesson", f"{name} {number}",
                                                       expected=None)):
                if "locked" not in said and "Give the command again" not in said:
                    problems.append(f"{bits} bit, {journal}: an edit at once with others said: {said}")
                    return
            saved.append(name)

    before = int(sql(course, "SELECT Count(*) FROM velmoraLessons"))
    programs = [threading.Thread(target=edit, args=who) for who in ((under_wine, "wine"), (dax_on_linux, "native"))]
    for program in programs:
        program.start()
    for number in range(20):
        sql(course, f"INSERT INTO velmoraUserLocks (lessonID, username, lockType) VALUES ('x', 'shell {number}', 1)")
    for program in programs:
        program.join()
    found = sql(course, "SELECT Count(*) FROM velmoraLessons", "PRAGMA integrity_check",
                "SELECT Count(*) FROM velmoraUserLocks WHERE username LIKE 'shell %'",
                "SELECT Count(*) > 0 FROM velmoraUserLocks WHERE username = 'holder'").split()
    if found != [str(before + len(saved)), "ok", "20", "1"] or len(saved) != 16:
        problems.append(f"{bits} bit, {journal}: {len(saved)} saves beside {before} lessons left {found}")


# A library whose first class crashes and whose other classes are never there.
BROKEN_LIBRARY = """#include <windows.h>
extern "C" __declspec(dllexport) HRESULT WINAPI DllGetClassObject(REFCLSID id, REFIID, void**) {
    if (id.Data1 != 1) Sleep(INFINITE);
    *reinterpret_cast<volatile int*>(16) = 1;
    return E_FAIL;
}
"""
# What cannot be checked in Wine, and here without drivers and, at first, without registration.
SKIPPED_HERE = {"Microsoft Access", "SQL Server", "PostgreSQL", "MariaDB", "SQLDBPicker: the catalog"}
CLASSES = {"DAXControls.Constants", "DAXControls.DatabaseValidator", "DAXControls.SQLDBPicker", "DAXControls.GroupEditor",
           "DAXControls.LessonInfo", "DAXControls.LockInfo", "DAXControls.LessonMapEditor", "DAXControls.LockManager",
           "ContentObjects.Lesson"}


def self_test(bits, what, shell, *words, expected=0, skipped=(), failed=()):
    """Runs the self-test as users do; the results in its report are (name, reason) by what came of them."""
    report = os.path.join(windows(bits), "report.html")
    said = wine(bits, f"the self-test {what}", shell, "/c", "selftest.cmd", "--report", "report.html", *words,
                expected=expected, says="Report: report.html")
    with open(report, encoding="utf-8") as file:
        page = file.read()
    rows = re.findall(r'<tr><td class="outcome (\w+)">.*?</td><td class="name">(.*?)</td><td class="details">(.*?)</td>', page)
    results = {outcome: {name: details for found, name, details in rows if found == outcome}
               for outcome in ("passed", "failed", "skipped")}
    if set(results["skipped"]) != set(skipped) or set(results["failed"]) != set(failed) or not rows:
        problems.append(f"the self-test {what} ({bits} bit): skipped {results['skipped']}, failed {results['failed']}, "
                        f"said {said}")
    os.remove(report)
    return page, results


def self_test_fails(bits, shell):
    """One class crashes, one never answers, and a server is not there: each is reported, and the others are tried."""
    folder = windows(bits)
    with open(os.path.join(folder, "broken.cpp"), "w", encoding="utf-8") as source:
        source.write(BROKEN_LIBRARY)
    run("compiling a library that crashes", [MACHINES[bits][1], "-shared", "-static", "-Wl,--kill-at", "broken.cpp", "-o",
                                             "broken.dll"], cwd=folder)
    registry = os.path.join(os.path.dirname(shell), "reg.exe")
    for number, name in ((1, "GroupEditor"), (2, "LockManager")):
        identifier = f"{{0000000{number}-0000-0000-0000-000000000000}}"
        for key, value in ((f"DAXControls.{name}\\CLSID", identifier),
                           (f"CLSID\\{identifier}\\InprocServer32", "Z:" + os.path.join(folder, "broken.dll").replace("/", "\\"))):
            wine(bits, "registering it", registry, "add", f"HKLM\\Software\\Classes\\{key}", "/ve", "/d", value, "/f")
    broken = {"DAXControls.GroupEditor", "DAXControls.LockManager"}
    _, results = self_test(bits, "with broken classes", shell, "--only", "registration", "--limit", "10", expected=1,
                           skipped=CLASSES - broken, failed=broken)
    for name, text in (("GroupEditor", "Crashed with exception C0000005 at broken.dll + "),
                       ("LockManager", "Not finished after 10 seconds.")):
        if not results["failed"].get(f"DAXControls.{name}", "").startswith(text):
            problems.append(f"the self-test of a broken {name} ({bits} bit) said: {results['failed']}")
    for name in sorted(broken):
        wine(bits, "unregistering it", registry, "delete", f"HKLM\\Software\\Classes\\{name}", "/f")
    os.remove(os.path.join(folder, "broken.dll"))
    os.remove(os.path.join(folder, "broken.cpp"))
    page, _ = self_test(bits, "without a server", shell, "--only", "connection", "--connection",
                        "Driver={MariaDB Unicode};Server=127.0.0.1;PWD=topsecret", expected=1,
                        failed={"Opened, with an empty catalog"},
                        skipped={"Tables and rows are made", "The start of an application",
                                 "Edited, saved and loaded again", "All that was made is dropped"})
    if "topsecret" in page:
        problems.append("the self-test's report shows a password")


def use_command_line(bits):
    for journal in ("delete", "wal"):
        two_programs(bits, journal)


def use_registered_and_not(bits, folder, prefix):
    course = os.path.join(folder, "course.db")
    script = os.path.join(folder, "daxscript.exe")
    shell = os.path.join(prefix, "drive_c", "windows", "system32", "cmd.exe")
    # A program that has nothing of ours beside it.
    automation = os.path.join(WORK, f"win{bits}", "host", "automation.exe")
    os.makedirs(os.path.dirname(automation))
    shutil.copy(os.path.join(folder, "automation.exe"), automation)
    use_course(dax_on_windows(bits))
    wine(bits, "a script before registration", script, "samples\\validate.vbs", "course.db", expected=1)
    wine(bits, "a program before registration", automation, course, expected=1)
    # With the manifest beside it, it finds the libraries there.
    shutil.copy(os.path.join(folder, "samples", "cpp", "automation.exe.manifest"), folder)
    wine(bits, "a program without registration", os.path.join(folder, "automation.exe"), course, says="saved")
    # Meanwhile the command line is used, which has no windows that could take the input of the self-test.
    with concurrent.futures.ThreadPoolExecutor() as pool:
        beside = pool.submit(use_command_line, bits)
        page, _ = self_test(bits, "before registration", shell, "--connection", "own.db", skipped=SKIPPED_HERE | CLASSES)
        beside.result()
    if page.count("data:image/png;base64,") < 16 or os.path.exists(os.path.join(folder, "own.db")):
        problems.append(f"the self-test ({bits} bit) lacks pictures, or has left the database that it made")
    self_test_fails(bits, shell)
    wine(bits, "register.cmd", shell, "/c", "register.cmd", says="Registered.")
    self_test(bits, "after registration", shell, "--only", "registration")
    wine(bits, "VBScript after registration", script, "samples\\validate.vbs", "course.db", says="valid: ")
    wine(bits, "JScript after registration", script, "samples\\identifiers.js", "course.db", says="identifiers given")
    wine(bits, "a program after registration", automation, course, says="saved")
    wine(bits, "unregister.cmd", shell, "/c", "unregister.cmd", says="Unregistered.")


def use_on_windows(bits):
    folder = windows(bits)
    prefix = os.path.join(WORK, f"win{bits}", "wine")
    os.makedirs(prefix)
    with open(os.path.join(prefix, "dax.users"), "w", encoding="utf-8") as users:
        # While this lock is held, tools/wine leaves Wine running from one program to the next.
        fcntl.flock(users, fcntl.LOCK_SH)
        use_registered_and_not(bits, folder, prefix)
    wine(bits, "a script after unregistration", os.path.join(folder, "daxscript.exe"), "samples\\validate.vbs",
         "course.db", expected=1)
    with open(os.path.join(prefix, "system.reg"), encoding="utf-8") as registry: # whole, since Wine has ended
        left = re.findall(r"^\[Software\\\\Classes\\\\(?:DAXControls|ContentObjects)\..*|.*(?:daxControls33|contentObjects)\.(?:ocx|dll).*",
                          registry.read(), re.M | re.I)
    if left:
        problems.append(f"unregister.cmd ({bits} bit) leaves in the registry: {left[:3]}")


def main():
    part = sys.argv[1]
    if part == "unpack":
        unpack()
    elif part == "linux":
        check_files(LINUX, LINUX_FILES)
        use_on_linux()
    else:
        bits = int(part[3:])
        remove_what_was_made(bits)
        check_files(windows(bits), WINDOWS_FILES)
        check_programs(bits)
        if not problems:
            msi.skip_without_wine(bits)
            use_on_windows(bits)
    finish(problems, f"{part}: done")


main()
