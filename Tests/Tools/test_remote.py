"""vqmctl remote press, on a real X server with a stand-in for the application."""

import os
import signal

import pytest
from home import APP_ID, PATIENCE, wait_until
from Xlib import X, Xatom, display as xdisplay

MORE = 0x1008FFF2


class Holder:
    """Holds keys as the application does, and says so on the selection's window."""

    def __init__(self, name):
        self.display = xdisplay.Display(name)
        self.root = self.display.screen().root
        self.window = self.root.create_window(-1, -1, 1, 1, 0, X.CopyFromParent)
        self.window.change_property(self.display.intern_atom("_TV_PID"), Xatom.CARDINAL, 32, [os.getpid()])
        self.publish()
        self.window.set_selection_owner(self.display.intern_atom(APP_ID), X.CurrentTime)
        self.display.sync()

    def publish(self, held=(), failed=()):
        for name, keys in (("_TV_HELD_KEYS", held), ("_TV_FAILED_KEYS", failed)):
            self.window.change_property(self.display.intern_atom(name), self.display.intern_atom("UTF8_STRING"), 8,
                                        "".join(key + "\0" for key in keys).encode())
        self.display.sync()

    def codes(self, symbol):
        first, last = self.display.display.info.min_keycode, self.display.display.info.max_keycode
        mapping = self.display.get_keyboard_mapping(first, last - first + 1)
        return [first + index for index, row in enumerate(mapping) if len(row) and row[0] == symbol]

    def hold(self, symbol, key):
        for code in self.codes(symbol):
            self.root.grab_key(code, X.AnyModifier, False, X.GrabModeAsync, X.GrabModeAsync)
        self.publish(held=[key])

    def key_events(self):
        events = []
        while self.display.pending_events():
            event = self.display.next_event()
            if event.type in (X.KeyPress, X.KeyRelease):
                events.append((event.type, event.detail))
        return events


@pytest.fixture
def holder(home, screen):
    return Holder(home.environment["DISPLAY"])


def test_a_key_that_the_keyboard_lacks_is_put_there_and_waited_for(home, holder):
    assert holder.codes(MORE) == []
    press = home.start("vqmctl", "remote", "press", "XF86More", "--times", "3", "--hold", "0", "--wait", "20000")
    code, = wait_until(lambda: holder.codes(MORE), "the key is on the keyboard")
    assert press.poll() is None
    assert holder.key_events() == []
    holder.hold(MORE, "XF86More")
    assert press.wait(timeout=PATIENCE) == 0
    assert holder.key_events() == 3 * [(X.KeyPress, code), (X.KeyRelease, code)]
    # The mapping stays, and the next press uses it.
    assert home.vqmctl("remote", "press", "XF86More").returncode == 0
    assert holder.codes(MORE) == [code]
    assert holder.key_events() == [(X.KeyPress, code), (X.KeyRelease, code)]


def test_nobody_holds_a_key_without_the_application(home, screen):
    result = home.vqmctl("remote", "press", "XF86More", "--wait", "100")
    assert (result.returncode, result.stdout) == (1, "")
    assert result.stderr == (f"vqmctl: nobody holds XF86More: {APP_ID} does not run on display "
                             f"'{home.environment['DISPLAY']}'\n")


def test_a_key_that_the_application_leaves_alone_is_sent_only_on_request(home, holder):
    code = holder.codes(0x61)[0]
    holder.root.grab_key(code, X.AnyModifier, False, X.GrabModeAsync, X.GrabModeAsync)
    holder.publish(held=["XF86More"])
    result = home.vqmctl("remote", "press", "a", "--wait", "100")
    assert result.returncode == 1
    assert result.stderr == (f"vqmctl: nobody holds a: {APP_ID} (pid {os.getpid()}) leaves it to other programs; "
                             "--anyway sends it to them\n")
    assert holder.key_events() == []
    assert home.vqmctl("remote", "press", "a", "--anyway").returncode == 0
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
