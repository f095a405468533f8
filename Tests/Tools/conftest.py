"""A home and an X server for the tests of the tools."""

import pytest
from Xlib import display as xdisplay

from desktop_fixtures import bus, desktop, keyboard, other_desktop  # noqa: F401
from home import APP_ID, BUILD, Home, wait_until  # noqa: F401
from xserver import XServer


@pytest.fixture
def home(tmp_path):
    home = Home(tmp_path)
    yield home
    home.close()


@pytest.fixture
def screen(home):
    """The X server's python connection; programs started from `home` use the same server."""
    server = XServer(home.folder / "xvfb.log", 1280, 720)
    home.environment["DISPLAY"] = server.display
    connection = xdisplay.Display(server.display)
    yield connection
    connection.close()
    server.stop()
