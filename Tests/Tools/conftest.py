"""A home, a settings store and an X server of a test's own."""

import os
import subprocess
import time
from pathlib import Path

import pytest
from Xlib import display as xdisplay

BUILD = Path(os.environ["VQM_BUILD_DIR"])
APP_ID = os.environ.get("VQM_APP_ID", "org.quillmere.vqmkeygrab")


def wait_until(condition, what, timeout=20):
    deadline = time.monotonic() + timeout
    while not (value := condition()):
        assert time.monotonic() < deadline, f"did not happen within {timeout} s: {what}"
        time.sleep(0.02)
    return value


class Home:
    """Runs programs with private folders; `environment` is what they see."""

    def __init__(self, folder):
        self.folder = folder
        self.setting = folder / "config/tvsettings/db/menu/syncdemo/state"
        runtime = folder / "run"
        runtime.mkdir(mode=0o700)
        kept = {name: os.environ[name] for name in ("PATH", "ASAN_OPTIONS", "LSAN_OPTIONS", "UBSAN_OPTIONS") if name in os.environ}
        self.environment = {
            **kept,
            "HOME": str(folder),
            "XDG_CONFIG_HOME": str(folder / "config"),
            "XDG_RUNTIME_DIR": str(runtime),
        }
        self.running = []

    def store(self, text):
        self.setting.parent.mkdir(parents=True, exist_ok=True)
        self.setting.write_text(text)

    def vqmctl(self, *arguments, **environment):
        return subprocess.run(
            [BUILD / "bin/vqmctl", *arguments],
            env={**self.environment, **environment}, capture_output=True, text=True, timeout=60)

    def start(self, program, *arguments, **streams):
        process = subprocess.Popen([BUILD / "bin" / program, *arguments], env=self.environment, text=True, **streams)
        self.running.append(process)
        return process


@pytest.fixture
def home(tmp_path):
    home = Home(tmp_path)
    yield home
    for process in home.running:
        if process.poll() is None:
            process.kill()
        process.wait()


@pytest.fixture
def screen(home):
    """The X server's python connection; programs started from `home` use the same server."""
    read, write = os.pipe()
    server = subprocess.Popen(
        ["Xvfb", "-displayfd", str(write), "-noreset", "-screen", "0", "1280x720x24"],
        pass_fds=[write], stderr=subprocess.DEVNULL)
    os.close(write)
    with os.fdopen(read) as pipe:
        home.environment["DISPLAY"] = ":" + pipe.readline().strip()
    connection = xdisplay.Display(home.environment["DISPLAY"])
    yield connection
    connection.close()
    server.terminate()
    server.wait()
