"""One instance holds the keys of a display."""

import signal
import subprocess
import time

import pytest

from desktop import APP_ID, PATIENCE, TOOL_KEYS, children_of, is_running, wait_until
from notifications import start_bus, start_dunst


def test_second_start_wakes_the_first_and_ends(desktop, keyboard):
    first = desktop.start_application("first")
    second = desktop.start_application("second", wait=False)
    assert second.process.wait(PATIENCE) == 0
    first.wait_for("_app_control() called end", 2)
    assert [line[2] for line in second.lines()] == ["VQMKeygrab main Start"], "neither popups nor keys were touched"

    keyboard.tap(TOOL_KEYS["XF86More"])
    first.wait_for("not used in vqm mode")
    assert first.process.poll() is None


def test_killed_instance_frees_the_name_at_once(desktop, keyboard):
    first = desktop.start_application("first")
    assert first.stop(signal.SIGKILL) == -signal.SIGKILL
    second = desktop.start_application("second")
    keyboard.tap(TOOL_KEYS["XF86More"])
    second.wait_for("not used in vqm mode")


def test_another_display_has_its_own_instance(desktop, keyboard, other_desktop):
    first = desktop.start_application()
    second = other_desktop.start_application()
    assert first.process.poll() is None
    assert second.process.poll() is None


def test_ended_instance_leaves_no_selection(desktop):
    connection = desktop.connect()
    atom = connection.intern_atom(APP_ID)
    application = desktop.start_application()
    assert connection.get_selection_owner(atom)
    application.stop()
    wait_until(lambda: not connection.get_selection_owner(atom), "the selection has no owner")
    assert not is_running(application.pid)


def test_ten_starts_at_once_leave_one_running(desktop):
    applications = [desktop.start_application(f"start-{index}", wait=False) for index in range(10)]

    def ended():
        return [application.process.poll() for application in applications if application.process.poll() is not None]

    wait_until(lambda: len(ended()) == 9, "nine of ten end")
    assert ended() == [0] * 9
    remaining = next(application for application in applications if application.process.poll() is None)
    remaining.wait_for("CVQMKeyGrab::CreateWindow finish")
    assert not children_of(remaining.pid)


def waits_for_the_end(desktop):
    start_bus(desktop)
    daemon = start_dunst(desktop)
    return lambda: daemon.process.send_signal(signal.SIGSTOP)


@pytest.mark.parametrize("daemon", ["no daemon", "a daemon that hangs"])
def test_start_right_after_the_signal_to_end_takes_over(desktop, keyboard, daemon):
    stop_daemon = waits_for_the_end(desktop) if daemon != "no daemon" else lambda: None
    running = desktop.start_application("start-0")
    stop_daemon()
    for index in range(1, 6):
        running.process.send_signal(signal.SIGTERM)
        successor = desktop.start_application(f"start-{index}")
        assert running.process.wait(PATIENCE) == 0
        running = successor
    keyboard.tap(TOOL_KEYS["XF86More"])
    running.wait_for("not used in vqm mode")
    assert "another program holds" not in running.output()


def test_start_that_finds_an_instance_that_has_not_yet_seen_its_signal_takes_over(desktop, keyboard):
    first = desktop.start_application("first")
    first.process.send_signal(signal.SIGSTOP)
    first.process.send_signal(signal.SIGTERM)
    second = desktop.start_application("second", wait=False)
    second.wait_for("VQMKeygrab main Start")
    time.sleep(0.5)  # it asks the first, which does not run
    first.process.send_signal(signal.SIGCONT)
    assert first.process.wait(PATIENCE) == 0
    assert len(first.matching("_app_control() called end")) == 1
    second.wait_for("_app_control() called end")
    keyboard.tap(TOOL_KEYS["XF86More"])
    second.wait_for("not used in vqm mode")


def test_successor_holds_popups_back_after_its_predecessor_has_given_them_back(desktop):
    start_bus(desktop)
    start_dunst(desktop)
    running = desktop.start_application("start-0")
    for index in range(1, 4):
        running.process.send_signal(signal.SIGTERM)
        running = desktop.start_application(f"start-{index}")
        assert is_paused(desktop)
    assert running.stop() == 0
    assert not is_paused(desktop)


def is_paused(desktop):
    completed = subprocess.run(
        ["dunstctl", "is-paused"], env=desktop.environment, capture_output=True, text=True, timeout=PATIENCE
    )
    return completed.stdout.strip() == "true"
