"""A stand-in for the application: a client that holds keys."""

import os

from Xlib import X, Xatom, display as xdisplay
from Xlib.protocol.event import ClientMessage

from home import APP_ID


class Holder:
    """Holds keys as the application does, and says so on the selection's window."""

    def __init__(self, name):
        self.display = xdisplay.Display(name)
        self.root = self.display.screen().root
        self.window = self.root.create_window(-1, -1, 1, 1, 0, X.CopyFromParent)
        self.window.change_property(self.display.intern_atom("_TV_PID"), Xatom.CARDINAL, 32, [os.getpid()])
        self.publish()
        self.unread_keys = []
        self.other_events = []
        self.window.set_selection_owner(self.display.intern_atom(APP_ID), X.CurrentTime)
        self.display.sync()

    def publish(self, held=(), failed=()):
        for name, keys in (("_TV_HELD_KEYS", held), ("_TV_FAILED_KEYS", failed)):
            self.window.change_property(self.display.intern_atom(name), self.display.intern_atom("UTF8_STRING"), 8,
                                        "".join(key + "\0" for key in keys).encode())
        self.display.sync()

    def codes(self, symbol):
        first, last = self.display.display.info.min_keycode, self.display.display.info.max_keycode
        mapping = self.display.get_keyboard_mapping(first, last - first + 1)
        return [first + index for index, row in enumerate(mapping) if len(row) and row[0] == symbol]

    def hold(self, symbol, key):
        for code in self.codes(symbol):
            self.root.grab_key(code, X.AnyModifier, False, X.GrabModeAsync, X.GrabModeAsync)
        self.publish(held=[key])

    def run_main_loop(self):
        """Says that the keys go to the window, where a ping will be answered."""
        self.publish_key_window(self.window.id)

    def publish_key_window(self, number):
        self.window.change_property(self.display.intern_atom("_TV_KEY_WINDOW"), Xatom.WINDOW, 32, [number])
        self.display.sync()

    def read_events(self):
        while self.display.pending_events():
            event = self.display.next_event()
            if event.type in (X.KeyPress, X.KeyRelease):
                self.unread_keys.append((event.type, event.detail))
            else:
                self.other_events.append(event)

    def key_events(self):
        self.read_events()
        events, self.unread_keys = self.unread_keys, []
        return events

    def ping(self):
        """The ping that came first; it and later ones then count no more."""
        self.read_events()
        pings = [event for event in self.other_events if event.type == X.ClientMessage
                 and event.data[1][0] == self.display.intern_atom("_NET_WM_PING")]
        self.other_events = []
        return pings[0] if pings else None

    def answer(self, ping):
        pong = ClientMessage(window=self.root, client_type=ping.client_type, data=ping.data)
        self.root.send_event(pong, event_mask=X.SubstructureNotifyMask | X.SubstructureRedirectMask)
        self.display.sync()

    def lent(self):
        """The numbers that note what is lent."""
        found = self.root.get_full_property(self.display.intern_atom("_TV_LENT_KEYS"), Xatom.CARDINAL)
        return list(found.value) if found else []
