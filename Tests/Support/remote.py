"""The remote control's window, used by pointer and keyboard and looked at as a person does."""

from Xlib import X
from Xlib.ext import xtest

from home import wait_until
from windows import find_shown

# What the buttons' places are made of: a margin, rows, and columns of a row, as in the program's layout.
WIDTH, MARGIN, GAP, HEIGHT, ROW = 332, 20, 8, 54, 62
ARROWS = 196
# By keysym or caption: the row's place, the column, and how many columns the row has.
BUTTONS = {
    "XF86PowerOff": (44, 0, 3),
    "XF86Close": (44, 2, 3),
    "XF86SimpleMenu": (126, 0, 2),
    "XF86More": (126, 1, 2),
    "XF86AudioRaiseVolume": (ARROWS, 0, 3),
    "Up": (ARROWS, 1, 3),
    "Return": (ARROWS + ROW, 1, 3),
    "XF86Back": (ARROWS + 3 * ROW, 0, 3),
    "XF86Red": (ARROWS + 4 * ROW, 0, 4),
    "Sync demo": (530, 0, 2),
    "Send a popup": (530, 1, 2),
    "Start": (592, 0, 2),
    "End": (592, 1, 2),
}
# The colours of the words and marks that go with a state.
HELD, HANDED_BACK, NEITHER = (134, 224, 154), (242, 200, 121), (171, 178, 191)


def colours(window, x, y, width, height):
    """The colours of a part of a window, each as (red, green, blue)."""
    data = window.get_image(x, y, width, height, X.ZPixmap, 0xFFFFFFFF).data
    return {(data[i + 2], data[i + 1], data[i]) for i in range(0, len(data), 4)}


class Remote:
    """The remote control that shows on a display."""

    def __init__(self, connection):
        self.display = connection
        self.window = wait_until(lambda: find_shown(connection, "remote-control"), "the remote control's window")

    @staticmethod
    def place(button):
        y, column, columns = BUTTONS[button]
        width = (WIDTH - 2 * MARGIN - (columns - 1) * GAP) // columns
        return MARGIN + column * (width + GAP), y, width, HEIGHT

    def state(self, button):
        """The one colour of a state that the button shows; None while it draws."""
        shown = colours(self.window, *self.place(button)) & {HELD, HANDED_BACK, NEITHER}
        return shown.pop() if len(shown) == 1 else None

    def wait_for(self, button, state):
        wait_until(lambda: self.state(button) == state, f"{button} shows its state, {state}")

    def click(self, button):
        x, y, width, height = self.place(button)
        origin = self.window.translate_coords(self.display.screen().root, 0, 0)
        # The other way round: where the root's origin lies as seen from the window.
        xtest.fake_input(self.display, X.MotionNotify, x=x + width // 2 - origin.x, y=y + height // 2 - origin.y)
        xtest.fake_input(self.display, X.ButtonPress, 1)
        xtest.fake_input(self.display, X.ButtonRelease, 1)
        self.display.sync()
