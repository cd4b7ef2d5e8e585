"""The installers that tools/package makes work: in Wine prefixes of their own, a machine is installed, used by a script,
repaired, upgraded and uninstalled. What an installer enters in the registry is what regsvr32 enters; what is left behind
is nothing; each architecture leaves the other alone.
    python3 package/check_installers.py 64|32"""
import fcntl
import glob
import os
import re
import shutil
import subprocess
import sys
import tempfile

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "tools", "checks"))
from project import ROOT, finish  # noqa: E402

import msi  # noqa: E402

WORK = os.path.join(ROOT, "build", "package")
LATER = "99.1"
EDITOR = "{71E754E9-42AA-4718-8DAD-CEB4BEEB08F0}"
USER, CATALOG, LESSON = "anna", "velmora_safety", "SAF-2"
# Where the installer's own entries may lie, beside those of the classes; Windows Installer keeps its data in the first two.
WATCHED = re.compile(r"(system|user) software\\")  # elsewhere Wine notes what hardware it finds, at any start
NAMES = re.compile(r"\\classes\\wow6432node\\(daxcontrols|contentobjects)\.")
BOOKS = re.compile(r"Software\\(Classes\\Installer|Microsoft\\Windows\\CurrentVersion\\(Installer|Uninstall)|DAXControls)"
                   r"(\\|$)", re.I)

problems = []


class Machine:
    def __init__(self, bits, name, unpacked, like=None):
        """`like` is a machine to begin as a copy of."""
        self.bits, self.name = bits, f"{name}, {bits} bit"
        # tools/wine takes a program's bits from the folder above it.
        self.prefix = os.path.join(ROOT, "build", "package", f"win{bits}", f"machine-{name}")
        self.drive = os.path.join(self.prefix, "drive_c")
        if like:
            shutil.copytree(like.prefix, self.prefix, symlinks=True)
        else:
            os.makedirs(self.prefix)
            self.wine("a new machine", os.path.join(unpacked, "dax.exe"), "--version", says="dax")
            self.system("cmd", "/c", "exit")  # the first start of all settles what a new machine has in its registry
        self.new = self.state()

    def wine(self, what, program, *words, expected=0, says=""):
        environment = dict(os.environ, DAX_WINE_PREFIX=self.prefix, DAX_WINE_DISPLAY="none", DAX_WINE_TIMEOUT="300",
                           DAX_WINE_BIN=os.path.join(self.prefix, "none"))
        # Into a file: remaining processes, such as Wine's services, would keep a pipe open.
        with tempfile.TemporaryFile("w+", errors="replace") as output:
            code = subprocess.run([os.path.join(ROOT, "tools", "wine"), program, *words], cwd=self.prefix, env=environment,
                                  stdin=subprocess.DEVNULL, stdout=output, stderr=subprocess.STDOUT, check=False,
                                  timeout=600).returncode
            output.seek(0)
            said = output.read()
        if (expected is not None and code != expected) or says not in said:
            problems.append(f"{what} ({self.name}): exit code {code}, said: {said.strip()[-1500:]}")

    def system(self, program, *words, **more):
        return self.wine(f"{program} {' '.join(words)}", os.path.join(self.drive, "windows", "system32", f"{program}.exe"),
                         *words, **more)

    def folder(self, bits):
        wow = self.bits == 64 and bits == 32
        return os.path.join(self.drive, "Program Files (x86)" if wow else "Program Files", "DAXControls")

    def registry(self):
        """(key, name) -> value. Wine holds the names of classes for 32-bit programs by themselves; here, as on Windows,
        they are in one place."""
        found, key = {}, ""
        for file in ("system.reg", "user.reg"):
            with open(os.path.join(self.prefix, file), encoding="utf-8", errors="replace") as content:
                for line in re.sub(r"\\\n *", "", content.read()).splitlines():
                    section = re.match(r"\[(.*)\] \d+$", line)
                    if section:
                        key = section.group(1).replace("\\\\", "\\")
                    elif key and line and not line.startswith("#"):
                        name, _, value = line.partition("=")
                        place = NAMES.sub(r"\\classes\\\1.", f"{file[:-4]} {key}".lower())
                        if WATCHED.match(place):
                            found[(place, name)] = value
        return found

    def files(self):
        """And folders, but for the one that Windows keeps packages in."""
        return {os.path.relpath(os.path.join(place, name), self.drive) for place, below, names in os.walk(self.drive)
                for name in below + names} - {"windows/Installer"}

    def state(self):
        return self.registry(), self.files()

    def added(self):
        """What the registry holds more than on the new machine: that of classes, and whatever else."""
        more = {place: value for place, value in self.registry().items() if self.new[0].get(place) != value}
        books = {place for place in more if BOOKS.search(place[0])}
        return {place: more[place] for place in more if place not in books}

    def expect(self, what, found, expected):
        if found == expected:
            return
        if isinstance(found, tuple):
            for one, other in zip(found, expected):
                self.expect(what, one, other)
            return
        one, other = (set(side.items()) if isinstance(side, dict) else set(side) for side in (found, expected))
        problems.append(f"{self.name}: {what}: too much: {sorted(one - other)[:12]}, lacking: {sorted(other - one)[:12]}")

    def versions(self):
        """The installed products, as the system's list of programs shows them."""
        return sorted(value.strip('"') for (key, name), value in self.registry().items()
                      if name == '"DisplayName"' and "DAXControls" in value and "\\uninstall\\" in key)

    def use(self, bits):
        """The self-test finds all classes; an application's whole start, by a script that uses the controls by their
        names alone."""
        with open(os.path.join(self.prefix, "dax.users"), "a", encoding="utf-8") as users:
            fcntl.flock(users, fcntl.LOCK_SH)  # tools/wine leaves Wine running from one program to the next
            self.use_all(bits)
        self.system("cmd", "/c", "exit")  # the last one writes the registry

    def use_all(self, bits):
        here, course = self.folder(bits), os.path.join(self.prefix, "use")
        self.system("cmd", "/c", os.path.join(here, "selftest.cmd"), "--only", "registration", "--report",
                    os.path.join(self.prefix, "report.html"), says="The self-test has passed: 9 passed, 0 failed, 0 skipped.")
        shutil.rmtree(course, ignore_errors=True)
        os.makedirs(course)
        dax, script = os.path.join(here, "dax.exe"), os.path.join(here, "daxscript.exe")
        connector = os.path.join(course, "connector.db")
        self.wine("making a connector", dax, "sample", connector, "--connector")
        self.wine("making a course", dax, "sample", os.path.join(course, f"{CATALOG}.db"))
        self.wine("the typical start", script, os.path.join(here, "samples", "typical-start.vbs"), connector, USER, CATALOG,
                  LESSON, says=f"10. recorded for {USER}")


