"""Popups are held back while the application lives."""

import signal
import socket
import subprocess

import pytest

from desktop import APP_ID, PATIENCE, TOOL_KEYS, wait_until
from notifications import Service, forge_owner_change, has_daemon, name_of, set_paused, start_bus, start_dunst


def paused(desktop):
    completed = subprocess.run(
        ["dunstctl", "is-paused"], env=desktop.environment, capture_output=True, text=True, timeout=PATIENCE
    )
    return {"true": True, "false": False}.get(completed.stdout.strip())


def record(desktop):
    """The file that says what was found before popups were held back."""
    return desktop.runtime / f"{APP_ID}.popups"


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
    wait_until(lambda: paused(bus), "popups are held back")
    notify(bus)
    notify(bus, "critical")
    assert count(bus, "displayed") == 0
    assert count(bus, "waiting") == 2
    assert application.stop() == 0
    wait_until(lambda: paused(bus) is False, "popups are given back")
    wait_until(lambda: count(bus, "displayed") == 2, "both are shown afterwards")


def test_restarted_daemon_is_asked_again(bus):
    daemon = start_dunst(bus)
    application = bus.start_application()
    daemon.stop()
    wait_until(lambda: not has_daemon(bus), "dunst is gone")
    start_dunst(bus, "dunst-2")
    wait_until(lambda: paused(bus), "the new dunst holds popups back")
    assert application.stop() == 0
    wait_until(lambda: paused(bus) is False, "popups are given back")


def test_what_the_user_had_paused_stays_paused(bus):
    start_dunst(bus)
    set_paused(bus, True)
    application = bus.start_application()
    wait_until(record(bus).exists, "popups are held back")
    assert application.stop() == 0
    assert paused(bus)


@pytest.mark.parametrize("before", [False, True])
def test_after_a_kill_the_next_run_restores_what_was(bus, before):
    start_dunst(bus)
    set_paused(bus, before)
    first = bus.start_application("first")
    wait_until(lambda: paused(bus), "popups are held back")
    first.stop(signal.SIGKILL)
    assert paused(bus)
    second = bus.start_application("second")
    wait_until(lambda: f"pid={second.pid}\n" in record(bus).read_text(), "the second holds popups back")
    assert second.stop() == 0
    wait_until(lambda: paused(bus) is before, "popups are as they were")


def test_second_start_touches_nothing(bus):
    start_dunst(bus)
    first = bus.start_application("first")
    wait_until(lambda: paused(bus), "popups are held back")
    second = bus.start_application("second", wait=False)
    assert second.process.wait(PATIENCE) == 0
    assert paused(bus)
    assert first.stop() == 0
    wait_until(lambda: paused(bus) is False, "popups are given back")


def test_without_a_bus_nothing_is_started(desktop):
    application = desktop.start_application()
    assert "block popups end" in application.messages()
    assert application.stop() == 0
    assert "E/" not in application.output()


def test_bus_without_a_daemon(bus):
    application = bus.start_application()
    assert application.stop() == 0
    assert "E/" not in application.output()
    assert not has_daemon(bus), "the bus was not made to start one"


def test_daemon_that_answers_late_holds_popups_back_from_then_on(bus):
    daemon = start_dunst(bus)
    daemon.process.send_signal(signal.SIGSTOP)
    try:
        application = bus.start_application()  # all of it, while the daemon is stopped
    finally:
        daemon.process.send_signal(signal.SIGCONT)
    wait_until(lambda: paused(bus), "popups are held back")
    assert application.stop() == 0
    wait_until(lambda: paused(bus) is False, "popups are given back")


def test_application_that_starts_while_the_daemon_hangs_can_be_ended(bus):
    daemon = start_dunst(bus)
    daemon.process.send_signal(signal.SIGSTOP)
    try:
        application = bus.start_application(wait=False)
        application.wait_for("block popups start.")
        # On a slow machine the rest of the start outlasts its limit after a signal.
        cut = "told to end in the middle of a start-up"
        assert application.stop() == 0 or cut in application.output().splitlines()[-1]
    finally:
        daemon.process.send_signal(signal.SIGCONT)
    wait_until(lambda: paused(bus) is False, "popups are as they were")


