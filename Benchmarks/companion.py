#!/usr/bin/python3
"""Measures the companion's start, beside a bare Elementary window, and how often it wakes up while nothing changes.

companion BUILD [--rounds N] [--idle SECONDS]

Runs where /opt is its own: Scripts/sandbox Benchmarks/companion.py BUILD. The rounds take the two
programs in turn; a figure is the median of the rounds. Nothing is asserted: figures and goals are printed.
"""

import argparse
import contextlib
import os
import re
import statistics
import subprocess
import sys
import tempfile
import time
from pathlib import Path

from Xlib import X
from Xlib import display as xdisplay

ROOT = Path(__file__).resolve().parent.parent
sys.path.insert(0, str(ROOT / "Tests/Support"))

PATIENCE = 60
SAMPLE = 0.25
AFTER_PICTURE = 1  # seconds, like the others
QUIET = 5
MINUTE = 60
MOST_TIMES_THE_FLOOR = 1.5


class Screen:
    """A private X server, and what its screen shows."""

    def __init__(self, folder):
        from xserver import XServer
        self.server = XServer(folder / "xvfb.log")
        self.display = xdisplay.Display(self.server.display)
        self.environment = {**os.environ, "DISPLAY": self.server.display, "HOME": str(folder),
                            "XDG_RUNTIME_DIR": str(folder), "TZ": "UTC"}

    def is_black(self):
        """The server's own colour. Both programs paint the place that is looked at in another one."""
        return not any(self.display.screen().root.get_image(10, 10, 1, 1, X.ZPixmap, 0xFFFFFF).data[:3])

    def wait_until(self, black):
        end = time.monotonic() + PATIENCE
        while self.is_black() != black:
            if time.monotonic() > end:
                raise SystemExit("the screen stays as it is")

    def close(self):
        self.display.close()
        self.server.stop()


def start(program, screen):
    """Returns the process, and the milliseconds until its first frame was on the screen."""
    screen.wait_until(black=True)
    before = time.monotonic()
    process = subprocess.Popen([program], env=screen.environment, stdin=subprocess.DEVNULL)
    screen.wait_until(black=False)
    return process, (time.monotonic() - before) * 1000


def stop(process):
    process.terminate()
    process.wait(PATIENCE)


def switches(process):
    """How often any of its threads has gone to sleep."""
    total = 0
    for task in Path(f"/proc/{process.pid}/task").iterdir():
        with contextlib.suppress(FileNotFoundError, ProcessLookupError):  # the thread has ended meanwhile
            total += int(re.search(r"^voluntary_ctxt_switches:\s+(\d+)", (task / "status").read_text(), re.M)[1])
    return total


def settle(process):
    end = time.monotonic() + PATIENCE
    before, now = -1, switches(process)
    while before != now and time.monotonic() < end:
        time.sleep(QUIET)
        before, now = now, switches(process)


def wake_ups(process, seconds):
    """At how many moments it was awake, after how many of them it woke up once more, and how many minutes began.

    Half a second after each picture, a timer of the toolkit wakes it to free the memory that drawing took. That
    belongs to the picture and is counted apart.
    """
    settle(process)
    start, before, moments, after_pictures = time.time(), switches(process), 0, 0
    was_awake, fell_asleep = False, start - MINUTE
    while time.time() < start + seconds:
        time.sleep(SAMPLE)
        now = switches(process)
        if now != before and not was_awake:
            if time.time() - fell_asleep < AFTER_PICTURE:
                after_pictures += 1
            else:
                moments += 1
        was_awake = now != before
        if was_awake:
            fell_asleep = time.time()
        before = now
    return moments, after_pictures, int(time.time() // MINUTE - start // MINUTE)


def main():
    parser = argparse.ArgumentParser(description="What the companion's start and its idling cost.")
    parser.add_argument("build", type=Path, help="a build folder with the companion and the benchmarks")
    parser.add_argument("--rounds", type=int, default=20)
    parser.add_argument("--idle", type=int, default=70, metavar="SECONDS")
    options = parser.parse_args()

    programs = [str(options.build.resolve() / "bin" / name) for name in ("VQMCompanion", "WindowFloor")]
    with tempfile.TemporaryDirectory() as folder:
        screen = Screen(Path(folder))
        times = {program: [] for program in programs}
        for _ in range(options.rounds + 1):
            for program in programs:
                process, took = start(program, screen)
                times[program].append(took)
                stop(process)
        companion, floor = (statistics.median(of[1:] or of) for of in times.values())  # the first one reads the disk
        process, _ = start(programs[0], screen)
        moments, after_pictures, minutes = wake_ups(process, options.idle)
        stop(process)
        screen.close()
    print(f"Medians of {options.rounds} rounds.\n")
    print(f"start to first frame   companion {companion:.0f} ms, bare window {floor:.0f} ms: "
          f"{companion / floor:.2f}, goal {MOST_TIMES_THE_FLOOR}")
    print(f"wake-ups in {options.idle} s       {moments}, goal {minutes}: the minutes that began")
    print(f"once more             {after_pictures}, half a second after a picture: the toolkit frees its memory")


if __name__ == "__main__":
    main()
