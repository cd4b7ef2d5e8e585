"""Makes Windows Installer packages with wixl, for CPack (package/Installer.cmake), of a folder of files, into another, for
64 or 32 bits. The same files give the same bytes.

An installer replaces any other of its architecture; those of both architectures may be installed together. What the
registry has only once for both, such as the names of the classes on 64-bit Windows, belongs to components that both
hold under one identifier, so that it stays until the last is removed."""
import hashlib
import os
import re
import shutil
import struct
import subprocess
import sys
import tempfile
import uuid
from xml.sax.saxutils import quoteattr

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
# Frozen: these identify an earlier version, and what the two architectures share.
UPGRADE = {64: uuid.UUID("f63dcd22-75de-488d-bf26-b3301920b8dc"), 32: uuid.UUID("20a0aa5e-48f5-46ee-94a3-318cca5ff53c")}
SHARED = uuid.UUID("442d6208-81a6-45ab-a3d0-11e10137bdbe")
PLATFORM = {64: "x64", 32: "x86"}
LIBRARIES = ("contentObjects.dll", "daxControls33.ocx")
# Wine does not share the names of classes between 32-bit and 64-bit programs, as Windows does: there, 64-bit programs
# need them a second time.
IN_WINE = "%WINECONFIGDIR"


def braced(code):
    return "{" + str(code).upper() + "}"


def guid(namespace, name):
    return braced(uuid.uuid5(namespace, name))


def version_of_project():
    with open(os.path.join(ROOT, "CMakeLists.txt"), encoding="utf-8") as file:
        return re.search(r"VERSION (\S+) LANGUAGES", file.read()).group(1)


def registration():
    """What the 64-bit libraries register, as they list it themselves: (key, name, value). Kept until they change."""
    entries, place = [], os.path.join(ROOT, "build", "win64", "registration")
    os.makedirs(place, exist_ok=True)
    for name in LIBRARIES:
        library, file = os.path.join(ROOT, "build", "win64", "bin", name), os.path.join(place, f"{name}.txt")
        if not os.path.exists(file) or os.path.getmtime(file) < os.path.getmtime(library):
            environment = dict(os.environ, DAX_WINE_DISPLAY="none", DAX_WINE_BIN=place, DAX_WINE_TIMEOUT="300",
                               DAX_WINE_PREFIX=os.path.join(ROOT, "build", "wine-list"))
            subprocess.run([os.path.join(ROOT, "tools", "wine"), "regsvr32", "/s", "/n",
                            "/i:list=Z:" + file.replace("/", "\\"), library], env=environment, stdin=subprocess.DEVNULL,
                           stdout=subprocess.DEVNULL, check=True)
        with open(file, encoding="utf-8") as lines:
            entries += [tuple(line.rstrip("\n").split("\t")) for line in lines]
    return entries


def skip_without_wine(bits):
    """Ends a check that cannot run here, as tools/setup has detected."""
    if bits == 32:
        subprocess.run([os.path.join(ROOT, "tools", "setup"), "wine32"], stdin=subprocess.DEVNULL, check=True)
        with open(os.path.join(ROOT, "build", "setup", "wine32"), encoding="utf-8") as answer:
            said = answer.read().strip()
        if said != "available":
            print(said)
            sys.exit(77)


def files_of(folder):
    """What an installer installs of the files of a package: {name: content}. It registers by itself."""
    found = {}
    for place, _, names in os.walk(folder):
        for name in names:
            if name not in ("register.cmd", "unregister.cmd"):
                path = os.path.join(place, name)
                with open(path, "rb") as file:
                    found[os.path.relpath(path, folder)] = file.read()
    return found


class Tree:
    """Components of the installer, in the folders they are installed in."""

    def __init__(self, bits):
        self.bits = bits
        self.components = []  # identifiers
        self.inner = {}  # folder of the installation: the text inside it
        self.conditions = {}  # component: when it is installed

    def add(self, folder, identifier, code, wide, content, condition=""):
        self.components.append(identifier)
        if condition:
            self.conditions[identifier] = condition
        self.inner.setdefault(folder, []).append(
            f'<Component Id="{identifier}" Guid="{code}" Win64="{"yes" if wide else "no"}">{content}</Component>\n')

    def own(self, name):
        return guid(UPGRADE[self.bits], name)

    def text(self, folder=""):
        """The directory elements below the folder, and what is inside it."""
        below = {name.split("/")[folder.count("/") + 1 if folder else 0] for name in self.inner
                 if name and name != folder and name.startswith(folder + "/" if folder else "")}
        parts = list(self.inner.get(folder, []))
        for name in sorted(below):
            path = f"{folder}/{name}" if folder else name
            parts.append(f'<Directory Id="{identifier_of("D", path)}" Name={quoteattr(name)}>\n{self.text(path)}'
                         "</Directory>\n")
        return "".join(parts)


