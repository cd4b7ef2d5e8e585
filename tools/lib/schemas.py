"""Checks the output of dax with --json.
    python3 tools/lib/schemas.py FOLDER     FOLDER holds the program dax
    python3 tools/lib/schemas.py --tables   prints the tables for docs/command-line.md
Every command with --json must have a schema in docs/json, and its output must be valid; its help names every key, and
docs/command-line.md has the table of the schema. tools/test package uses it with
the program that was packed."""
import json
import os
import re
import subprocess
import sys
import tempfile
from pathlib import Path

import jsonschema

ROOT = Path(__file__).resolve().parents[2]
# The schema, and the command that prints it on the sample course or connector; each also on odd entries.
CASES = [("tree", ["tree", "course.db"]), ("tree", ["tree", "course.db", "SAF-G1", "--depth", "1"]),
         ("find", ["find", "course.db", "SAF-1"]), ("find", ["find", "course.db", "in no title"]),
         ("lesson", ["lesson", "course.db", "SAF-2"]), ("lesson", ["lesson", "course.db"]),
         ("info", ["info", "course.db", "SAF-1"]), ("info", ["info", "course.db"]),
         ("locks", ["locks", "course.db"]), ("locks", ["locks", "course.db", "--user", "nobody"]),
         ("locks", ["locks", "course.db", "--invalid", "--delete", "--as", "юлия", "--yes"]),
         ("map", ["map", "course.db", "SAF-7"]), ("map", ["map", "course.db", "SAF-2", "--add", "New"]),
         ("map-find", ["map", "course.db", "SAF-7", "--find", "SAF"]),
         ("map-find", ["map", "course.db", "SAF-7", "--find", "in no title"]),
         ("catalogs", ["catalogs", "connector.db", "--user", "anna", "--record", "HERE"]),
         ("catalogs", ["catalogs", "connector.db", "--user", "admin"])]


def schemas():
    return {path.name.split(".")[0]: json.loads(path.read_text(encoding="utf-8"))
            for path in sorted((ROOT / "docs/json").glob("*.schema.json"))}


def keys_of(schema, above=""):
    """(path, type, description) of every key, those within lists and objects after the one that holds them."""
    for key, value in schema.get("items", schema).get("properties", {}).items():
        kind = value["type"] if isinstance(value["type"], str) else " or ".join(value["type"])
        yield above + key, kind, value["description"]
        yield from keys_of(value, above + key + ".")


def table(schema):
    rows = [f"| `{path}` | {kind} | {text} |" for path, kind, text in keys_of(schema)]
    return "\n".join(["| key | type | meaning |", "|---|---|---|"] + rows)


def run(program, words, folder):
    return subprocess.run([program] + words, cwd=folder, stdin=subprocess.DEVNULL, capture_output=True, text=True,
                          encoding="utf-8", check=False, timeout=120)


def check_outputs(program, problems):
    with tempfile.TemporaryDirectory() as folder:
        for words in (["sample", "course.db"], ["sample", "connector.db", "--connector"]):
            if run(program, words, folder).returncode != 0:
                sys.exit(f"dax {' '.join(words)} has failed")
        for name, words in CASES:
            printed = run(program, words + ["--json"], folder)
            try:
                jsonschema.validate(json.loads(printed.stdout), schemas()[name])
            except (jsonschema.ValidationError, ValueError) as error:
                problems.append(f"dax {' '.join(words)} --json does not fit {name}.schema.json: {error}\n"
                                f"{printed.stderr}")


def check_words(program, problems):
    """Help and manual name what there is."""
    commands = re.findall(r"^  ([a-z-]+) +\S", run(program, ["help"], ROOT).stdout, re.M)
    page = (ROOT / "docs/command-line.md").read_text(encoding="utf-8")
    helps = {command: run(program, ["help", command], ROOT).stdout for command in commands}
    for command, text in helps.items():
        if "[--json]" in text and command not in schemas():
            problems.append(f"dax {command} --json has no schema in docs/json")
    for name, schema in schemas().items():
        jsonschema.Draft202012Validator.check_schema(schema)
        text = helps.get(name, helps["map"])
        for path, _, _ in keys_of(schema):
            if not re.search(rf"\b{path.split('.')[-1]}\b", text.split("--json", 2)[-1]):
                problems.append(f"dax help {name}: does not name the key {path}")
        if table(schema) not in page:
            problems.append(f"docs/command-line.md: lacks the table of {name}.schema.json; --tables prints it")


def main():
    if sys.argv[1:] == ["--tables"]:
        for name, schema in schemas().items():
            print(f"{name}\n\n{table(schema)}\n")
        return
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    program, problems = os.path.join(os.path.abspath(sys.argv[1]), "dax"), []
    check_outputs(program, problems)
    check_words(program, problems)
    if problems:
        sys.exit("\n\n".join(problems))
    print(f"{len(CASES)} outputs fit their schemas")


main()
