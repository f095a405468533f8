"""The application under attack, and what must hold of it afterwards."""

import contextlib
import hashlib
import os
import re
import shutil
import signal
import time

from Xlib import display as xdisplay

from desktop import APP_ID, BUILD, LANGUAGE_KEY, PATIENCE, SETTING_KEY, TOOL_KEYS, Application, Keyboard, new_desktop, wait_until
from notifications import start_bus

MORE = TOOL_KEYS["XF86More"]
# The toolkit's caches settle within this; what is lost for each step of an attack adds up to more.
MOST_GROWTH_KIB = 8192
# A connection that is made when it is needed for the first time stays; a leak makes more of them.
FIRST_USES = 2


def facts_of(folder):
    """Every file below a folder with all that an attack must not change."""
    facts = {}
    for path in [folder, *sorted(folder.rglob("*"))]:
        state = path.lstat()
        content = os.readlink(path) if path.is_symlink() else (
            hashlib.sha256(path.read_bytes()).hexdigest() if path.is_file() else "")
        # A folder's time changes with what comes and goes in it, which the list itself shows.
        changed = 0 if path.is_dir() else state.st_mtime_ns
        facts[str(path)] = (state.st_mode, state.st_uid, state.st_gid, changed, content)
    return facts


def private_kib(pid):
    """What the process has written. A library's clean pages count as private, too, once the other programs
    that use it have ended."""
    with open(f"/proc/{pid}/smaps_rollup") as lines:
        return sum(int(line.split()[1]) for line in lines if line.startswith(("Private_Dirty", "Swap:")))


