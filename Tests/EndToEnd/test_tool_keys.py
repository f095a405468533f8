"""A tool key's release launches the companion while the setting is on, and only then."""

import os
import time

import pytest
from Xlib import X

from desktop import (
    SETTING_KEY,
    TOOL_KEYS,
    FocusedClient,
    children_of,
    is_running,
    keysym,
    wait_until,
)

BANNER = r"\n########################   TOOL KEY PRESSED   ###########################"
STAYING_COMPANION = 'echo $$ >> "$HOME/launched"\nexec sleep 1000\n'
PASSING_COMPANION = 'echo $$ >> "$HOME/launched"\n'


def launched(desktop):
    """The pids of the companions, as they noted them themselves."""
    path = desktop.home / "launched"
    return [int(line) for line in path.read_text().split()] if path.exists() else []


@pytest.mark.parametrize("name", TOOL_KEYS)
def test_each_release_launches_once_and_logs_the_pid(desktop, keyboard, name):
    desktop.install_companion(STAYING_COMPANION)
    desktop.switch_on()
    application = desktop.start_application()
    for count in (1, 2):
        keyboard.tap(TOOL_KEYS[name])
        application.wait_for("result = ", count)
        wait_until(lambda: len(launched(desktop)) == count, "the companion runs")
    assert application.results() == launched(desktop)
    assert application.matching(BANNER) == [BANNER] * 2
    assert application.lines()[-3:] == [
        ("D", "OnKeyReleaseCB", BANNER),
        ("D", "CheckSyncDemoEnbaled", "CVQMSyncDemoMonitor::CheckSyncDemoEnbaled - Enabled "),
        ("D", "OnKeyReleaseCB", f"result = {launched(desktop)[1]}"),
    ]
    for pid in launched(desktop):
        os.kill(pid, 9)
    wait_until(lambda: not children_of(application.pid), "the ended companions are reaped")


@pytest.mark.parametrize("stored", ["0", "2", "-1", None, "garbage", "", "unreadable"])
def test_any_other_setting_launches_nothing(desktop, keyboard, stored):
    desktop.install_companion(STAYING_COMPANION)
    if stored == "unreadable":
        (desktop.settings / SETTING_KEY).mkdir(parents=True)
    elif stored is not None:
        desktop.store(SETTING_KEY, stored)
    application = desktop.start_application()
    keyboard.tap(TOOL_KEYS["XF86SimpleMenu"])
    application.wait_for("not used in vqm mode")
    keyboard.tap(TOOL_KEYS["XF86More"])
    application.wait_for("not used in vqm mode", 2)
    off = [
        ("D", "OnKeyReleaseCB", BANNER),
        ("D", "CheckSyncDemoEnbaled", "CVQMSyncDemoMonitor::CheckSyncDemoEnbaled - Disabled "),
        ("D", "OnKeyReleaseCB", "not used in vqm mode"),
    ]
    assert application.lines()[-6:] == off * 2
    assert not application.results()
    assert not launched(desktop)
    assert not children_of(application.pid)


def test_setting_is_read_at_each_release(desktop, keyboard):
    desktop.install_companion(PASSING_COMPANION)
    application = desktop.start_application()
    keyboard.tap(TOOL_KEYS["XF86More"])
    application.wait_for("not used in vqm mode")
    desktop.vqmctl("setting", "on")
    keyboard.tap(TOOL_KEYS["XF86More"])
    application.wait_for("result = ")
    desktop.vqmctl("setting", "off")
    keyboard.tap(TOOL_KEYS["XF86More"])
    application.wait_for("not used in vqm mode", 2)
    assert len(application.results()) == 1


def test_held_key_launches_once(desktop, keyboard):
    desktop.install_companion(PASSING_COMPANION)
    desktop.switch_on()
    application = desktop.start_application()
    keyboard.press(TOOL_KEYS["XF86More"])
    time.sleep(2)  # long enough for the server's auto-repeat to send dozens
    assert not application.results()
    keyboard.release(TOOL_KEYS["XF86More"])
    application.wait_for("result = ")
    # Keys are handled in order: after this one, nothing of the first is to come.
    keyboard.tap(TOOL_KEYS["XF86SimpleMenu"])
    application.wait_for("result = ", 2)
    assert len(application.results()) == 2


