"""A D-Bus client that sends what it likes: whole messages as bytes, without waiting and without manners."""
import os
import plistlib
import socket
import struct

SERVICE = "com.zerkolin.brevane.scheduler"
SOCKET = "/run/dbus/system_bus_socket"
BUS = {"destination": "org.freedesktop.DBus", "path": "/org/freedesktop/DBus", "interface": "org.freedesktop.DBus"}

CALL, REPLY, ERROR = 1, 2, 3
NO_REPLY = 1


def padded(data, size):
    return data + bytes(-len(data) % size)


def text(value):
    raw = value.encode()
    return struct.pack("<I", len(raw)) + raw + b"\0"


def signature(value):
    raw = value.encode()
    return bytes([len(raw)]) + raw + b"\0"


def header_field(out, code, kind, value):
    out = padded(out, 8) + bytes([code]) + signature(kind)
    if kind in "so":
        return padded(out, 4) + text(value)
    if kind == "g":
        return out + signature(value)
    return padded(out, 4) + struct.pack("<I", value)


def message(serial, body, destination=SERVICE, path="/" + SERVICE.replace(".", "/"), interface=SERVICE, member="Send",
            kind="a{sv}", flags=0):
    fields = b""
    for code, field_kind, value in ((1, "o", path), (2, "s", interface), (3, "s", member), (6, "s", destination)):
        fields = header_field(fields, code, field_kind, value)
    if kind:
        fields = header_field(fields, 8, "g", kind)
    start = struct.pack("<cBBBIII", b"l", CALL, flags, 1, len(body), serial, len(fields))
    return padded(start + fields, 8) + body


def dictionary(entries):
    """The body a{sv} of integers (x) and bytes (ay)."""
    out = b""
    for key, value in entries:
        out = padded(out, 8) + text(key)
        if isinstance(value, int):
            out = padded(out + signature("x"), 8) + struct.pack("<q", value)
        else:
            out = padded(out + signature("ay"), 4) + struct.pack("<I", len(value)) + value
    return struct.pack("<I", len(out)) + bytes(4) + out


def entries_in(body):
    """What a body a{sv} holds of integers and bytes."""
    found = {}
    if len(body) < 8:
        return found
    end = 8 + struct.unpack_from("<I", body)[0]
    at = 8
    while at < end:
        at += -at % 8
        size = struct.unpack_from("<I", body, at)[0]
        key = body[at + 4:at + 4 + size].decode()
        at += 5 + size
        kind = body[at + 1:at + 1 + body[at]].decode()
        at += 2 + body[at]
        if kind == "x":
            at += -at % 8
            found[key] = struct.unpack_from("<q", body, at)[0]
            at += 8
        else:
            at += -at % 4
            size = struct.unpack_from("<I", body, at)[0]
            found[key] = body[at + 4:at + 4 + size]
            at += 4 + size
    return found


class Client:
    def __init__(self, path=SOCKET, timeout=60):
        self.socket = socket.socket(socket.AF_UNIX)
        self.socket.settimeout(timeout)
        self.socket.connect(path)
        self.serial = 0
        self.buffer = b""
        self.socket.sendall(b"\0AUTH EXTERNAL " + str(os.geteuid()).encode().hex().encode() + b"\r\n")
        if not self.socket.recv(4096).startswith(b"OK"):
            raise ConnectionError("the bus does not know this user")
        self.socket.sendall(b"BEGIN\r\n")
        reply = self.wait(self.send(b"", member="Hello", kind="", **BUS))
        size = struct.unpack_from("<I", reply[1])[0]
        self.name = reply[1][4:4 + size].decode()

    def send(self, body, **options):
        self.serial += 1
        self.socket.sendall(message(self.serial, body, **options))
        return self.serial

    def request(self, entries, flags=0):
        return self.send(dictionary(entries), flags=flags)

    def token(self, name=None):
        return (name or self.name).encode()[:32].ljust(32, b"\0")

    def take(self, size):
        while len(self.buffer) < size:
            more = self.socket.recv(max(65536, size - len(self.buffer)))
            if not more:
                raise ConnectionError("the bus has closed the connection")
            self.buffer += more
        taken, self.buffer = self.buffer[:size], self.buffer[size:]
        return taken

    def receive(self):
        """Type, serial that is replied to, and body of the next message."""
        start = self.take(16)
        body_size, _, fields_size = struct.unpack_from("<III", start, 4)
        fields = self.take(fields_size + -fields_size % 8)
        body = self.take(body_size)
        answered, at = 0, 0
        while at < fields_size:
            at += -at % 8
            code, kind = fields[at], fields[at + 2:at + 3]
            at += 4
            if kind == b"g":
                at += 2 + fields[at]
            else:
                at += -at % 4
                value = struct.unpack_from("<I", fields, at)[0]
                at += 4 if kind == b"u" else 5 + value
                if code == 5:
                    answered = value
        return start[1], answered, body

    def wait(self, serial):
        """The type and the body of the reply to a call."""
        while True:
            kind, answered, body = self.receive()
            if answered == serial:
                return kind, body

    def ask(self, entries):
        """The entries of the reply; None when it is a D-Bus error."""
        kind, body = self.wait(self.request(entries))
        return entries_in(body) if kind == REPLY else None

    def is_served(self):
        """Whether somebody has the service's name."""
        return self.wait(self.send(text(SERVICE), member="NameHasOwner", kind="s", **BUS))[1] == struct.pack("<I", 1)

    def close(self):
        self.socket.close()


def ask(number, payload=None):
    """What the helper answers to one message of a client that comes and goes for it."""
    client = Client()
    try:
        entries = [("message", number), ("auth", client.token())]
        if payload is not None:
            entries.append(("payload", plistlib.dumps(payload, fmt=plistlib.FMT_BINARY)))
        reply = client.ask(entries)
        assert reply and "payload" in reply, (number, reply)
        return plistlib.loads(reply["payload"])
    finally:
        client.close()
