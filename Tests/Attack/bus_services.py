"""Notification daemons that misbehave, come and go, on a bus that stops, dies and comes again."""

import random as chance
import signal
import threading
import time

import bus_wire
from bus_peer import BUS, NOTIFICATIONS, NotificationDaemon, Peer
from desktop import wait_until
from notifications import start_bus
from subject import Subject

STEPS = 12
# Enough of them that waiting for each in turn would outlast every patience.
BURST = 400


class HostileDaemon(Peer):
    """Owns the notification name and answers as a seeded generator says."""

    def __init__(self, path, seed):
        self.random = chance.Random(seed)
        super().__init__(path)

    def answer(self, call):
        answer = self.random.choice([self.silent, self.late, self.wrong_type, self.error, self.huge, self.right,
                                     self.twice, self.leave])
        try:
            answer(call)
        except OSError:
            pass

    def silent(self, call):
        pass

    def late(self, call):
        threading.Timer(self.random.random() * 2, self.try_again, [call]).start()

    def try_again(self, call):
        try:
            self.right(call)
        except OSError:
            pass  # closed meanwhile

    def wrong_type(self, call):
        signature, value = self.random.choice([
            ("s", "x"), ("v", ("s", "x")), ("v", ("ab", [1])), ("u", 0), ("i", -1), ("as", []), ("v", ("v", ("b", 1)))])
        self.reply(call, signature, value)

    def error(self, call):
        self.refuse(call, BUS + ".Error." + self.random.choice(["Failed", "NoReply", "AccessDenied", "UnknownMethod"]),
                    "\x1b[31m" * self.random.randrange(2000))

    def huge(self, call):
        self.reply(call, "ssss", "name" * 500000, "", "", "")

    def right(self, call):
        member = call.fields[bus_wire.MEMBER]
        if member == "Get":
            self.reply(call, "v", ("b", self.random.randrange(2)))
        elif member == "Inhibit":
            self.reply(call, "u", 7)
        else:
            self.reply(call)

    def twice(self, call):
        self.right(call)
        self.right(call)

    def leave(self, call):
        """Lets go of the name in the middle of the conversation."""
        self.send(bus_wire.Message(bus_wire.CALL, {
            bus_wire.PATH: "/org/freedesktop/DBus", bus_wire.INTERFACE: BUS, bus_wire.MEMBER: "ReleaseName",
            bus_wire.DESTINATION: BUS}, "s", [NOTIFICATIONS]))


class Silent(Peer):
    def answer(self, call):
        pass


class Services:
    def __init__(self, subject, random):
        self.subject, self.random, self.peers = subject, random, []

    def join(self, kind, *arguments):
        peer = kind(self.subject.bus_path, *arguments)
        self.peers.append(peer)
        return peer

    def leave(self):
        while self.peers:
            self.peers.pop().close()

    def hostile(self):
        self.join(HostileDaemon, self.random.random()).take()
        time.sleep(self.random.random() / 5)

    def burst(self):
        """The name comes and goes, and no request is ever answered."""
        peer = self.join(Silent)
        for _ in range(BURST):
            peer.take()
            peer.drop()
        self.subject.launch()

    def good(self):
        self.join(NotificationDaemon).take()

    def stop_bus(self):
        self.subject.bus.process.send_signal(signal.SIGSTOP)
        time.sleep(self.random.random())
        self.subject.bus.process.send_signal(signal.SIGCONT)

    def restart_bus(self):
        self.leave()
        self.subject.bus.kill()
        self.subject.bus_path.unlink()
        time.sleep(self.random.random() / 5)
        self.subject.bus = start_bus(self.subject.desktop)

    def step(self):
        self.random.choice([self.hostile, self.hostile, self.hostile, self.good, self.leave, self.burst, self.stop_bus,
                            self.restart_bus])()


def attack(random, steps, held):
    subject = Subject(bus=True)
    held.append(subject)
    services = Services(subject, random)
    subject.cleanup.callback(services.leave)
    if random.random() < 0.5:
        services.hostile()
    subject.start()
    subject.measure()
    for _ in range(steps):
        services.step()
        if random.random() < 0.3:
            subject.launch()
    services.leave()

    before = random.random() < 0.5
    daemon = NotificationDaemon(subject.bus_path, paused=before)
    subject.cleanup.callback(daemon.close)
    daemon.take()
    wait_until(daemon.holds_back, "a daemon that answers holds popups back")
    subject.finish()
    assert daemon.paused == before, "the daemon's switch is not as it was found"
