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
def x_server(home):
    """Programs started from `home` use it."""
    server = XServer(home.folder / "xvfb.log", 1280, 720)
    home.environment["DISPLAY"] = server.display
    yield server
    server.stop()


@pytest.fixture
def screen(x_server):
    """A python connection to the X server."""
    connection = xdisplay.Display(x_server.display)
    yield connection
    connection.close()
