"""A hostile client of the same X server: grabs, forged events, maps, focus, selections, closed windows."""

import time

from Xlib import X, XK, Xatom, display as xdisplay
from Xlib.protocol import event

from desktop import APP_ID, TOOL_KEYS
from subject import Subject
from windows import find_key_window

STEPS = 150
MESSAGES = ["_TV_LAUNCH", "_TV_PID", "WM_PROTOCOLS", "WM_DELETE_WINDOW", "WM_TAKE_FOCUS", "_NET_WM_PING", "WM_STATE",
            "_NET_CLOSE_WINDOW", "_NET_ACTIVE_WINDOW", "XdndEnter", "XdndDrop", "_XEMBED", "MANAGER", "ECORE_SYNC"]
PROPERTIES = ["_TV_PID", "_TV_HELD_KEYS", "_TV_FAILED_KEYS", "WM_STATE", "WM_HINTS", "WM_NAME", "WM_PROTOCOLS",
              "_NET_WM_STATE", "_NET_WM_PID", "_MOTIF_WM_HINTS", "_NET_FRAME_EXTENTS", "ENLIGHTENMENT_DESKTOP"]


class HostileClient:
    """Steps that a seeded generator chooses. `may_end`: one of them takes away what the application lives on."""

    def __init__(self, subject, random):
        self.random, self.subject, self.may_end = random, subject, False
        self.display = xdisplay.Display(subject.desktop.display_name)
        subject.cleanup.callback(self.display.close)
        self.display.set_error_handler(lambda error, request: None)
        self.root = self.display.screen().root
        self.low, high = self.display.display.info.min_keycode, self.display.display.info.max_keycode
        self.codes = range(self.low, high + 1)
        self.mapping = self.display.get_keyboard_mapping(self.low, len(self.codes))
        self.tools = [self.display.keysym_to_keycode(number) for number in TOOL_KEYS.values()]
        self.window = self.root.create_window(10, 10, 50, 50, 0, X.CopyFromParent, event_mask=X.KeyPressMask)
        self.window.map()
        self.selection = self.display.intern_atom(APP_ID)
        self.instance = self.display.get_selection_owner(self.selection)
        self.keys = find_key_window(self.display)
        self.steps = [self.grab_key, self.grab_key, self.ungrab_key, self.grab_keyboard, self.ungrab_keyboard,
                      self.grab_pointer, self.map_keys, self.lock, self.message, self.message, self.property,
                      self.property, self.selection_event, self.take_selection, self.focus, self.window_event,
                      self.key_event, self.change_window, self.tap, self.grab_server, self.rob]

    def target(self):
        return self.random.choice([self.instance, self.keys, self.keys, self.root])

    def code(self):
        return self.random.choice([*self.tools, X.AnyKey, self.random.choice(self.codes)])

    def step(self):
        self.random.choice(self.steps)()
        self.display.sync()

    # Keys and the keyboard.

    def grab_key(self):
        modifiers = self.random.choice([X.AnyModifier, 0, X.ShiftMask, X.LockMask, self.random.randrange(256)])
        mode = self.random.choice([X.GrabModeAsync, X.GrabModeAsync, X.GrabModeSync])
        place = self.random.choice([self.root, self.window, self.keys])
        place.grab_key(self.code(), modifiers, self.random.random() < 0.5, X.GrabModeAsync, mode)

    def ungrab_key(self):
        self.random.choice([self.root, self.window, self.keys]).ungrab_key(self.code(), X.AnyModifier)

    def grab_keyboard(self):
        self.random.choice([self.root, self.window]).grab_keyboard(
            True, X.GrabModeAsync, self.random.choice([X.GrabModeAsync, X.GrabModeSync]), X.CurrentTime)

    def ungrab_keyboard(self):
        self.display.allow_events(X.AsyncBoth, X.CurrentTime)
        self.display.ungrab_keyboard(X.CurrentTime)

    def grab_pointer(self):
        self.root.grab_pointer(True, 0, X.GrabModeAsync, X.GrabModeAsync, X.NONE, X.NONE, X.CurrentTime)
        self.display.ungrab_pointer(X.CurrentTime)

    def map_keys(self):
        symbols = [*TOOL_KEYS.values(), 0, 0x61, 0x1008FF14, self.random.randrange(1 << 29)]
        for _ in range(self.random.randrange(1, 4)):
            self.display.change_keyboard_mapping(
                self.random.choice([*self.tools, self.random.choice(self.codes)]),
                [[self.random.choice(symbols) for _ in range(self.random.randrange(1, 5))]])

    def rob(self):
        """Takes a tool key while the application has to let go of it."""
        code = self.random.choice(self.tools)
        symbols = list(self.mapping[code - self.low])
        self.display.change_keyboard_mapping(code, [[0]])
        self.display.sync()
        time.sleep(0.05)
        self.root.grab_key(code, X.AnyModifier, False, X.GrabModeAsync, X.GrabModeAsync)
        self.display.change_keyboard_mapping(code, [symbols])

    def lock(self):
        self.subject.keyboard.tap(self.random.choice([XK.XK_Caps_Lock, XK.XK_Num_Lock]))

    def tap(self):
        self.subject.keyboard.tap(self.random.choice(list(TOOL_KEYS.values())))

    # Forged events.

    def message(self):
        self.target().send_event(event.ClientMessage(
            window=self.target(), client_type=self.display.intern_atom(self.random.choice(MESSAGES)),
            data=(32, [self.random.choice([0, 1, self.instance.id, self.display.intern_atom("WM_DELETE_WINDOW"),
                                           self.random.randrange(1 << 32)]) for _ in range(5)])))

    def property(self):
        name = self.display.intern_atom(self.random.choice(PROPERTIES))
        window = self.random.choice([self.instance, self.keys])
        if self.random.random() < 0.3:
            window.delete_property(name)
        else:
            form = self.random.choice([8, 16, 32])
            count = self.random.choice([0, 1, 4, 40])
            values = [self.random.randrange(1 << form) for _ in range(count)]
            kind = self.random.choice([Xatom.CARDINAL, Xatom.STRING, Xatom.ATOM, Xatom.WM_HINTS])
            window.change_property(name, kind, form, bytes(values) if form == 8 else values)

    def selection_event(self):
        atom = self.random.choice([self.selection, Xatom.PRIMARY, self.display.intern_atom("CLIPBOARD")])
        target = self.random.choice([self.instance, self.keys])
        target.send_event(self.random.choice([
            event.SelectionClear(time=X.CurrentTime, window=target, atom=atom),
            event.SelectionRequest(time=X.CurrentTime, owner=target, requestor=self.window, selection=atom,
                                   target=self.random.choice([Xatom.STRING, self.display.intern_atom("TARGETS")]),
                                   property=atom),
            event.SelectionNotify(time=X.CurrentTime, requestor=target, selection=atom, target=Xatom.STRING,
                                  property=atom),
        ]))

    def take_selection(self):
        self.window.set_selection_owner(self.selection, X.CurrentTime)
        if self.random.random() < 0.5:
            self.instance.set_selection_owner(self.selection, X.CurrentTime)

    def key_event(self):
        kind = self.random.choice([event.KeyPress, event.KeyRelease])
        target = self.random.choice([self.keys, self.instance])
        target.send_event(kind(
            time=X.CurrentTime, root=self.root, window=target, same_screen=1, child=X.NONE, root_x=0, root_y=0,
            event_x=0, event_y=0, state=self.random.randrange(256), detail=self.random.choice(self.codes)),
            event_mask=X.KeyPressMask)

    def window_event(self):
        window, number = self.random.choice([self.keys, self.instance]), self.random.randrange(1 << 16)
        window.send_event(self.random.choice([
            event.UnmapNotify(event=window, window=window, from_configure=0),
            event.MapNotify(event=window, window=window, override=0),
            event.ReparentNotify(event=window, window=window, parent=self.root, x=0, y=0, override=0),
            event.ConfigureNotify(event=window, window=window, above_sibling=X.NONE, x=0, y=0, width=number,
                                  height=number, border_width=0, override=0),
            event.Expose(window=window, x=0, y=0, width=number, height=number, count=number % 3),
            event.FocusIn(window=window, detail=number % 8, mode=number % 4),
            event.FocusOut(window=window, detail=number % 8, mode=number % 4),
            event.PropertyNotify(window=window, atom=number % 200 + 1, time=X.CurrentTime, state=number % 2),
            event.MappingNotify(request=number % 3, first_keycode=self.low, count=number % 200),
        ]), event_mask=X.StructureNotifyMask)

    # Attacks on windows.

    def focus(self):
        self.display.set_input_focus(self.random.choice([self.window, self.keys, self.instance, X.PointerRoot, X.NONE]),
                                     X.RevertToParent, X.CurrentTime)

    def change_window(self):
        self.random.choice([
            self.keys.unmap, self.keys.map, self.keys.raise_window,
            lambda: self.keys.configure(x=self.random.randrange(3000), width=self.random.randrange(1, 5000)),
            lambda: self.keys.change_attributes(event_mask=X.PropertyChangeMask | X.SubstructureNotifyMask),
            lambda: self.instance.map(), lambda: self.keys.reparent(self.window, 0, 0),
            lambda: self.keys.reparent(self.root, 0, 0),
        ])()

    def grab_server(self):
        self.display.grab_server()
        self.display.sync()
        time.sleep(0.02)
        self.display.ungrab_server()

    def take_away(self):
        """The last step of some rounds."""
        self.may_end = True
        self.random.choice([self.keys.destroy, self.keys.destroy, self.keys.kill_client, self.instance.kill_client, self.instance.destroy,
                            lambda: self.keys.send_event(event.DestroyNotify(event=self.keys, window=self.keys),
                                                         event_mask=X.StructureNotifyMask)])()
        self.display.sync()

    def give_back(self):
        """Leaves keys, map and focus to the others, as a client does that ends."""
        self.ungrab_keyboard()
        self.display.change_keyboard_mapping(self.low, [list(symbols) for symbols in self.mapping])
        self.display.sync()
        # The application has looked at the map by then, and sees nothing of what follows.
        time.sleep(0.2)
        for place in (self.root, self.window):
            place.ungrab_key(X.AnyKey, X.AnyModifier)
        self.keys.reparent(self.root, 0, 0)
        self.display.set_input_focus(X.PointerRoot, X.RevertToParent, X.CurrentTime)
        self.display.sync()
        while self.display.pending_events():
            self.display.next_event()


def attack(random, steps, held):
    subject = Subject()
    held.append(subject)
    subject.start()
    subject.measure()
    client = HostileClient(subject, random)
    for _ in range(steps):
        client.step()
    if random.random() < 0.4:
        client.take_away()
    client.give_back()
    if not client.may_end:
        subject.finish()
    elif subject.lives_or_has_ended_clearly():
        subject.end()
    subject.check_files()
