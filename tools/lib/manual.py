"""Generates docs/reference.md from the snapshots of the type libraries, which the tests compare with the libraries.
    python3 tools/lib/manual.py           writes the page
    python3 tools/lib/manual.py --check   checks whether it is up to date"""
import re
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
MANUAL = ROOT / "docs/reference.md"
TYPES = {"vt2": "Integer", "vt3": "Long", "vt4": "Single", "vt5": "Double", "vt7": "Date", "vt8": "String",
         "vt9": "Object", "vt9*": "Object", "vt11": "Boolean", "vt12": "Variant", "vt13": "Unknown", "vt24": "",
         "vt19": "OLE_COLOR", "vt22": "Long", "vt23": "Long"}
KINDS = {1: "method", 2: "get", 4: "let", 8: "set"}
REMARKS = {"trap": "Traps, which stay as they are documented", "ours": "Decided here, where the documentation is silent"}
ENUMERATION, COCLASS = 0, 5
ENUMERATOR = "_NewEnum"  # what For Each uses
MEMBER = re.compile(r'  member (-?\d+) slot \d+ flags \d+ kind (\d+) (\S+) (\w+)\((.*)\) "(.*)"$')
ARGUMENT = re.compile(r"(\S+) (\w+) flags (\d+)(?: default (.*))?$")


def lines(path):
    return path.read_text(encoding="utf-8").splitlines()


class Type:
    def __init__(self, kind, name, text):
        self.kind, self.name, self.text = kind, name, text
        self.values, self.members, self.interfaces = [], [], []


def read_library(path):
    types = []
    for line in lines(path):
        if begin := re.match(r'type (\d+) (\w+) \S+ flags \d+ "(.*)"', line):
            types.append(Type(int(begin[1]), begin[2], begin[3]))
        elif value := re.match(r"  value (\w+) = (-?\d+)", line):
            types[-1].values.append((value[1], value[2]))
        elif interface := re.match(r"  implements (\w+) flags (\d+)", line):
            types[-1].interfaces.append((interface[1], int(interface[2])))
        elif member := MEMBER.match(line):
            types[-1].members.append((int(member[2]), member[3], member[4], member[5], member[6], int(member[1])))
        elif not line.startswith("library "):
            sys.exit(f"{path.relative_to(ROOT)}: a line that the manual does not understand: {line}")
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
    for written in filter(None, text.split(", ")):
        argument = ARGUMENT.match(written)
        if not argument:
            continue  # the value of a property, which has no name
        kind, name, flags, default = argument[1], argument[2], int(argument[3]), argument[4]
        by_reference = "ByRef " if flags & 2 or kind.endswith("*") and not kind.startswith("_") else ""
        word = f"{by_reference}{name} As {type_text(kind)}" + (f" = {default}" if default else "")
        shown.append(f"[{word}]" if flags & 16 else word)
    return ", ".join(shown)


def write_members(out, members):
    rows = {}
    for kind, result, name, arguments, text, dispid in members:
        if name == ENUMERATOR:
            out.append("For Each enumerates it.\n")
            continue
        row = rows.setdefault(name, {"kinds": [], "result": type_text(result), "arguments": "", "text": text,
                                     "isDefault": dispid == 0})
        row["kinds"].append(KINDS[kind])
        if kind in (1, 2):
            row["arguments"], row["result"] = arguments_text(arguments), type_text(result)
    for title, wanted in (("property", False), ("method", True)):
        chosen = {name: row for name, row in rows.items() if (row["kinds"] == ["method"]) == wanted}
        if not chosen:
            continue
        out.append(f"| {title} | |\n|---|---|" if wanted else f"| {title} | | |\n|---|---|---|")
        for name, row in chosen.items():
            brackets = f"({row['arguments']})" if row["arguments"] or wanted else ""
            result = f" As {row['result']}" if row["result"] else ""
            access = "read-only" if row["kinds"] == ["get"] else "read/write"
            access = "" if wanted else f" {access}{', default' if row['isDefault'] else ''} |"
            out.append(f"| `{name}{brackets}{result}` |{access} {row['text']} |")
        out.append("")


