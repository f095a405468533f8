"""Unexpected ends: each has a clear last line, an exit code that is not 0 and no core."""

import signal
import subprocess

import pytest

from desktop import APP_ID, BUILD, PATIENCE, TOOL_KEYS, wait_until
from notifications import start_dunst
from windows import find_key_window

ABORTS = {-signal.SIGABRT, -signal.SIGSEGV, -signal.SIGBUS, -signal.SIGILL}


def ends_clearly(application):
    """With a code that is not 0, and a last line of the platform's that says why."""
    code = application.process.wait(PATIENCE)
    assert code != 0
    assert code not in ABORTS, application.output()
    lines = [line for line in application.output().splitlines() if line.strip()]
    assert lines, "not a word"
    return code, lines[-1]


def test_killed_x_server(desktop):
    application = desktop.start_application()
    desktop.server.send_signal(signal.SIGKILL)
    _, last = ends_clearly(application)
    assert "X" in last


def test_killed_connection(desktop):
    application = desktop.start_application()
    connection = desktop.connect()
    find_key_window(connection).kill_client()
    connection.sync()
    ends_clearly(application)


def test_window_closed_by_another_client_takes_no_key_away(desktop, keyboard):
    application = desktop.start_application()
    application.wait_for("_resume() called start")
    connection = desktop.connect()
    find_key_window(connection).destroy()
    connection.sync()
    wait_until(lambda: "another program has closed" in application.output(), "it notices")
    for _ in range(50):
        keyboard.tap(TOOL_KEYS["XF86More"])
    application.wait_for("not used in vqm mode", 50)
    lines = len(application.output().splitlines())
    assert application.stop() == 0
    ending = application.output().splitlines()[lines:]
    assert all("Quillmere" in line for line in ending), ending
    assert application.messages()[-1] == "VQMKeygrab main End"


def dunst_is_paused(desktop):
    completed = subprocess.run(
        ["dunstctl", "is-paused"], env=desktop.environment, capture_output=True, text=True, timeout=PATIENCE
    )
    return completed.stdout.strip() == "true"


def test_toolkit_that_opens_no_window(desktop):
    """A developer's variable gives the toolkit a window without a display."""
    application = desktop.start_application(wait=False, EFL_RUN_IN_TREE="1")
    ends_clearly(application)
    assert "no window that keys could arrive at" in application.output()


SIGNALS = [signal.SIGTERM, signal.SIGINT, signal.SIGQUIT, signal.SIGHUP]


@pytest.mark.parametrize("signal_number", SIGNALS)
def test_signal_ends_a_start_on_a_display_that_does_not_answer(desktop, signal_number):
    desktop.server.send_signal(signal.SIGSTOP)  # it accepts connections all the same
    application = desktop.start_application(wait=False)
    application.wait_for("VQMKeygrab main Start")
    application.process.send_signal(signal_number)
    ends_clearly(application)


@pytest.mark.parametrize("signal_number", SIGNALS)
def test_signal_ends_it_though_the_x_server_does_not_answer(bus, signal_number):
    start_dunst(bus)
    application = bus.start_application()
    assert dunst_is_paused(bus)
    application.wait_until_idle()  # it ends in order unless it waits for the server when the signal comes
    bus.server.send_signal(signal.SIGSTOP)
    application.process.send_signal(signal_number)
    application.process.wait(PATIENCE)
    assert application.messages()[-1] == "VQMKeygrab main End"
    bus.server.send_signal(signal.SIGCONT)
    assert not dunst_is_paused(bus)


def test_killed_second_connection(desktop):
    application = desktop.start_application()
    connection = desktop.connect()
    connection.get_selection_owner(connection.intern_atom(APP_ID)).kill_client()
    connection.sync()
    ends_clearly(application)


@pytest.mark.parametrize("display", [None, "", ":4711", "nonsense"])
def test_no_display(desktop, display):
    if display is None:
        del desktop.environment["DISPLAY"]
    else:
        desktop.environment["DISPLAY"] = display
    application = desktop.start_application(wait=False)
    ends_clearly(application)
    assert "display" in application.output().lower()


@pytest.mark.parametrize("home", ["unset", "missing", "unwritable"])
@pytest.mark.parametrize("runtime", ["unset", "missing", "unwritable"])
def test_home_and_runtime_directory_unset_or_unwritable(desktop, home, runtime):
    """As a user who may write only to /tmp, the application either runs or reports why it does not."""
    for name, state in (("HOME", home), ("XDG_RUNTIME_DIR", runtime)):
        if state == "unset":
            desktop.environment.pop(name)
        else:
            desktop.environment[name] = "/nonexistent" if state == "missing" else "/proc/1"
    for name in ("XDG_CONFIG_HOME", "XDG_DATA_HOME"):
        desktop.environment.pop(name)
    application = desktop.start_application(wait=False)
    wait_until(
        lambda: application.process.poll() is not None or application.matching("_app_control() called end"),
        "it runs or ends",
    )
    if application.process.poll() is None:
        assert application.stop() == 0
    else:
        ends_clearly(application)


def test_closed_standard_streams(desktop):
    """A service manager may hand over nothing at all."""
    process = subprocess.Popen(
        ["sh", "-c", 'exec "$0" <&- >&- 2>&-', BUILD / "bin/VQMKeygrab"], env=desktop.environment
    )
    try:
        connection = desktop.connect()
        atom = connection.intern_atom(APP_ID)
        wait_until(lambda: connection.get_selection_owner(atom), "it runs")
        process.terminate()
        assert process.wait(PATIENCE) == 0
    finally:
        process.kill()
        process.wait()
