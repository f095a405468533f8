"""vqmctl keys watch, on a real X server with a stand-in for the application."""
import json
import os
import signal
import subprocess

import jsonschema
import pytest
from holder import Holder
from home import APP_ID, BUILD, PATIENCE, ROOT, wait_until
from Xlib import X
from Xlib.ext import xtest

SCHEMA = json.loads((ROOT / "Docs/schemas/keys-watch.schema.json").read_text())
A, UP, PLAY = 0x61, 0xFF52, 0x1008FF14


class Watcher:
    """The command, with what it has printed so far."""

    def __init__(self, home, *options, talk="talk", **popen):
        self.output = open(home.folder / "keys", "w+b")  # noqa: SIM115
        self.talk = open(home.folder / talk, "w+b")  # noqa: SIM115
        self.process = subprocess.Popen([BUILD / "bin/vqmctl", "keys", "watch", *options], env=home.environment,
                                        stdin=subprocess.DEVNULL, stdout=popen.pop("stdout", self.output), stderr=self.talk, **popen)
        home.running.append(self.process)

    def watching(self):
        wait_until(lambda: "watching the keys" in self.said(), "it watches")
        return self

    def said(self):
        self.talk.seek(0)
        return self.talk.read().decode()

    def lines(self, count):
        """The lines printed, once there are so many."""
        def read():
            self.output.seek(0)
            return self.output.read().decode().splitlines()
        wait_until(lambda: len(read()) >= count, f"{count} lines")
        return read()

    def end(self, number=signal.SIGINT):
        self.process.send_signal(number)
        return self.process.wait(timeout=PATIENCE)


@pytest.fixture
def holder(home, screen):
    return Holder(home.environment["DISPLAY"])


def press(display, code):
    for event in (X.KeyPress, X.KeyRelease):
        xtest.fake_input(display, event, code)
    display.sync()


def publish_released(holder, *keys):
    holder.window.change_property(holder.display.intern_atom("_TV_RELEASED_KEYS"), holder.display.intern_atom("UTF8_STRING"), 8,
                                  "".join(key + "\0" for key in keys).encode())
    holder.display.sync()


def test_each_event_says_what_the_application_does_with_the_key(home, holder):
    play, up, a = holder.codes(PLAY)[0], holder.codes(UP)[0], holder.codes(A)[0]
    holder.hold(PLAY, "XF86AudioPlay")
    publish_released(holder, "Up")
    watcher = Watcher(home).watching()
    assert watcher.said() == (f"vqmctl: watching the keys of display '{holder.display.get_display_name()}'; "
                              f"{APP_ID} (pid {os.getpid()}) runs; Ctrl-C ends this\n")
    for code in (play, up, a):
        press(holder.display, code)
    assert watcher.lines(6) == [
        f"press    XF86AudioPlay         key code {play}  id 24   held",
        f"release  XF86AudioPlay         key code {play}  id 24   held",
        f"press    Up                    key code {up}  id 26   handed back",
        f"release  Up                    key code {up}  id 26   handed back",
        f"press    a                     key code {a}   no id   neither",
        f"release  a                     key code {a}   no id   neither",
    ]
    # The application got its key all the same.
    assert wait_until(holder.key_events, "its events") == [(X.KeyPress, play), (X.KeyRelease, play)]
    assert watcher.end() == 0


def test_it_follows_the_application_and_the_mapping(home, screen):
    watcher = Watcher(home, "--json").watching()
    assert f"{APP_ID} does not run" in watcher.said()
    holder = Holder(home.environment["DISPLAY"])
    a = holder.codes(A)[0]
    holder.publish(failed=["a"])
    press(holder.display, a)
    watcher.lines(2)
    holder.window.destroy()
    holder.display.change_keyboard_mapping(a, [[UP] * 4])
    holder.display.sync()
    press(holder.display, a)
    told = [json.loads(line) for line in watcher.lines(4)]
    for document in told:
        jsonschema.Draft202012Validator(SCHEMA).validate(document)
    assert told[0] == {"schema_version": 1, "event": "press", "keysym": "a", "key_code": a, "key_id": None,
                       "application": "neither", "reason": "taken"}
    assert told[3] == {"schema_version": 1, "event": "release", "keysym": "Up", "key_code": a, "key_id": 26,
                       "application": "neither", "reason": "not-running"}


