#!/usr/bin/python3
"""Measures what the library costs, beside what a user would take in its place and beside the least.

library BUILD [--rounds N] [--quick]

Runs where /opt is its own: Scripts/sandbox --empty Benchmarks/library.py BUILD. The rounds take those
that are compared in turn, each in a process of its own; a figure is the median of the rounds.
Nothing is asserted: the ratios and the goals are printed.

Instructions are the processor's own count of what a process does outside the kernel, or, where the
machine does not let it be read (most virtual machines), valgrind's count.
"""

import argparse
import functools
import json
import os
import re
import statistics
import subprocess
import sys
import time
from pathlib import Path

UNIT = 102400
SMALL_FILE = 200
NUMBERS = 1000


def say(text):
    print(text, file=sys.stderr, flush=True)


class Works:
    """Runs the works of the little program."""

    def __init__(self, build, rounds):
        self.program = str(build / "bin/LibraryWork")
        self.vqmctl = str(build / "bin/vqmctl")
        self.rounds = rounds
        self.folder = Path("/opt/benchmark")
        self.folder.mkdir(exist_ok=True)
        self.environment = {**os.environ, "TMPDIR": str(self.folder), "DLOG_LEVEL": "silent"}

    def run(self, name, size, repetitions, delivered=False):
        environment = {**self.environment, "DLOG_LEVEL": "debug"} if delivered else self.environment
        log = self.folder / "log"
        with open(log, "wb") as errors:
            done = subprocess.run([self.program, name, str(size), str(repetitions)], env=environment,
                                  stdout=subprocess.PIPE, stderr=errors, check=False)
        if done.returncode != 0:
            with open(log, "rb") as errors:
                raise SystemExit(f"{name} {size}: " + errors.read()[-1000:].decode(errors="replace"))
        return json.loads(done.stdout)

    def times(self, names, size, repetitions, clock="ns"):
        """Nanoseconds, by name."""
        say(f"{', '.join(names)}: {size:,}")
        results = {name: [] for name in names}
        for _ in range(self.rounds):
            for name in names:
                results[name].append(self.run(name, size, repetitions)[clock])
        return {name: statistics.median(values) for name, values in results.items()}

    def tool(self, *arguments):
        """Nanoseconds that vqmctl takes, from its start to its end."""
        return self.command(self.vqmctl, *arguments)

    def command(self, program, *arguments):
        """Nanoseconds that a program takes, from its start to its end."""
        before = time.monotonic_ns()
        process = os.posix_spawn(program, [program, *arguments], self.environment,
                                 file_actions=[(os.POSIX_SPAWN_OPEN, 1, os.devnull, os.O_WRONLY, 0)])
        _, status = os.waitpid(process, 0)
        taken = time.monotonic_ns() - before
        if status != 0:
            raise SystemExit(f"{program} {' '.join(arguments)} failed")
        return taken

    def tool_instructions(self, *arguments):
        """Valgrind's count."""
        return self._valgrind(self.vqmctl, *arguments)

    def tool_libraries(self):
        """How many libraries the loader maps for vqmctl."""
        loaded = subprocess.run([self.vqmctl], env={**self.environment, "LD_TRACE_LOADED_OBJECTS": "1"},
                                capture_output=True, text=True, check=True)
        return loaded.stdout.count("=>")

    def peak(self, name, size):
        say(f"{name}: {size:,}, memory")
        return self.run(name, size, 1)["peak"]

    @functools.cached_property
    def counter_can_be_read(self):
        return self.run("log/lines", 1, 1)["instructions"] is not None

    def instructions(self, name, size, repetitions=2):
        say(f"{name}: {size:,}, instructions")
        if self.counter_can_be_read:
            return self.run(name, size, repetitions)["instructions"]
        # The difference leaves out what preparing takes.
        once, more = (self._valgrind(self.program, name, str(size), str(count)) for count in (1, 1 + repetitions))
        return (more - once) / repetitions

    def _valgrind(self, *command):
        done = subprocess.run(["valgrind", "--tool=cachegrind", "--cache-sim=no", "--cachegrind-out-file=/dev/null",
                               *command], env=self.environment, capture_output=True, text=True, check=True)
        return int(re.search(r"I +refs: +([\d,]+)", done.stderr)[1].replace(",", ""))


