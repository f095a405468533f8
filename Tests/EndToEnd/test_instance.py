"""One instance holds the keys of a display."""

import signal

from desktop import APP_ID, PATIENCE, TOOL_KEYS, children_of, is_running, wait_until


def test_second_start_wakes_the_first_and_ends(desktop, keyboard):
    first = desktop.start_application("first")
    second = desktop.start_application("second", wait=False)
    assert second.process.wait(PATIENCE) == 0
    first.wait_for("_app_control() called end", 2)
    assert [line[2] for line in second.lines()] == ["VQMKeygrab main Start"], "neither popups nor keys were touched"

    keyboard.tap(TOOL_KEYS["XF86More"])
    first.wait_for("not used in vqm mode")
    assert first.process.poll() is None


def test_killed_instance_frees_the_name_at_once(desktop, keyboard):
    first = desktop.start_application("first")
    assert first.stop(signal.SIGKILL) == -signal.SIGKILL
    second = desktop.start_application("second")
    keyboard.tap(TOOL_KEYS["XF86More"])
    second.wait_for("not used in vqm mode")


def test_another_display_has_an_instance_of_its_own(desktop, keyboard, other_desktop):
    first = desktop.start_application()
    second = other_desktop.start_application()
    assert first.process.poll() is None
    assert second.process.poll() is None


def test_ended_instance_leaves_no_selection(desktop):
    connection = desktop.connect()
    atom = connection.intern_atom(APP_ID)
    application = desktop.start_application()
    assert connection.get_selection_owner(atom)
    application.stop()
    wait_until(lambda: not connection.get_selection_owner(atom), "the selection has no owner")
    assert not is_running(application.pid)


def test_ten_starts_at_once_leave_one_running(desktop):
    applications = [desktop.start_application(f"start-{index}", wait=False) for index in range(10)]

    def ended():
        return [application.process.poll() for application in applications if application.process.poll() is not None]

    wait_until(lambda: len(ended()) == 9, "nine of ten end")
    assert ended() == [0] * 9
    remaining = next(application for application in applications if application.process.poll() is None)
    remaining.wait_for("CVQMKeyGrab::CreateWindow finish")
    assert not children_of(remaining.pid)
