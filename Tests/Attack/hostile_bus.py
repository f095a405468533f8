"""A session bus that is none: silent, lying, garbled or gone, at any point of the conversation."""

import random as chance
import socket
import subprocess
import threading

import bus_wire
from bus_peer import BUS, NOTIFICATIONS, receive, receive_message
from bus_wire import Message
from desktop import BUILD, PATIENCE
from subject import Subject

STEPS = 6
GREETINGS = [b"OK 0123456789abcdef0123456789abcdef\r\n"] * 6 + [
    b"", b"REJECTED EXTERNAL\r\n", b"REJECTED\r\n" * 1000, b"\0" * 5000, b"OK nonsense\r\n", b"DATA\r\n" * 10,
    b"O", b"A" * 100000]
NAMES = ["x", "", ":", "..", ":1.7", "a" * 300, NOTIFICATIONS]


class HostileBus:
    """Each connection has its own thread and random generator."""

    def __init__(self, path, seed):
        self.random, self.connections = chance.Random(seed), []
        self.listener = socket.socket(socket.AF_UNIX)
        self.listener.bind(str(path))
        self.listener.listen(20)
        threading.Thread(target=self.accept, daemon=True).start()

    def accept(self):
        while True:
            try:
                connection, _ = self.listener.accept()
            except OSError:
                return
            self.connections.append(connection)
            threading.Thread(target=self.serve, args=[connection, chance.Random(self.random.random())],
                             daemon=True).start()

    def serve(self, connection, random):
        try:
            greeting = random.choice(GREETINGS)
            line = b""
            while line != b"BEGIN\r\n":
                line = b""
                while not line.endswith(b"\n"):
                    line += receive(connection, 1)
                if b"AUTH" in line:
                    connection.sendall(greeting)
                elif line != b"BEGIN\r\n":
                    connection.sendall(b"ERROR\r\n")
            # A bus may be right for a while.
            right = random.randrange(8)
            while True:
                call = receive_message(connection)
                self.answer(connection, random, call, right > 0)
                right -= 1
        except (OSError, ValueError, IndexError):
            pass

    def answer(self, connection, random, call, right):
        if right:
            self.right(connection, random, call)
            return
        random.choice([self.right, self.silence, self.wrong, self.garbage, self.cut, self.oversize, self.owner_changed,
                       self.gone])(connection, random, call)

    def reply(self, connection, call, signature="", *values):
        connection.sendall(Message(bus_wire.RETURN, {
            bus_wire.REPLY_SERIAL: call.serial, bus_wire.SENDER: BUS}, signature, values, serial=7).encode())

    def right(self, connection, random, call):
        member = call.fields.get(bus_wire.MEMBER)
        answers = {"Hello": ("s", ":1.1"), "GetId": ("s", "0" * 32), "GetNameOwner": ("s", ":1.2"), "Inhibit": ("u", 3),
                   "Get": ("v", ("b", 0))}
        self.reply(connection, call, *answers.get(member, ()))

    def silence(self, connection, random, call):
        pass

    def wrong(self, connection, random, call):
        signature = random.choice(["s", "s", "s", "u", "v", "as", ""])
        values = {"s": [random.choice(NAMES)], "u": [5], "v": [("s", "x")], "as": [[]], "": []}[signature]
        self.reply(connection, call, signature, *values)

    def garbage(self, connection, random, call):
        connection.sendall(random.randbytes(random.randrange(1, 400)))

    def cut(self, connection, random, call):
        data = Message(bus_wire.RETURN, {bus_wire.REPLY_SERIAL: call.serial}, "s", ["x" * 100], serial=7).encode()
        connection.sendall(data[:random.randrange(len(data))])

    def oversize(self, connection, random, call):
        connection.sendall(b"l\2\1\1" + (0x7FFFFFFF).to_bytes(4, "little") + b"\7\0\0\0\0\0\0\0")

    def owner_changed(self, connection, random, call):
        for _ in range(random.randrange(1, 30)):
            connection.sendall(Message(bus_wire.SIGNAL, {
                bus_wire.PATH: "/org/freedesktop/DBus", bus_wire.INTERFACE: BUS, bus_wire.MEMBER: "NameOwnerChanged",
                bus_wire.SENDER: BUS}, "sss", [NOTIFICATIONS, random.choice(NAMES), random.choice(NAMES)],
                serial=9).encode())
        self.right(connection, random, call)

    def gone(self, connection, random, call):
        connection.close()

    def close(self):
        for connection in [*self.connections, self.listener]:
            try:
                connection.shutdown(socket.SHUT_RDWR)
            except OSError:
                pass
            connection.close()


def attack(random, steps, held):
    subject = Subject()
    held.append(subject)
    for step in range(steps):
        path = subject.desktop.runtime / f"bus-{step}"
        bus = HostileBus(path, random.random())
        subject.cleanup.callback(bus.close)
        subject.desktop.environment["DBUS_SESSION_BUS_ADDRESS"] = f"unix:path={path}"
        subject.start(name=f"application-{step}")
        subject.launch()
        status = subprocess.run([BUILD / "bin/vqmctl", "status"], env=subject.desktop.environment,
                                capture_output=True, timeout=PATIENCE)
        assert status.returncode in (0, 1), f"vqmctl status: {status.returncode}\n{status.stderr.decode()}"
        subject.end()
        bus.close()
    for path in subject.desktop.runtime.glob("*.popups"):
        path.unlink()  # a pause that a fake bus was asked for cannot be restored
    subject.check_files()
