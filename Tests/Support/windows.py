"""The windows of an X display, which may go while one looks at them."""

import contextlib

from Xlib import X
from Xlib.error import BadWindow


def find_window(connection, matches):
    """A window for which `matches` is true; None when there is none."""
    def search(window):
        with contextlib.suppress(BadWindow):  # it has gone meanwhile
            if matches(window):
                return window
            for child in window.query_tree().children:
                if found := search(child):
                    return found
        return None

    return search(connection.screen().root)


def find_shown(connection, name):
    """The window with this name in its class that shows; None when there is none."""
    return find_window(connection, lambda window: (window.get_wm_class() or ("",))[0] == name
                       and window.get_attributes().map_state == X.IsViewable)


def find_key_window(connection):
    """The application's window that its keys go to; None when there is none."""
    return find_window(connection, lambda window: "VQMKeygrab" in (window.get_wm_class() or ())
                       or window.get_wm_name() == "VQMKeygrab")
