"""A log whose reader has stopped: keys and signals are served all the same."""

import contextlib
import os
import pty
import socket
import subprocess
import termios

import pytest

from desktop import BUILD, PATIENCE, TOOL_KEYS, wait_until


def fill(descriptor):
    """Until not one byte more fits."""
    os.set_blocking(descriptor, False)
    for size in (4096, 1):
        with contextlib.suppress(BlockingIOError):
            while True:
                os.write(descriptor, b"x" * size)
    os.set_blocking(descriptor, True)


def full_pipe():
    read, write = os.pipe()
    fill(write)
    return read, write


def full_pipe_that_does_not_block():
    read, write = full_pipe()
    os.set_blocking(write, False)
    return read, write


def full_socket():
    ours, theirs = socket.socketpair()
    read, write = ours.detach(), theirs.detach()
    fill(write)
    return read, write


def stopped_terminal():
    master, slave = pty.openpty()
    termios.tcflow(slave, termios.TCOOFF)  # what Ctrl-S does
    return master, slave


def full_terminal():
    master, slave = pty.openpty()
    fill(slave)
    return master, slave


READERS = [full_pipe, full_pipe_that_does_not_block, full_socket, stopped_terminal, full_terminal]


@pytest.mark.parametrize("channel", READERS, ids=lambda function: function.__name__)
def test_a_stalled_log_reader_stops_neither_keys_nor_the_end(desktop, keyboard, channel):
    launches = desktop.root / "launches"
    desktop.install_companion(f"echo launched >> {launches}\n")
    desktop.switch_on()
    reader, writer = channel()
    process = subprocess.Popen([BUILD / "bin/VQMKeygrab"], env=desktop.environment, stdin=subprocess.DEVNULL,
                               stdout=subprocess.DEVNULL, stderr=writer, start_new_session=True)
    try:
        def launched():
            keyboard.tap(TOOL_KEYS["XF86More"])
            return launches.exists() and len(launches.read_text().splitlines()) >= 3

        wait_until(launched, "keys launch")
        process.terminate()
        assert process.wait(PATIENCE) == 0
    finally:
        process.kill()
        process.wait()
        os.close(writer)
        os.close(reader)


@pytest.mark.parametrize("channel", [full_pipe, stopped_terminal], ids=lambda function: function.__name__)
def test_a_stalled_log_reader_does_not_stop_the_tool(desktop, channel):
    reader, writer = channel()
    try:
        completed = subprocess.run(
            [BUILD / "bin/vqmctl", "setting", "get"], env={**desktop.environment, "DLOG_LEVEL": "debug"},
            stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=writer, text=True, timeout=PATIENCE)
    finally:
        os.close(writer)
        os.close(reader)
    assert (completed.returncode, completed.stdout) == (0, "off\n")


def test_keys_launch_when_the_log_file_has_reached_its_size_limit(desktop, keyboard):
    launches = desktop.root / "launches"
    desktop.install_companion(f"echo launched >> {launches}\n")
    desktop.switch_on()
    log = desktop.root / "limited.log"
    with log.open("wb") as stderr:
        process = subprocess.Popen(["sh", "-c", 'ulimit -f 1 && exec "$0"', BUILD / "bin/VQMKeygrab"],
                                   env=desktop.environment, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                                   stderr=stderr, start_new_session=True)
    try:
        def launched():
            keyboard.tap(TOOL_KEYS["XF86More"])
            return launches.exists() and len(launches.read_text().splitlines()) >= 3

        wait_until(launched, "three launches")
        process.terminate()
        assert process.wait(PATIENCE) == 0
        assert log.stat().st_size <= 512
    finally:
        process.kill()
        process.wait()
