"""The wire format of D-Bus messages, as much of it as an attacker needs.

The libraries refuse to send what this module is for: false types, names that are not names, lengths
that do not fit. Little-endian only. A variant is written as (signature, value).
"""

import struct

CALL, RETURN, ERROR, SIGNAL = 1, 2, 3, 4
PATH, INTERFACE, MEMBER, ERROR_NAME, REPLY_SERIAL, DESTINATION, SENDER, SIGNATURE = 1, 2, 3, 4, 5, 6, 7, 8
HEADER_TYPES = {PATH: "o", REPLY_SERIAL: "u", SIGNATURE: "g"}

FIXED = {"y": "B", "b": "I", "n": "h", "q": "H", "i": "i", "u": "I", "x": "q", "t": "Q", "d": "d", "h": "I"}


def first_type(signature):
    """The length of the first complete type."""
    if signature[0] == "a":
        return 1 + first_type(signature[1:])
    if signature[0] in "({":
        depth = 0
        for index, character in enumerate(signature):
            depth += (character in "({") - (character in ")}")
            if not depth:
                return index + 1
    return 1


def types_of(signature):
    while signature:
        length = first_type(signature)
        yield signature[:length]
        signature = signature[length:]


def alignment(kind):
    if kind in FIXED:
        return struct.calcsize(FIXED[kind])
    return {"s": 4, "o": 4, "a": 4, "(": 8, "{": 8}.get(kind, 1)


class Writer:
    def __init__(self):
        self.bytes = bytearray()

    def align(self, size):
        self.bytes += bytes(-len(self.bytes) % size)

    def write(self, signature, *values):
        for kind, value in zip(types_of(signature), values):
            self.align(alignment(kind[0]))
            self.write_one(kind, value)
        return self

    def write_one(self, kind, value):
        if kind in FIXED:
            self.bytes += struct.pack("<" + FIXED[kind], value)
        elif kind in "sog":
            text = value if isinstance(value, bytes) else value.encode()
            self.bytes += struct.pack("<B" if kind == "g" else "<I", len(text)) + text + b"\0"
        elif kind == "v":
            self.write("g", value[0])
            self.write(value[0], value[1])
        elif kind[0] == "a":
            at = len(self.bytes)
            self.bytes += bytes(4)
            self.align(alignment(kind[1]))
            start = len(self.bytes)
            for item in value:
                self.write(kind[1:], item)
            self.bytes[at:at + 4] = struct.pack("<I", len(self.bytes) - start)
        else:
            self.write(kind[1:-1], *value)


class Reader:
    def __init__(self, data):
        self.bytes, self.at = data, 0

    def align(self, size):
        self.at += -self.at % size

    def read(self, signature):
        return [self.read_one(kind) for kind in types_of(signature)]

    def read_one(self, kind):
        self.align(alignment(kind[0]))
        if kind in FIXED:
            return self.unpack(FIXED[kind])
        if kind in "sog":
            length = self.unpack("B" if kind == "g" else "I")
            text = self.bytes[self.at:self.at + length].decode(errors="replace")
            self.at += length + 1
            return text
        if kind == "v":
            signature = self.read_one("g")
            return (signature, self.read_one(signature))
        if kind[0] == "a":
            length = self.unpack("I")
            self.align(alignment(kind[1]))
            end, items = self.at + length, []
            while self.at < end:
                items.append(self.read_one(kind[1:]))
            return items
        return tuple(self.read(kind[1:-1]))

    def unpack(self, form):
        value, = struct.unpack_from("<" + form, self.bytes, self.at)
        self.at += struct.calcsize(form)
        return value


class Message:
    """One message; `fields` are the header's, by number."""

    def __init__(self, kind, fields=(), signature="", values=(), serial=1, flags=0):
        self.kind, self.serial, self.flags = kind, serial, flags
        self.fields = {**dict(fields), **({SIGNATURE: signature} if signature else {})}
        self.values = list(values)

    def encode(self):
        body = bytes(Writer().write(self.fields.get(SIGNATURE, ""), *self.values).bytes)
        fields = [(number, (HEADER_TYPES.get(number, "s"), value)) for number, value in self.fields.items()]
        header = Writer().write("yyyyuua(yv)", ord("l"), self.kind, self.flags, 1, len(body), self.serial, fields)
        header.align(8)
        return bytes(header.bytes) + body

    @staticmethod
    def length(data):
        """How many bytes the message takes whose first 16 these are."""
        body, _, fields = struct.unpack_from("<III", data, 4)
        return 16 + fields + -fields % 8 + body

    @classmethod
    def decode(cls, data):
        reader = Reader(data)
        _, kind, flags, _, _, serial, fields = reader.read("yyyyuua(yv)")
        reader.align(8)
        message = cls(kind, {number: value for number, (_, value) in fields}, serial=serial, flags=flags)
        message.values = Reader(data[reader.at:]).read(message.fields.get(SIGNATURE, ""))
        return message
