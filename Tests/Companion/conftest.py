"""The companion on a TV of a test's own: an X server, the TV's directories in a sandbox, and its settings."""

import os
import shlex
import subprocess

import pytest
from Xlib import X, XK
from Xlib import display as xdisplay
from Xlib.ext import xtest

from home import APP_ID, BUILD, PATIENCE, Home, wait_until
from sandbox import sandboxed
from shop import MEDIA, RECH, RES
from windows import find_shown
from xserver import XServer

WIDTH, HEIGHT = 1280, 720
# Where the screen shows what, in parts of its size.
MARK = (0.05, 0.07, 0.035, 0.06)
HEADLINE = (0.10, 0.05, 0.70, 0.11)
SETTING = (0.05, 0.18, 0.28, 0.17)
NOW = (0.36, 0.18, 0.28, 0.17)
FILES = (0.05, 0.56, 0.59, 0.30)
CLOSE = (0.80, 0.88, 0.15, 0.08)


class Tv:
    def __init__(self, folder):
        self.home = Home(folder)
        self.server = XServer(folder / "xvfb.log", WIDTH, HEIGHT)
        self.screen = xdisplay.Display(self.server.display)
        environment = {**self.home.environment, "DISPLAY": self.server.display, "VQM_APP_ID": APP_ID, "TZ": "UTC",
                       "media": MEDIA, "rech": RECH, "res": RES, "PATH": f"{BUILD / 'bin'}:{os.environ['PATH']}"}
        self.log = folder / "companion.log"
        self.shell = subprocess.Popen(sandboxed("sh"), env=environment, stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                      text=True, bufsize=1)
        self.sh("settings=$XDG_CONFIG_HOME/tvsettings/db; mkdir -p $settings/menu/syncdemo $settings/menu_widget")
        self.store("menu/syncdemo/state", "1")

    def sh(self, script):
        """Runs a line in the sandbox and returns what it has printed."""
        self.shell.stdin.write(script + "\nprintf '\\n---\\n'\n")
        lines = []
        while (line := self.shell.stdout.readline()) != "---\n":
            assert line, "the sandbox has ended"
            lines.append(line)
        return "".join(lines).strip()

    def store(self, key, text):
        """Replaced whole, as the settings store does."""
        self.sh(f"printf %s {shlex.quote(text)} >$settings/new && mv $settings/new $settings/{key}")

    def stored(self, key):
        return self.sh(f"cat $settings/{key}")

    def start(self, environment=""):
        self.sh(f"{environment} VQMCompanion </dev/null >/dev/null 2>'{self.log}' & pid=$!")
        wait_until(self.window, "the window is there")
        return self

    def window(self):
        return find_shown(self.screen, "sync-demo")

    def picture(self, part):
        left, top, width, height = part
        place = (int(left * WIDTH), int(top * HEIGHT), int(width * WIDTH), int(height * HEIGHT))
        return self.window().get_image(*place, X.ZPixmap, 0xFFFFFFFF).data

    def answered(self):
        """Whether the check has ended: its mark is green or red. The dots before are grey."""
        data = self.picture(MARK)
        return any(abs(green - red) > 60 for green, red in zip(data[1::4], data[2::4]))

    def settled(self, *parts):
        """The pictures of these parts, once they stay the same and show something."""
        def same():
            before = [self.picture(part) for part in parts]
            self.sh("sleep 0.5")
            now = [self.picture(part) for part in parts]
            return now if now == before and all(len(set(picture)) > 8 for picture in now) else None

        return wait_until(same, "the screen is drawn")

    def wait_for_change(self, part, before, what):
        wait_until(lambda: self.picture(part) != before, what)

    def tap(self, name):
        XK.load_keysym_group("xf86")
        keysym = XK.string_to_keysym(name.replace("XF86", "XF86_"))
        wait_until(lambda: self.screen.get_input_focus().focus == self.window(), "the window has the focus")
        code = self.screen.keysym_to_keycode(keysym)
        assert code, name
        for event in (X.KeyPress, X.KeyRelease):
            xtest.fake_input(self.screen, event, code)
        self.screen.sync()

    def click(self, part):
        left, top, width, height = part
        xtest.fake_input(self.screen, X.MotionNotify, x=int((left + width / 2) * WIDTH), y=int((top + height / 2) * HEIGHT))
        self.screen.sync()
        for event in (X.ButtonPress, X.ButtonRelease):
            xtest.fake_input(self.screen, event, 1)
        self.screen.sync()

    def ended_with(self):
        """The companion's result, which it has to end with now."""
        wait_until(lambda: not self.window(), "the window has gone")
        return int(self.sh("wait $pid; echo $?"))

    def close(self):
        self.shell.stdin.write("kill -KILL $pid\n")
        self.shell.stdin.close()
        self.shell.wait(timeout=PATIENCE)
        self.screen.close()
        self.server.stop()
        self.home.close()


@pytest.fixture
def tv(tmp_path):
    tv = Tv(tmp_path)
    yield tv
    tv.close()
