"""What tools/package packs works where it is unpacked, from there alone: the command line of each system, and the
controls in a Wine prefix of their own, once registered and again unknown once unregistered."""
import os
import shutil
import subprocess
import tarfile
import zipfile

from project import ROOT, finish

WORK = os.path.join(ROOT, "build", "package")
FOLDER = "daxcontrols-3.3"
WINDOWS = os.path.join(WORK, "win64", FOLDER)
LINUX = os.path.join(WORK, "linux", FOLDER)
problems = []


def run(what, command, expected=0, says="", **more):
    done = subprocess.run(command, stdin=subprocess.DEVNULL, capture_output=True, text=True, errors="replace",
                          check=False, timeout=600, **more)
    said = done.stdout + done.stderr
    if done.returncode != expected or says not in said:
        problems.append(f"{what}: exit code {done.returncode}, said: {said.strip()[-600:]}")


def wine(what, *command, **more):
    # An empty folder of programs: nothing that the build left may help, or be registered, here.
    environment = dict(os.environ, DAX_WINE_PREFIX=os.path.join(WORK, "wine"), DAX_WINE_DISPLAY="none",
                       DAX_WINE_BIN=os.path.join(WORK, "none"), DAX_WINE_TIMEOUT="300")
    run(what, [os.path.join(ROOT, "tools", "wine"), *command], cwd=WINDOWS, env=environment, **more)


shutil.rmtree(WORK, ignore_errors=True)
os.makedirs(os.path.join(WORK, "none"))
run("tools/package", [os.path.join(ROOT, "tools", "package")])
if not problems:
    with zipfile.ZipFile(os.path.join(ROOT, "dist", f"{FOLDER}-win64.zip")) as archive:
        archive.extractall(os.path.join(WORK, "win64"))
    with tarfile.open(os.path.join(ROOT, "dist", f"{FOLDER}-linux.tar.gz")) as archive:
        archive.extractall(os.path.join(WORK, "linux"))

    run("dax sample on Linux", ["./dax", "sample", "course.db"], cwd=LINUX, says="Made a sample course")
    run("dax validate on Linux", ["./dax", "validate", "course.db"], cwd=LINUX, says="validated")
    script = (os.path.join(WINDOWS, "daxscript.exe"), "samples\\validate.vbs", "course.db")
    wine("dax sample on Windows", os.path.join(WINDOWS, "dax.exe"), "sample", "course.db", says="Made a sample course")
    wine("a sample before registration", *script, expected=1)
    wine("register.cmd", "cmd", "/c", "register.cmd", says="Registered.")
    wine("a sample after registration", *script, says="valid: ")
    wine("unregister.cmd", "cmd", "/c", "unregister.cmd", says="Unregistered.")
    wine("a sample after unregistration", *script, expected=1)
finish(problems, "unpacked, used, registered and unregistered")
