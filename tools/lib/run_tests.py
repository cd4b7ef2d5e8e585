"""The test command: builds, checks, runs every test program, and sums up in one line. See tools/test."""
import concurrent.futures
import json
import os
import re
import signal
import subprocess
import sys
import time

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
from programs import Program, tail  # noqa: E402

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
OUTPUT = os.path.join(ROOT, "build", "test")
CHECKS = ["format", "layering", "hygiene", "shell", "reference"]
PRODUCTS = ["daxControls33", "contentObjects", "DAXWorkbench", "dax", "daxscript"]
# These share a desktop, its focus and its mouse: one after the other. The rest runs beside them, in a prefix of its own.
WITH_WINDOWS = {"windows", "ocx", "workbench"}
PARTS = CHECKS + ["native", "wine64", "wine32", "package", "pascal", "lint"]


class Summary:
    def __init__(self):
        self.begin = time.monotonic()
        self.passed = 0
        self.failed, self.skipped, self.second = [], [], []

    def say(self, text):
        print(f"[{time.monotonic() - self.begin:6.1f} s] {text}", flush=True)

    def take(self, variant, outcome):
        self.passed += len(outcome.passed) + len([name for name, _ in outcome.second if name != outcome.program])
        for mine, theirs in ((self.failed, outcome.failed), (self.skipped, outcome.skipped),
                             (self.second, outcome.second)):
            mine.extend((f"{variant} {name}", reason) for name, reason in theirs)
        words = [f"{len(outcome.passed) + len(outcome.second)} passed", f"{len(outcome.failed)} failed"]
        if outcome.skipped:
            words.append(f"{len(outcome.skipped)} skipped")
        self.say(f"{variant} {outcome.program}: {', '.join(words)} ({outcome.seconds:.1f} s)")

    def finish(self):
        for title, entries in (("passed on the second run", self.second), ("skipped", self.skipped),
                               ("failed", self.failed)):
            if entries:
                print(f"\n{title}:")
                for name, reason in entries:
                    print(f"  {name}: " + reason.strip().replace("\n", "\n      "))
        line = f"{self.passed} passed, {len(self.failed)} failed"
        if self.skipped:
            line += f", {len(self.skipped)} skipped"
        print(f"\nAll of it took {time.monotonic() - self.begin:.0f} s.\n{line}", flush=True)
        return 0 if self.passed and not self.failed else 1


def run(command, log, environment=None, timeout=3600):
    """Runs a step with its output in a log; gives (exit code, output)."""
    path = os.path.join(OUTPUT, log)
    with open(path, "wb") as output:
        try:
            code = subprocess.run(command, cwd=ROOT, stdout=output, stderr=subprocess.STDOUT, timeout=timeout,
                                  stdin=subprocess.DEVNULL, env=environment, check=False).returncode
        except subprocess.TimeoutExpired:
            code = "time-out"
    with open(path, encoding="utf-8", errors="replace") as output:
        return code, output.read()


def check(summary, name):
    """One checking program of tools/checks counts as one test."""
    begin = time.monotonic()
    code, text = run([sys.executable, f"tools/checks/{name}.py"], f"{name}.log")
    if code == 0:
        summary.passed += 1
        said = text.strip().splitlines()
        summary.say(f"{name}: passed ({time.monotonic() - begin:.1f} s){': ' + said[-1] if said else ''}")
    else:
        summary.failed.append((name, tail(text, 60)))
        summary.say(f"{name}: FAILED")


def build(summary, variant, *targets):
    begin = time.monotonic()
    code, text = run([os.path.join(ROOT, "tools/build"), variant, *targets], f"build-{variant}.log")
    if code == 0:
        summary.passed += 1
        summary.say(f"build {variant}: passed ({time.monotonic() - begin:.1f} s)")
        return True
    errors = [line for line in text.splitlines() if re.search(r"error:|^FAILED|undefined reference", line)]
    summary.failed.append((f"build {variant}", "\n".join(errors[:30]) or tail(text)))
    summary.say(f"build {variant}: FAILED (whole log: build/test/build-{variant}.log)")
    return False


def test_programs(variant):
    """(name, command) of what the build files call a test; a program that was not built has no command."""
    text = subprocess.run(["ctest", "--show-only=json-v1"], cwd=os.path.join(ROOT, "build", variant),
                          capture_output=True, check=True, stdin=subprocess.DEVNULL).stdout
    return [(test["name"], test.get("command")) for test in json.loads(text)["tests"]]


def environment_for_tests(servers):
    environment = dict(os.environ)
    environment.update(servers)
    environment["DAX_TEST_ROOT"] = ROOT
    suppressions = os.path.join(ROOT, "tools", "lib", "leaks.txt")
    environment["LSAN_OPTIONS"] = f"suppressions='{suppressions}':print_suppressions=0"
    environment["ASAN_OPTIONS"] = "detect_leaks=1"
    environment["UBSAN_OPTIONS"] = "print_stacktrace=1"
    return environment