def read_remarks():
    remarks = {}
    for line in lines(ROOT / "tools/lib/remarks.txt"):
        if line.startswith("#"):
            continue
        name, kind, text = line.split(" ", 2)
        if kind not in REMARKS:
            sys.exit(f"tools/lib/remarks.txt: {kind} is no kind of remark: {line}")
        remarks.setdefault(name, []).append((kind, text))
    return remarks


def write_remarks(out, remarks):
    for kind, title in REMARKS.items():
        if chosen := [text for each, text in remarks if each == kind]:
            out.append(f"{title}:\n")
            out.extend(f"- {text}" for text in chosen)
            out.append("")


def write_class(out, library, coclass, types, remarks):
    out.append(f"### {coclass.name}\n\n`{library}.{coclass.name}`: {coclass.text}.\n")
    if (ROOT / f"docs/images/{coclass.name}.png").exists():
        out.append(f"![{coclass.name}](images/{coclass.name}.png)\n")
    elif any(flags & 2 for _, flags in coclass.interfaces):
        sys.exit(f"docs/images/{coclass.name}.png: there is no picture of this control")
    for name, flags in coclass.interfaces:
        members = types[name].members
        if flags & 2 and members:
            out.append("| event | |\n|---|---|")
            for _, _, event, arguments, text, _ in members:
                out.append(f"| `{event}({arguments_text(arguments)})` | {text} |")
            out.append("")
        elif not flags & 2:
            write_members(out, members)
    write_remarks(out, remarks)


def read_meanings():
    return dict(line.split(" ", 1) for line in lines(ROOT / "tools/lib/enumerations.txt") if not line.startswith("#"))


def write_enumerations(out, enumerations, meanings):
    out.append("### Enumerations\n")
    for entry in enumerations:
        out.append(f"`{entry.name}`: {entry.text}.\n\n| value | | |\n|---|---|---|")
        for name, value in entry.values:
            if name not in meanings:
                sys.exit(f"tools/lib/enumerations.txt: the value {name} lacks its meaning")
            out.append(f"| `{name}` | {value} | {meanings.pop(name)} |")
        out.append("")


def manual():
    out = ["# Reference", "",
           "Every class, member, event and enumeration of the two type libraries, in their order. Made by",
           "`python3 tools/lib/manual.py` from what the tests compare the libraries with; do not edit it by hand.",
           "Each class is followed by its traps, and by what was decided here where the documentation is silent. Which calls",
           "raise errors or events is described for the [hierarchy](hierarchy.md), the [lesson map](lesson-map.md), the",
           "[lock list](locks.md), and the [validator and the picker](validator-and-picker.md).",
           "[pictures.md](pictures.md) shows every control in light and high-contrast colours.",
           "Arguments in brackets may be left out. [errors.md](errors.md) lists the error numbers,",
           "[connections.md](connections.md) the connection strings.", "",
           "    tools/wine ocx_tests.exe --gtest_filter='TypeLibraryTest.*'     compares the libraries with the snapshots",
           "    python3 tools/checks/reference.py                               compares this page with them", ""]
    meanings, remarks = read_meanings(), read_remarks()
    for library in ("DAXControls", "ContentObjects"):
        types = {entry.name: entry for entry in read_library(ROOT / f"tests/ocx/{library}.snapshot.txt")}
        out.append(f"## {library}\n")
        for entry in types.values():
            if entry.kind == COCLASS:
                write_class(out, library, entry, types, remarks.pop(entry.name, []))
        if enumerations := [entry for entry in types.values() if entry.kind == ENUMERATION]:
            write_enumerations(out, enumerations, meanings)
    if remarks:
        sys.exit(f"tools/lib/remarks.txt: no such class: {', '.join(remarks)}")
    if meanings:
        sys.exit(f"tools/lib/enumerations.txt: no such value: {', '.join(meanings)}")
    return "\n".join(out).rstrip("\n") + "\n"


def main():
    text = manual()
    if "--check" not in sys.argv:
        MANUAL.write_text(text, encoding="utf-8")
    elif text != MANUAL.read_text(encoding="utf-8"):
        sys.exit("docs/reference.md is not what the type libraries say: run python3 tools/lib/manual.py")


main()
