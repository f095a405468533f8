"""The user unit under a real user manager, in a session that starts and ends."""

import os
import re
import shutil
import subprocess
import tempfile
from pathlib import Path

import pytest
from checkout import needs

from desktop import is_running
from desktop_fixtures import desktop  # noqa: F401
from home import PATIENCE, wait_until

MANAGER = Path("/lib/systemd/systemd")
HIERARCHY = next((p for p in map(Path, ("/sys/fs/cgroup/systemd", "/sys/fs/cgroup")) if p.is_dir()), None)

pytestmark = [
    needs("systemctl"), needs("unshare"),
    pytest.mark.skipif(not MANAGER.exists(), reason="systemd is not installed"),
]  # fmt: skip

# A session brings such a target. With it begins and ends what belongs to the graphical session.
SESSION = "[Unit]\nBindsTo=graphical-session.target\n"
# What the test looks at; the rest of the unit is as it is installed.
SHOWN = "[Service]\nEnvironment=DLOG_LEVEL=debug\nStandardError=append:{log}\n"
# As after a boot with systemd, without which there is no user manager, and in its own control group.
START = """
echo $$ >"$1/cgroup.procs" && mount -t tmpfs run /run && mkdir -p /run/systemd/system && exec "$2" --user
"""


class UserManager:
    def __init__(self, desktop, prefix):
        self.desktop = desktop
        self.log = desktop.root / "unit.log"
        units = desktop.home / ".config/systemd/user"
        (units / "vqmkeygrab.service.d").mkdir(parents=True)
        shutil.copy(prefix / "lib/systemd/user/vqmkeygrab.service", units)
        (units / "session.target").write_text(SESSION)
        (units / "vqmkeygrab.service.d/test.conf").write_text(SHOWN.format(log=self.log))
        self.group = Path(tempfile.mkdtemp(prefix="user-unit-", dir=HIERARCHY))
        self.process = desktop.run(
            ["unshare", "--mount", "sh", "-c", START, "sh", self.group, MANAGER], name="manager",
            SYSTEMD_LOG_TARGET="console",
        )  # fmt: skip

    def systemctl(self, *arguments):
        return subprocess.run(
            ["systemctl", "--user", *arguments], env=self.desktop.environment, stdin=subprocess.DEVNULL,
            capture_output=True, text=True, timeout=PATIENCE,
        )  # fmt: skip

    def is_up(self):
        assert self.process.process.poll() is None, self.process.output()
        return self.systemctl("is-active", "basic.target").stdout == "active\n"

    def main_process(self):
        return int(self.systemctl("show", "--value", "--property=MainPID", "vqmkeygrab").stdout)

    def logged(self, text):
        return self.log.exists() and text in self.log.read_text()

    def start_session(self):
        done = self.systemctl("start", "session.target")
        assert done.returncode == 0, done.stderr

    def close(self):
        for signal in ("TERM", "KILL"):
            for entry in list(self.group.rglob("cgroup.procs")):
                for process in entry.read_text().split():
                    subprocess.run(["kill", f"-{signal}", process], check=False, capture_output=True)
            self.process.kill() if signal == "KILL" else None
        wait_until(lambda: not any(e.read_text().strip() for e in self.group.rglob("cgroup.procs")), "the session ends")
        for folder in sorted((p for p in self.group.rglob("*") if p.is_dir()), reverse=True):
            folder.rmdir()
        self.group.rmdir()


@pytest.fixture
def manager(desktop, prefix):  # noqa: F811
    try:
        Path(tempfile.mkdtemp(prefix="user-unit-", dir=HIERARCHY)).rmdir()
    except OSError as error:
        pytest.skip(f"this machine lets you make no control group ({error.strerror})")
    manager = UserManager(desktop, prefix)
    try:
        wait_until(manager.is_up, "the user manager runs")
        yield manager
    finally:
        manager.close()


def test_session_starts_nothing_that_the_user_has_not_enabled(manager):
    manager.start_session()
    assert manager.systemctl("is-active", "graphical-session.target").stdout == "active\n"
    assert manager.systemctl("is-active", "vqmkeygrab").stdout == "inactive\n"


def test_enabled_it_lives_as_long_as_the_session_and_the_companion_longer(manager, desktop):  # noqa: F811
    told = desktop.root / "companion.pid"
    desktop.install_companion(f'grep -E "^(NoNewPrivs|Seccomp):" /proc/self/status >"{told}.status"\necho $$ >"{told}"\nexec sleep 600')
    assert manager.systemctl("enable", "vqmkeygrab").returncode == 0
    manager.start_session()
    wait_until(lambda: manager.logged("CVQMKeyGrab::CreateWindow finish"), "the application runs")
    desktop.switch_on()
    desktop.vqmctl("remote", "press", "XF86More")
    wait_until(lambda: told.exists() and told.read_text().endswith("\n"), "the companion runs")
    companion = int(told.read_text())

    assert manager.systemctl("stop", "session.target").returncode == 0
    wait_until(lambda: manager.logged("VQMKeygrab main End"), "the application ends in order")
    assert is_running(companion)
    # It runs in the unit's sandbox.
    assert re.findall(r"\d+", Path(f"{told}.status").read_text()) == ["1", "2"]
    os.kill(companion, 9)


def test_killed_it_starts_again_with_the_tool_keys_only(manager, desktop):  # noqa: F811
    manager.systemctl("start", "vqmkeygrab")
    wait_until(lambda: manager.logged("CVQMKeyGrab::CreateWindow finish"), "the application runs")
    first = manager.main_process()
    environment = Path(f"/proc/{first}/environ").read_bytes().split(b"\0")
    assert b"TV_REMOTE_KEYS=tool" in environment
    os.kill(first, 9)
    wait_until(lambda: manager.main_process() not in (0, first), "the application runs again")
    assert manager.systemctl("stop", "vqmkeygrab").returncode == 0
