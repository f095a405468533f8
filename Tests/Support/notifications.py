"""A notification daemon on a desktop's session bus."""

import re
import signal
import socket
import subprocess

from home import BUILD, PATIENCE, wait_until


def start_bus(desktop):
    """A session bus of the desktop's own, also in place of one that has gone."""
    address = f"unix:path={desktop.runtime}/bus"
    (desktop.runtime / "bus").unlink(missing_ok=True)
    bus = desktop.run(
        ["dbus-daemon", "--session", "--nofork", "--nopidfile", f"--address={address}"], name="bus"
    )
    wait_until(lambda: listens(desktop.runtime / "bus"), "the bus listens")
    desktop.environment["DBUS_SESSION_BUS_ADDRESS"] = address
    return bus


def listens(path):
    """A socket has its name a moment before it takes connections."""
    with socket.socket(socket.AF_UNIX) as probe:
        return probe.connect_ex(str(path)) == 0


def start_dunst(desktop, name="dunst"):
    daemon = desktop.run(["dunst", "-conf", "/dev/null"], name=name)
    wait_until(lambda: has_daemon(desktop), "dunst owns its name")
    return daemon


class Service:
    """A notification daemon with bad manners. See its usage."""

    def __init__(self, desktop, *manners):
        self.program = desktop.run([BUILD / "bin/tests/notification_service", *manners])

    def requests(self):
        return self.program.output().splitlines()

    def wait_for(self, line):
        wait_until(lambda: line in self.requests(), f"the service notes {line!r}")

    def answer_from_now_on(self):
        self.program.process.send_signal(signal.SIGUSR1)


def dbus_send(desktop, destination, path, member, *arguments):
    """Calls a method and returns the answer as text."""
    return subprocess.run(
        ["dbus-send", "--session", "--print-reply=literal", f"--dest={destination}", path, member, *arguments],
        env=desktop.environment, capture_output=True, text=True, check=True, timeout=PATIENCE,
    ).stdout


def ask_bus(desktop, method, *arguments):
    """Asks the bus itself, which starts nothing for that."""
    return dbus_send(desktop, "org.freedesktop.DBus", "/org/freedesktop/DBus", f"org.freedesktop.DBus.{method}",
                     *arguments)


def has_daemon(desktop):
    return "true" in ask_bus(desktop, "NameHasOwner", "string:org.freedesktop.Notifications")


def name_of(desktop, pid):
    """The unique name of a process on the bus."""
    for name in re.findall(r":1\.\d+", ask_bus(desktop, "ListNames")):
        try:
            if int(ask_bus(desktop, "GetConnectionUnixProcessID", f"string:{name}").split()[-1]) == pid:
                return name
        except subprocess.CalledProcessError:
            pass  # it has left meanwhile
    raise AssertionError(f"process {pid} is not on the bus")


def forge_owner_change(desktop, name, owner):
    """Tells one client, as if it were the bus, who owns the notification daemon's name, and waits
    until the client has read that."""
    subprocess.run(
        ["dbus-send", "--session", "--type=signal", f"--dest={name}", "/org/freedesktop/DBus",
         "org.freedesktop.DBus.NameOwnerChanged",
         "string:org.freedesktop.Notifications", "string::1.0", f"string:{owner}"],
        env=desktop.environment, check=True, timeout=PATIENCE,
    )
    dbus_send(desktop, name, "/", "org.freedesktop.DBus.Peer.Ping")


def set_paused(desktop, paused):
    subprocess.run(["dunstctl", "set-paused", str(paused).lower()], env=desktop.environment, check=True)