def identifier_of(kind, name):
    return kind + hashlib.sha256(name.encode()).hexdigest()[:20]


def registry_values(component, entries):
    parts = []
    for number, (key, name, value) in enumerate(entries):
        named = f" Name={quoteattr(name)}" if name else ""
        first = ' KeyPath="yes"' if number == 0 else ""
        value = value.replace("@FOLDER@\\", "[INSTALLDIR]")
        identifier = identifier_of("R", f"{component} {key} {name}")
        parts.append(f'<RegistryValue Id="{identifier}" Root="HKLM" Key={quoteattr("Software" + chr(92) + "Classes" + chr(92) + key)}'
                     f'{named} Type="string" Value={quoteattr(value)}{first}/>\n')
    return "".join(parts)


def add_registration(tree, entries):
    wide = tree.bits == 64
    platform = f"\\0\\win{tree.bits}"
    own, names, types, interfaces = [], [], [], []
    for key, name, value in entries:
        if key.startswith("CLSID\\") or key.endswith("\\HELPDIR"):
            own.append((key, name, value))
        elif key.endswith("\\0\\win64"):
            own.append((key.replace("\\0\\win64", platform), name, value))
        elif key.startswith("TypeLib\\"):
            types.append((key, name, value))
        elif key.startswith("Interface\\"):
            interfaces.append((key, name, value))
        else:
            names.append((key, name, value))

    def add(component, code, is_wide, values, condition=""):
        tree.add("", component, code, is_wide, registry_values(component, values), condition)

    add("OwnClasses", tree.own("classes"), wide, own)
    add("SharedTypes", guid(SHARED, "types"), False, types + interfaces)
    add("SharedNames", guid(SHARED, "names"), False, names)
    if wide:
        # The system's own registration enters interfaces for 32-bit and 64-bit programs alike.
        add("OwnInterfaces", tree.own("interfaces"), True, interfaces)
        add("OwnNames", tree.own("names"), True, names, IN_WINE)


def source(bits, version, files, entries):
    """The description that wixl reads, which finds the files in the folder it runs in."""
    tree = Tree(bits)
    for name in sorted(files):
        identifier = identifier_of("F", name)
        tree.add(os.path.dirname(name), identifier_of("C", name), tree.own(name), bits == 64,
                 f'<File Id="{identifier}" Name={quoteattr(os.path.basename(name))} Source={quoteattr(name)} '
                 'KeyPath="yes"/>')
    add_registration(tree, entries)
    workbench = identifier_of("F", "DAXWorkbench.exe")
    menu = (f'<Component Id="Menu" Guid="{tree.own("menu")}" Win64="{"yes" if bits == 64 else "no"}">'
            f'<Shortcut Id="Workbench" Name="DAXControls Workbench ({bits}-bit)" Target="[#{workbench}]" '
            'WorkingDirectory="INSTALLDIR" Description="Shows the controls at work on a course"/>'
            '<RemoveFolder Id="MenuFolder" On="uninstall"/>'
            f'<RegistryValue Root="HKLM" Key="Software\\DAXControls\\Installed" Name="x{bits}" Type="string" '
            f'Value="{version}" KeyPath="yes"/></Component>')
    digest = hashlib.sha256(repr((version, entries, sorted(files.items()))).encode()).hexdigest()
    # Another package of this very version is replaced, too; wixl supports no inclusive maximum.
    numbers = (version + ".0.0").split(".")[:3]
    after = ".".join(numbers[:2] + [str(int(numbers[2]) + 1)])
    program_files = "ProgramFiles64Folder" if bits == 64 else "ProgramFilesFolder"
    components = "".join(f'<ComponentRef Id="{name}"/>' for name in tree.components + ["Menu"])
    return digest, tree.conditions, f"""<?xml version="1.0" encoding="utf-8"?>
<Wix xmlns="http://schemas.microsoft.com/wix/2006/wi">
<Product Id="{guid(UPGRADE[bits], digest)}" Name="DAXControls {version} ({bits}-bit)" Language="1033" Version="{version}"
 Manufacturer="DAXControls" UpgradeCode="{braced(UPGRADE[bits])}">
<Package InstallerVersion="200" Compressed="yes" InstallScope="perMachine" Description="DAXControls {version}"/>
<Upgrade Id="{braced(UPGRADE[bits])}">
<UpgradeVersion Minimum="0.0.0" IncludeMinimum="yes" Maximum="{after}" Property="OTHERFOUND"/>
<UpgradeVersion Minimum="{version}" IncludeMinimum="no" OnlyDetect="yes" Property="NEWERFOUND"/>
</Upgrade>
<Condition Message="A later version of DAXControls ({bits}-bit) is installed. Remove it first.">Installed OR NOT NEWERFOUND</Condition>
<Media Id="1" Cabinet="files.cab" EmbedCab="yes"/>
<Icon Id="Workbench.ico" SourceFile="Workbench.ico"/>
<Property Id="ARPPRODUCTICON" Value="Workbench.ico"/>
<Directory Id="TARGETDIR" Name="SourceDir">
<Directory Id="{program_files}"><Directory Id="INSTALLDIR" Name="DAXControls">
{tree.text()}</Directory></Directory>
<Directory Id="ProgramMenuFolder"><Directory Id="MenuFolder" Name="DAXControls">{menu}</Directory></Directory>
</Directory>
<InstallExecuteSequence><RemoveExistingProducts After="InstallValidate"/></InstallExecuteSequence>
<Feature Id="All" Level="1" Title="DAXControls">{components}</Feature>
</Product>
</Wix>
"""


