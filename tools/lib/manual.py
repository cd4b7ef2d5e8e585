"""docs/reference.md, made from the snapshots of the type libraries, which the tests compare with the libraries.
    python3 tools/lib/manual.py           writes the manual
    python3 tools/lib/manual.py --check   tells whether it is up to date"""
import os
import re
import sys

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
MANUAL = os.path.join(ROOT, "docs", "reference.md")
TYPES = {"vt2": "Integer", "vt3": "Long", "vt4": "Single", "vt5": "Double", "vt7": "Date", "vt8": "String",
         "vt9": "Object", "vt9*": "Object", "vt11": "Boolean", "vt12": "Variant", "vt13": "Unknown", "vt24": "",
         "vt19": "OLE_COLOR", "vt22": "Long", "vt23": "Long"}
KINDS = {1: "method", 2: "get", 4: "let", 8: "set"}
ENUMERATION, COCLASS = 0, 5
PICTURES = {"DatabaseValidator": "design-mode", "SQLDBPicker": "connector-loaded", "GroupEditor": "hierarchy-lesson",
            "LockManager": "locks-selected", "LessonMapEditor": "lessonmap-checked"}
HIDDEN = "_NewEnum"  # what For Each uses
MEMBER = re.compile(r'  member (-?\d+) kind (\d+) (\S+) (\w+)\((.*)\) "(.*)"$')


class Type:
    def __init__(self, kind, name, text):
        self.kind, self.name, self.text = kind, name, text
        self.values, self.members, self.interfaces = [], [], []


def read_library(path):
    types = []
    with open(path, encoding="utf-8") as snapshot:
        for line in snapshot:
            line = line.rstrip("\n")
            if begin := re.match(r'type (\d+) (\w+) \S+ flags \d+ "(.*)"', line):
                types.append(Type(int(begin[1]), begin[2], begin[3]))
            elif value := re.match(r"  value (\w+) = (-?\d+)", line):
                types[-1].values.append((value[1], value[2]))
            elif interface := re.match(r"  implements (\w+) flags (\d+)", line):
                types[-1].interfaces.append((interface[1], int(interface[2])))
            elif member := MEMBER.match(line):
                types[-1].members.append((int(member[2]), member[3], member[4], member[5], member[6]))
            elif not line.startswith("library "):
                sys.exit(f"{os.path.relpath(path, ROOT)}: a line that the manual does not understand: {line}")
    return types


def type_text(name):
    if name in TYPES:
        return TYPES[name]
    if name.endswith("*"):
        return type_text(name[:-1])
    if re.fullmatch(r"vt\d+", name):
        sys.exit(f"the manual has no word for the type {name}")
    return name.lstrip("_")


def arguments_text(text):
    shown = []
    for argument in filter(None, text.split(", ")):
        words = argument.split()
        if len(words) < 4:
            continue  # the value of a property, which has no name
        kind, name, flags = words[0], words[1], int(words[3])
        by_reference = "ByRef " if flags & 2 or kind.endswith("*") and not kind.startswith("_") else ""
        word = f"{by_reference}{name} As {type_text(kind)}"
        shown.append(f"[{word}]" if flags & 16 else word)
    return ", ".join(shown)


def write_members(out, members):
    rows = {}
    for kind, result, name, arguments, text in members:
        if name == HIDDEN:
            continue
        row = rows.setdefault(name, {"kinds": [], "result": type_text(result), "arguments": "", "text": text})
        row["kinds"].append(KINDS[kind])
        if kind in (1, 2):
            row["arguments"], row["result"] = arguments_text(arguments), type_text(result)
    for title, wanted in (("property", False), ("method", True)):
        chosen = {name: row for name, row in rows.items() if (row["kinds"] == ["method"]) == wanted}
        if not chosen:
            continue
        out.append(f"| {title} | | |\n|---|---|---|")
        for name, row in chosen.items():
            brackets = f"({row['arguments']})" if row["arguments"] or wanted else ""
            result = f" As {row['result']}" if row["result"] else ""
            access = "" if wanted else "read-only" if row["kinds"] == ["get"] else "read/write"
            out.append(f"| `{name}{brackets}{result}` | {access} | {row['text']} |")
        out.append("")


def write_class(out, library, coclass, types):
    out.append(f"### {coclass.name}\n\n`{library}.{coclass.name}`: {coclass.text}.\n")
    if coclass.name in PICTURES:
        out.append(f"![{coclass.name} in the desktop host](images/{PICTURES[coclass.name]}.png)\n")
    for name, flags in coclass.interfaces:
        members = types[name].members
        if flags & 2 and members:
            out.append("| event | |\n|---|---|")
            for _, _, event, arguments, text in members:
                out.append(f"| `{event}({arguments_text(arguments)})` | {text} |")
            out.append("")
        elif not flags & 2:
            write_members(out, members)


def manual():
    out = ["# Reference", "",
           "Every class, member, event and enumeration of the two type libraries, in their order. Made by",
           "`python3 tools/lib/manual.py` from what the tests compare the libraries with; do not edit it by hand.",
           "[errors.md](errors.md) lists the error numbers, [connections.md](connections.md) the connection strings.", ""]
    for library in ("DAXControls", "ContentObjects"):
        types = {entry.name: entry
                 for entry in read_library(os.path.join(ROOT, "tests", "ocx", f"{library}.snapshot.txt"))}
        out.append(f"## {library}\n")
        for entry in types.values():
            if entry.kind == COCLASS:
                write_class(out, library, entry, types)
        enumerations = [entry for entry in types.values() if entry.kind == ENUMERATION]
        if enumerations:
            out.append("### Enumerations\n\n| enumeration | | values |\n|---|---|---|")
            for entry in enumerations:
                values = ", ".join(f"`{name}` {value}" for name, value in entry.values)
                out.append(f"| `{entry.name}` | {entry.text} | {values} |")
            out.append("")
    return "\n".join(out).rstrip("\n") + "\n"


def main():
    text = manual()
    if "--check" in sys.argv:
        try:
            with open(MANUAL, encoding="utf-8") as file:
                current = file.read()
        except OSError:
            current = ""
        if current != text:
            sys.exit("docs/reference.md is not what the type libraries say: run python3 tools/lib/manual.py")
        print(f"docs/reference.md: {text.count(chr(10))} lines, up to date")
        return
    with open(MANUAL, "w", encoding="utf-8") as file:
        file.write(text)


main()
