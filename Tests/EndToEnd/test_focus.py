"""The keys arrive with the focus on any window, and the desktop is not disturbed."""

import re
import subprocess
import time

import pytest
from Xlib import X

from desktop import TOOL_KEYS, FocusedClient, keysym, screenshot, wait_until
from windows import find_shown

COMPANION = 'echo $$ >> "$HOME/launched"\n'


@pytest.fixture(params=["no window manager", "openbox"])
def managed_desktop(request, desktop):
    if request.param == "openbox":
        desktop.run(["openbox", "--sm-disable"])
        connection = desktop.connect()
        wait_until(lambda: is_managed(connection), "openbox manages windows")
    return desktop


def is_managed(connection):
    """Shows a window for a moment: openbox loses the ones that appear while it starts."""
    screen = connection.screen()
    window = screen.root.create_window(0, 0, 10, 10, 0, screen.root_depth)
    window.map()
    connection.sync()
    time.sleep(0.3)
    managed = window.get_full_property(connection.intern_atom("WM_STATE"), X.AnyPropertyType) is not None
    window.destroy()
    connection.sync()
    return managed


def test_tool_key_arrives_while_another_client_keeps_the_focus(managed_desktop, keyboard):
    desktop = managed_desktop
    desktop.install_companion(COMPANION)
    desktop.switch_on()
    client = FocusedClient(desktop)
    client.take_focus()
    application = desktop.start_application()
    for count, keysym_number in enumerate(TOOL_KEYS.values(), start=1):
        keyboard.tap(keysym_number)
        application.wait_for("result = ", count)
    # Events arrive in order: what the client gets before this key is all that it gets of the others.
    keyboard.tap(keysym("a"))
    wait_until(lambda: keysym("a") in client.poll(), "a key that is not grabbed reaches the client")
    assert client.keys == [keysym("a")], "a grabbed key does not reach the focused client"
    assert client.has_focus()
    assert client.focus_lost == 0


def test_xterm_keeps_the_focus(managed_desktop, keyboard):
    desktop = managed_desktop
    typed = desktop.root / "typed"
    desktop.run(["xterm", "-geometry", "80x24", "-e", "sh", "-c", f"cat > {typed}"])
    connection = desktop.connect()
    xterm = wait_until(lambda: find_shown(connection, "xterm"), "the xterm shows")

    def focus():
        xterm.set_input_focus(X.RevertToParent, X.CurrentTime)
        connection.sync()
        return connection.get_input_focus().focus.id

    wait_until(typed.exists, "its shell runs")
    focused = focus()
    desktop.switch_on()
    desktop.install_companion(COMPANION)
    application = desktop.start_application()
    for key in "abc":
        keyboard.tap(keysym(key))
    keyboard.tap(TOOL_KEYS["XF86More"])
    application.wait_for("result = ")
    keyboard.tap(keysym("1"))
    keyboard.tap(keysym("Return"))
    wait_until(lambda: typed.read_text() == "abc1\n", "the typed text reaches the xterm")
    assert connection.get_input_focus().focus.id == focused


def test_no_window_is_seen_and_no_taskbar_entry(managed_desktop):
    desktop = managed_desktop
    connection = desktop.connect()
    client = FocusedClient(desktop)
    client.take_focus()
    before = screenshot(connection)
    application = desktop.start_application()
    time.sleep(1)
    assert screenshot(connection) == before
    root = connection.screen().root
    listed = root.get_full_property(connection.intern_atom("_NET_CLIENT_LIST"), X.AnyPropertyType)
    for window_id in listed.value if listed else []:
        window = connection.create_resource_object("window", window_id)
        if "VQMKeygrab" in (window.get_wm_class() or ()):
            state = window.get_full_property(connection.intern_atom("_NET_WM_STATE"), X.AnyPropertyType)
            names = [connection.get_atom_name(atom) for atom in state.value]
            assert "_NET_WM_STATE_SKIP_TASKBAR" in names
            assert "_NET_WM_STATE_SKIP_PAGER" in names
    assert application.stop() == 0
    client.poll()
    assert client.focus_lost == 0


HANDED_BACK = [
    "XF86PowerOff", "Escape", "Up", "Down", "Left", "Right", "Return", "XF86Back",
    "XF86AudioRaiseVolume", "XF86AudioLowerVolume",
]


def test_letters_digits_and_the_keys_handed_back_reach_the_other_client(desktop, keyboard):
    keys = [keysym(name) for name in [*"az09", "space", "F1", *HANDED_BACK]]
    keyboard.add(*keys)
    desktop.start_application()
    client = FocusedClient(desktop)
    client.take_focus()
    for key in keys:
        keyboard.tap(key)
    wait_until(lambda: len(client.poll()) >= len(keys), f"all of {keys} in {client.keys}")
    assert client.keys == keys


def test_a_grabbed_key_does_not_reach_the_other_client_and_is_free_afterwards(desktop, keyboard):
    play = keysym("XF86AudioPlay")
    keyboard.add(play)
    application = desktop.start_application()
    client = FocusedClient(desktop)
    client.take_focus()
    keyboard.tap(play)
    keyboard.tap(keysym("a"))
    wait_until(lambda: keysym("a") in client.poll(), "the letter arrives")
    assert client.keys == [keysym("a")]
    assert application.stop() == 0
    for number in (play, *TOOL_KEYS.values()):
        keyboard.tap(number)
    wait_until(lambda: len(client.poll()) == 4, "the keys are free once the process has ended")
    assert client.keys[1:] == [play, *TOOL_KEYS.values()]


def test_exported_objects_are_in_the_executable():
    from desktop import EXECUTABLES

    symbols = subprocess.run(
        ["nm", "-D", "--defined-only", EXECUTABLES / "VQMKeygrab"], check=True, capture_output=True, text=True
    ).stdout
    assert re.search(r"\b[BD] gkeygrab$", symbols, re.MULTILINE)
    assert re.search(r"\b[BD] _ZN11CVQMKeyGrab5xinfoE$", symbols, re.MULTILINE)
    assert re.search(r"\b[DR] SocketStateString$", symbols, re.MULTILINE)
