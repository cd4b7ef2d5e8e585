"""Checks the size and the form of files: no paths of one machine, no unwanted words, plain text."""
import os
import re

from project import BINARY, CODE, files, finish, includes, read

LIMIT = 600  # lines of a file; sources aim at 500, headers at 120
# Lines of tests (seeds and data do not count) to those of src and apps, in percent: at most a third.
SHARE = 33
# Written in pieces, so that this file does not match itself.
WORDS = [
    (re.compile(r"(?<![\w.$}\"])/(?:wo" + r"rk|fa" + r"rm|ho" + r"me|ro" + r"ot)/\w"), "a path of one machine"),
    (re.compile(r"\bspecifi" + r"cation\b|\bsp" + r"ec\b|\bPart \d+\.\d", re.I), "a document the reader does not have"),
    (re.compile(r"\b(?:deb\.deb" + r"ian\.org|pypi\.o" + r"rg|registry\.np" + r"mjs|crates\.i" + r"o|proxy\.gol" + r"ang)"),
     "the host of a package registry"),
    (re.compile(r"\b(?:TO" + r"DO|FIX" + r"ME)\b"), "unfinished work"),
    # Child processes, which another test starts and kills.
    (re.compile(r"^\s*TEST\w*\(\w+,\s*DISABLED" + r"_(?!ChildProcess\b)", re.M), "a test that never runs"),
]


def check_text(name, text):
    for pattern, what in WORDS:
        for hit in pattern.finditer(text):
            yield f"{name}:{text.count(chr(10), 0, hit.start()) + 1}: {what}: {hit.group(0).strip()}"
    if "\r" in text and not name.endswith((".vbs", ".bat")):
        yield f"{name}: has carriage returns"
    if text and not text.endswith("\n"):
        yield f"{name}: does not end with a line end"
    for number, line in enumerate(text.splitlines(), 1):
        if line != line.rstrip() and not name.endswith(".md"):
            yield f"{name}:{number}: blanks at the end of the line"
        if "\t" in line and name.endswith(CODE):
            yield f"{name}:{number}: a tab"


def check_code(name, text):
    lines = text.count("\n")
    if lines >= LIMIT:
        yield f"{name}: {lines} lines; the limit is {LIMIT}"
    if name.endswith(".h") and "#pragma once" not in text and not re.search(r"#ifndef (\w+)\s+#define \1\b", text):
        yield f"{name}: nothing keeps it from being included twice"
    # A header that its own source includes first is known to need nothing before it.
    header = name[:-4] + ".h"
    if name.endswith(".cpp") and header in headers:
        first = next((what for quoted, what in includes(name)), "")
        if os.path.basename(first) != os.path.basename(header):
            yield f"{name}: includes {first} before its own header"


problems = []
headers = set(files(".h"))
lines = {"src": 0, "apps": 0, "tests": 0}
names = files()
for name in names:
    if name.endswith(BINARY):
        continue
    try:
        text = read(name)
    except UnicodeDecodeError:
        problems.append(f"{name}: is not UTF-8")
        continue
    problems += check_text(name, text)
    if name.endswith(CODE):
        problems += check_code(name, text)
        folder = name.split("/")[0]
        lines[folder] = lines.get(folder, 0) + text.count("\n")
product = lines["src"] + lines["apps"]
share = 100 * lines["tests"] / product
if share > SHARE:
    problems.append(f"tests have {lines['tests']} lines, {share:.1f} % of the {product} of src and apps; the limit is {SHARE} %")
finish(problems, f"{len(names)} files; {product} lines of code, {lines['tests']} of tests ({share:.1f} %, limit {SHARE} %)")