def start_servers(summary):
    begin = time.monotonic()
    code, text = run([os.path.join(ROOT, "tools/servers"), "start", os.path.join(OUTPUT, "servers")], "servers.log")
    found = dict(re.findall(r"^export (\w+)='(.*)'$", text, re.M))
    if code != 0 or len(found) != 2:
        summary.failed.append(("database servers", tail(text)))
        return {}
    summary.say(f"PostgreSQL and MariaDB started ({time.monotonic() - begin:.1f} s)")
    return found


def native(summary, servers):
    """Builds; gives what runs the tests."""
    built = build(summary, "native")
    if not build(summary, "dev"):
        return None
    if built:
        dax = os.path.join(ROOT, "build", "native", "bin", "dax")
        if not os.path.exists(dax):
            summary.failed.append(("build native", "there is no build/native/bin/dax"))
    programs = []
    for name, command in test_programs("dev"):
        if command:
            programs.append(Program(name, command, os.path.join(OUTPUT, "native", name),
                                    environment_for_tests(servers), False))
        else:
            summary.failed.append((f"native {name}", "the program was not built"))
    return lambda: run_programs(summary, "native", [[program] for program in programs])


def wine(summary, servers, bits, reason_not_to):
    """Builds; gives what runs the tests."""
    variant = f"win{bits}"
    # Tests that cannot be run here are not built either; the products always are.
    if not build(summary, variant, *(PRODUCTS if reason_not_to else [])):
        return None
    programs = {True: [], False: []}
    for name, command in test_programs(variant):
        if reason_not_to:
            summary.skipped.append((f"wine{bits} {name}", reason_not_to))
            continue
        if not command:
            summary.failed.append((f"wine{bits} {name}", "the program was not built"))
            continue
        environment = environment_for_tests(servers)
        environment["DAX_WINE_DISPLAY"] = "none"
        has_windows = name in WITH_WINDOWS
        if not has_windows:
            environment["DAX_WINE_PREFIX"] = os.path.join(ROOT, "build", f"wine{bits}-core")
        programs[has_windows].append(Program(name, [os.path.join(ROOT, "tools/wine"), *command],
                                             os.path.join(OUTPUT, f"wine{bits}", name), environment, True))
    return lambda: run_programs(summary, f"wine{bits}", [chosen for chosen in programs.values() if chosen])


def run_programs(summary, variant, lanes):
    """Two lanes at a time; the programs of one lane run one after the other."""
    def run_lane(lane):
        for program in lane:
            summary.take(variant, program.run())

    with concurrent.futures.ThreadPoolExecutor(2) as pool:
        for done in [pool.submit(run_lane, lane) for lane in lanes]:
            done.result()


def why_no_wine32():
    run([os.path.join(ROOT, "tools/setup"), "wine32"], "wine32.log")
    try:
        with open(os.path.join(ROOT, "build", "setup", "wine32"), encoding="utf-8") as answer:
            said = answer.read().strip()
    except OSError:
        said = "unavailable: tools/setup wine32 gave no answer"
    return "" if said == "available" else said


def main():
    parts = sys.argv[1:] or PARTS
    unknown = [part for part in parts if part not in PARTS]
    if unknown:
        print(f"unknown part: {' '.join(unknown)}; there are: {' '.join(PARTS)}", file=sys.stderr)
        return 2
    os.makedirs(OUTPUT, exist_ok=True)
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(1))
    summary = Summary()
    servers = {}
    try:
        for name in CHECKS:
            if name in parts:
                check(summary, name)
        if {"native", "wine64", "wine32"} & set(parts):
            servers = start_servers(summary)
        # Tests wait a good deal: those of two variants run at a time, while the next is built and checked.
        behind = concurrent.futures.ThreadPoolExecutor(2)
        try:
            tests = []
            for part, prepare in (("native", lambda: native(summary, servers)),
                                  ("wine64", lambda: wine(summary, servers, 64, "")),
                                  ("wine32", lambda: wine(summary, servers, 32, why_no_wine32()))):
                run_all = prepare() if part in parts else None
                if run_all:
                    tests.append(behind.submit(run_all))
            for name in ("lint", "package"):
                if name in parts:
                    check(summary, name)
            if "pascal" in parts:
                code, said = run([os.path.join(ROOT, "tools/setup"), "pascal"], "pascal-setup.log")
                if code == 0:
                    check(summary, "pascal")
                else:
                    summary.skipped.append(("pascal", f"Free Pascal cannot be installed here: {tail(said, 5)}"))
            for done in tests:
                done.result()
        finally:
            behind.shutdown(cancel_futures=True)
    finally:
        run([os.path.join(ROOT, "tools/servers"), "stop", os.path.join(OUTPUT, "servers")], "servers-stop.log")
    return summary.finish()


sys.exit(main())