def later_package(bits, unpacked, place):
    """The next version: one sample less, one file more."""
    files = msi.files_of(unpacked)
    del files["samples/locks.vbs"]
    files["docs/news.md"] = b"# News\r\n"
    path = os.path.join(place, f"daxcontrols-{LATER}-{msi.PLATFORM[bits]}.msi")
    msi.build(path, bits, LATER, files)
    return path


def files_below(folder):
    return {os.path.relpath(os.path.join(place, name), folder) for place, _, names in os.walk(folder) for name in names}


def registered(machine, unpacked):
    """What regsvr32 enters for libraries where the installer puts them."""
    shutil.copytree(unpacked, machine.folder(machine.bits))
    for library in msi.LIBRARIES:
        machine.system("regsvr32", "/s", os.path.join(machine.folder(machine.bits), library))
    return machine.added()


def one_architecture(machine, unpacked, package, later, entered):
    bits, folder = machine.bits, machine.folder(machine.bits)
    wanted = set(msi.files_of(unpacked))
    machine.system("msiexec", "/i", package, "/qn")
    machine.expect("the registry after the installer, beside that after regsvr32", machine.added(), entered)
    machine.expect("the files installed", files_below(folder), wanted)
    links = [name for name in machine.files() if name.endswith(f"DAXControls Workbench ({bits}-bit).lnk")]
    if len(links) != 1 or "Start Menu" not in links[0]:
        problems.append(f"{machine.name}: start-menu entries: {links}")
        return
    machine.use(bits)
    installed = machine.added(), machine.files()

    for name in ("dax.exe", "samples/validate.vbs", "docs/reference.md"):
        os.remove(os.path.join(folder, name))
    os.remove(os.path.join(machine.drive, links[0]))
    machine.system("reg", "delete", rf"HKLM\Software\Classes\CLSID\{EDITOR}", "/f")
    # What "msiexec /fa" does; Wine does not support that.
    machine.system("msiexec", "/i", package, "REINSTALL=ALL", "REINSTALLMODE=amus", "/qn")
    machine.expect("after a repair", (machine.added(), machine.files()), installed)

    machine.system("msiexec", "/i", later, "/qn")
    machine.expect("installed after an upgrade", machine.versions(), [f"DAXControls {LATER} ({bits}-bit)"])
    machine.expect("the registry after an upgrade", machine.added(), entered)
    machine.expect("the files after an upgrade", files_below(folder),
                   wanted - {"samples/locks.vbs"} | {"docs/news.md"})
    machine.use(bits)
    machine.system("msiexec", "/i", package, "/qn", expected=None)  # is refused, with a code of the system's
    machine.expect("installed after an earlier version was tried", machine.versions(),
                   [f"DAXControls {LATER} ({bits}-bit)"])
    machine.system("msiexec", "/x", later, "/qn")
    machine.expect("after uninstalling", machine.state(), machine.new)


