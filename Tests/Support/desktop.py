"""A desktop of a test's own: an X server, a home, a settings store, and what runs on it.

Nothing is substituted: the executable, the X server, the keys and the launched processes are real.
"""

import contextlib
import os
import re
import shutil
import signal
import subprocess
import tempfile
import time
from pathlib import Path

from Xlib import X, XK, display as xdisplay
from Xlib.ext import xtest

from home import APP_ID, BUILD, PATIENCE, SETTING_KEY, Home, wait_until
from xserver import XServer

# The programs themselves; under emulation bin/ holds what starts them.
EXECUTABLES = Path(os.environ.get("VQM_EXECUTABLES", BUILD / "bin"))
COMPANION_ID = APP_ID + ".gui"
LANGUAGE_KEY = "db/menu_widget/language"
# The tool keys' symbols have no number in the X headers; these are the desktop's.
TOOL_KEYS = {"XF86SimpleMenu": 0x1008FFF1, "XF86More": 0x1008FFF2}


def children_of(pid):
    """Every child of every thread of a process, zombies included."""
    children = []
    for task in Path(f"/proc/{pid}/task").iterdir():
        with contextlib.suppress(FileNotFoundError, ProcessLookupError):  # the thread has ended meanwhile
            children += [int(child) for child in (task / "children").read_text().split()]
    return children


def is_running(pid):
    """True for a live process; a zombie is none."""
    try:
        state = Path(f"/proc/{pid}/stat").read_text().rsplit(")", 1)[1].split()[0]
    except (FileNotFoundError, ProcessLookupError):
        return False
    return state != "Z"


class Program:
    """A process with its output in a file."""

    def __init__(self, arguments, environment, log, **options):
        self.log = Path(log)
        with open(self.log, "wb") as output:
            self.process = subprocess.Popen(
                [str(argument) for argument in arguments],
                env=environment,
                stdin=subprocess.DEVNULL,
                stdout=output,
                stderr=subprocess.STDOUT,
                start_new_session=True,
                **options,
            )
        self.pid = self.process.pid

    def output(self):
        return self.log.read_text(errors="replace")

    def stop(self, signal_number=signal.SIGTERM, timeout=PATIENCE):
        """Ends the process and returns its exit code."""
        if self.process.poll() is None:
            self.process.send_signal(signal_number)
        return self.process.wait(timeout)

    def wait_until_idle(self):
        """Until it has slept for a while: a start is over then, also where it is slow."""
        def activity():
            fields = Path(f"/proc/{self.pid}/stat").read_text().rsplit(")", 1)[1].split()
            return fields[0], fields[11:13]  # its state, and its time in user mode and in the kernel

        def idle():
            before = activity()
            time.sleep(1)
            return before[0] == "S" and activity() == before

        wait_until(idle, "it is idle")

    def kill(self):
        if self.process.poll() is None:
            self.process.kill()
        self.process.wait()


class Application(Program):
    """The key grabber, with its log."""

    LINE = re.compile(r"^(?P<priority>[VDIWEF])/(?P<tag>[^(]*?) *\( *(?P<pid>\d+)\): (?P<text>.*)$")
    PREFIX = re.compile(r"^(?P<file>\S+): (?P<function>[^(]+)\((?P<line>\d+)\) > (?P<message>.*)$")

    def lines(self, tag="Quillmere"):
        """The product's log as (priority, function, message)."""
        result = []
        # A line that is being written may be seen in part.
        complete = self.output().rpartition("\n")[0]
        for line in complete.splitlines():
            match = self.LINE.match(line)
            if match and match["tag"] == tag:
                prefix = self.PREFIX.match(match["text"])
                assert prefix, f"a log line without its prefix: {line!r}"
                result.append((match["priority"], prefix["function"], prefix["message"]))
        return result

    def messages(self):
        return [message for _, _, message in self.lines()]

    def wait_for(self, message, count=1):
        """Waits until a message that begins with the text was logged so many times."""
        wait_until(
            lambda: len(self.matching(message)) >= count or self.process.poll() is not None,
            f"{count} x {message!r} in\n{self.output()}",
        )
        found = self.matching(message)
        assert len(found) >= count, f"ended with {self.process.poll()} before {message!r}:\n{self.output()}"
        return found

    def matching(self, message):
        return [candidate for candidate in self.messages() if candidate.startswith(message)]

    def results(self):
        """The launcher's results, in order."""
        return [int(message.split("= ")[1]) for message in self.matching("result = ")]


