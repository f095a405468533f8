"""Ends that nobody asked for: each has a clear last line, an exit code that is not 0 and no core."""

import signal
import subprocess
import time

import pytest

from desktop import APP_ID, BUILD, PATIENCE, wait_until

ABORTS = {-signal.SIGABRT, -signal.SIGSEGV, -signal.SIGBUS, -signal.SIGILL}


def ends_clearly(application, seconds=5):
    """Within the time, with a code that is not 0, and a last line of the platform's that says why."""
    started = time.monotonic()
    code = application.process.wait(PATIENCE)
    assert time.monotonic() - started < seconds + 5
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

    def windows(window):
        for child in window.query_tree().children:
            yield child
            yield from windows(child)

    own = [
        window
        for window in windows(connection.screen().root)
        if "VQMKeygrab" in (window.get_wm_class() or ()) or window.get_wm_name() == "VQMKeygrab"
    ]
    assert own
    own[0].kill_client()
    connection.sync()
    ends_clearly(application)


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
    """As a user who may write nowhere but /tmp: either it runs, or it says why it does not."""
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
