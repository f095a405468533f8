"""The README's log excerpt is what the application logs today."""

import re
from pathlib import Path

from desktop import TOOL_KEYS, is_running, wait_until

README = Path(__file__).parents[2] / "README.md"
OMITTED = "..."


def excerpt():
    """The README's lines, the omitted ones included."""
    return re.search(r"^```log\n(.*?)^```$", README.read_text(), re.MULTILINE | re.DOTALL)[1].splitlines()


def without_pids(line):
    return re.sub(r"= \d+$", "= PID", re.sub(r"\( *\d+\):", "(PID):", line)).rstrip()


def test_log_excerpt_has_the_lines_of_this_build(desktop, keyboard):
    desktop.install_companion("exec sleep 1000\n")
    application = desktop.start_application()
    keyboard.tap(TOOL_KEYS["XF86More"])
    application.wait_for("not used in vqm mode")
    desktop.switch_on()
    keyboard.tap(TOOL_KEYS["XF86SimpleMenu"])
    application.wait_for("result = ")
    wait_until(lambda: is_running(application.results()[0]), "the companion runs")
    assert application.stop() == 0

    logged = [without_pids(line) for line in application.output().splitlines() if "/Quillmere(" in line]
    shown = [without_pids(line) for line in excerpt()]
    stale = [line for line in shown if line != OMITTED and line not in logged]
    assert not stale, "\n".join(["not logged:", *stale, "logged:", *logged])
    # Lines that follow one another in the README do so in the log.
    place = 0
    for before, line in zip([OMITTED, *shown], shown):
        if line != OMITTED:
            found = logged.index(line, place)
            assert before == OMITTED or found == place, f"{line!r} does not follow {before!r}"
            place = found + 1
