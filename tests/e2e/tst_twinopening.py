#!/usr/bin/python3
"""Other programs, and the sending service, get the very bytes of odd names."""

import contextlib
import os

import keyscript
import operations
import quarn
import tst_bluetooth
import twins

# Where the list of devices has it: left, top, width, height.
NAME_OF_THE_FILE = (0, 20, quarn.WIDTH, 18)


class TestOpening(twins.Case):
    NOTE = """#!/bin/sh
cd "$HOME" && printf '%s\\0' "$@" > noting && mv noting noted
"""

    @classmethod
    def prepare(cls, program):
        for name in ("Probe", "LyraPlayer"):
            plugin = program.stage / "plugins" / name / name
            plugin.parent.mkdir(exist_ok=True)
            plugin.unlink(missing_ok=True)
            plugin.write_text(cls.NOTE)
            plugin.chmod(0o755)
        (program.stage / "fm_plugins.cfg").write_text("01 0 Probe\n")
        (program.stage / "mime_types.cfg").write_text("001 01 PIC\n")

    def let_box_go(self):
        """The busy box takes all keys."""
        quarn.wait_until(self.program_.shows_box, "the busy box")
        quarn.wait_until(lambda: not self.program_.shows_box(), "the busy box to go")

    def noted(self):
        """What the last plugin got."""
        path = self.program_.home / "noted"
        quarn.wait_until(path.exists, "the plugin")
        arguments = path.read_bytes().split(b"\0")[:-1]
        path.unlink()
        return arguments

    def test_aPluginGetsTheBytes(self):
        names = [name + b".pic" for name in twins.FEW]
        self.make(names)
        for name in names:
            self.user.highlight(os.fsdecode(name))
            self.program_.key("select")
            self.let_box_go()
            self.assertEqual(self.noted(), [b"-d", self.at(name)])

    def test_aChosenPluginGetsTheBytes(self):
        self.make(twins.FEW)
        for name in twins.FEW:
            self.user.highlight(os.fsdecode(name))
            self.program_.with_modifier("1")
            self.let_box_go()
            self.assertEqual(self.noted(), [b"-d", self.at(name)])

    def test_thePlayerGetsTheBytes(self):
        self.make(twins.FEW)
        for name in twins.FEW:
            self.user.highlight(os.fsdecode(name))
            self.program_.key("music")
            self.assertEqual(self.noted(), [b"-d", self.at(name)])

    def test_thePlaylistHoldsTheBytes(self):
        names = [name + b".mp3" for name in twins.FEW]
        self.make(names)
        for name in names:
            self.write(os.path.join(self.at(b"\xff"), name), b"")
        self.user.relist()
        self.user.choose(*self.texts([b"\xff", *names]))
        self.program_.key("music")
        songs = self.program_.stage / "plugins" / "LyraPlayer" / "TempList.m3u"
        self.assertEqual(self.noted(), [b"-d", os.fsencode(songs).replace(b"/plugins", b"//plugins")])
        inside = sorted(os.path.join(self.at(b"\xff"), name) for name in names)
        marked = [self.at(name) for name in sorted(names)]
        self.assertEqual(songs.read_bytes().split(b"\n"), [*inside, *marked, b"", b""])


class TestSharing(quarn.Case):
    """Names of messages on the bus are text: what is none cannot be named there."""

    def send(self, name):
        """What the sending service got for a file: its name, or None after a message."""
        with contextlib.ExitStack() as stack:
            services = tst_bluetooth.Services(stack)
            sender = self.program()
            stack.callback(sender.stop)
            for each in (name, *twins.twins_of(name)):
                with open(os.path.join(os.fsencode(sender.home), each), "wb") as file:
                    file.write(each)
            sender.start(DBUS_SYSTEM_BUS_ADDRESS=services.address,
                         DBUS_SESSION_BUS_ADDRESS=services.address)
            user = operations.User(sender, sender.home, "/")
            user.highlight(os.fsdecode(name))
            before = sender.wait_stable()
            sender.key(*tst_bluetooth.TO_BLUETOOTH)
            sender.wait_change(before)
            if user.is_told():
                self.assertIsNone(services.transfer())
                return None
            keyscript.compare(sender, "bluetooth_devices", NAME_OF_THE_FILE)
            sender.key("select")
            got = quarn.wait_until(lambda: services.transfer() or user.is_told(),
                                   "the transfer, or a message")
            if got is True:
                self.assertIsNone(services.transfer())
                return None
            return os.path.basename(os.fsencode(str(got["Filename"])))

    def test_textIsSentUnderItsVeryName(self):
        for name in (twins.MARK + b"a.txt", "e\u0301.txt".encode()):
            self.assertEqual(self.send(name), name)

    def test_whatIsNoTextIsNotSentAsItsTwin(self):
        for name in (b"a\xffb.txt", b"\xed\xb2\x80.txt"):
            self.assertIn(self.send(name), (None, name))


if __name__ == "__main__":
    quarn.main()
