"""The store under two writers, dying writers and everything that can stand in a key's place."""

import os
import resource
import shutil
import signal
import subprocess
import threading
import time

import pytest

from desktop import BUILD, PATIENCE, SETTING_KEY, TOOL_KEYS, wait_until
from sandbox import require_namespace

LARGE = 1 << 30


def switch(desktop, times):
    """Switches the setting on and off through the tool, so many times."""
    return desktop.run(
        ["sh", "-c", f'for i in $(seq {times}); do "$0" setting on; "$0" setting off; done', BUILD / "bin/vqmctl"],
        name=f"writer-{time.monotonic_ns()}",
    )


def test_rewritten_by_two_processes_while_keys_are_pressed(desktop, keyboard):
    desktop.install_companion("exit 0\n")
    desktop.store(SETTING_KEY, "0")
    application = desktop.start_application()
    watcher = desktop.run([BUILD / "bin/vqmctl", "setting", "watch"], name="watch")
    wait_until(watcher.output, "the watcher shows the value it finds")
    writers = [switch(desktop, 250), switch(desktop, 250)]
    presses = 0
    path = desktop.settings / SETTING_KEY

    def answers():
        return len(application.results()) + len(application.matching("not used in vqm mode"))

    while any(writer.process.poll() is None for writer in writers):
        if presses - answers() < 20:  # more would pile up on a slow machine
            keyboard.tap(TOOL_KEYS["XF86More"])
            presses += 1
        assert path.read_text().strip() in ("0", "1"), "never a torn value"
        time.sleep(0.01)
    wait_until(lambda: answers() == presses, "every press was answered")
    desktop.vqmctl("setting", "on")
    wait_until(lambda: watcher.output().split()[-1] == "on", "the watcher sees the last value")
    assert set(watcher.output().split()) == {"on", "off"}
    assert application.process.poll() is None
    assert [entry.name for entry in path.parent.iterdir()] == ["state"], "no temporary file is left"


def test_killed_writers_leave_the_old_or_the_new_value(desktop):
    desktop.store(SETTING_KEY, "0")
    path = desktop.settings / SETTING_KEY
    for attempt in range(1000):
        process = subprocess.Popen(
            [BUILD / "bin/vqmctl", "setting", "on" if attempt % 2 else "off"],
            env=desktop.environment, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
        )
        # Anywhere between its start and its end.
        threading.Event().wait((attempt % 50) / 10000)
        process.send_signal(signal.SIGKILL)
        process.wait()
        assert path.read_text().strip() in ("0", "1")
    # One of the two commands writes, with any stored value, and a write clears up.
    desktop.vqmctl("setting", "off")
    desktop.vqmctl("setting", "on")
    assert path.read_text().strip() == "1"
    assert [entry.name for entry in path.parent.iterdir()] == ["state"], "what the dead left is cleared up"


def in_the_keys_place(desktop, what):
    path = desktop.settings / SETTING_KEY
    path.parent.mkdir(parents=True)
    if what == "empty":
        path.write_bytes(b"")
    elif what == "binary":
        path.write_bytes(bytes(range(256)))
    elif what == "zero bytes behind the number":
        path.write_bytes(b"1\0\0\0")
    elif what == "number too large":
        path.write_text("99999999999999999999")
    elif what == "1 GB":
        with open(path, "wb") as file:
            file.truncate(LARGE)
    elif what == "directory":
        path.mkdir()
    elif what == "dangling link":
        path.symlink_to("/nonexistent/file")
    elif what == "pipe":
        os.mkfifo(path)
    elif what == "device":
        path.symlink_to("/dev/zero")
    return path


PLACES = [
    "empty", "binary", "zero bytes behind the number", "number too large", "1 GB", "directory", "dangling link",
    "pipe", "device",
]


@pytest.mark.parametrize("what", PLACES)
def test_anything_but_a_plain_file_reads_as_off(desktop, keyboard, what):
    path = in_the_keys_place(desktop, what)
    before = os.lstat(path)
    application = desktop.start_application()
    keyboard.tap(TOOL_KEYS["XF86More"])
    application.wait_for("not used in vqm mode")
    assert desktop.vqmctl("setting", "get").stdout == "off\n"
    after = os.lstat(path)
    assert (before.st_ino, before.st_size, before.st_mode) == (after.st_ino, after.st_size, after.st_mode)


@pytest.mark.parametrize("what", ["directory", "dangling link", "pipe"])
def test_a_write_refuses_and_keeps_anything_but_a_plain_file(desktop, what):
    path = in_the_keys_place(desktop, what)
    completed = desktop.vqmctl("setting", "on", check=False)
    assert completed.returncode == 3
    assert str(path) in completed.stderr
    assert os.lstat(path)


@pytest.fixture
def namespace(desktop):
    """Runs a command with the settings folder on a separate file system."""
    require_namespace()

    def run(command):
        desktop.settings.mkdir(parents=True, exist_ok=True)
        script = f'mount -t tmpfs -o size=64k,mode=700 tmpfs "$1" && mkdir -p "$1/db/menu/syncdemo" && {command}'
        unshare = ["unshare", "--mount"] if os.geteuid() == 0 else ["unshare", "--user", "--map-root-user", "--mount"]
        return subprocess.run(
            [*unshare, "sh", "-c", script, "sh", str(desktop.settings), str(BUILD / "bin/vqmctl")],
            env=desktop.environment, capture_output=True, text=True, timeout=2 * PATIENCE,
        )

    return run


def test_full_disk_keeps_the_old_value(namespace):
    completed = namespace(
        'printf 1 > "$1/db/menu/syncdemo/state"; dd if=/dev/zero of="$1/filler" bs=1k 2>/dev/null;'
        '"$2" setting off; echo "code $?"; cat "$1/db/menu/syncdemo/state"; ls -A "$1/db/menu/syncdemo"',
    )
    assert completed.stdout.splitlines() == ["code 3", "1state"], completed.stdout + completed.stderr
    assert "No space left" in completed.stderr


