"""The companion: one window, raised by a second start, showing the setting as it is."""

import configparser
import signal
import subprocess
import time

import pytest
from desktop import children_of
from home import APP_ID, BUILD, PATIENCE, wait_until
from windows import find_shown
from Xlib import X


def window(screen):
    return find_shown(screen, "sync-demo")


def picture(shown):
    size = shown.get_geometry()
    return shown.get_image(0, 0, size.width, size.height, X.ZPixmap, 0xFFFFFFFF).data


def is_drawn(shown):
    return len(set(picture(shown))) > 16


@pytest.fixture
def companion(home, screen):
    home.store("1")
    process = home.start("VQMCompanion", stderr=subprocess.PIPE)
    wait_until(lambda: window(screen), "the window is there")
    return process


def test_it_draws_itself_without_a_window_manager_and_follows_the_setting(home, screen, companion):
    shown = window(screen)
    wait_until(lambda: is_drawn(shown), "the window is drawn")
    on = picture(shown)
    assert home.vqmctl("setting", "off").returncode == 0
    wait_until(lambda: picture(shown) != on, "the window shows the change")


def test_sigterm_ends_it_with_0_and_nothing_it_started_stays(companion):
    assert not children_of(companion.pid)
    companion.send_signal(signal.SIGTERM)
    assert companion.wait(timeout=PATIENCE) == 0


def test_a_second_start_raises_the_first_and_ends(home, screen, companion):
    root = screen.screen().root
    cover = root.create_window(0, 0, 1280, 720, 0, X.CopyFromParent, override_redirect=True)
    cover.map()
    screen.sync()
    assert root.query_tree().children[-1].id == cover.id
    second = home.start("VQMCompanion")
    assert second.wait(timeout=PATIENCE) == 0
    wait_until(lambda: root.query_tree().children[-1].id == window(screen).id, "the window is on top")
    assert companion.poll() is None


def test_start_right_after_the_signal_to_end_takes_over(home, screen, companion):
    running = companion
    for _ in range(5):
        running.send_signal(signal.SIGTERM)
        successor = home.start("VQMCompanion")
        assert running.wait(timeout=PATIENCE) == 0
        wait_until(lambda: window(screen), "the window is there")
        running = successor
    assert running.poll() is None


def test_start_that_finds_a_companion_that_has_not_yet_seen_its_signal_takes_over(home, screen, companion):
    companion.send_signal(signal.SIGSTOP)
    companion.send_signal(signal.SIGTERM)
    second = home.start("VQMCompanion")
    time.sleep(0.5)  # it asks the first, which does not run
    companion.send_signal(signal.SIGCONT)
    assert companion.wait(timeout=PATIENCE) == 0
    wait_until(lambda: window(screen), "the window is there")
    assert second.poll() is None


def test_hangup_ends_it_with_0(companion):
    companion.send_signal(signal.SIGHUP)
    assert companion.wait(timeout=PATIENCE) == 0


def test_signal_ends_it_though_the_x_server_does_not_answer(x_server, companion):
    x_server.process.send_signal(signal.SIGSTOP)
    companion.send_signal(signal.SIGTERM)
    companion.wait(timeout=PATIENCE)
    x_server.process.send_signal(signal.SIGCONT)


@pytest.mark.parametrize("key", ["Escape", "XF86Back", "Return"])
def test_leaving_keys_close_it(home, screen, companion, key):
    wait_until(lambda: screen.get_input_focus().focus == window(screen), "the window has the focus")
    wait_until(lambda: is_drawn(window(screen)), "the window is drawn")
    assert home.vqmctl("remote", "press", key, "--anyway").returncode == 0
    assert companion.wait(timeout=PATIENCE) == 0


def test_without_a_display_it_says_so(home):
    result = subprocess.run([BUILD / "bin/VQMCompanion"], env={**home.environment, "DISPLAY": ":4711"},
                            capture_output=True, text=True, timeout=2 * PATIENCE)
    assert (result.returncode, result.stderr) == (
        3, "VQMCompanion: cannot open the display that DISPLAY names\n")


def test_its_desktop_entry_starts_the_built_program():
    entry = configparser.ConfigParser(interpolation=None)
    entry.optionxform = str
    entry.read(BUILD / "entries/applications" / f"{APP_ID}.gui.desktop")
    assert entry["Desktop Entry"]["Exec"] == f'"{BUILD}/bin/VQMCompanion"'
