"""A terminal of a test's own, and what a program shows on it."""

import fcntl
import os
import pty
import select
import struct
import subprocess
import termios

from home import PATIENCE


def open_terminal(columns=80):
    """Its two ends: what reads what is shown, and the terminal itself."""
    controller, terminal = pty.openpty()
    fcntl.ioctl(terminal, termios.TIOCSWINSZ, struct.pack("HHHH", 24, columns, 0, 0))
    return controller, terminal


def shown_on_terminal(command, columns, **options):
    """What a command that succeeds prints on a terminal of that width. `options` are those of `Popen`."""
    controller, terminal = open_terminal(columns)
    process = subprocess.Popen(command, stdout=terminal, **options)
    os.close(terminal)
    shown = b""
    # A read may return less than there is, and what the program has printed may arrive after it has ended.
    while part := next_part(controller):
        shown += part
    os.close(controller)
    assert process.wait(timeout=PATIENCE) == 0
    return shown.decode().replace("\r\n", "\n")


def read_until(controller, text):
    """What arrives until `text` is in it."""
    shown = b""
    while text not in shown:
        part = next_part(controller)
        assert part, f"the terminal was closed after {shown}"
        shown += part
    return shown


def next_part(controller):
    """What has arrived; empty once all programs have closed the terminal and everything has been read."""
    readable, _, _ = select.select([controller], [], [], PATIENCE)
    assert readable, "nothing arrives, and the terminal is open"
    try:
        return os.read(controller, 65536)
    except OSError:
        return b""
