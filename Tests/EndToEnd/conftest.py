import pytest

from desktop import TOOL_KEYS, Keyboard, new_desktop


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
