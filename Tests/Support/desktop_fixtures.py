"""Fixtures for tests of programs on a desktop; a conftest.py imports those that its folder uses."""

import pytest

from desktop import TOOL_KEYS, Keyboard, new_desktop
from notifications import start_bus


@pytest.fixture
def desktop():
    """An X server with a private home, and nothing running on it."""
    created = new_desktop()
    yield created
    created.close()


@pytest.fixture
def other_desktop():
    created = new_desktop()
    yield created
    created.close()


@pytest.fixture
def keyboard(desktop):
    """A keyboard that has the tool keys."""
    created = Keyboard(desktop)
    created.add(*TOOL_KEYS.values())
    return created


@pytest.fixture
def bus(desktop):
    """The desktop with its own session bus."""
    start_bus(desktop)
    return desktop