def test_read_only_folder_keeps_the_old_value(namespace):
    completed = namespace(
        'printf 1 > "$1/db/menu/syncdemo/state"; mount -o remount,bind,ro "$1"; "$2" setting off; echo "code $?";'
        'cat "$1/db/menu/syncdemo/state"',
    )
    assert completed.stdout.splitlines() == ["code 3", "1"], completed.stdout + completed.stderr
    assert "Read-only" in completed.stderr


def test_no_descriptors_left_reads_as_off_and_runs_on(desktop, keyboard):
    desktop.install_companion("exit 0\n")
    desktop.switch_on()
    application = desktop.start_application()
    used = len(os.listdir(f"/proc/{application.pid}/fd"))
    soft, hard = resource.prlimit(application.pid, resource.RLIMIT_NOFILE)
    highest = max(int(name) for name in os.listdir(f"/proc/{application.pid}/fd"))
    resource.prlimit(application.pid, resource.RLIMIT_NOFILE, (min(used, highest + 1), hard))
    for _ in range(5):
        keyboard.tap(TOOL_KEYS["XF86More"])
    application.wait_for("not used in vqm mode", 1)
    resource.prlimit(application.pid, resource.RLIMIT_NOFILE, (soft, hard))
    keyboard.tap(TOOL_KEYS["XF86More"])
    application.wait_for("result = ")
    wait_until(lambda: application.results()[-1] > 0, "it launches again")


def test_folder_and_files_are_the_users_alone(desktop):
    for umask in (0o000, 0o022, 0o777 & ~0o700):
        previous = os.umask(umask)
        try:
            desktop.vqmctl("setting", "on")
            desktop.vqmctl("setting", "off")
        finally:
            os.umask(previous)
        for folder, _, files in os.walk(desktop.settings):
            assert os.stat(folder).st_mode & 0o777 == 0o700
            for name in files:
                assert os.stat(os.path.join(folder, name)).st_mode & 0o777 == 0o600


def rename_the_store(desktop):
    desktop.settings.rename(desktop.root / "old")


def rename_the_configuration(desktop):
    desktop.settings.parent.rename(desktop.root / "old")


def remove_the_store(desktop):
    shutil.rmtree(desktop.settings)


def point_the_link_elsewhere(desktop):
    other = desktop.root / "second"
    other.mkdir()
    link = desktop.root / "link"
    link.symlink_to(other)
    link.rename(desktop.settings)


@pytest.mark.parametrize("replace, linked", [
    (rename_the_store, False), (rename_the_configuration, False), (remove_the_store, False),
    (point_the_link_elsewhere, True),
])
def test_watcher_follows_the_store(desktop, replace, linked):
    if linked:
        first = desktop.root / "first"
        first.mkdir()
        desktop.settings.parent.mkdir(parents=True)
        desktop.settings.symlink_to(first)
    desktop.store(SETTING_KEY, "1")
    watcher = desktop.run([BUILD / "bin/vqmctl", "setting", "watch"], name="watch")
    wait_until(lambda: watcher.output() == "on\n", "the watcher shows the value it finds")
    replace(desktop)
    wait_until(lambda: watcher.output() == "on\noff\n", "the watcher sees that the value is gone")
    desktop.vqmctl("setting", "on")
    wait_until(lambda: watcher.output() == "on\noff\non\n", "the watcher sees the new value")


def test_watcher_sees_a_writer_that_keeps_its_file_open(desktop):
    desktop.store(SETTING_KEY, "0")
    watcher = desktop.run([BUILD / "bin/vqmctl", "setting", "watch"], name="watch")
    wait_until(lambda: watcher.output() == "off\n", "the watcher shows the value it finds")
    with open(desktop.settings / SETTING_KEY, "r+b", buffering=0) as writer:
        writer.write(b"1")
        wait_until(lambda: watcher.output() == "off\non\n", "the watcher sees what is not closed yet")


def test_watcher_sees_a_file_that_is_linked_into_place(desktop):
    watcher = desktop.run([BUILD / "bin/vqmctl", "setting", "watch"], name="watch")
    wait_until(lambda: watcher.output() == "off\n", "the watcher shows that nothing is stored")
    path = desktop.settings / SETTING_KEY
    path.parent.mkdir(parents=True, exist_ok=True)
    prepared = desktop.root / "prepared"
    prepared.write_text("1")
    os.link(prepared, path)
    wait_until(lambda: watcher.output() == "off\non\n", "the watcher sees the file")


@pytest.mark.parametrize("command", [["setting", "on"], ["setting", "watch"]])
def test_a_linked_store_keeps_its_mode(desktop, command):
    shared = desktop.root / "shared"
    shared.mkdir()
    shared.chmod(0o3775)
    desktop.settings.parent.mkdir(parents=True)
    desktop.settings.symlink_to(shared)
    program = desktop.run([BUILD / "bin/vqmctl", *command])
    if command[-1] == "watch":
        wait_until(program.output, "it watches")
        program.stop()
    else:
        program.process.wait(PATIENCE)
    assert os.stat(shared).st_mode & 0o7777 == 0o3775
    assert desktop.settings.is_symlink()


def test_a_file_made_by_hand_keeps_its_mode(desktop):
    desktop.store(SETTING_KEY, "0")
    path = desktop.settings / SETTING_KEY
    path.chmod(0o664)
    desktop.vqmctl("setting", "on")
    assert (path.read_text(), os.stat(path).st_mode & 0o7777) == ("1", 0o664)
