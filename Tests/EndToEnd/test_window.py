"""Scripts/window on the programs as they are built: a TV in a window of an X server, with its remote beside it."""

import os
import signal
import subprocess
from pathlib import Path

import pytest

from desktop import new_desktop
from home import BUILD, PATIENCE, ROOT, wait_until
from remote import HANDED_BACK, HELD, NEITHER, Remote, colours
from sandbox import sandboxed
from windows import find_shown

BLACK = (0, 0, 0)


class TvWindow:
    """The window that is the TV's screen, and the remote beside it."""

    def __init__(self, host, program):
        self.program = program
        wait_until(lambda: "Ctrl-C here ends everything." in program.output() or program.process.poll() is not None,
                   "the instructions")
        assert program.process.poll() is None, program.output()
        connection = host.connect()
        self.screen = wait_until(lambda: find_shown(connection, "Xephyr"), "the TV's window")
        self.remote = Remote(connection)
        self.remote.wait_for("XF86More", HELD)

    def picture(self):
        """The colours on the TV's screen."""
        size = self.screen.get_geometry()
        return colours(self.screen, 0, 0, size.width, size.height)

    def wait_for(self, text, count=1):
        wait_until(lambda: self.program.output().count(text) >= count, f"{count} x {text!r} in\n{self.program.output()}")


@pytest.fixture
def host():
    sandboxed()
    created = new_desktop(width=1680, height=900)
    yield created
    created.close()


@pytest.fixture
def mark(host):
    """A word of the environment that tells the processes of this test from all others."""
    return f"WINDOW_OF_TEST={host.root}"


@pytest.fixture
def tv(host, mark):
    name, value = mark.split("=")
    return TvWindow(host, host.run([ROOT / "Scripts/window", BUILD], name="window", TMPDIR=str(host.root), **{name: value}))


def left(mark):
    """The environment of each process of the test, by its folder in /proc."""
    found = {}
    for process in Path("/proc").glob("[0-9]*"):
        try:
            environment = (process / "environ").read_bytes().split(b"\0")
        except OSError:
            continue  # ended, or not ours
        if mark.encode() in environment:
            found[process] = dict(entry.decode().split("=", 1) for entry in environment if b"=" in entry)
    return found


def popups(mark, state):
    """How many popups the TV's notification daemon has that are "waiting" or "displayed"."""
    environment = next(environment for process, environment in left(mark).items()
                       if (process / "comm").read_text() == "dunst\n")
    return int(subprocess.run(["dunstctl", "count", state], env=environment, capture_output=True, check=True,
                              timeout=PATIENCE).stdout)


def test_everything_that_there_is_to_see(tv, mark):
    remote = tv.remote
    remote.click("XF86More")
    tv.wait_for("not used in vqm mode")
    assert tv.picture() == {BLACK}

    remote.click("Sync demo")
    remote.wait_for("Sync demo", HELD)
    remote.click("XF86More")
    wait_until(lambda: len(tv.picture()) > 16, "the companion shows on the TV's screen")
    remote.click("XF86Back")
    wait_until(lambda: tv.picture() == {BLACK}, "the companion has closed")

    remote.click("Sync demo")
    remote.wait_for("Sync demo", HANDED_BACK)
    remote.click("Send a popup")
    wait_until(lambda: popups(mark, "waiting") == 1, "the popup waits")
    assert tv.picture() == {BLACK}
    remote.click("End")
    remote.wait_for("XF86More", NEITHER)
    wait_until(lambda: len(tv.picture()) > 16, "the popup has waited until the application ended")

    remote.click("Start")
    remote.wait_for("XF86More", HELD)
    remote.click("Start")
    tv.wait_for("_app_control() called end", 3)

    os.killpg(tv.program.pid, signal.SIGINT)  # as the terminal does
    assert tv.program.process.wait(2 * PATIENCE) == 0
    assert left(mark) == {}
    # Both ended in order; the second start was no more than a message to the first.
    assert tv.program.output().count("VQMKeygrab main End") == 2


@pytest.mark.parametrize("window", ["the TV's", "the remote's"])
def test_closing_a_window_ends_everything(tv, mark, window):
    # What a window manager does to a window that offers no other way.
    (tv.screen if window == "the TV's" else tv.remote.window).kill_client()
    tv.remote.display.sync()
    assert tv.program.process.wait(2 * PATIENCE) == 0
    assert left(mark) == {}


def test_nothing_outlives_a_window_that_is_killed(tv, mark):
    tv.program.kill()
    wait_until(lambda: not left(mark), "no process is left")


def test_a_host_s_display_that_cannot_be_opened_is_named(host):
    program = host.run([ROOT / "Scripts/window", BUILD], name="window", DISPLAY=":4711")
    assert program.process.wait(PATIENCE) == 1
    assert program.output() == "window: cannot open display :4711; plain ./run brings its own\n"