def test_two_hundred_rapid_releases_lose_none_and_leave_no_zombie(desktop, keyboard):
    desktop.install_companion(PASSING_COMPANION)
    desktop.switch_on()
    application = desktop.start_application()
    for _ in range(100):
        keyboard.tap(TOOL_KEYS["XF86SimpleMenu"])
        keyboard.tap(TOOL_KEYS["XF86More"])
    application.wait_for("result = ", 200)
    wait_until(lambda: len(launched(desktop)) == 200, "200 companions ran")
    wait_until(lambda: not children_of(application.pid), "all of them are reaped")
    assert sorted(application.results()) == sorted(launched(desktop))
    assert len(application.results()) == 200


@pytest.mark.parametrize("name", ["XF86AudioPlay", "XF86AudioStop", "XF86MenuKB"])
def test_other_grabbed_keys_are_silent(desktop, keyboard, name):
    desktop.install_companion(PASSING_COMPANION)
    desktop.switch_on()
    keyboard.add(keysym(name))
    application = desktop.start_application()
    application.wait_for("_resume() called start")
    before = application.lines()
    keyboard.tap(keysym(name))
    keyboard.tap(TOOL_KEYS["XF86More"])
    application.wait_for("result = ")
    assert len(application.lines()) == len(before) + 3


def test_without_a_companion_a_negative_result_is_logged_and_it_runs_on(desktop, keyboard):
    desktop.switch_on()
    application = desktop.start_application()
    keyboard.tap(TOOL_KEYS["XF86More"])
    application.wait_for("result = ")
    assert application.results()[0] < 0
    desktop.install_companion(PASSING_COMPANION)
    keyboard.tap(TOOL_KEYS["XF86More"])
    application.wait_for("result = ", 2)
    assert application.results()[1] > 0
    assert is_running(application.pid)


PLAY = "XF86AudioPlay"


@pytest.mark.parametrize(
    "steps",
    [
        "+Play +More -Play -More",
        "+Play +More -More -Play",
        "+More +Play -More -Play",
        "+SimpleMenu +More -SimpleMenu -More",
        "+SimpleMenu +More -More -SimpleMenu",
        "+Play +SimpleMenu +More -Play -SimpleMenu -More",
        "+Play +More -Play -More +More -More +Play +More -Play -More",
        "+a +More -a -More",
        "+More +a -More -a",
    ],
)
def test_every_release_counts_once_however_keys_overlap(desktop, keyboard, steps):
    desktop.install_companion(PASSING_COMPANION)
    desktop.switch_on()
    numbers = {**{name.removeprefix("XF86"): number for name, number in TOOL_KEYS.items()},
               "Play": keysym(PLAY), "a": keysym("a")}
    keyboard.add(keysym(PLAY))
    client = FocusedClient(desktop)
    client.take_focus()
    application = desktop.start_application()
    for _ in range(5):
        for step in steps.split():
            (keyboard.press if step[0] == "+" else keyboard.release)(numbers[step[1:]])
    releases = 5 * (steps.count("-More") + steps.count("-SimpleMenu"))
    application.wait_for("result = ", releases)
    # One more tap, which comes last: what would be counted twice has been counted by then.
    keyboard.tap(TOOL_KEYS["XF86More"])
    application.wait_for("result = ", releases + 1)
    assert len(application.results()) == releases + 1
    assert client.has_focus()
    assert client.focus_lost == 0


def test_tool_key_pressed_while_another_client_has_the_keyboard_is_left_to_it(desktop, keyboard):
    application = desktop.start_application()
    other = desktop.connect()
    other.screen().root.grab_keyboard(False, X.GrabModeAsync, X.GrabModeAsync, X.CurrentTime)
    other.sync()
    keyboard.tap(TOOL_KEYS["XF86More"])
    other.ungrab_keyboard(X.CurrentTime)
    other.sync()
    keyboard.tap(TOOL_KEYS["XF86SimpleMenu"])
    application.wait_for("not used in vqm mode")
    assert len(application.matching("not used in vqm mode")) == 1