class Subject:
    """A desktop with the setting on, a companion that notes each launch, some files of a user, and the
    application, once started. Close it when done."""

    def __init__(self, bus=False, **environment):
        self.desktop = new_desktop()
        self.cleanup = contextlib.ExitStack()
        self.cleanup.callback(self.desktop.close)
        self.desktop.environment.update(environment)
        self.launched = self.desktop.root / "launched"
        self.launched.touch()
        self.desktop.install_companion(f'echo >> "{self.launched}"\n')
        self.desktop.store(LANGUAGE_KEY, "en_US.UTF-8")
        self.desktop.switch_on()
        self.desktop.settings.chmod(0o700)
        self.documents = self.desktop.home / "documents"
        self.documents.mkdir()
        for name in ("letter.txt", "stdout", "core"):
            (self.documents / name).write_text(f"the user's {name}\n" * 40)
        self.keyboard = Keyboard(self.desktop)
        self.keyboard.add(*TOOL_KEYS.values())
        self.bus = start_bus(self.desktop) if bus else None
        self.bus_path = self.desktop.runtime / "bus"
        self.stdout = self.desktop.root / "stdout"
        self.watched = {folder: facts_of(folder)
                        for folder in (self.documents, self.desktop.settings, self.desktop.data / "applications")}
        self.application = None

    def start(self, shell='exec "$0" >"$1"', wait=True, name="application", options=None, **environment):
        """Starts the application in the user's documents, by a shell line that redirects as it likes:
        $0 is the program, $1 the file for its stdout. The options are those of Popen."""
        command = ["/bin/sh", "-c", f'cd "$2" && {shell}', BUILD / "bin/VQMKeygrab", self.stdout, self.documents]
        self.application = Application(
            command, {**self.desktop.environment, **environment}, self.desktop.root / f"{name}.log", **(options or {}))
        self.desktop.programs.append(self.application)
        if wait:
            wait_until(lambda: self.holds() or self.has_ended(), "the application holds the tool keys")
            assert not self.has_ended(), f"ended with {self.application.process.returncode} at its start"
            wait_until(lambda: self.descriptors() == self.descriptors(), "it has settled")
        return self.application

    def switch(self, setting):
        """Another value of the setting, as a person would write it."""
        self.desktop.store(SETTING_KEY, setting)
        self.watched[self.desktop.settings] = facts_of(self.desktop.settings)

    @property
    def pid(self):
        return self.application.pid

    def has_ended(self):
        return self.application.process.poll() is not None

    def instance(self, connection):
        owner = connection.get_selection_owner(connection.intern_atom(APP_ID))
        return owner or None

    def holds(self):
        """Whether the instance of this display has published that it holds a tool key."""
        connection = xdisplay.Display(self.desktop.display_name)
        try:
            owner = self.instance(connection)
            held = owner and owner.get_full_property(connection.intern_atom("_TV_HELD_KEYS"), 0)
            return bool(held) and b"XF86More\0" in bytes(held.value)
        except Exception:  # the owner may go at any moment
            return False
        finally:
            connection.close()

    # These may not grow.

    def descriptors(self):
        names = []
        for number in os.listdir(f"/proc/{self.pid}/fd"):
            with contextlib.suppress(FileNotFoundError):
                names.append(os.readlink(f"/proc/{self.pid}/fd/{number}").split(":[")[0])
        time.sleep(0.05)
        return sorted(names)

    def measure(self):
        """Remembers what it has once it has started up whole."""
        self.launch()
        self.application.wait_until_idle()
        readings = [0, 1]
        while len(set(readings[-4:])) > 1:
            time.sleep(0.1)
            readings.append(private_kib(self.pid))
        self.before = (self.descriptors(), readings[-1])

    def check_growth(self):
        descriptors, memory = self.before
        wait_until(lambda: len(self.descriptors()) <= len(descriptors) + FIRST_USES,
                   f"as many descriptors as before: {descriptors}, now {self.descriptors()}")
        if not any(name.endswith("SAN_OPTIONS") for name in os.environ):
            grown = private_kib(self.pid) - memory
            assert grown < MOST_GROWTH_KIB, f"{grown} KiB more memory than before"

    # These conditions must hold.

    def launches(self):
        return len(self.launched.read_bytes())

    def launch(self, key=MORE):
        """A tool key's release launches the companion; keys that were taken away may come back late."""
        before, deadline = self.launches(), time.monotonic() + PATIENCE
        while self.launches() == before:
            assert not self.has_ended(), f"it has ended with {self.application.process.returncode}"
            assert time.monotonic() < deadline, f"the tool key {key:#x} launches nothing"
            self.keyboard.tap(key)
            patience = time.monotonic() + PATIENCE / 10
            while self.launches() == before and time.monotonic() < patience and not self.has_ended():
                time.sleep(0.01)

    def lives_or_has_ended_clearly(self):
        """Returns whether it lives."""
        try:
            self.launch()
            return True
        except AssertionError:
            if not self.has_ended():
                raise
        self.check_end(self.application.process.returncode)
        return False

    def check_end(self, code):
        """An end that was not asked for: a code that a service manager restarts, and a line that says why."""
        assert code > 0, f"ended with {code}"
        output = self.application.output()
        assert re.search(r"^(E/|W/|VQMKeygrab: )", output, re.MULTILINE), f"no line says why it ended with {code}"

    def end(self, number=signal.SIGTERM):
        """A signal ends it with 0."""
        code = self.application.stop(number)
        assert code == 0, f"ended with {code}"

    def check_files(self):
        for folder, facts in self.watched.items():
            now = facts_of(folder)
            changed = {path for path in facts.keys() | now.keys() if facts.get(path) != now.get(path)}
            assert not changed, f"changed: {sorted(changed)}"
        if self.stdout.exists():
            assert self.stdout.read_bytes() == b"", "it wrote to stdout"
        assert not list(self.desktop.runtime.glob("*.popups")), "the popup record is left"

    def finish(self):
        """All that must hold of an application that still lives."""
        for key in TOOL_KEYS.values():
            self.launch(key)
        self.check_growth()
        self.end()
        self.check_files()

    def story(self):
        """The end of what each program has said."""
        return "".join(f"--- {program.log.name}\n{program.output()[-3000:]}\n" for program in self.desktop.programs
                       if program.log.exists())

    def close(self):
        self.cleanup.close()
        shutil.rmtree(self.desktop.root, ignore_errors=True)
