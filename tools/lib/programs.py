"""Runs one GoogleTest program to the end, whatever its tests do: crash, hang or fail once."""
import os
import re
import signal
import subprocess
import time

RUN = re.compile(r"\[ RUN +\] (\S+)")
END = re.compile(r"\[ +(OK|FAILED|SKIPPED) +\] ([^\s,(]+\.[^\s,(]+)(?:,.*)? \(\d+ ms\)")
COUNT = re.compile(r"\[=+\] Running (\d+) tests? from")
TIMEOUT = 600
ALONE_TIMEOUT = 300
RERUN_LIMIT = 25


class Outcome:
    def __init__(self, program):
        self.program = program
        self.passed = []
        self.second = []  # passed on the second run: (name, what the first run said)
        self.failed = []  # (name, reason)
        self.skipped = []  # (name, reason)
        self.seconds = 0.0


class Run:
    """One process: what each test came to, which one was running when the process ended."""

    def __init__(self, code, text):
        self.code = code
        self.results = {}
        self.text = text
        self.open = None
        self.announced = None
        start = 0
        lines = text.splitlines()
        for number, line in enumerate(lines):
            count = COUNT.search(line)
            if count and self.announced is None:
                self.announced = int(count.group(1))
            begin = RUN.search(line)
            if begin:
                self.open, start = begin.group(1), number + 1
            end = END.search(line)
            if end and self.open == end.group(2):
                said = "\n".join(lines[start:number] + [line[: end.start()]]).strip()
                self.results[self.open] = (end.group(1), said)
                self.open = None

    def whole(self):
        return self.announced is not None and self.open is None and len(self.results) == self.announced


def tail(text, count=25):
    lines = [line for line in text.splitlines() if line.strip()]
    return "\n".join(lines[-count:])


class Program:
    """name; command: the words that start it; folder: scratch directory; environment: for the process."""

    def __init__(self, name, command, folder, environment, under_wine):
        self.name, self.command, self.folder = name, command, folder
        self.environment, self.under_wine = environment, under_wine
        os.makedirs(folder, exist_ok=True)
        self.log = open(os.path.join(folder, "log.txt"), "w", encoding="utf-8", errors="replace")

    def start(self, arguments, timeout):
        """Runs the program; gives (exit code, output). A hang ends with the code "time-out"."""
        environment = dict(self.environment)
        if self.under_wine:
            environment["DAX_WINE_TIMEOUT"] = str(timeout)
            timeout += 120  # the prefix may have to be made first
        path = os.path.join(self.folder, "output.txt")
        with open(path, "wb") as output:
            process = subprocess.Popen(self.command + arguments, cwd=self.folder, env=environment, stdout=output,
                                       stderr=subprocess.STDOUT, stdin=subprocess.DEVNULL, start_new_session=True)
            try:
                code = process.wait(timeout)
                if self.under_wine and code == 124:
                    code = "time-out"
            except subprocess.TimeoutExpired:
                code = "time-out"
            except BaseException:
                self.end(process)
                raise
            self.end(process)
        with open(path, encoding="utf-8", errors="replace") as output:
            text = output.read().replace("\r", "")
        self.log.write(f"$ {' '.join(self.command + arguments)}\n{text}\n(exit code {code})\n")
        self.log.flush()
        return code, text

    @staticmethod
    def end(process):
        """Ends the process and what it left behind in its session: first politely (tools/wine cleans up)."""
        for sign, patience in ((signal.SIGTERM, 15), (signal.SIGKILL, 15)):
            try:
                os.killpg(process.pid, sign)
            except (ProcessLookupError, PermissionError):
                break
            try:
                process.wait(patience)
            except subprocess.TimeoutExpired:
                continue
        process.wait()

    def run_tests(self, names=None, timeout=None):
        timeout = timeout or TIMEOUT
        arguments = ["--gtest_color=no"]
        if names is not None:
            with open(os.path.join(self.folder, "flags.txt"), "w", encoding="utf-8") as flags:
                flags.write("--gtest_filter=" + ":".join(names) + "\n")
            arguments.append("--gtest_flagfile=flags.txt")
        code, text = self.start(arguments, timeout)
        if "LeakSanitizer has encountered a fatal error" in text:
            # Some containers do not allow a process to be traced, which the search for leaks needs.
            self.environment["ASAN_OPTIONS"] += ":detect_leaks=0"
            code, text = self.start(arguments, timeout)
        return Run(code, text)

    def list_tests(self):
        code, text = self.start(["--gtest_list_tests", "--gtest_color=no"], 120)
        names, suite = [], ""
        for line in text.splitlines() if code == 0 else []:
            word = line.split("#")[0].rstrip()
            if re.fullmatch(r"\S+\.", word):
                suite = word
            elif suite and re.fullmatch(r"  \S+", word):
                names.append(suite + word.strip())
        return [name for name in names if "DISABLED_" not in name]

    def run(self):
        outcome = Outcome(self.name)
        begin = time.monotonic()
        results, trouble, pending = {}, {}, None
        for _ in range(RERUN_LIMIT):
            run = self.run_tests(pending)
            results.update(run.results)
            if run.whole():
                broken = any(result == "FAILED" for result, _ in run.results.values())
                if run.code not in (0, 1) or (run.code == 1 and not broken):
                    self.check_exit(outcome, run)
                break
            # The process ended early: the running test counts as failed, the others get their run.
            what = "hung" if run.code == "time-out" else f"crashed (exit code {run.code})"
            if run.open:
                trouble[run.open] = f"{what}, last output:\n{tail(run.text)}"
            if pending is None:
                pending = self.list_tests()
            left = [name for name in pending if name not in results and name not in trouble]
            if not left:
                break
            if not run.open and left == pending:
                outcome.failed.append((self.name, f"{what} before its first test, last output:\n{tail(run.text)}"))
                break
            pending = left
        else:
            outcome.failed.append((self.name, f"crashed {RERUN_LIMIT} times; the remaining tests did not run"))
        for name, (result, said) in results.items():
            if result == "OK":
                outcome.passed.append(name)
            elif result == "SKIPPED":
                outcome.skipped.append((name, said))
            else:
                trouble[name] = tail(said, 40)
        self.second_run(outcome, trouble)
        outcome.seconds = time.monotonic() - begin
        self.log.close()
        return outcome

    def check_exit(self, outcome, run):
        """Every test passed and yet the process failed, as with a leak found at its end."""
        again = self.run_tests()
        reason = f"exit code {run.code} after its last test, last output:\n{tail(run.text, 40)}"
        if again.code == 0 and again.whole():
            outcome.second.append((self.name, reason))
        else:
            outcome.failed.append((self.name, reason))

    def second_run(self, outcome, trouble):
        for number, (name, reason) in enumerate(trouble.items()):
            if number < RERUN_LIMIT:
                alone = self.run_tests([name], ALONE_TIMEOUT)
                if alone.code == 0 and alone.whole() and name in alone.results:
                    outcome.second.append((name, reason))
                    continue
            outcome.failed.append((name, reason))
