"""Grabs that fail, and keyboards that change."""

import json
import subprocess

import pytest
from Xlib import X
from Xlib.ext import xtest

from desktop import APP_ID, TOOL_KEYS, Keyboard, keysym, new_desktop, wait_until
from home import BUILD, PATIENCE

MORE = TOOL_KEYS["XF86More"]
MENU = TOOL_KEYS["XF86SimpleMenu"]


def hold(desktop, keyboard, symbol, modifiers):
    """Another client grabs a key."""
    other = desktop.connect()
    other.screen().root.grab_key(keyboard.keycode(symbol), modifiers, True, X.GrabModeAsync, X.GrabModeAsync)
    other.sync()
    return other


def platform_lines(application):
    return [line for line in application.output().splitlines() if "Quillmere" not in line]


def test_key_held_by_another_client_is_named_and_the_rest_is_grabbed(desktop, keyboard):
    hold(desktop, keyboard, MORE, X.AnyModifier)
    application = desktop.start_application()
    wait_until(lambda: any("XF86More" in line for line in platform_lines(application)), "the failed key is named")
    assert not any("XF86SimpleMenu" in line for line in platform_lines(application))
    keyboard.tap(MENU)
    application.wait_for("not used in vqm mode")
    pressed = desktop.vqmctl("remote", "press", "XF86More", check=False)
    assert pressed.returncode == 1
    assert "XF86More" in pressed.stderr


def test_one_combination_held_by_another_client_leaves_the_others(desktop, keyboard):
    hold(desktop, keyboard, MORE, X.ControlMask)
    application = desktop.start_application()
    keyboard.tap(MORE)
    application.wait_for("not used in vqm mode")


def test_watched_keys_are_held_or_handed_back_as_the_application_does(desktop, keyboard):
    desktop.start_application()
    keys, talk = desktop.root / "keys", desktop.root / "talk"
    with open(keys, "w") as output, open(talk, "w") as messages:
        watch = subprocess.Popen([BUILD / "bin/vqmctl", "keys", "watch", "--json"], env=desktop.environment,
                                 stdout=output, stderr=messages)
    try:
        wait_until(lambda: "runs" in talk.read_text(), "it watches")
        for symbol in (MORE, keysym("Up"), keysym("a")):
            keyboard.tap(symbol)
        lines = wait_until(lambda: len(found := keys.read_text().splitlines()) == 6 and found,
                           "each press and release is printed")
        told = [json.loads(line) for line in lines]
        assert [(each["event"], each["keysym"], each["key_id"], each["application"]) for each in told] == [
            (event, *key) for key in (("XF86More", 1, "held"), ("Up", 26, "handed-back"), ("a", None, "neither"))
            for event in ("press", "release")]
    finally:
        watch.terminate()
        assert watch.wait(timeout=PATIENCE) == 0


@pytest.mark.parametrize("lock", ["Caps_Lock", "Num_Lock"])
def test_locks_do_not_keep_a_key_away(desktop, keyboard, lock):
    hold(desktop, keyboard, MORE, X.ControlMask)
    application = desktop.start_application()
    keyboard.tap(keysym(lock))
    keyboard.tap(MORE)
    application.wait_for("not used in vqm mode")


def test_tool_key_on_another_keycode_is_grabbed_there(desktop, keyboard):
    application = desktop.start_application()
    old = keyboard.keycode(MORE)
    keyboard.display.change_keyboard_mapping(old, [[0]])
    keyboard.own.clear()
    keyboard.add(0x1008FFAA, MORE)  # another spare keycode than before
    keyboard.display.sync()
    wait_until(lambda: try_tap(keyboard, application), "the key works on its new keycode")


def try_tap(keyboard, application):
    keyboard.tap(MORE)
    return application.matching("not used in vqm mode")


def test_tool_key_that_appears_after_the_start(desktop):
    application = desktop.start_application()
    keyboard = Keyboard(desktop)
    keyboard.add(MORE)
    wait_until(lambda: try_tap(keyboard, application), "the new key works")


def test_setxkbmap_and_xmodmap(desktop, keyboard):
    application = desktop.start_application()
    subprocess.run(["setxkbmap", "de"], env=desktop.environment, check=True)
    code = 250
    subprocess.run(
        ["xmodmap", "-e", f"keycode {code} = 0x{MORE:x}"], env=desktop.environment, check=True, capture_output=True
    )
    wait_until(lambda: tap_code(keyboard, code, application), "the key works after the layout changed")