def test_it_takes_no_key_from_a_program_with_the_focus_or_the_keyboard(home, screen):
    watcher = Watcher(home).watching()
    root = screen.screen().root
    first = screen.display.info.min_keycode + 30
    root.grab_keyboard(True, X.GrabModeAsync, X.GrabModeAsync, X.CurrentTime)
    screen.sync()
    press(screen, first)
    assert len(watcher.lines(2)) == 2
    received = []
    while len(received) < 2:
        event = wait_until(lambda: screen.pending_events() and screen.next_event(), "the key's events")
        if event.type != X.MappingNotify:
            received.append((event.type, event.detail))
    assert received == [(X.KeyPress, first), (X.KeyRelease, first)]


@pytest.mark.parametrize("number", [signal.SIGINT, signal.SIGTERM, signal.SIGHUP, signal.SIGQUIT])
def test_a_signal_ends_it(home, screen, number):
    assert Watcher(home).watching().end(number) == 0


def test_the_end_of_the_server_is_told(home, x_server):
    watcher = Watcher(home).watching()
    x_server.stop()
    assert watcher.process.wait(timeout=PATIENCE) == 3
    assert watcher.said().endswith(f"vqmctl: display '{x_server.display}' is gone\n")


def test_a_stopped_server_is_told(home, x_server):
    watcher = Watcher(home).watching()
    x_server.process.send_signal(signal.SIGSTOP)
    try:
        late = Watcher(home, talk="late")
        assert watcher.process.wait(timeout=PATIENCE) == 3
        assert watcher.said().endswith(f"vqmctl: display '{x_server.display}' does not answer\n")
        assert late.process.wait(timeout=PATIENCE) == 3
        assert late.said() == f"vqmctl: display '{x_server.display}' does not answer\n"
    finally:
        x_server.process.send_signal(signal.SIGCONT)


def test_ctrl_c_ends_it_while_the_server_is_stopped(home, x_server):
    watcher = Watcher(home).watching()
    x_server.process.send_signal(signal.SIGSTOP)
    try:
        # Within the time that the server has to answer a second one may be needed.
        watcher.process.send_signal(signal.SIGINT)
        watcher.process.send_signal(signal.SIGINT)
        assert watcher.process.wait(timeout=PATIENCE) in (0, 3, -signal.SIGINT)
    finally:
        x_server.process.send_signal(signal.SIGCONT)


def test_it_ends_with_its_reader(home, screen):
    read, write = os.pipe()
    watcher = Watcher(home, stdout=write).watching()
    os.close(write)
    os.close(read)
    assert watcher.process.wait(timeout=PATIENCE) == 0


def test_what_cannot_be_written_is_told(home, screen):
    with open("/dev/full", "wb") as full:
        watcher = Watcher(home, stdout=full).watching()
    press(screen, 38)
    assert watcher.process.wait(timeout=PATIENCE) == 3
    assert watcher.said().endswith("vqmctl: cannot write to stdout: No space left on device\n")


def test_a_forged_list_is_no_more_than_a_list(home, holder):
    publish_released(holder, "\x1b[31m", "a", "b\n")
    watcher = Watcher(home).watching()
    press(holder.display, holder.codes(A)[0])
    assert watcher.lines(2)[0].endswith("handed back")


@pytest.mark.parametrize("environment, text", [
    ({"DISPLAY": ""}, "no display: DISPLAY is not set"),
    ({"DISPLAY": ":4711"}, "cannot open display ':4711'"),
])
def test_without_a_display_it_says_so(home, environment, text):
    result = home.vqmctl("keys", "watch", **environment)
    assert (result.returncode, result.stdout, result.stderr) == (3, "", f"vqmctl: {text}\n")
