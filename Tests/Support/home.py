"""A home, a settings store and an environment of a test's own, and the waiting that all tests share."""

import os
import subprocess
import time
from pathlib import Path

BUILD = Path(os.environ["VQM_BUILD_DIR"])
APP_ID = os.environ.get("VQM_APP_ID", "org.quillmere.vqmkeygrab")
ROOT = Path(__file__).parents[2]
SETTING_KEY = "db/menu/syncdemo/state"
# A loaded machine is slow, not wrong.
PATIENCE = float(os.environ.get("VQM_TEST_PATIENCE", "30"))


def wait_until(condition, what, timeout=PATIENCE):
    """Returns the condition's first true value."""
    deadline = time.monotonic() + timeout
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() > deadline:
            raise AssertionError(f"did not happen within {timeout} s: {what}")
        time.sleep(0.02)


class Home:
    """Runs programs with private folders; `environment` is what they see. Close it when done."""

    def __init__(self, folder, runtime=None, config=None):
        self.folder = Path(folder)
        self.runtime = runtime or self.folder / "run"
        self.config = config or self.folder / "config"
        self.settings = self.config / "tvsettings"
        self.setting = self.settings / SETTING_KEY
        self.folder.mkdir(parents=True, exist_ok=True)
        self.runtime.mkdir(parents=True, mode=0o700)
        self.environment = {
            "PATH": os.environ["PATH"],
            "HOME": str(self.folder),
            "XDG_RUNTIME_DIR": str(self.runtime),
            "XDG_CONFIG_HOME": str(self.config),
        }
        for name, value in os.environ.items():
            if name.endswith("SAN_OPTIONS"):
                self.environment[name] = value
        self.running = []

    def store(self, text, key=SETTING_KEY):
        """Writes a setting as a person would; the sync-demo setting unless another is named."""
        path = self.settings / key
        path.parent.mkdir(parents=True, exist_ok=True)
        # Replaced whole, as most editors do: a file that is written in place is empty for a moment.
        written = self.folder / "setting being written"
        written.write_text(text)
        written.replace(path)

    def vqmctl(self, *arguments, **environment):
        return subprocess.run(
            [BUILD / "bin/vqmctl", *arguments],
            env={**self.environment, **environment},
            stdin=subprocess.DEVNULL, capture_output=True, text=True, timeout=2 * PATIENCE,
        )

    def start(self, program, *arguments, **streams):
        process = subprocess.Popen([BUILD / "bin" / program, *arguments], env=self.environment, text=True, **streams)
        self.running.append(process)
        return process

    def close(self):
        for process in self.running:
            if process.poll() is None:
                process.kill()
            process.wait()