def tap_code(keyboard, code, application):
    xtest.fake_input(keyboard.display, X.KeyPress, code)
    xtest.fake_input(keyboard.display, X.KeyRelease, code)
    keyboard.display.sync()
    return application.matching("not used in vqm mode")


def test_added_keyboard(desktop, keyboard):
    application = desktop.start_application()
    subprocess.run(["xinput", "create-master", "second"], env=desktop.environment, check=True)
    wait_until(lambda: try_tap(keyboard, application), "the key works beside a new keyboard")


def on_keyboard(keyboard, *symbols):
    return [code for code, row in keyboard.mapping().items() if set(row) & set(symbols)]


def test_presses_of_lent_keys_at_once_all_arrive_and_leave_the_keyboard_as_it_was(desktop):
    application = desktop.start_application()
    keyboard = Keyboard(desktop)
    script = 'for i in 1 2 3 4 5 6 7 8 9 10; do "$0" remote press "$1" --hold 0 --wait 60000 || exit; done'
    rows = [
        desktop.run(["sh", "-c", script, BUILD / "bin/vqmctl", name], f"presses-{index}")
        for index, name in enumerate(2 * list(TOOL_KEYS))
    ]
    assert [row.process.wait(4 * PATIENCE) for row in rows] == [0] * 4
    application.wait_for("not used in vqm mode", 40)
    assert len(application.matching("not used in vqm mode")) == 40
    assert not on_keyboard(keyboard, *TOOL_KEYS.values())


def test_a_keyboard_change_while_a_lent_key_is_down_loses_no_release(desktop):
    application = desktop.start_application()
    press = desktop.run([BUILD / "bin/vqmctl", "remote", "press", "XF86More", "--hold", "1500", "--wait", "60000"])
    keyboard = Keyboard(desktop)
    wait_until(lambda: on_keyboard(keyboard, MORE), "the key is lent")
    keyboard.add(0x1008FFAA)
    assert press.process.wait(2 * PATIENCE) == 0
    application.wait_for("not used in vqm mode")
    assert not on_keyboard(keyboard, MORE)


@pytest.mark.parametrize("modifiers", [X.AnyModifier, X.ControlMask])
@pytest.mark.parametrize("end", ["releases it", "disconnects"])
def test_key_that_another_client_gives_up_is_taken(desktop, keyboard, modifiers, end):
    other = hold(desktop, keyboard, MORE, modifiers)
    application = desktop.start_application()
    wait_until(lambda: any("XF86More" in line for line in platform_lines(application)), "the failed key is named")
    if end == "disconnects":
        other.close()
    else:
        other.screen().root.ungrab_key(keyboard.keycode(MORE), modifiers)
        other.sync()
    connection = desktop.connect()
    wait_until(lambda: not failed_keys(connection), "no key fails any more")
    keyboard.tap(MORE)
    application.wait_for("not used in vqm mode")


def failed_keys(connection):
    """The failures that the application publishes."""
    owner = connection.get_selection_owner(connection.intern_atom(APP_ID))
    names = owner.get_full_property(connection.intern_atom("_TV_FAILED_KEYS"), X.AnyPropertyType)
    return names.value if names else b""


@pytest.fixture
def two_screens():
    created = new_desktop(server_options=["-screen", "1", "800x600x24"])
    yield created
    created.close()


@pytest.mark.parametrize("focused", [0, 1])
def test_keys_arrive_with_the_focus_on_any_screen(two_screens, focused):
    keyboard = Keyboard(two_screens)
    keyboard.add(*TOOL_KEYS.values())
    application = two_screens.start_application()
    connection = two_screens.connect()
    screen = connection.screen(focused)
    window = screen.root.create_window(0, 0, 100, 100, 0, screen.root_depth, override_redirect=True)
    window.map()
    connection.sync()
    window.set_input_focus(X.RevertToParent, X.CurrentTime)
    connection.sync()
    assert connection.get_input_focus().focus.id == window.id
    keyboard.tap(MENU)
    keyboard.tap(MORE)
    application.wait_for("not used in vqm mode", 2)


def test_key_held_on_another_screen_only_is_named(two_screens):
    keyboard = Keyboard(two_screens)
    keyboard.add(*TOOL_KEYS.values())
    other = two_screens.connect()
    other.screen(1).root.grab_key(keyboard.keycode(MORE), X.AnyModifier, True, X.GrabModeAsync, X.GrabModeAsync)
    other.sync()
    application = two_screens.start_application()
    wait_until(lambda: any("XF86More" in line for line in platform_lines(application)), "the failed key is named")
    keyboard.tap(MORE)
    application.wait_for("not used in vqm mode")
