"""Runs tests, and finds out which lines of the program each test function runs."""

import concurrent.futures
import contextlib
import itertools
import json
import os
import pathlib
import re
import signal
import subprocess
import tempfile
import threading
import time
import typing

from building import LIBRARY, ROOT, RunStops, output_of

# A test counts as failed when it takes longer than this many times its usual time plus these seconds.
PATIENCE_FACTOR = 10
PATIENCE_S = 20


class Function(typing.NamedTuple):
    """A function of a test program."""
    test: str
    name: str
    seconds: float
    lines: set  # those of the program that it runs, as (file, line)

    def __str__(self):
        return f"{self.test}::{self.name}"


def patience(seconds):
    return PATIENCE_S + PATIENCE_FACTOR * seconds


class Runner:
    """Runs tests as CTest does, but with any library."""

    def __init__(self, build):
        self._folder, self._tests = build.folder, build.tests

    def _property(self, test, name):
        return next((each["value"] for each in self._tests[test]["properties"] if each["name"] == name), [])

    def _launcher(self, test):
        """The command that runs the test program on a display or with a mocked bus; may be empty."""
        words = self._tests[test]["command"][1:-1]
        return list(itertools.dropwhile(lambda word: "=" in word, words))

    def _command(self, test, program, library_folder, **environment):
        own_environment, *words = self._tests[test]["command"][:-1]
        environment["LD_LIBRARY_PATH"] = library_folder
        if self._launcher(test):
            # The libraries of a display leak.
            environment["LSAN_OPTIONS"] = "detect_leaks=0"
        return [own_environment, *(f"{name}={value}" for name, value in environment.items()), *words, program]

    def function_names(self, test):
        own_environment, program = self._tests[test]["command"][0], self._tests[test]["command"][-1]
        return output_of(own_environment, f"LD_LIBRARY_PATH={self._folder}", program, "-functions").replace(
            "()", "").split()

    def failures(self, test, names, limit_s, program, library_folder, goes_on=False, **environment):
        """Runs functions of a test, up to the first that fails unless it goes on, and returns which fail.

        If a test does not end, or crashes, this is returned as the only failure.
        """
        with contextlib.ExitStack() as stack:
            temporary = stack.enter_context(tempfile.TemporaryDirectory())
            process = stack.enter_context(subprocess.Popen(
                # The tests send signals. A process inherits which signals are ignored, e.g. from nohup.
                ["env", "--default-signal",
                 *self._command(test, program, library_folder, TMPDIR=temporary, **environment), *names],
                cwd=self._property(test, "WORKING_DIRECTORY"),
                stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                errors="replace", start_new_session=True))
            return failures_of(process, test, limit_s, bool(self._launcher(test)), goes_on)


def failures_of(process, test, limit_s, has_launcher, goes_on):
    """Reads the output of a test, and kills it at its first failure unless it goes on."""
    timed_out = threading.Event()

    def give_up():
        timed_out.set()
        os.killpg(process.pid, signal.SIGKILL)

    timer = threading.Timer(limit_s, give_up)
    timer.start()
    failures, has_totals = [], False
    for line in process.stdout:
        has_totals = has_totals or line.startswith("Totals:")
        failures += re.findall(r"^(?:FAIL!|XPASS) +: (\w+::\w+)", line)
        if failures and not goes_on:
            kill(process, has_launcher)
            break
    status = process.wait()
    timer.cancel()
    if timed_out.is_set():
        return [f"{test}: no end"]
    # The exit status is the number of failures.
    if failures and not goes_on or has_totals and status == len(failures):
        return failures
    return [f"{test}: exit status {status}"]


def kill(process, has_launcher):
    """Kills a test and its children. A launcher gets SIGTERM first, so that it can stop its display."""
    with contextlib.suppress(ProcessLookupError):
        if has_launcher:
            os.killpg(process.pid, signal.SIGTERM)
            with contextlib.suppress(subprocess.TimeoutExpired):
                process.wait(5)
        os.killpg(process.pid, signal.SIGKILL)


class Coverage:
    """Which functions of the tests run which lines of the program."""

    def __init__(self, build, runner, sources, jobs):
        self._build, self._runner = build, runner
        self._folder = build.folder / "coverage"
        objects = [each for file in sources if file.endswith(".cpp") for each in build.objects_of(LIBRARY, file)]
        build.link(LIBRARY, objects, self._folder, ["--coverage"])
        self._sources = sources
        with concurrent.futures.ThreadPoolExecutor(jobs) as executor:
            names = [(test, name) for test in build.tests for name in runner.function_names(test)]
            self.functions = list(executor.map(self._measured, *zip(*names)))
        self._run_lines = set().union(*(each.lines for each in self.functions))

    def _measured(self, test, name):
        program = self._build.folder / self._build.program_of(test)
        with tempfile.TemporaryDirectory() as counters:
            begin = time.monotonic()
            failures = self._runner.failures(test, [name], 120, program, self._folder, GCOV_PREFIX=counters)
            if failures:
                raise RunStops(f"without any break: {failures[0]} fails")
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
        """The functions that may notice a break: those that run its line, and those whose program includes its file.

        GCC counts no constants. A break of one may be noticed by all functions that run an object including its file.
        """
        lines = {(broken.file, broken.line())}
        if not lines & self._run_lines:
            objects = set(self._build.objects_of(LIBRARY, broken.file))
            files = {file for file in self._sources if objects & set(self._build.objects_of(LIBRARY, file))}
            lines = {line for line in self._run_lines if line[0] in files}
        tests = {test for test in self._build.tests if self._build.objects_of(self._build.program_of(test), broken.file)}
        return [each for each in self.functions if each.test in tests or not lines.isdisjoint(each.lines)]