class Table:
    """Rows of a comparison: what, against what, ratio, goal, and whether it is met."""

    def __init__(self):
        self.rows = [["", "of", "ratio", "goal", ""]]

    def add(self, what, other, value, most=None, least=None, form=".2f"):
        goal = most if most is not None else least
        met = "" if goal is None else "met" if (value <= most if most is not None else value >= least) else "missed"
        text = "" if goal is None else f"{'at most' if most is not None else 'at least'} {goal:g}"
        self.rows.append([what, other, format(value, form), text, met])

    def print(self):
        print_columns(self.rows)


def print_columns(rows):
    widths = [max(len(row[column]) for row in rows) for column in range(len(rows[0]))]
    for row in rows:
        print("  ".join(text.ljust(width) if column < 2 else text.rjust(width)
                        for column, (text, width) in enumerate(zip(row, widths))).rstrip())


def human(ns):
    for unit, size in (("s", 1e9), ("ms", 1e6), ("µs", 1e3)):
        if ns >= size:
            return f"{ns / size:.3g} {unit}"
    return f"{ns:.3g} ns"


def megabytes(count):
    return f"{count / 1e6:g} MB"


class Benchmark:
    def __init__(self, works, shrink, valgrind):
        self.works = works
        self.shrink = shrink
        self.valgrind = valgrind
        self.instructions_can_be_counted = valgrind or works.counter_can_be_read
        self.table = Table()
        self.figures = [["", "", "time"]]
        self.per_unit = [["CPU time of each", "", "small", "x 10", "x 100"]]

    def scaled(self, size):
        return max(2, size // self.shrink)

    def compare(self, what, product, others, size, repetitions, goals=None, unit=""):
        """The times of the product and of others, whose ratios go into the table."""
        times = self.works.times([product, *others], size, repetitions)
        for name, ns in times.items():
            self.figures.append([what, name.split("/")[1], human(ns) + unit])
        for name in others:
            self.table.add(what + ", time", name.split("/")[1], times[product] / times[name],
                           **(goals or {}).get(name, {}))
        return times

    def parse(self):
        expat = "parse/expat"
        peers = [expat, "parse/pugixml", "parse/libxml2"]
        for items, repetitions in ((2, 2000), (self.scaled(5000), 10), (self.scaled(500000), 1)):
            goals = {expat: {"most": 1.6}} if items == self.scaled(5000) else {}
            self.compare(f"parse {items:,} items", "parse/product", peers, items, repetitions, goals)
        middle = self.scaled(5000)
        self.compare(f"parse {middle:,} items on more lines", "parse-lines/product",
                     ["parse-lines/expat", "parse-lines/pugixml", "parse-lines/libxml2"], middle, 10,
                     {"parse-lines/expat": {"most": 1.6}})
        self.taken_over(middle)
        large = self.scaled(500000)
        peak = self.works.peak("parse/product", large)
        for peer, goal in (("pugixml", {"most": 0.6}), ("libxml2", {})):
            other = self.works.peak(f"parse/{peer}", large)
            self.table.add(f"parse {large:,} items, peak memory", peer, peak / other, **goal)
            self.figures.append([f"parse {large:,} items, peak memory", peer, megabytes(other)])
        self.figures.append([f"parse {large:,} items, peak memory", "product", megabytes(peak)])

    def taken_over(self, items):
        """The policy copied out of the parser, and taken over, as the content check does."""
        names = ["parse/taken-over", "parse/product", "parse/expat"]
        times = self.works.times(names, items, 10)
        for name, how, most in ((names[0], "taken over", 1.40), (names[1], "copied out", 1.45)):
            self.table.add(f"parse {items:,} items, {how}, time", "expat", times[name] / times["parse/expat"], most=most)
        if not self.instructions_can_be_counted:
            return
        for prefix, lines in (("parse", ""), ("parse-lines", " on more lines")):
            least = self.works.instructions(f"{prefix}/expat", items)
            for work, how, most in (("taken-over", "taken over", 1.35), ("product", "copied out", 1.42)):
                self.table.add(f"parse {items:,} items{lines}, {how}, instructions", "expat",
                               self.works.instructions(f"{prefix}/{work}", items) / least, most=most)

    def lint(self):
        items = self.scaled(500000)
        for work, how in (("lint", ""), ("lint-one-period", " in one period")):
            cpu = self.works.times([f"{work}/linter", f"{work}/product"], items, 1, "cpu")
            self.figures.append([f"lint {items:,} items{how}", "linter, CPU", human(cpu[f"{work}/linter"])])
            self.table.add(f"lint {items:,} items{how}, CPU time", "parse",
                           cpu[f"{work}/linter"] / cpu[f"{work}/product"], most=1.8)

    def read(self):
        size = max(UNIT, 10**9 // self.shrink)
        times = self.compare(f"read {size:,} bytes", "read/product", ["read/stream"], size, 1,
                             {"read/stream": {"most": 1}})
        times = self.works.times(["read/product", "read/system"], size, 1)
        self.figures.append([f"read {size:,} bytes", "read(2)", human(times["read/system"])])
        self.table.add(f"read {size:,} bytes, speed", "read(2)", times["read/system"] / times["read/product"],
                       least=0.8)
        self.compare(f"read {SMALL_FILE} bytes", "read/product", ["read/at-once", "read/bare-stream"], SMALL_FILE, 5000,
                     {"read/at-once": {"most": 2.1}})
        if self.instructions_can_be_counted:
            for name, goal in (("read/product", {"most": 7000}), ("read/bare-stream", {})):
                self.table.add(f"read {SMALL_FILE} bytes, instructions", name.split("/")[1],
                               self.works.instructions(name, SMALL_FILE, 1000), form=",.0f", **goal)

    def check(self):
        for files in (self.scaled(1000), self.scaled(100000)):
            self.compare(f"check {files:,} files", "check/product", ["check/find"], files,
                         20 if files <= 1000 else 1,
                         {"check/find": {"most": 1}})
            # What is taken off is as much as what is left: other programs must not count.
            cpu = self.works.times(["check/product", "check/stat"], files, 40 if files <= 1000 else 3, "cpu")
            self.figures.append([f"check {files:,} files", "stat, CPU", human(cpu["check/stat"])])
            self.table.add(f"check {files:,} files, CPU time", "stat", cpu["check/product"] / cpu["check/stat"],
                           most=1.1)
            self.compare(f"check {files:,} files, with reading the schedule", "check/all", ["check/find"], files,
                         20 if files <= 1000 else 1)

    def check_tool(self):
        """The tool explains each file and lints the schedule too."""
        items = self.scaled(500000)
        say(f"vqmctl check, check/repeated: {items:,}")
        own, tool = [], []
        for _ in range(self.works.rounds):
            own.append(self.works.run("check/repeated", items, 1)["ns"])
            tool.append(self.works.tool("check"))
        what = f"vqmctl check of {items:,} items, {items // 5:,} files"
        self.figures += [[what, "vqmctl", human(statistics.median(tool))],
                         [what, "the library's check", human(statistics.median(own))]]
        self.table.add(what + ", time", "the library's check", statistics.median(tool) / statistics.median(own), most=1.5)

    def start_of_tool(self):
        """The shortest command: what starting vqmctl takes. The shortest time, because others only add to it."""
        say("vqmctl --version")
        own, least = [], []
        for _ in range(20 * self.works.rounds):
            own.append(self.works.tool("--version"))
            least.append(self.works.command("/bin/true"))
        self.table.add("vqmctl --version, ms", "", min(own) / 1e6, most=1.5)
        self.table.add("vqmctl --version, time", "/bin/true", min(own) / min(least))
        self.figures.append(["vqmctl --version", "libraries", f"{self.works.tool_libraries()}"])
        if self.valgrind:
            self.figures.append(["vqmctl --version", "instructions, by valgrind",
                                 f"{self.works.tool_instructions('--version'):,}"])

    def numbers(self):
        for kind, what in (("int", "int"), ("size", "uVQMINT64"), ("double", "double")):
            self.compare(f"text to {what}", f"{kind}/product", [f"{kind}/from_chars"], NUMBERS, 50,
                         {f"{kind}/from_chars": {"most": 1}})

    def log(self):
        line = self.works.times(["log/lines"], 100000, 5)["log/lines"]
        self.table.add("a dropped log line, ns", "", line, most=3)
        items = self.scaled(5000)
        say(f"parse/product: {items:,}, every log line delivered")
        dropped, delivered = [], []
        for _ in range(self.works.rounds):
            dropped.append(self.works.run("parse/product", items, 3)["ns"])
            delivered.append(self.works.run("parse/product", items, 3, delivered=True)["ns"])
        self.table.add(f"parse {items:,} items, log to a file, time", "log dropped",
                       statistics.median(delivered) / statistics.median(dropped), most=8)
        self.figures.append([f"parse {items:,} items", "log to a file", human(statistics.median(delivered))])

    def growth(self):
        for what, name, sizes, repetitions in (
                ("item parsed", "parse/product", (5000, 50000, 500000), 3),
                ("file checked", "check/product", (1000, 10000, 100000), 3),
                ("MB read", "read/product", (10**7, 10**8, 10**9), 2),
                ("item linted, one period", "lint-one-period/linter", (5000, 50000, 500000), 1),
                ("attribute of a tag linted", "growth/attributes", (1000, 10000, 100000), 1),
                ("byte of a table's cell", "growth/cell", (10000, 100000, 1000000), 1),
                ("byte of a misspelt name", "growth/name", (1000, 10000, 100000), 1),
                ("name compared with", "growth/names", (1000, 10000, 100000), 1),
                ("file of a check as JSON", "growth/check-json", (1000, 10000, 100000), 1)):
            costs = []
            for size in map(self.scaled, sizes):
                # The works of growth/ divide by their size themselves.
                units = size / 1e6 if what == "MB read" else 1 if name.startswith("growth/") else size
                costs.append(human(self.works.times([name], size, repetitions, "cpu")[name] / units))
            self.per_unit.append([what, f"{self.scaled(sizes[0]):,} and on", *costs])

    def run(self):
        for stage in (self.parse, self.lint, self.read, self.check, self.check_tool, self.start_of_tool, self.numbers,
                      self.log, self.growth):
            stage()

    def print(self):
        print("Instructions are " + ("the processor's own count." if self.works.counter_can_be_read else
              "valgrind's count: this machine's processor counters cannot be read."))
        print(f"Medians of {self.works.rounds} rounds.\n")
        print_columns(self.figures)
        print()
        print_columns(self.per_unit)
        print()
        self.table.print()


def main():
    parser = argparse.ArgumentParser(description="What the library costs, beside peers.")
    parser.add_argument("build", type=Path, help="a build folder with the benchmarks")
    parser.add_argument("--rounds", type=int, default=5)
    parser.add_argument("--quick", action="store_true", help="a tenth of the sizes, and fewer rounds")
    parser.add_argument("--smoke", action="store_true", help="only see that everything runs")
    options = parser.parse_args()
    shrink = 1000 if options.smoke else 10 if options.quick else 1
    rounds = 1 if options.smoke else min(options.rounds, 3) if options.quick else options.rounds
    benchmark = Benchmark(Works(options.build.resolve(), rounds), shrink, valgrind=not options.smoke)
    benchmark.run()
    benchmark.print()


if __name__ == "__main__":
    main()
