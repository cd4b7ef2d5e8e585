"""Packs what tools/package has built. See there."""
import glob
import gzip
import io
import os
import re
import tarfile
import tempfile
import zipfile

import msi

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
BINARIES = ["daxControls33.ocx", "contentObjects.dll", "daxControls33.manifest", "contentObjects.manifest",
            "DAXWorkbench.exe", "dax.exe", "daxscript.exe"]


def read(*path):
    with open(os.path.join(ROOT, *path), "rb") as file:
        return file.read()


def windows_text(data):
    return data.replace(b"\r\n", b"\n").replace(b"\n", b"\r\n")


def manual(with_samples):
    """The pages, which find the samples, where there are any, in their folder of the package; JSON schemas."""
    link = rb"[\1](../samples/\2)" if with_samples else rb"\1"
    return {f"docs/{os.path.relpath(path, f'{ROOT}/docs')}": re.sub(rb"\[([^]]*)\]\(examples/([^)]*)\)", link, read(path))
            for path in glob.glob(f"{ROOT}/docs/*.md") + glob.glob(f"{ROOT}/docs/json/*.json")}


def pictures():
    return {f"docs/images/{os.path.basename(path)}": read(path) for path in glob.glob(f"{ROOT}/docs/images/*.png")}


def samples(*patterns):
    folder = f"{ROOT}/docs/examples"
    return {f"samples/{os.path.relpath(path, folder)}": read(path)
            for pattern in patterns for path in glob.glob(f"{folder}/{pattern}") if os.path.isfile(path)}


def readme(name, **values):
    """A text of the package, with what it tells of this build. SQLite has one version for all variants."""
    header = read("build", "setup", "sqlite", "sqlite3.h")
    values["SQLITE"] = re.search(rb'#define SQLITE_VERSION +"(.*)"', header).group(1).decode()
    text = read("package", name)
    for mark, value in values.items():
        text = text.replace(f"@{mark}@".encode(), str(value).encode())
    return text


REGISTRATION = {
    True: "The installer has registered the controls on the machine; uninstalling removes them from the registry.",
    False: "register.cmd registers the controls on the machine, unregister.cmd removes them from the registry (both as "
           "administrator)."}


def windows_files(bits, version, installed):
    """What both the archive and the installer hold; `installed` registers by itself."""
    generated = os.path.join("build", f"win{bits}", "src", "ocx", "generated")
    files = pictures() | {name: read("build", f"win{bits}", "bin", name) for name in BINARIES}
    texts = manual(True) | samples("README.md", "*.vbs", "*.js", "cpp/*.cpp", "cpp/*.h", "cpp/*.manifest", "pascal/*.pas",
                                  "not-run/*")
    for name in ("DAXControls", "ContentObjects"):
        files[f"{name}.tlb"] = read(generated, f"{name}.tlb")
        # The first line tells where the compiler has found its source.
        texts[f"include/{name}.h"] = read(generated, f"{name}.h").split(b"\n", 1)[1]
    texts["LICENSE.txt"] = read("LICENSE")
    texts["README.txt"] = readme("windows.txt", BITS=bits, VERSION=version, REGISTRATION=REGISTRATION[installed])
    for name in ("selftest.cmd",) if installed else ("selftest.cmd", "register.cmd", "unregister.cmd"):
        texts[name] = read("package", name)
    return files | {name: windows_text(data) for name, data in texts.items()}


def write_zip(path, folder, files):
    with zipfile.ZipFile(path, "w", zipfile.ZIP_DEFLATED) as archive:
        for name, data in sorted(files.items()):
            archive.writestr(zipfile.ZipInfo(f"{folder}/{name}"), data, zipfile.ZIP_DEFLATED)


def write_tar(path, folder, files):
    packed = io.BytesIO()
    with tarfile.open(fileobj=packed, mode="w") as archive:
        for name, data in sorted(files.items()):
            entry = tarfile.TarInfo(f"{folder}/{name}")
            entry.size = len(data)
            entry.mode = 0o755 if name == "dax" or name.endswith(".sh") else 0o644
            archive.addfile(entry, io.BytesIO(data))
    with open(path, "wb") as file, gzip.GzipFile("", "wb", fileobj=file, mtime=0) as out:
        out.write(packed.getvalue())


def version_of_project():
    return re.search(rb"VERSION (\S+) LANGUAGES", read("CMakeLists.txt")).group(1).decode()


def registration():
    with tempfile.TemporaryDirectory() as work:
        return msi.list_registration(os.path.join(ROOT, "build", "win64", "bin"), work)


def main():
    version = version_of_project()
    folder = f"daxcontrols-{version}"
    dist = os.path.join(ROOT, "dist")
    os.makedirs(dist, exist_ok=True)
    entries = registration()
    for bits in (64, 32):
        write_zip(f"{dist}/{folder}-win{bits}.zip", folder, windows_files(bits, version, False))
        msi.build(f"{dist}/{folder}-{msi.PLATFORM[bits]}.msi", bits, version,
                        windows_files(bits, version, True), entries)
    write_tar(f"{dist}/{folder}-linux.tar.gz", folder,
              manual(False) | pictures() | samples("*.sh") | {
                  "dax": read("build", "native", "bin", "dax"), "LICENSE": read("LICENSE"),
                  "README": readme("linux.txt", VERSION=version)})
    for name in sorted(os.listdir(dist)):
        print(f"dist/{name}: {os.path.getsize(os.path.join(dist, name)) // 1024} KB")


if __name__ == "__main__":
    main()
