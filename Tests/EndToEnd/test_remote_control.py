"""The remote control's window on one display, and the TV on another."""

import re
import signal
import subprocess

import pytest
from Xlib import X

from desktop import TOOL_KEYS, Keyboard
from home import BUILD, PATIENCE, SETTING_KEY, wait_until
from remote import HANDED_BACK, HELD, NEITHER, Remote

MORE = TOOL_KEYS["XF86More"]


@pytest.fixture
def tv(other_desktop):
    return other_desktop


@pytest.fixture
def program(desktop, tv):
    """On the host's display, with the TV's settings."""
    return desktop.run([BUILD / "bin/VQMRemote", "--display", tv.display_name, "--start",
                        f"exec {BUILD}/bin/VQMKeygrab"], XDG_CONFIG_HOME=str(tv.home / ".config"))


@pytest.fixture
def remote(desktop, program):
    created = Remote(desktop.connect())
    created.wait_for("XF86More", NEITHER)
    return created


def has_key(tv, keysym):
    return any(keysym in symbols for symbols in Keyboard(tv).mapping().values())


def test_buttons_follow_what_the_application_does_with_their_keys(tv, remote):
    application = tv.start_application()
    remote.wait_for("XF86More", HELD)
    remote.wait_for("XF86Red", HELD)
    remote.wait_for("XF86Back", HANDED_BACK)
    remote.wait_for("XF86PowerOff", HANDED_BACK)
    assert application.stop() == 0
    for button in ("XF86More", "XF86Red", "XF86Back", "XF86PowerOff"):
        remote.wait_for(button, NEITHER)


def test_click_presses_the_key_on_the_tv_and_switches_the_setting(tv, remote):
    tv.install_companion("exit 0\n")
    application = tv.start_application()
    remote.wait_for("XF86More", HELD)
    remote.click("XF86More")
    application.wait_for("not used in vqm mode")
    remote.wait_for("Sync demo", HANDED_BACK)
    remote.click("Sync demo")
    remote.wait_for("Sync demo", HELD)
    assert (tv.settings / SETTING_KEY).read_text() == "1"
    remote.click("XF86SimpleMenu")
    application.wait_for("result = ")
    tv.store(SETTING_KEY, "0")
    remote.wait_for("Sync demo", HANDED_BACK)


def test_keyboard_of_the_host_presses_the_buttons(desktop, tv, remote):
    application = tv.start_application()
    remote.wait_for("XF86More", HELD)
    remote.window.set_input_focus(X.RevertToParent, X.CurrentTime)
    remote.display.sync()
    Keyboard(desktop).tap(ord("m"))
    application.wait_for("not used in vqm mode")


def test_application_is_ended_and_started_by_buttons(tv, program, remote):
    application = tv.start_application()
    remote.wait_for("XF86More", HELD)
    remote.click("End")
    assert application.process.wait(PATIENCE) == 0
    remote.wait_for("XF86More", NEITHER)
    remote.click("Start")
    remote.wait_for("XF86More", HELD)
    # The log is unabridged: the remote's own threshold is not handed on.
    assert "_app_control() called end" in program.output()
    remote.click("Start")
    wait_until(lambda: program.output().count("_app_control() called end") == 2, "the second start reaches the first")
    pid = int(re.search(r"Quillmere\( *(\d+)\)", program.output())[1])
    remote.click("End")
    wait_until(lambda: "VQMKeygrab main End" in program.output(), f"process {pid} ends in order")


def test_keys_are_off_the_tv_s_keyboard_after_the_end(tv, program, remote):
    assert has_key(tv, MORE)
    tv.start_application()
    remote.wait_for("XF86More", HELD)
    assert program.stop() == 0
    assert not has_key(tv, MORE)


def test_without_a_notification_daemon_it_goes_on(tv, remote):
    remote.click("Send a popup")
    tv.start_application()
    remote.wait_for("XF86More", HELD)


def test_it_ends_with_the_tv_s_display(tv, program, remote):
    tv.stop_server()
    assert program.process.wait(PATIENCE) == 3
    assert "VQMRemote: an X server is gone" in program.output()


def test_signal_ends_it_though_the_tv_s_display_does_not_answer(tv, program, remote):
    tv.server.send_signal(signal.SIGSTOP)
    assert program.stop() == 3
    tv.server.send_signal(signal.SIGCONT)


@pytest.mark.parametrize("arguments, result, text", [
    ([], 2, "--display is required; see --help"),
    (["--display", ":4711"], 3, "cannot open the TV's display ':4711'"),
    (["--display", ":1", "--at", "left"], 2, "--at expects a place such as 20,40"),
    (["--display", ":1", "more"], 2, "it takes options only; see --help"),
])
def test_misuse_is_refused_with_a_clear_line(desktop, arguments, result, text):
    completed = subprocess.run([BUILD / "bin/VQMRemote", *arguments], env=desktop.environment, capture_output=True,
                               text=True, timeout=PATIENCE)
    assert (completed.returncode, completed.stdout) == (result, "")
    assert f"VQMRemote: {text}\n" in completed.stderr
