"""Runs the commands in the ```console blocks of README and docs and compares their output with the page.
    python3 tools/lib/transcripts.py FOLDER [PAGE...]           FOLDER contains the program dax; all pages if none is named
    python3 tools/lib/transcripts.py --write FOLDER [PAGE...]   updates the output in the pages
A line "$ COMMAND" is run by bash in a folder that the commands of a page share. A line "..." stands for any lines.
$POSTGRES and $MARIADB are connection strings of empty databases (tools/servers), $CLUSTER1 to $CLUSTER3 those of the
nodes of a cluster (tools/servers start --cluster), whose folder is $CLUSTER.
tools/test package uses it with the program that was packed."""
import os
import re
import subprocess
import sys
import tempfile
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
BLOCK = re.compile(r"^```console\n(.*?)^```$", re.M | re.S)
SERVERS = ("POSTGRES", "MARIADB", "CLUSTER1", "CLUSTER2", "CLUSTER3", "CLUSTER")
PROGRESS = re.compile(r"(?:reading|editing|saving|writing|copying)[a-z ]*: \d+(?: %)?")  # progress of dax


def pages():
    return ["README.md"] + sorted(f"docs/{path.name}" for path in (ROOT / "docs").glob("*.md"))


def run(command, folder, programs):
    environment = dict(os.environ, PATH=f"{programs}:{os.environ['PATH']}", LC_ALL="C.UTF-8", TZ="UTC")
    for name in SERVERS:
        environment[name] = os.environ.get(f"DAX_TEST_{name}", "")
    done = subprocess.run(["bash", "-c", command], cwd=folder, env=environment, stdin=subprocess.DEVNULL,
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, errors="replace", check=False,
                          timeout=300)
    return [line.rstrip() for line in done.stdout.splitlines() if not PROGRESS.fullmatch(line)]


def fits(said, expected):
    pattern = "".join(r"(?:.*\n)*" if line == "..." else re.escape(line) + r"\n" for line in expected)
    return re.fullmatch(pattern, "".join(line + "\n" for line in said)) is not None


def commands_of(block):
    """(command, its output on the page) for each command of a block."""
    found = []
    for line in block.splitlines():
        if line.startswith("$ "):
            found.append((line[2:], []))
        elif found:
            found[-1][1].append(line)
    return found


def check_page(name, programs, folder, problems, write):
    text = (ROOT / name).read_text(encoding="utf-8")

    def check_block(block):
        lines = []
        for command, expected in commands_of(block.group(1)):
            said = run(command, folder, programs)
            if not fits(said, expected):
                problems.append(f"{name}: $ {command}\nsays:\n" + "\n".join(said) + "\nbut the page says:\n" +
                                "\n".join(expected))
                expected = said
            lines += [f"$ {command}"] + expected
        check_block.count += len(lines)
        return "```console\n" + "\n".join(lines) + "\n```"

    check_block.count = 0
    text = BLOCK.sub(check_block, text)
    if write:
        (ROOT / name).write_text(text, encoding="utf-8")
    return check_block.count


def main():
    words = sys.argv[1:]
    write = "--write" in words
    words = [word for word in words if word != "--write"]
    if not words:
        sys.exit(__doc__)
    programs, problems, lines, count = os.path.abspath(words[0]), [], 0, 0
    for name in words[1:] or pages():
        blocks = "".join(BLOCK.findall((ROOT / name).read_text(encoding="utf-8")))
        missing = [server for server in SERVERS if f"${server}" in blocks and not os.environ.get(f"DAX_TEST_{server}")]
        if missing:
            problems.append(f"{name}: needs {' and '.join(missing)}: eval \"$(tools/servers start build/db)\", for the cluster "
                            "eval \"$(tools/servers start --cluster build/cluster)\"")
            continue
        with tempfile.TemporaryDirectory() as folder:
            lines += check_page(name, programs, folder, problems, write)
        count += 1
    if problems and not write:
        sys.exit("\n\n".join(problems))
    print(f"{lines} lines of console in {count} pages" + (": written" if write else ": as they say"))


main()
