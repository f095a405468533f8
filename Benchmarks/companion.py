#!/usr/bin/python3
"""Measures the companion's start up to its first frame beside a bare window of the same toolkit, and its idle time.

companion.py BUILD [--rounds N] [--idle SECONDS]

Both run on one X server and take turns. The toolkit itself ends a program at its first frame when
ELM_FIRST_FRAME says so, so that the time is that of the process. Nothing is asserted: the figures, the ratio
and the goal are printed. Run it in Scripts/sandbox, which gives the companion a schedule to show.
"""

import argparse
import os
import resource
import statistics
import subprocess
import sys
import tempfile
import time
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
sys.path.insert(0, str(ROOT / "Tests/Support"))

COMPANION, FLOOR = "VQMCompanion", "Elementary floor"
GOAL = 1.5


def start(command, environment):
    """Seconds by the clock and on the processor, up to the first frame."""
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    began = time.monotonic()
    subprocess.run(command, env={**environment, "ELM_FIRST_FRAME": "E"}, stdin=subprocess.DEVNULL,
                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, timeout=120)
    elapsed = time.monotonic() - began
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    return elapsed, after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime


def wake_ups(pid):
    """How often its threads have gone to sleep so far."""
    return sum(int(line.split()[1]) for task in Path(f"/proc/{pid}/task").iterdir()
               for line in (task / "status").read_text().splitlines() if line.startswith("voluntary_ctxt_switches"))


def measure_idle(command, environment, seconds):
    """Wake-ups of each second of idle time."""
    process = subprocess.Popen(command, env=environment, stdin=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    time.sleep(5)
    counts = []
    last = wake_ups(process.pid)
    for _ in range(seconds):
        time.sleep(1)
        now = wake_ups(process.pid)
        counts.append(now - last)
        last = now
    process.terminate()
    process.wait(60)
    return counts


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("build", type=Path)
    parser.add_argument("--rounds", type=int, default=15)
    parser.add_argument("--idle", type=int, default=130)
    arguments = parser.parse_args()
    os.environ["VQM_BUILD_DIR"] = str(arguments.build.resolve())
    from home import Home
    from xserver import XServer

    with tempfile.TemporaryDirectory() as folder:
        server = XServer(Path(folder) / "xvfb.log", 1920, 1080)
        home = Home(Path(folder) / "home")
        environment = {**home.environment, "DISPLAY": server.display, "ECORE_NO_SYSTEM_MODULES": "1"}
        programs = {COMPANION: [arguments.build / "bin/VQMCompanion"],
                    FLOOR: [arguments.build / "bin/ElementaryFloor", "XF86Launch5", "/bin/true"]}
        try:
            figures = {name: [] for name in programs}
            for number in range(-1, arguments.rounds):
                for name, command in programs.items():
                    figure = start(command, environment)
                    if number >= 0:  # the first one warms the caches up
                        figures[name].append(figure)
            print(f"to the first frame, median of {arguments.rounds}      clock  processor")
            medians = {}
            for name, values in figures.items():
                medians[name] = [statistics.median(column) for column in zip(*values)]
                print("  {:<38} {:6.0f} ms {:6.0f} ms".format(name, *(1000 * value for value in medians[name])))
            ratios = [one / other for one, other in zip(medians[COMPANION], medians[FLOOR])]
            print("  {:<38} {:9.2f} {:9.2f}   goal: at most {}".format("ratio", *ratios, GOAL))
            if arguments.idle:
                counts = measure_idle(programs[COMPANION], environment, arguments.idle)
                awake = sum(1 for count in counts if count)
                print(f"{arguments.idle} idle seconds: awake in {awake} of them; "
                      f"{arguments.idle / 60:.1f} minutes have begun and no more is needed")
        finally:
            server.stop()


main()
