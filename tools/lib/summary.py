"""Shows the results of CTest, read from the standard input, as they come, and sums them up in one line. See tools/test.
Its argument is the folder of the results; GoogleTest's own are in the working folder of each test."""
import glob
import os
import re
import sys
import time
import xml.etree.ElementTree as ElementTree

RESULT = re.compile(r"\s*(?:\d+/\d+ )?\s*Test +#\d+: (\S+) \.*\s*\**(Passed|Failed|Skipped|Timeout|Not Run|Exception.*?) +([\d.]+) sec")
FAILED = re.compile(r"^\[  FAILED  \] ([\w/]+\.[\w/]+)", re.M)
FIXTURES = re.compile(r"(servers|cluster)\.")
folder = sys.argv[1]
started = os.path.getmtime(os.path.join(folder, "started"))


def tail(text, count=30):
    return "\n".join([line for line in text.splitlines() if line.strip()][-count:])


def follow(log):
    """{test: (result, output) of each of its runs}"""
    runs, output, is_complete = {}, [], False
    for line in sys.stdin:
        log.write(line)
        log.flush()
        if found := RESULT.match(line):
            name, result, seconds = found.groups()
            output = []
            runs.setdefault(name, []).append((result, output))
            print(f"[{time.time() - started:6.1f} s] {name}: {result.lower()} ({float(seconds):.1f} s)", flush=True)
        elif not line.lstrip().startswith("Start "):
            output.append(line)
        is_complete |= line.startswith("Total Test time")
    if not is_complete:
        runs["ctest"] = [("Interrupted", output)]
    return {name: [(result, "".join(output)) for result, output in each] for name, each in runs.items()}


def google_tests(name):
    """(name, state, text) of each test of a program that ended in this run."""
    for path in glob.glob(os.path.join(folder, "..", "*", "tests", "run", name, "result.xml")):
        if os.path.getmtime(path) >= started:
            for case in ElementTree.parse(path).iter("testcase"):
                state = next((word for word in ("failure", "skipped") if case.find(word) is not None), "passed")
                text = "\n".join(each.get("message", "") for each in case.iter() if each is not case)
                yield f"{name} {case.get('classname')}.{case.get('name')}", state, text


def skip_reasons():
    cases = ElementTree.parse(os.path.join(folder, "junit.xml")).iter("testcase")
    return {case.get("name"): tail(case.findtext("system-out") or "", 5) for case in cases}


def main():
    with open(os.path.join(folder, "ctest.log"), "w", encoding="utf-8") as log:
        runs = follow(log)
    passed, lists = 0, {"passed on the second run": [], "skipped": [], "failed": []}
    for name, each in runs.items():
        result, output = each[-1]
        tests = list(google_tests(name))
        for test, state, text in tests:
            passed += state == "passed"
            if state != "passed":
                lists["skipped" if state == "skipped" else "failed"].append((test, text))
        if result == "Passed":
            passed += not tests and not FIXTURES.match(name)
            if len(each) > 1:
                first = each[0][1]
                lists["passed on the second run"].append((" ".join([name, *sorted(set(FAILED.findall(first)))]), tail(first)))
        elif result == "Skipped":
            lists["skipped"].append((name, skip_reasons().get(name, "")))
        elif not any(state == "failure" for _, state, _ in tests):
            lists["failed"].append((name, f"{result}: {tail(output)}" if output.strip() else result))
    for title, entries in lists.items():
        if entries:
            print(f"\n{title}:")
            for name, reason in entries:
                print(f"  {name}: " + reason.strip().replace("\n", "\n      "))
    line = f"{passed} passed, {len(lists['failed'])} failed"
    if lists["skipped"]:
        line += f", {len(lists['skipped'])} skipped"
    if lists["passed on the second run"]:
        line += f", {len(lists['passed on the second run'])} passed on the second run"
    print(f"\nAll of it took {time.time() - started:.0f} s.\n{line}", flush=True)
    return 0 if passed and not lists["failed"] else 1


sys.exit(main())
