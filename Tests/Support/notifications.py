"""A notification daemon on a desktop's session bus."""

import subprocess

from home import PATIENCE, wait_until


def start_bus(desktop):
    """A session bus of the desktop's own."""
    address = f"unix:path={desktop.runtime}/bus"
    bus = desktop.run(
        ["dbus-daemon", "--session", "--nofork", "--nopidfile", f"--address={address}"], name="bus"
    )
    wait_until((desktop.runtime / "bus").exists, "the bus listens")
    desktop.environment["DBUS_SESSION_BUS_ADDRESS"] = address
    return bus


def start_dunst(desktop, name="dunst"):
    daemon = desktop.run(["dunst", "-conf", "/dev/null"], name=name)
    wait_until(lambda: has_daemon(desktop), "dunst owns its name")
    return daemon


def has_daemon(desktop):
    """Asks the bus, which starts nothing for this question."""
    completed = subprocess.run(
        ["dbus-send", "--session", "--print-reply=literal", "--dest=org.freedesktop.DBus", "/org/freedesktop/DBus",
         "org.freedesktop.DBus.NameHasOwner", "string:org.freedesktop.Notifications"],
        env=desktop.environment, capture_output=True, text=True, check=True, timeout=PATIENCE,
    )
    return "true" in completed.stdout


def set_paused(desktop, paused):
    subprocess.run(["dunstctl", "set-paused", str(paused).lower()], env=desktop.environment, check=True)
