"""Popups are held back while the application lives."""

import signal
import subprocess
import time

import pytest

from desktop import PATIENCE, wait_until
from notifications import has_daemon, set_paused, start_dunst


def paused(desktop):
    completed = subprocess.run(
        ["dunstctl", "is-paused"], env=desktop.environment, capture_output=True, text=True, timeout=PATIENCE
    )
    return {"true": True, "false": False}.get(completed.stdout.strip())


def count(desktop, what):
    completed = subprocess.run(
        ["dunstctl", "count", what], env=desktop.environment, capture_output=True, text=True, check=True, timeout=PATIENCE
    )
    return int(completed.stdout)


def notify(desktop, urgency="normal"):
    subprocess.run(["notify-send", "-u", urgency, "-t", "60000", "hello"], env=desktop.environment, check=True)


def test_notifications_wait_until_the_end(bus):
    start_dunst(bus)
    application = bus.start_application()
    assert paused(bus)
    notify(bus)
    notify(bus, "critical")
    assert count(bus, "displayed") == 0
    assert count(bus, "waiting") == 2
    assert application.stop() == 0
    assert paused(bus) is False
    wait_until(lambda: count(bus, "displayed") == 2, "both are shown afterwards")


def test_restarted_daemon_is_asked_again(bus):
    daemon = start_dunst(bus)
    application = bus.start_application()
    daemon.stop()
    wait_until(lambda: not has_daemon(bus), "dunst is gone")
    start_dunst(bus, "dunst-2")
    wait_until(lambda: paused(bus), "the new dunst holds popups back")
    assert application.stop() == 0
    assert paused(bus) is False


def test_what_the_user_had_paused_stays_paused(bus):
    start_dunst(bus)
    set_paused(bus, True)
    application = bus.start_application()
    assert paused(bus)
    assert application.stop() == 0
    assert paused(bus)


@pytest.mark.parametrize("before", [False, True])
def test_after_a_kill_the_next_run_restores_what_was(bus, before):
    start_dunst(bus)
    set_paused(bus, before)
    first = bus.start_application("first")
    first.stop(signal.SIGKILL)
    assert paused(bus)
    second = bus.start_application("second")
    assert paused(bus)
    assert second.stop() == 0
    assert paused(bus) is before


def test_second_start_touches_nothing(bus):
    start_dunst(bus)
    first = bus.start_application("first")
    second = bus.start_application("second", wait=False)
    assert second.process.wait(PATIENCE) == 0
    assert paused(bus)
    assert first.stop() == 0
    assert paused(bus) is False


def test_without_a_bus_nothing_is_started(desktop):
    started = time.monotonic()
    application = desktop.start_application()
    assert time.monotonic() - started < 20
    assert "block popups end" in application.messages()
    assert application.stop() == 0
    assert "E/" not in application.output()


def test_bus_without_a_daemon(bus):
    application = bus.start_application()
    assert application.stop() == 0
    assert "E/" not in application.output()
    assert not has_daemon(bus), "the bus was not made to start one"


def test_daemon_that_hangs_delays_by_two_seconds_at_most(bus):
    daemon = start_dunst(bus)
    daemon.process.send_signal(signal.SIGSTOP)
    try:
        application = bus.start_application(wait=False)
        application.wait_for("block popups start.")
        started = time.monotonic()
        application.wait_for("block popups end")
        # Two seconds are the limit; a loaded machine gets some more.
        assert time.monotonic() - started < 2 + 3
        application.wait_for("CVQMKeyGrab::CreateWindow finish")
    finally:
        daemon.process.send_signal(signal.SIGCONT)
    assert application.stop() == 0


def test_popups_come_back_when_the_x_server_dies(bus, other_desktop):
    """The daemon shows on a display of its own: on the dying one it would go down as well."""
    other_desktop.environment["DBUS_SESSION_BUS_ADDRESS"] = bus.environment["DBUS_SESSION_BUS_ADDRESS"]
    start_dunst(other_desktop)
    application = bus.start_application()
    assert paused(bus)
    bus.server.send_signal(signal.SIGKILL)
    assert application.process.wait(PATIENCE) != 0
    assert paused(bus) is False