def settle(path, digest):
    """wixl writes a random package code and the time into the summary; the same sources must give the same file."""
    with open(path, "rb") as file:
        data = bytearray(file.read())
    sets = [found.start() - 28 for found in
            re.finditer(re.escape(uuid.UUID("f29f85e0-4ff9-1068-ab91-08002b27b3d9").bytes_le), data)
            if data[found.start() - 28:found.start() - 26] == b"\xfe\xff"]
    if len(sets) != 1:
        raise SystemExit(f"installer: {os.path.basename(path)} has {len(sets)} summaries")
    section = sets[0] + struct.unpack_from("<I", data, sets[0] + 44)[0]
    code = guid(uuid.NAMESPACE_OID, digest).encode()
    settled = 0
    for number in range(struct.unpack_from("<I", data, section + 4)[0]):
        kind, offset = struct.unpack_from("<II", data, section + 8 + 8 * number)
        at = section + offset
        if kind == 9 and struct.unpack_from("<II", data, at) == (30, len(code) + 1):  # the package code, a text
            data[at + 8:at + 8 + len(code)] = code
            settled += 1
        elif kind in (11, 12, 13) and struct.unpack_from("<I", data, at)[0] == 64:  # times: printed, created, saved
            struct.pack_into("<Q", data, at + 4, 119600064000000000)  # 1 January 1980
    if settled != 1:
        raise SystemExit(f"installer: the package code of {path} was not found")
    with open(path, "wb") as file:
        file.write(data)


def build(path, bits, version, files):
    """`files` are the contents by their names in the folder of the installation."""
    with tempfile.TemporaryDirectory() as place:
        with open(os.path.join(ROOT, "apps", "workbench", "DAXWorkbench.ico"), "rb") as icon:
            sources = files | {"Workbench.ico": icon.read()}
        for name, data in sources.items():
            os.makedirs(os.path.dirname(os.path.join(place, name)), exist_ok=True)
            with open(os.path.join(place, name), "wb") as file:
                file.write(data)
            os.utime(os.path.join(place, name), (315532800, 315532800))
        digest, conditions, text = source(bits, version, files, registration())
        description = os.path.join(place, "description.wxs")
        with open(description, "w", encoding="utf-8") as file:
            file.write(text)
        made = os.path.join(place, "made.msi")
        commands = [["wixl", "-a", PLATFORM[bits], "-o", made, description]]
        # wixl does not support conditions of components.
        commands += [["msibuild", made, "-q", f"UPDATE Component SET Condition = '{condition}' WHERE Component = '{name}'"]
                     for name, condition in conditions.items()]
        for command in commands:
            said = subprocess.run(command, cwd=place, stdin=subprocess.DEVNULL, capture_output=True, text=True, check=False)
            if said.returncode != 0 or said.stderr.strip():
                raise SystemExit(f"installer: {command[0]} could not make {path}: {said.stderr.strip()}")
        settle(made, digest)
        shutil.move(made, path)


if __name__ == "__main__":
    folder, target, bits = sys.argv[1], sys.argv[2], int(sys.argv[3])
    build(os.path.join(target, f"daxcontrols-{version_of_project()}-{PLATFORM[bits]}.msi"), bits, version_of_project(),
          files_of(folder))
