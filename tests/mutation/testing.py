"""Runs tests, and finds out which lines of the program each of their functions runs."""

import collections
import concurrent.futures
import contextlib
import json
import os
import pathlib
import re
import signal
import subprocess
import tempfile
import threading
import time

from building import LIBRARY, ROOT, RunStops, output_of, program_of

# A test may take that much longer with a break than without; then it is taken for one that comes to no end.
PATIENCE_FACTOR = 10
PATIENCE_S = 20

# A function of a test program: the names of both, how long it takes, and the lines that it runs as (file, line).
Function = collections.namedtuple("Function", "test name seconds lines")


def patience(seconds):
    return PATIENCE_S + PATIENCE_FACTOR * seconds


class Runner:
    """Runs tests as CTest does, but only to their first failure, and with any library."""

    def __init__(self, build):
        self._folder = build.folder
        listing = json.loads(output_of("ctest", "--test-dir", build.folder, "--show-only=json-v1"))
        self._tests = {test["name"]: test for test in listing["tests"]}

    def _property(self, test, name):
        return next((each["value"] for each in self._tests[test]["properties"] if each["name"] == name), [])

    def _launcher(self, test):
        return self._tests[test]["command"][:-1]

    def _environment(self, test, library_folder):
        settings = dict(each.split("=", 1) for each in self._property(test, "ENVIRONMENT"))
        if self._launcher(test):
            # A display's libraries leak, too.
            settings["LSAN_OPTIONS"] += ":detect_leaks=0"
        return {**os.environ, **settings, "LD_LIBRARY_PATH": str(library_folder)}

    def function_names(self, test):
        program = self._tests[test]["command"][-1]
        return output_of(program, "-functions", env=self._environment(test, self._folder)).replace("()", "").split()

    def first_failure(self, test, names, limit_s, program, library_folder, **environment):
        """Runs functions of a test up to their first failure and returns what failed, or "" if they pass."""
        with contextlib.ExitStack() as stack:
            temporary = stack.enter_context(tempfile.TemporaryDirectory())
            process = stack.enter_context(subprocess.Popen(
                # The tests send signals that nohup and a background job make their children ignore.
                ["env", "--default-signal", *self._launcher(test), program, *names],
                cwd=self._property(test, "WORKING_DIRECTORY"),
                env={**self._environment(test, library_folder), **environment, "TMPDIR": temporary},
                stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                errors="replace", start_new_session=True))
            return outcome(process, test, limit_s, is_kind=bool(self._launcher(test)))


def outcome(process, test, limit_s, is_kind):
    """Reads what a test says up to its first failure, which ends it, or to its end."""
    timed_out = threading.Event()

    def give_up():
        timed_out.set()
        os.killpg(process.pid, signal.SIGKILL)

    timer = threading.Timer(limit_s, give_up)
    timer.start()
    failure, has_totals = None, False
    for line in process.stdout:
        has_totals = has_totals or line.startswith("Totals:")
        failure = re.match(r"(?:FAIL!|XPASS) +: (\w+::\w+)", line)
        if failure:
            end(process, is_kind)
            break
    status = process.wait()
    timer.cancel()
    if timed_out.is_set():
        return f"{test}: no end"
    if failure:
        return failure[1]
    return "" if status == 0 and has_totals else f"{test}: exit status {status}"


def end(process, is_kind):
    """Ends a test and its children; kindly, where a launcher has to end what it has launched."""
    with contextlib.suppress(ProcessLookupError):
        if is_kind:
            os.killpg(process.pid, signal.SIGTERM)
            with contextlib.suppress(subprocess.TimeoutExpired):
                process.wait(5)
        os.killpg(process.pid, signal.SIGKILL)


class Coverage:
    """Which functions of the tests run which lines of the program."""

    def __init__(self, build, runner, tests, sources, jobs):
        self._build, self._runner, self._tests = build, runner, tests
        self._folder = build.folder / "coverage"
        objects = [each for file in sources if file.endswith(".cpp") for each in build.objects_of(LIBRARY, file)]
        build.link(LIBRARY, objects, self._folder, ["--coverage"])
        self._sources = sources
        with concurrent.futures.ThreadPoolExecutor(jobs) as executor:
            names = [(test, name) for test in tests for name in runner.function_names(test)]
            self._functions = list(executor.map(self._measured, *zip(*names)))
        self._run_lines = set().union(*(each.lines for each in self._functions))

    def _measured(self, test, name):
        program = self._build.folder / program_of(test)
        with tempfile.TemporaryDirectory() as counters:
            begin = time.monotonic()
            failure = self._runner.first_failure(test, [name], 120, program, self._folder, GCOV_PREFIX=counters)
            if failure:
                raise RunStops(f"without any break: {failure} fails")
            return Function(test, name, time.monotonic() - begin, self._lines(pathlib.Path(counters)))

    def _lines(self, counters):
        """The lines that were run according to GCC's counters."""
        files = list(counters.rglob("*.gcda"))
        for file in files:
            notes = ("/" / file.relative_to(counters)).with_suffix(".gcno")
            file.with_suffix(".gcno").symlink_to(notes)
        lines = set()
        for document in output_of("gcov", "--json-format", "--stdout", *files).splitlines() if files else []:
            for file in json.loads(document)["files"]:
                name = os.path.relpath(file["file"], ROOT)
                if name in self._sources:
                    lines |= {(name, line["line_number"]) for line in file["lines"] if line["count"]}
        return lines

    def functions_for(self, broken):
        """The functions that may notice a break: those that run its line, and those whose program is made of its file.

        Where the counters know of no run, as for a constant, all that run anything of what the file is compiled into.
        """
        lines = {(broken.file, broken.line())}
        if not lines & self._run_lines:
            objects = set(self._build.objects_of(LIBRARY, broken.file))
            files = {file for file in self._sources if objects & set(self._build.objects_of(LIBRARY, file))}
            lines = {line for line in self._run_lines if line[0] in files}
        tests = {test for test in self._tests if self._build.objects_of(program_of(test), broken.file)}
        return [each for each in self._functions if each.test in tests or not lines.isdisjoint(each.lines)]
