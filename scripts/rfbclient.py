"""A client of VNC (the RFB protocol, version 3.3, without a password): pictures of the display, and
keys."""

import socket
import struct

from PIL import Image

RAW = 0
PIXELS = struct.pack(">BBBBHHHBBBxxx", 32, 24, 0, 1, 255, 255, 255, 16, 8, 0)
TIMEOUT = 60  # seconds


class Client:
    def __init__(self, host, port):
        self.socket = socket.create_connection((host, port), TIMEOUT)
        self.read(12)
        self.socket.sendall(b"RFB 003.003\n")
        (security,) = struct.unpack(">I", self.read(4))
        if security != 1:
            raise ConnectionError(f"the server asks for a password or has ended (security {security})")
        self.socket.sendall(b"\x01")
        self.size = struct.unpack(">HH", self.read(4))
        self.read(16)
        (length,) = struct.unpack(">I", self.read(4))
        self.read(length)
        self.socket.sendall(struct.pack(">Bxxx", 0) + PIXELS)
        self.socket.sendall(struct.pack(">BxHi", 2, 1, RAW))
        self.image = Image.new("RGB", self.size)

    def close(self):
        self.socket.close()

    def read(self, count):
        data = b""
        while len(data) < count:
            part = self.socket.recv(count - len(data))
            if not part:
                raise ConnectionError("the server has closed the connection")
            data += part
        return data

    def press(self, *symbols):
        """Presses and releases keys by their X symbols."""
        for symbol in symbols:
            for down in (1, 0):
                self.socket.sendall(struct.pack(">BBxxI", 4, down, symbol))

    def picture(self):
        """The display as it is now."""
        self.socket.sendall(struct.pack(">BBHHHH", 3, 0, 0, 0, *self.size))
        while self.message() != 0:
            pass
        return self.image.copy()

    def message(self):
        """Reads a message of the server; gives its kind."""
        (kind,) = self.read(1)
        if kind == 0:
            (count,) = struct.unpack(">xH", self.read(3))
            for _ in range(count):
                self.rectangle()
        elif kind == 3:
            (length,) = struct.unpack(">xxxI", self.read(7))
            self.read(length)
        elif kind != 2:
            raise ConnectionError(f"a message of the kind {kind}")
        return kind

    def rectangle(self):
        left, top, width, height, encoding = struct.unpack(">HHHHi", self.read(12))
        if encoding != RAW:
            raise ConnectionError(f"the encoding {encoding}")
        part = Image.frombytes("RGB", (width, height), self.read(width * height * 4), "raw", "BGRX")
        self.image.paste(part, (left, top))
