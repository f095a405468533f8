"""Programs that are started with closed descriptors: no file of theirs becomes stdin, stdout or stderr."""

import contextlib
import itertools
import os
import socket
import struct
import subprocess
import threading
from pathlib import Path

import pytest

from desktop import BUILD, PATIENCE, TOOL_KEYS, wait_until

SUBSETS = [closed for count in (1, 2, 3) for closed in itertools.combinations((0, 1, 2), count)]


def close(descriptors):
    def in_the_child():
        for descriptor in descriptors:
            os.close(descriptor)

    return in_the_child


def run(desktop, *arguments, closed=(), **environment):
    return subprocess.run(
        [BUILD / "bin" / arguments[0], *arguments[1:]], env={**desktop.environment, **environment},
        stdin=subprocess.DEVNULL, capture_output=True, text=True, timeout=PATIENCE, preexec_fn=close(closed))


@pytest.fixture
def started(desktop):
    processes = []

    def start(*arguments, closed):
        process = subprocess.Popen(
            [BUILD / "bin" / arguments[0], *arguments[1:]], env=desktop.environment, stdin=subprocess.DEVNULL,
            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, start_new_session=True, preexec_fn=close(closed))
        processes.append(process)
        return process

    yield start
    for process in processes:
        process.kill()
        process.wait()


def has_socket(pid):
    for descriptor in Path(f"/proc/{pid}/fd").iterdir():
        with contextlib.suppress(FileNotFoundError):  # closed meanwhile
            if "socket" in os.readlink(descriptor):
                return True
    return False


@pytest.mark.parametrize("closed", SUBSETS)
@pytest.mark.parametrize("program", [["VQMKeygrab"], ["VQMCompanion"]])
def test_a_program_with_a_window_opens_nothing_as_a_standard_descriptor(desktop, keyboard, started, program, closed):
    process = started(*program, closed=closed)
    descriptors = f"/proc/{process.pid}/fd"
    # By then the program has opened what it needs.
    wait_until(lambda: process.poll() is not None or has_socket(process.pid), "it has joined the X server")
    assert process.poll() is None
    assert [os.readlink(f"{descriptors}/{number}") for number in (0, 1, 2)] == ["/dev/null"] * 3


def test_the_application_with_everything_closed_launches_and_ends(desktop, keyboard, started):
    launches = desktop.root / "launches"
    desktop.install_companion(f"echo launched >> {launches}\n")
    desktop.switch_on()
    process = started("VQMKeygrab", closed=(0, 1, 2))

    def pressed():
        keyboard.tap(TOOL_KEYS["XF86More"])
        return launches.exists()

    wait_until(pressed, "a key launches")
    process.terminate()
    assert process.wait(PATIENCE) == 0


def test_the_log_stays_out_of_a_file_that_is_written(desktop):
    path = desktop.root / "o.txt"
    completed = run(desktop, "example_file_pipe", str(path), closed=(2,))
    assert completed.returncode == 0
    assert path.read_bytes() == b"first line, and more\r\n"


@pytest.mark.parametrize("arguments", [
    ["setting", "get"], ["setting", "watch"], ["status"], ["--version"], ["--help"],
])
def test_a_closed_stdout_is_reported_as_a_failure(desktop, keyboard, arguments):
    completed = run(desktop, "vqmctl", *arguments, closed=(1,))
    assert completed.returncode == 3, completed
    assert completed.stderr.splitlines()[-1] == "vqmctl: cannot write to stdout: it is not open for writing"


def test_held_keys_are_not_written_to_the_x_server(desktop, keyboard):
    application = desktop.start_application()
    completed = run(desktop, "vqmctl", "remote", "keys", closed=(1,))
    assert completed.returncode == 3, completed
    assert "vqmctl: cannot write to stdout" in completed.stderr
    assert application.process.poll() is None


@pytest.mark.parametrize("closed", [(0,), (2,), (0, 2)])
def test_output_appears_although_the_other_streams_are_closed(desktop, closed):
    completed = run(desktop, "vqmctl", "setting", "get", closed=closed)
    assert (completed.returncode, completed.stdout) == (0, "off\n")


@pytest.fixture
def refusing_display():
    """The name of a display whose server turns every client away."""
    server = socket.create_server(("127.0.0.1", 0))

    def refuse():
        while True:
            try:
                client, _ = server.accept()
            except OSError:
                return
            with client:
                client.recv(1000)
                reason = b"no clients today"
                client.sendall(struct.pack("=BBHHH", 0, len(reason), 11, 0, len(reason) // 4) + reason)

    thread = threading.Thread(target=refuse)
    thread.start()
    yield f"127.0.0.1:{server.getsockname()[1] - 6000}"
    server.shutdown(socket.SHUT_RDWR)
    server.close()
    thread.join()


def without_clock(screen):
    return [line for line in screen.splitlines() if not line.startswith("Clock ")]


@pytest.mark.parametrize("closed", [(), (0,), (2,), (0, 2)])
def test_status_of_a_display_that_refuses_is_printed(desktop, refusing_display, closed):
    completed = run(desktop, "vqmctl", "status", closed=closed, DISPLAY=refusing_display)
    assert "Setting " in completed.stdout
    again = run(desktop, "vqmctl", "status", DISPLAY=refusing_display)
    assert without_clock(completed.stdout) == without_clock(again.stdout)
