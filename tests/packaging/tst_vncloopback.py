#!/usr/bin/env python3
"""What keeps the toolkit's VNC server to this machine, loaded into a program that binds sockets."""

import json
import os
import socket
import subprocess
import sys
import unittest

from installation import quarn

# Binds as the arguments say, once for each triple of family, address and port, and tells the addresses.
BINDS = """
import json, os, socket, sys
names = []
for family, address, port in json.loads(sys.argv[1]):
    with socket.socket(getattr(socket, family)) as each:
        if family == "AF_INET6":
            each.setsockopt(socket.IPPROTO_IPV6, socket.IPV6_V6ONLY, 0)
        if family == "AF_UNIX":
            each.bind(address)
            names.append(os.fsdecode(each.getsockname()))
        else:
            each.bind((address, port))
            names.append(each.getsockname()[0])
print(json.dumps(names))
"""
ALL = [("AF_INET", "0.0.0.0"), ("AF_INET6", "::")]
LOOPBACK = ["127.0.0.1", "::ffff:127.0.0.1"]
EVERYWHERE = [address for _, address in ALL]


def free_port():
    with socket.socket() as free:
        free.bind(("127.0.0.1", 0))
        return free.getsockname()[1]


class Loopback(unittest.TestCase):
    def bound(self, wanted, platform):
        """The addresses that sockets get which a program binds."""
        guard = quarn.stage_folder() / "modules" / "vncloopback.so"
        environment = {"LD_PRELOAD": str(guard), "PATH": os.environ["PATH"]}
        if platform is not None:
            environment["QT_QPA_PLATFORM"] = platform
        done = subprocess.run([sys.executable, "-c", BINDS, json.dumps(wanted)], env=environment, check=True,
                              capture_output=True, text=True, timeout=quarn.DEADLINE)
        self.assertEqual(done.stderr, "")
        return json.loads(done.stdout)

    def test_the_servers_port_is_on_the_loopback_alone(self):
        port = free_port()
        for platform in (f"vnc:port={port}", f"vnc:size=480x640:port={port}", f"vnc:port={port}:size=1x1"):
            self.assertEqual(self.bound([(*each, port) for each in ALL], platform), LOOPBACK)

    def test_other_ports_are_as_a_program_wants_them(self):
        port = free_port()
        self.assertEqual(self.bound([(*each, 0) for each in ALL], f"vnc:port={port}"), EVERYWHERE)

    def test_another_address_is_as_a_program_wants_it(self):
        port = free_port()
        self.assertEqual(self.bound([("AF_INET", "127.0.0.2", port)], f"vnc:port={port}"), ["127.0.0.2"])

    def test_on_another_display_all_is_as_a_program_wants_it(self):
        port = free_port()
        for platform in ("xcb", f"wayland:port={port}", f"vncx:port={port}", None):
            self.assertEqual(self.bound([(*each, port) for each in ALL], platform), EVERYWHERE)

    def test_sockets_of_other_kinds_are_bound(self):
        name = f"\0quarn-{os.getpid()}"
        self.assertEqual(self.bound([("AF_UNIX", name, 0)], "vnc")[0], name)


if __name__ == "__main__":
    sys.exit(unittest.main())
