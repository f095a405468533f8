"""vqmctl remote press, on a real X server with a stand-in for the application."""

import os
import signal
import subprocess

import pytest
from holder import Holder
from home import APP_ID, PATIENCE, wait_until
from Xlib import X, Xatom

MORE = 0x1008FFF2
HOLDER = f"{APP_ID} (pid {os.getpid()})"


@pytest.fixture
def holder(home, screen):
    return Holder(home.environment["DISPLAY"])


def test_a_lent_key_stays_until_the_application_has_read_its_events(home, holder):
    assert holder.codes(MORE) == []
    holder.run_main_loop()
    press = home.start("vqmctl", "remote", "press", "XF86More", "--times", "3", "--hold", "0", "--wait", "20000",
                       stderr=subprocess.PIPE)
    code, = wait_until(lambda: holder.codes(MORE), "the key is on the keyboard")
    assert press.poll() is None
    assert holder.key_events() == []
    holder.hold(MORE, "XF86More")
    ping = wait_until(holder.ping, "it asks whether the events have been read")
    assert holder.key_events() == 3 * [(X.KeyPress, code), (X.KeyRelease, code)]
    assert holder.codes(MORE) == [code]
    holder.answer(ping)
    wait_until(lambda: holder.codes(MORE) == [], "the key is off the keyboard")
    holder.publish()
    assert press.wait(timeout=PATIENCE) == 0
    assert press.stderr.read() == f"vqmctl: pressed and released XF86More 3 times, which {HOLDER} holds\n"
    assert holder.lent() == []


def test_a_key_whose_events_may_be_unread_is_left_to_the_next_press(home, holder):
    """The main loop does not run: nothing answers."""
    press = home.start("vqmctl", "remote", "press", "XF86More", "--wait", "20000", stderr=subprocess.PIPE)
    code, = wait_until(lambda: holder.codes(MORE), "the key is on the keyboard")
    holder.hold(MORE, "XF86More")
    assert press.wait(timeout=PATIENCE) == 1
    told = press.stderr.read()
    assert f"which {HOLDER} holds but has not read: it does not answer" in told
    assert f"it stays on keycode {code} until the next 'vqmctl remote press'" in told
    assert holder.codes(MORE) == [code]
    # It is used again, not lent a second time; and another key's press takes it off.
    assert home.vqmctl("remote", "press", "XF86More").returncode == 1
    assert holder.codes(MORE) == [code]
    holder.publish()
    assert home.vqmctl("remote", "press", "a", "--anyway").returncode == 0
    assert (holder.codes(MORE), holder.lent()) == ([], [])


def test_a_key_that_a_stopped_application_has_not_read_is_not_called_delivered(desktop, keyboard):
    application = desktop.start_application()
    os.kill(application.pid, signal.SIGSTOP)
    try:
        pressed = desktop.vqmctl("remote", "press", "XF86More", check=False)
    finally:
        os.kill(application.pid, signal.SIGCONT)
    assert pressed.returncode == 1
    assert pressed.stderr == (f"vqmctl: pressed and released XF86More, which {APP_ID} (pid {application.pid}) holds but has not "
                              f"read: it is stopped, and reads the key once 'kill -CONT {application.pid}' lets it go on\n")
    application.wait_for("not used in vqm mode")


@pytest.mark.parametrize("ending", [signal.SIGTERM, signal.SIGINT, signal.SIGHUP, signal.SIGKILL])
def test_a_lent_key_does_not_outlive_the_press_that_a_signal_ends(home, holder, ending):
    holder.run_main_loop()
    press = home.start("vqmctl", "remote", "press", "XF86More", "--hold", "60000", "--wait", "20000")
    wait_until(lambda: holder.codes(MORE), "the key is on the keyboard")
    holder.hold(MORE, "XF86More")
    wait_until(holder.key_events, "the key is down")
    press.send_signal(ending)
    if ending == signal.SIGKILL:
        # Then it is there still, but known to be lent, and the next press takes it off.
        assert press.wait(timeout=PATIENCE) == -ending
        assert home.vqmctl("remote", "keys", "--keyboard").stdout == ""
        assert home.vqmctl("remote", "keys").stdout == "XF86More\n"
        holder.publish()
        assert home.vqmctl("remote", "press", "a", "--anyway").returncode == 0
    else:
        holder.answer(wait_until(holder.ping, "it asks whether the events have been read"))
        wait_until(lambda: holder.codes(MORE) == [], "the key is off the keyboard")
        holder.publish()
        assert press.wait(timeout=PATIENCE) == -ending
    assert (holder.codes(MORE), holder.lent()) == ([], [])


