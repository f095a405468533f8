"""A client of a message bus that sends and answers what it likes."""

import itertools
import os
import queue
import socket
import threading

import bus_wire
from bus_wire import Message
from home import PATIENCE

BUS = "org.freedesktop.DBus"
NOTIFICATIONS = "org.freedesktop.Notifications"


def receive(connection, length):
    data = b""
    while len(data) < length:
        piece = connection.recv(length - len(data))
        if not piece:
            raise ConnectionError("the other side has gone")
        data += piece
    return data


def receive_message(connection):
    start = receive(connection, 16)
    return Message.decode(start + receive(connection, Message.length(start) - 16))


class Peer:
    """A connection with a thread that reads; calls that arrive go to `answer`. Close it when done."""

    def __init__(self, path):
        self.connection = socket.socket(socket.AF_UNIX)
        self.connection.settimeout(PATIENCE)
        self.connection.connect(str(path))
        self.connection.sendall(b"\0AUTH EXTERNAL " + str(os.getuid()).encode().hex().encode() + b"\r\n")
        if not self.connection.recv(200).startswith(b"OK"):
            raise ConnectionError("the bus refuses")
        self.connection.sendall(b"BEGIN\r\n")
        self.connection.settimeout(None)
        self.serials, self.lock, self.waiting = itertools.count(1), threading.Lock(), {}
        threading.Thread(target=self._read, daemon=True).start()
        self.name = self.ask_bus("Hello")[0]

    def _read(self):
        try:
            while True:
                message = receive_message(self.connection)
                if message.kind == bus_wire.CALL:
                    self.answer(message)
                elif message.fields.get(bus_wire.REPLY_SERIAL) in self.waiting:
                    self.waiting[message.fields[bus_wire.REPLY_SERIAL]].put(message)
        except OSError:
            pass

    def send(self, message):
        with self.lock:
            message.serial = next(self.serials)
            self.connection.sendall(message.encode())
        return message.serial

    def call(self, destination, path, interface, member, signature="", *values):
        """The answer's values; an error is an exception."""
        message = Message(bus_wire.CALL, {
            bus_wire.PATH: path, bus_wire.INTERFACE: interface, bus_wire.MEMBER: member,
            bus_wire.DESTINATION: destination}, signature, values)
        with self.lock:
            message.serial = next(self.serials)
            replies = self.waiting[message.serial] = queue.Queue()
            self.connection.sendall(message.encode())
        reply = replies.get(timeout=PATIENCE)
        del self.waiting[message.serial]
        if reply.kind == bus_wire.ERROR:
            raise RuntimeError(reply.fields[bus_wire.ERROR_NAME])
        return reply.values

    def ask_bus(self, member, signature="", *values):
        return self.call(BUS, "/org/freedesktop/DBus", BUS, member, signature, *values)

    def take(self, name=NOTIFICATIONS):
        """Takes a name, also from another peer that allows it."""
        return self.ask_bus("RequestName", "su", name, 1 | 2 | 4)[0]

    def drop(self, name=NOTIFICATIONS):
        self.ask_bus("ReleaseName", "s", name)

    def signal(self, interface, member, signature="", *values, destination=None, path="/org/freedesktop/DBus"):
        fields = {bus_wire.PATH: path, bus_wire.INTERFACE: interface, bus_wire.MEMBER: member}
        if destination:
            fields[bus_wire.DESTINATION] = destination
        return self.send(Message(bus_wire.SIGNAL, fields, signature, values))

    def name_of(self, pid):
        """The unique name of a process's connection, or None."""
        for name in self.ask_bus("ListNames")[0]:
            if name.startswith(":"):
                try:
                    if self.ask_bus("GetConnectionUnixProcessID", "s", name) == [pid]:
                        return name
                except RuntimeError:
                    pass  # it has just gone
        return None

    def reply(self, call, signature="", *values):
        self.send(Message(bus_wire.RETURN, {
            bus_wire.REPLY_SERIAL: call.serial, bus_wire.DESTINATION: call.fields[bus_wire.SENDER]}, signature, values))

    def refuse(self, call, error, text=""):
        self.send(Message(bus_wire.ERROR, {
            bus_wire.REPLY_SERIAL: call.serial, bus_wire.DESTINATION: call.fields[bus_wire.SENDER],
            bus_wire.ERROR_NAME: error}, "s", [text]))

    def answer(self, call):
        self.refuse(call, BUS + ".Error.UnknownMethod")

    def close(self):
        # Wakes the thread that reads, which a close alone would not.
        try:
            self.connection.shutdown(socket.SHUT_RDWR)
        except OSError:
            pass
        self.connection.close()


class NotificationDaemon(Peer):
    """A well-behaved one, with a switch for pausing or with its own inhibition."""

    def __init__(self, path, paused=False, inhibits=False):
        self.paused, self.inhibits, self.cookies = paused, inhibits, set()
        super().__init__(path)

    def holds_back(self):
        return bool(self.cookies) if self.inhibits else self.paused

    def answer(self, call):
        member, values = call.fields[bus_wire.MEMBER], call.values
        if member == "GetServerInformation":
            self.reply(call, "ssss", "daemon", "none", "1", "1.2")
        elif member == "Inhibit" and self.inhibits:
            self.cookies.add(7)
            self.reply(call, "u", 7)
        elif member == "UnInhibit" and self.inhibits:
            self.cookies.discard(values[0])
            self.reply(call)
        elif member == "Get" and not self.inhibits and values[1:] == ["paused"]:
            self.reply(call, "v", ("b", int(self.paused)))
        elif member == "Set" and not self.inhibits and values[1] == "paused":
            self.paused = bool(values[2][1])
            self.reply(call)
        else:
            super().answer(call)