class Desktop:
    """One X server with a private home. Close it when done."""

    def __init__(self, root, width=1920, height=1080, server_options=()):
        self.root = Path(root)
        self.programs = []
        self.cleanup = contextlib.ExitStack()
        self.home = self.root / "home"
        self._home = Home(self.home, self.root / "run", self.home / ".config")
        self.runtime, self.settings = self._home.runtime, self._home.settings
        self.data = self.home / ".local/share"
        (self.data / "applications").mkdir(parents=True)
        x_server = XServer(self.root / "xvfb.log", width, height, server_options)
        self.cleanup.callback(x_server.stop)
        self.server, self.stop_server, self.display_name = x_server.process, x_server.stop, x_server.display
        self.environment = self._home.environment
        self.environment.update({
            "DISPLAY": self.display_name,
            "XDG_DATA_HOME": str(self.data),
            "XDG_DATA_DIRS": "/usr/share",
            "LANG": "C.UTF-8",
        })

    def connect(self):
        """A connection to the X server, closed with the desktop."""
        connection = xdisplay.Display(self.display_name)

        def disconnect():
            with contextlib.suppress(Exception):  # the server may be gone already
                connection.close()

        self.cleanup.callback(disconnect)
        return connection

    def run(self, arguments, name=None, **environment):
        program = Program(
            arguments, {**self.environment, **environment}, self.root / f"{name or Path(str(arguments[0])).name}.log"
        )
        self.programs.append(program)
        return program

    def start_application(self, name="application", wait=True, **environment):
        """Starts the key grabber and waits until it holds the keys."""
        application = Application(
            [BUILD / "bin/VQMKeygrab"], {**self.environment, **environment}, self.root / f"{name}.log"
        )
        self.programs.append(application)
        if wait:
            application.wait_for("CVQMKeyGrab::CreateWindow finish")
            application.wait_for("_app_control() called end")
        return application

    def vqmctl(self, *arguments, check=True, **environment):
        completed = self._home.vqmctl(*arguments, **environment)
        if check:
            assert completed.returncode == 0, f"{arguments}: {completed.returncode}\n{completed.stderr}"
        return completed

    # The settings store, as a person would edit it.

    def store(self, key, text):
        self._home.store(text, key)

    def switch_on(self):
        self.store(SETTING_KEY, "1")

    # The companion.

    def install_companion(self, script, name="companion"):
        """A desktop entry for the companion whose program is a shell script."""
        program = self.root / name
        program.write_text("#!/bin/sh\n" + script)
        program.chmod(0o755)
        self.install_entry(f"[Desktop Entry]\nType=Application\nName=Companion\nExec={program}\n")
        return program

    def install_entry(self, text):
        entry = self.data / "applications" / f"{COMPANION_ID}.desktop"
        entry.write_text(text)
        return entry

    def close(self):
        for program in reversed(self.programs):
            program.kill()
        self.cleanup.close()


class Keyboard:
    """Real key presses, from a separate client."""

    def __init__(self, desktop):
        self.display = desktop.connect()
        self.own = {}

    def keycode(self, keysym):
        code = self.display.keysym_to_keycode(keysym)
        return code if code else self.own.get(keysym, 0)

    def mapping(self):
        """Each keycode's keysyms as the server has them now."""
        low, high = self.display.display.info.min_keycode, self.display.display.info.max_keycode
        return dict(enumerate(self.display.get_keyboard_mapping(low, high - low + 1), start=low))

    def add(self, *keysyms):
        """Puts keysyms on spare keycodes, before anything else looks at the keyboard."""
        spare = [code for code, symbols in self.mapping().items() if not any(symbols)]
        for keysym in keysyms:
            if not self.keycode(keysym):
                code = spare.pop()
                self.display.change_keyboard_mapping(code, [[keysym]])
                self.own[keysym] = code
        self.display.sync()

    def press(self, keysym):
        xtest.fake_input(self.display, X.KeyPress, self.keycode(keysym))
        self.display.sync()

    def release(self, keysym):
        xtest.fake_input(self.display, X.KeyRelease, self.keycode(keysym))
        self.display.sync()

    def tap(self, keysym):
        self.press(keysym)
        self.release(keysym)


class FocusedClient:
    """A client with a window that asks for the focus and notes the keys that reach it."""

    def __init__(self, desktop):
        self.display = desktop.connect()
        screen = self.display.screen()
        self.window = screen.root.create_window(
            100, 100, 300, 200, 0, screen.root_depth,
            background_pixel=screen.white_pixel,
            event_mask=X.KeyPressMask | X.KeyReleaseMask | X.FocusChangeMask | X.StructureNotifyMask,
        )
        self.window.set_wm_name("focused client")
        self.window.map()
        self.display.sync()
        self.keys = []
        self.focus_lost = 0

    def take_focus(self):
        wait_until(lambda: self.window.get_attributes().map_state == X.IsViewable, "the client's window shows")
        # A window manager that has just put the window up may still be busy with the focus itself.
        time.sleep(0.5)
        self.window.set_input_focus(X.RevertToParent, X.CurrentTime)
        wait_until(self.has_focus, "the client has the focus")
        self.poll()
        self.focus_lost = 0

    def has_focus(self):
        return getattr(self.display.get_input_focus().focus, "id", None) == self.window.id

    def poll(self):
        """Reads what arrived; `keys` holds the keysyms of the releases."""
        self.display.sync()
        while self.display.pending_events():
            event = self.display.next_event()
            if event.type == X.KeyRelease:
                self.keys.append(self.display.keycode_to_keysym(event.detail, 0))
            elif event.type == X.FocusOut and event.mode == X.NotifyNormal:
                self.focus_lost += 1
            elif event.type == X.MappingNotify:
                self.display.refresh_keyboard_mapping(event)
        return self.keys


def new_desktop(**arguments):
    root = tempfile.mkdtemp(prefix="vqm-e2e-")
    desktop = Desktop(root, **arguments)
    desktop.cleanup.callback(shutil.rmtree, root, ignore_errors=True)
    return desktop


def screenshot(connection):
    """The root window's pixels."""
    screen = connection.screen()
    image = screen.root.get_image(0, 0, screen.width_in_pixels, screen.height_in_pixels, X.ZPixmap, 0xFFFFFFFF)
    return image.data


def keysym(name):
    """The number of a standard keysym's name."""
    XK.load_keysym_group("xf86")
    number = TOOL_KEYS.get(name) or XK.string_to_keysym(name.replace("XF86", "XF86_", 1) if "XF86" in name else name)
    assert number, f"no keysym named {name}"
    return number
