"""A hostile client of the session bus: forged signals, calls, unrequested answers, floods."""

import bus_wire
from bus_peer import BUS, NOTIFICATIONS, NotificationDaemon, Peer
from bus_wire import Message
from desktop import wait_until
from subject import Subject

STEPS = 120
NAMES = ["x", "", ":1.4711", "..", ":", "org.freedesktop.DBus", NOTIFICATIONS, "a" * 300, "\x1b[31m", "a.b\u202ec", ":1." + "9" * 260]
INTERFACES = [BUS, NOTIFICATIONS, "org.freedesktop.DBus.Properties", "org.freedesktop.DBus.Peer",
              "org.freedesktop.DBus.Introspectable", "org.dunstproject.cmd0"]
MEMBERS = ["NameOwnerChanged", "NameLost", "NameAcquired", "PropertiesChanged", "Get", "Set", "Ping", "Introspect",
           "Hello", "Inhibit", "ActionInvoked", "NotificationClosed"]


class HostileClient:
    def __init__(self, subject, random, daemon):
        self.subject, self.random, self.daemon = subject, random, daemon
        self.peer = None
        self.join()
        self.application = self.peer.name_of(subject.pid)
        assert self.application, "the application is on the bus"

    def join(self):
        if self.peer:
            self.peer.close()
        self.peer = Peer(self.subject.bus_path)
        self.subject.cleanup.callback(self.peer.close)

    def step(self):
        # The bus throws out who goes too far.
        try:
            self.random.choice([self.owner_changed, self.owner_changed, self.signal, self.call, self.answer,
                                self.flood, self.large])()
            self.peer.ask_bus("GetId")
        except (OSError, RuntimeError):
            self.join()
        except Exception:  # no answer: thrown out while it waited
            self.join()

    def destination(self):
        return self.random.choice([self.application, self.application, None])

    def owner_changed(self):
        """A forged signal of the bus about the notification daemon, which has not changed."""
        names = [*NAMES, self.daemon.name, self.peer.name, self.application]
        signature = self.random.choice(["sss", "sss", "sss", "ss", "sssu", "sos", "s"])
        before, now = self.random.choice([*names, "/o"]), self.random.choice(names)
        values = [self.random.choice([NOTIFICATIONS, NOTIFICATIONS, *NAMES]), "/o" if "o" in signature else before, now, 7]
        self.peer.signal(BUS, "NameOwnerChanged", signature, *values[:len(signature)], destination=self.destination())

    def signal(self):
        signature = self.random.choice(["", "s", "sv", "as", "a{sv}", "uuu"])
        values = {"": [], "s": ["x"], "sv": ["x", ("ai", [1, 2])], "as": [["a", "b"]], "a{sv}": [[("k", ("b", 1))]],
                  "uuu": [1, 2, 3]}[signature]
        self.peer.signal(self.random.choice(INTERFACES), self.random.choice(MEMBERS), signature, *values,
                         destination=self.destination(), path=self.random.choice(["/", "/org/freedesktop/DBus"]))

    def call(self):
        self.peer.send(Message(bus_wire.CALL, {
            bus_wire.PATH: "/", bus_wire.INTERFACE: self.random.choice(INTERFACES),
            bus_wire.MEMBER: self.random.choice(MEMBERS), bus_wire.DESTINATION: self.application},
            "s", ["x"], flags=self.random.randrange(4)))

    def answer(self):
        kind = self.random.choice([bus_wire.RETURN, bus_wire.ERROR])
        fields = {bus_wire.REPLY_SERIAL: self.random.randrange(1, 40), bus_wire.DESTINATION: self.application}
        if kind == bus_wire.ERROR:
            fields[bus_wire.ERROR_NAME] = self.random.choice([BUS + ".Error.NoReply", "a.b"])
        self.peer.send(Message(kind, fields, "s", [self.random.choice(NAMES)]))

    def flood(self):
        for _ in range(50):
            self.signal()

    def large(self):
        self.peer.signal(BUS, "NameOwnerChanged", "sss", NOTIFICATIONS, "x" * 1000000, "", destination=self.destination())


def attack(random, steps, held):
    subject = Subject(bus=True)
    held.append(subject)
    before = random.random() < 0.3
    daemon = NotificationDaemon(subject.bus_path, paused=before, inhibits=random.random() < 0.3)
    subject.cleanup.callback(daemon.close)
    daemon.take()
    subject.start()
    wait_until(daemon.holds_back, "popups are held back")
    subject.measure()

    client = HostileClient(subject, random, daemon)
    for _ in range(steps):
        client.step()
    subject.launch()
    assert daemon.holds_back(), "popups are held back no more"
    subject.finish()
    assert daemon.inhibits or daemon.paused == before, "the daemon's switch is not as it was found"
    assert not daemon.cookies, "the inhibition was not ended"
