"""Every source file stands as clang-format would write it."""
import concurrent.futures
import os
import re
import subprocess

from project import CODE, ROOT, files, finish


def check(names):
    done = subprocess.run(["clang-format", "--dry-run", "-Werror", *names], cwd=ROOT, capture_output=True, text=True,
                          check=False)
    wrong = sorted(set(re.findall(r"^(\S.*?):\d+:\d+: error", done.stderr, re.M)))
    if done.returncode and not wrong:
        return [done.stderr.strip()]
    return [f"{name}: not formatted (clang-format -i {name})" for name in wrong]


names = files(*CODE)
workers = os.cpu_count() or 1
with concurrent.futures.ThreadPoolExecutor(workers) as pool:
    parts = [names[start::workers] for start in range(workers) if names[start::workers]]
    problems = sorted(problem for found in pool.map(check, parts) for problem in found)
finish(problems, f"{len(names)} files")