def test_daemon_that_loses_the_first_requests_is_asked_again(bus):
    service = Service(bus, "--inhibits", "--drops-requests")
    service.wait_for("ready")
    application = bus.start_application()
    service.wait_for(f"Inhibit ssa{{sv}} {APP_ID}")
    service.answer_from_now_on()
    wait_until(record(bus).exists, "popups are held back")
    assert application.stop() == 0
    service.wait_for("UnInhibit 42")


def test_forged_owner_changes_neither_end_the_application_nor_lose_the_popups(bus):
    start_dunst(bus)
    application = bus.start_application()
    wait_until(lambda: paused(bus), "popups are held back")
    name = name_of(bus, application.pid)
    for owner in ["x", "", ":1.999", name, "no name at all"]:
        forge_owner_change(bus, name, owner)
        assert record(bus).exists(), owner
    assert application.stop() == 0
    wait_until(lambda: paused(bus) is False, "popups are given back")
    assert not record(bus).exists()


def test_name_that_changes_hands_quickly_is_not_asked_for_each_time(bus, keyboard):
    bus.install_companion("exec sleep 60")
    bus.switch_on()
    application = bus.start_application()
    service = Service(bus, "--drops-requests", "--name-changes", "200")
    service.wait_for("ready")
    keyboard.tap(TOOL_KEYS["XF86More"])
    application.wait_for("result = ")
    assert application.stop() == 0
    # The owner of the moment is asked at times, and not at each of the two hundred changes.
    assert len(service.requests()) < 100


def test_bus_that_starts_again_is_joined_again(desktop):
    first = start_bus(desktop)
    start_dunst(desktop)
    application = desktop.start_application()
    wait_until(lambda: paused(desktop), "popups are held back")
    first.kill()
    start_bus(desktop)
    start_dunst(desktop, "dunst-2")
    wait_until(lambda: paused(desktop), "the new dunst holds popups back")
    assert application.stop() == 0
    wait_until(lambda: paused(desktop) is False, "popups are given back")


def test_bus_that_hangs_at_the_start_is_joined_once_it_answers(desktop):
    daemon = start_bus(desktop)
    start_dunst(desktop)
    daemon.process.send_signal(signal.SIGSTOP)
    try:
        application = desktop.start_application()
    finally:
        daemon.process.send_signal(signal.SIGCONT)
    wait_until(lambda: paused(desktop), "popups are held back")
    assert application.stop() == 0


@pytest.mark.parametrize("first", ["missing", "silent"])
def test_second_place_of_the_bus_address_is_asked_too(bus, first):
    start_dunst(bus)
    address = f"unix:path={bus.root}/{first};{bus.environment['DBUS_SESSION_BUS_ADDRESS']}"
    with socket.socket(socket.AF_UNIX) as listening:
        listening.bind(str(bus.root / "silent"))
        listening.listen()
        application = bus.start_application(DBUS_SESSION_BUS_ADDRESS=address)
        wait_until(lambda: paused(bus), "popups are held back")
        assert application.stop() == 0


def test_popups_come_back_when_the_x_server_dies(bus, other_desktop):
    """The daemon uses another display: on the dying one it would end as well."""
    other_desktop.environment["DBUS_SESSION_BUS_ADDRESS"] = bus.environment["DBUS_SESSION_BUS_ADDRESS"]
    start_dunst(other_desktop)
    application = bus.start_application()
    wait_until(lambda: paused(bus), "popups are held back")
    bus.server.send_signal(signal.SIGKILL)
    assert application.process.wait(PATIENCE) != 0
    wait_until(lambda: paused(bus) is False, "popups are given back")
