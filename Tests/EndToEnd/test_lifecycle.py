"""Start, language, idling and the end."""

import os
import shutil
import signal
import subprocess
import time
from pathlib import Path

import pytest

from desktop import BUILD, LANGUAGE_KEY, PATIENCE, TOOL_KEYS, Application, children_of, wait_until


def test_start_up_in_order(desktop, keyboard):
    application = desktop.start_application()
    wait_until(lambda: "_resume() called start" in application.messages(), "resumed once the window shows")
    lines = application.lines()
    assert lines[:3] == [
        ("D", "elm_main", "VQMKeygrab main Start"),
        ("D", "elm_main", "block popups start."),
        ("D", "elm_main", "block popups end"),
    ]
    assert [message for _, _, message in lines[3:]] == [
        "CVQMKeyGrab::CreateWindow ",
        "Device Info screen width get success: 1920",
        "Device Info screen height get success: 1080",
        "CVQMKeyGrab::OrExclusiveGrabKeys - Start",
        "CVQMKeyGrab::OrExclusiveGrabKeys - Finished",
        "CVQMKeyGrab::CreateWindow finish",
        "_app_control() called start",
        "_app_control() called end",
        "_resume() called start",
    ]
    assert {line[0] for line in lines[-3:]} == {"I"}


@pytest.mark.parametrize("signal_number", [signal.SIGTERM, signal.SIGINT, signal.SIGQUIT, signal.SIGHUP])
def test_orderly_end(desktop, keyboard, signal_number):
    application = desktop.start_application()
    wait_until(lambda: "_resume() called start" in application.messages(), "resumed")
    start = len(application.lines())
    assert application.stop(signal_number) == 0
    assert application.lines()[start:] == [
        ("I", "_pause", "_pause() called start"),
        ("I", "_terminate", "_terminate() called"),
        ("D", "~CVQMKeyGrab", "~CVQMKeyGrab"),
        ("D", "DestroyWindow", "DestroyWindow"),
        ("D", "DestroyWindow", "event callback delete"),
        ("D", "DestroyWindow", "m_background is not null"),
        ("D", "DestroyWindow", "m_evas is not null"),
        ("D", "DestroyWindow", "m_window is not null"),
        ("D", "elm_main", "Unblock popups start."),
        ("D", "elm_main", "Unblock popups end"),
        ("D", "elm_main", "VQMKeygrab main End"),
    ]


def test_started_with_hangups_ignored_it_goes_on_without_its_terminal(desktop):
    application = Application(
        ["sh", "-c", 'trap "" HUP; exec "$0"', BUILD / "bin/VQMKeygrab"], desktop.environment, desktop.root / "log"
    )
    desktop.programs.append(application)
    application.wait_for("_app_control() called end")
    application.process.send_signal(signal.SIGHUP)
    application.process.send_signal(signal.SIGHUP)
    desktop.start_application("second", wait=False).process.wait(PATIENCE)
    application.wait_for("_app_control() called end", 2)
    assert application.stop() == 0


def test_launched_companion_lives_on(desktop, keyboard):
    desktop.install_companion("trap 'echo alive > \"$HOME/alive\"' USR1\necho > \"$HOME/ready\"\nwhile :; do sleep 0.1; done\n")
    desktop.switch_on()
    application = desktop.start_application()
    keyboard.tap(TOOL_KEYS["XF86More"])
    application.wait_for("result = ")
    companion = application.results()[0]
    try:
        wait_until((desktop.home / "ready").exists, "the companion runs")
        assert application.stop() == 0
        os.kill(companion, signal.SIGUSR1)
        wait_until((desktop.home / "alive").exists, "the companion still answers")
    finally:
        os.kill(companion, signal.SIGKILL)


def test_language_set_changed_and_removed(desktop, keyboard):
    locales = desktop.root / "locales"
    locales.mkdir()
    for name in ("de_DE", "fr_FR"):
        subprocess.run(
            ["localedef", "-i", name, "-f", "UTF-8", str(locales / f"{name}.UTF-8")], check=True, capture_output=True
        )
    # A catalogue of the toolkit in a language of the test's own shows that the toolkit follows.
    application = desktop.start_application(LOCPATH=str(locales))
    for count, language in enumerate(["de_DE.UTF-8", "fr_FR.UTF-8", "de_DE.UTF-8"], start=1):
        desktop.store(LANGUAGE_KEY, language)
        application.wait_for("Set Lanauge: ", count)
        assert application.matching("Set Lanauge: ")[-1] == f"Set Lanauge: {language}"
        wait_until(lambda: maps_locale(application.pid, locales / language), f"{language} is the process's locale")
    (desktop.settings / LANGUAGE_KEY).unlink()
    application.wait_for("Can not Set multi-language mode!! ")
    assert application.lines()[-1] == ("D", "_languageChange", "Can not Set multi-language mode!! ")
    assert len(application.matching("Set Lanauge: ")) == 3
    assert application.stop() == 0


def maps_locale(pid, locale):
    """The C library maps the files of the locale that a process has set."""
    return str(locale) in Path(f"/proc/{pid}/maps").read_text()


def test_thirty_idle_seconds_without_a_wake_up(desktop, keyboard, other_desktop):
    # A `vqmctl status` without DISPLAY, in another test, wakes the application that is the only one to be found.
    other_desktop.start_application()
    application = desktop.start_application()
    application.wait_until_idle()
    time.sleep(3)  # let the start-up's own timers run out

    def switches():
        total = {}
        for task in Path(f"/proc/{application.pid}/task").iterdir():
            for line in (task / "status").read_text().splitlines():
                if line.startswith("voluntary_ctxt_switches"):
                    total[task.name, (task / "comm").read_text().strip()] = int(line.split()[1])
        return total

    before = switches()
    time.sleep(30)
    assert switches() == before
    assert not children_of(application.pid)


def test_tools_of_the_tests_are_there():
    for tool in ("Xvfb", "openbox", "xterm", "localedef", "nm"):
        assert shutil.which(tool), f"{tool} is missing"
