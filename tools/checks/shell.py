"""Shell scripts pass shellcheck; Python files compile."""
import subprocess

from project import ROOT, files, finish, read

scripts, problems, programs = [], [], []
for name in files(folders=["tools", ".ci"]):
    if name.endswith(".py"):
        programs.append(name)
        try:
            compile(read(name), name, "exec")
        except SyntaxError as error:
            problems.append(f"{name}: {error}")
    elif name.endswith(".sh") or read(name).startswith(("#!/usr/bin/env bash", "#!/bin/sh", "#!/bin/bash")):
        scripts.append(name)
done = subprocess.run(["shellcheck", "-x", "-f", "gcc", *scripts], cwd=ROOT, capture_output=True, text=True, check=False)
problems += done.stdout.splitlines() + done.stderr.splitlines()
finish(problems, f"{len(scripts)} shell scripts, {len(programs)} Python files")
