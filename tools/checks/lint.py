"""clang-tidy finds nothing in src and apps. A file that passed is not looked at again until it, a header of ours that
it includes, its flags or the rules change (build/lint keeps the marks)."""
import concurrent.futures
import hashlib
import json
import os
import re
import shlex
import subprocess

from project import ROOT, finish, includes, read

WORK = os.path.join(ROOT, "build", "lint")
MARKS = os.path.join(WORK, "passed")
FOREIGN_FLAGS = re.compile(r"-W.*|-fexceptions|-g\d?|-O\w|-DNDEBUG|-mthreads")


def configure(variant):
    """The build files of a variant, fresh, with the headers that the build generates."""
    subprocess.run([os.path.join(ROOT, "tools/build"), variant, "build.ninja"], check=True, capture_output=True)
    folder = os.path.join(ROOT, "build", variant)
    listed = subprocess.run(["ninja", "-C", folder, "-t", "targets", "all"], capture_output=True, text=True, check=True)
    headers = re.findall(r"^(\S.*\.h): ", listed.stdout, re.M)
    if headers:
        subprocess.run(["ninja", "-C", folder, *headers], check=True, capture_output=True)
    with open(os.path.join(folder, "compile_commands.json"), encoding="utf-8") as file:
        return json.load(file)


def windows_flags():
    """Clang stands in for the cross compiler: its target, and the headers it would have used."""
    said = subprocess.run(["x86_64-w64-mingw32-g++-posix", "-std=c++20", "-xc++", "-E", "-v", "/dev/null"],
                          capture_output=True, text=True, check=True).stderr
    folders = said.split("search starts here:")[-1].split("End of search list")[0].split("\n")
    folders = [os.path.realpath(folder.strip()) for folder in folders if folder.strip()]
    # The intrinsics of GCC mean nothing to Clang, which has its own.
    own = [folder for folder in folders if not re.search(r"/gcc/.*/include(-fixed)?$", folder)]
    flags = ["--target=x86_64-w64-mingw32", "-nostdinc++"]
    for folder in own:
        flags += ["-isystem", folder]
    return flags


def entry_of(command, extra):
    """(file from the root, the entry as clang-tidy wants it)."""
    path = os.path.normpath(os.path.join(command["directory"], command["file"]))
    words = shlex.split(command["command"])
    # Without the precompiled header each file shows that it includes what it uses.
    kept = [word for word, before in zip(words[1:], words)
            if "-include" not in (word, before) and not FOREIGN_FLAGS.fullmatch(word)]
    words = ["clang++", *extra, "-Wno-everything", *kept]
    name = os.path.relpath(path, ROOT).replace(os.sep, "/")
    return name, {"directory": command["directory"], "file": path, "arguments": words}


def needed_headers(name, entry, seen):
    """Adds the project's files that a file includes, however deep."""
    folders = [word[2:] for word in entry["arguments"] if word.startswith("-I")]
    for quoted, what in includes(name):
        if not quoted:
            continue
        for folder in [os.path.join(ROOT, os.path.dirname(name)), *folders]:
            path = os.path.relpath(os.path.normpath(os.path.join(folder, what)), ROOT)
            if os.path.isfile(os.path.join(ROOT, path)):
                if path not in seen:
                    seen.add(path)
                    needed_headers(path, entry, seen)
                break


def mark_of(name, entry, rules):
    seen = {name}
    needed_headers(name, entry, seen)
    told = hashlib.sha256(rules.encode())
    told.update("\0".join(entry["arguments"]).encode())
    for path in sorted(seen):
        told.update(path.encode() + b"\0" + read(path).encode())
    return os.path.join(MARKS, told.hexdigest())


def lint(job):
    name, database, mark = job
    done = subprocess.run(["clang-tidy", "-quiet", "-p", database, os.path.join(ROOT, name)], capture_output=True,
                          text=True, check=False, cwd=ROOT)
    if done.returncode == 0:
        with open(mark, "w", encoding="utf-8"):
            pass
        return []
    found = re.findall(r"^(.*?:\d+:\d+: (?:warning|error): .*)$", done.stdout, re.M)
    return [line.replace(ROOT + "/", "") for line in found] or [f"{name}: {(done.stdout + done.stderr)[-1500:]}"]


def sources_of(name):
    """The project's files that a compiler's job compiles: one, or several that the build joins in a file of its own."""
    if "/Unity/" not in name:
        return {name}
    return {os.path.relpath(what, ROOT) for quoted, what in includes(name) if quoted}


def jobs_of(rules):
    taken = set()
    for variant, extra in (("native", []), ("win64", windows_flags())):
        database = os.path.join(WORK, variant)
        os.makedirs(database, exist_ok=True)
        entries = dict(entry_of(command, extra) for command in configure(variant))
        sources = {name: sources_of(name) for name, entry in entries.items() if os.path.exists(entry["file"])}
        entries = {name: entries[name] for name, files in sources.items()
                   if not files <= taken
                   and all(file.startswith(("src/", "apps/")) and file.endswith(".cpp") for file in files)}
        taken |= {file for name in entries for file in sources[name]}
        with open(os.path.join(database, "compile_commands.json"), "w", encoding="utf-8") as file:
            json.dump(list(entries.values()), file)
        for name, entry in sorted(entries.items()):
            yield name, database, mark_of(name, entry, rules)


os.makedirs(MARKS, exist_ok=True)
version = subprocess.run(["clang-tidy", "--version"], capture_output=True, text=True, check=True).stdout
jobs = list(jobs_of(version + read(".clang-tidy")))
todo = [job for job in jobs if not os.path.exists(job[2])]
with concurrent.futures.ThreadPoolExecutor(os.cpu_count() or 1) as pool:
    problems = sorted({problem for found in pool.map(lint, todo) for problem in found})
finish(problems, f"{len(jobs)} translation units, {len(todo)} of them new or changed")