def test_a_lent_key_stays_while_another_process_uses_it(home, holder):
    first = home.start("vqmctl", "remote", "press", "XF86More", "--anyway", "--hold", "60000")
    code, = wait_until(lambda: holder.codes(MORE), "the key is on the keyboard")
    # It gives up at once: nobody holds the key. The other's key is not its own to take off.
    assert home.vqmctl("remote", "press", "XF86More", "--wait", "0").returncode == 1
    assert holder.codes(MORE) == [code]
    assert first.poll() is None


def test_a_key_that_nobody_holds_is_not_left_on_the_keyboard(home, holder):
    assert home.vqmctl("remote", "press", "XF86More", "--wait", "0").returncode == 1
    assert (holder.codes(MORE), holder.lent()) == ([], [])


def test_a_forged_note_of_lent_keys_takes_nothing_off_the_keyboard(home, holder):
    code = holder.codes(0x61)[0]
    holder.root.change_property(holder.display.intern_atom("_TV_LENT_KEYS"), Xatom.CARDINAL, 32,
                                [code, 0x62, 1, 0, 0, 0, 0xFFFFFFFF, 0x61, 2, 300, 0x61, 3, code])
    holder.display.sync()
    assert home.vqmctl("remote", "press", "b", "--anyway").returncode == 0
    assert holder.codes(0x61) == [code]


def test_keys_says_when_none_is_held(home, holder):
    holder.run_main_loop()
    result = home.vqmctl("remote", "keys")
    assert (result.returncode, result.stdout) == (0, "")
    assert result.stderr == f"vqmctl: {HOLDER} holds no key: this keyboard has none that it wants\n"


def test_nobody_holds_a_key_without_the_application(home, screen):
    result = home.vqmctl("remote", "press", "XF86More", "--wait", "100")
    assert (result.returncode, result.stdout) == (1, "")
    assert result.stderr == (f"vqmctl: the application does not hold XF86More: {APP_ID} does not run on display "
                             f"'{home.environment['DISPLAY']}'\n")


def test_a_key_that_the_application_leaves_alone_is_sent_only_on_request(home, holder):
    code = holder.codes(0x61)[0]
    holder.root.grab_key(code, X.AnyModifier, False, X.GrabModeAsync, X.GrabModeAsync)
    holder.publish(held=["XF86More"])
    result = home.vqmctl("remote", "press", "a", "--wait", "100")
    assert result.returncode == 1
    assert result.stderr == (f"vqmctl: the application does not hold a: {APP_ID} (pid {os.getpid()}) leaves it to other programs; "
                             "--anyway sends it to them\n")
    assert holder.key_events() == []
    pressed = home.vqmctl("remote", "press", "a", "--anyway")
    assert (pressed.returncode, pressed.stdout, pressed.stderr) == (0, "", "vqmctl: pressed and released a\n")
    assert holder.key_events() == [(X.KeyPress, code), (X.KeyRelease, code)]


def test_a_key_that_another_program_has_is_said_to_be_taken(home, holder):
    holder.publish(failed=["XF86AudioPlay"])
    result = home.vqmctl("remote", "press", "XF86AudioPlay", "--wait", "100")
    assert result.returncode == 1
    assert result.stderr == (f"vqmctl: {APP_ID} (pid {os.getpid()}) does not hold XF86AudioPlay: "
                             "another program has taken it\n")


def test_a_signal_does_not_leave_the_key_down(home, holder):
    code = holder.codes(0x61)[0]
    holder.root.grab_key(code, X.AnyModifier, False, X.GrabModeAsync, X.GrabModeAsync)
    holder.display.sync()
    press = home.start("vqmctl", "remote", "press", "a", "--anyway", "--hold", "60000")
    assert wait_until(holder.key_events, "the key is down")[0] == (X.KeyPress, code)
    press.send_signal(signal.SIGTERM)
    assert press.wait(timeout=PATIENCE) == -signal.SIGTERM
    # What a held key repeats may come first.
    assert wait_until(holder.key_events, "the key is up")[-1] == (X.KeyRelease, code)


@pytest.mark.parametrize("environment, text", [
    ({"DISPLAY": ""}, "no display: DISPLAY is not set"),
    ({"DISPLAY": ":4711"}, "cannot open display ':4711'"),
])
def test_without_a_display_it_says_so(home, environment, text):
    result = home.vqmctl("remote", "press", "XF86More", **environment)
    assert (result.returncode, result.stderr) == (3, f"vqmctl: {text}\n")