def both(machine, unpacked, packages):
    """On 64-bit Windows; each is removed as if the other had not been installed."""
    help_folder = {(key, name) for key, name in machine.registry() if key.endswith("helpdir")}

    def step(what, *words):
        machine.system("msiexec", *words, "/qn")
        registry, files = machine.state()
        # Of this, which nothing reads, Windows has one for both: that of the last one, removed with either.
        return {place: value for place, value in registry.items()
                if not place[0].endswith("\\helpdir") or place in help_folder}, files

    alone = {}
    for first, second in ((32, 64), (64, 32)):
        alone[first] = step("the first", "/i", packages[first])
        step("the second", "/i", packages[second])
        machine.expect("both installed", machine.versions(),
                       [f"DAXControls {msi.version_of_project()} ({bits}-bit)" for bits in (32, 64)])
        for bits in packages:
            machine.expect(f"the files of both, {bits} bit", files_below(machine.folder(bits)),
                           set(msi.files_of(unpacked[bits])))
        machine.use(64)
        machine.expect(f"{first} bit, after {second} bit came and went", step("", "/x", packages[second]), alone[first])
        machine.expect(f"after {first} bit has gone, too", step("", "/x", packages[first]), machine.new)


def main():
    """What is installed is compared with the archives, unpacked once more: other checks work in their own folders."""
    bits, version = int(sys.argv[1]), msi.version_of_project()
    msi.skip_without_wine(bits)
    packages = {each: os.path.join(ROOT, "dist", f"daxcontrols-{version}-{msi.PLATFORM[each]}.msi") for each in (64, 32)}
    place = os.path.join(WORK, f"installer{bits}")
    shutil.rmtree(place, ignore_errors=True)
    folders = {}
    for each in (64, 32):
        name = f"daxcontrols-{version}-win{each}"
        shutil.unpack_archive(os.path.join(ROOT, "dist", f"{name}.zip"), os.path.join(place, f"win{each}"))
        folders[each] = os.path.join(place, f"win{each}", name)
    for folder in glob.glob(os.path.join(WORK, f"win{bits}", "machine-*")):
        shutil.rmtree(folder)
    new = Machine(bits, "new", folders[bits])
    entered = registered(Machine(bits, "regsvr32", folders[bits], new), folders[bits])
    one_architecture(Machine(bits, "installer", folders[bits], new), folders[bits], packages[bits],
                     later_package(bits, folders[bits], os.path.join(WORK, f"win{bits}")), entered)
    if bits == 64:
        both(Machine(64, "both", folders[64], new), folders, packages)
    finish(problems, f"installed, used, repaired, upgraded and uninstalled, {bits} bit")


main()
