#!/usr/bin/python3
"""A file sent by Bluetooth, by keys, to a device that stand-ins for the system's services offer.
With --renew the reference pictures are made anew: look at each of them before they are kept."""

import contextlib
import os
import pathlib
import re
import subprocess
import sys
import tempfile

import dbus

import keyscript
import quarn

RENEW = "--renew" in sys.argv
OBEX_TEMPLATE = pathlib.Path(__file__).parent.parent / "sharing" / "obexpush_template.py"
CONFIGURATION = """<busconfig><type>session</type><listen>{}</listen><auth>EXTERNAL</auth>
<policy context="default"><allow send_destination="*"/><allow eavesdrop="true"/><allow own="*"/>
</policy></busconfig>"""
TRANSFER = "org.bluez.obex.Transfer1"
TRANSFER_PATH = "/org/bluez/obex/client/session0/transfer0"
TO_BLUETOOTH = ["softleft", *["down"] * 6, "select"]


class Services:
    """A message bus with a Bluetooth service, one adapter and two devices, and a service that
    sends files. They end with the test's process."""

    def __init__(self, stack):
        self.stack = stack
        folder = pathlib.Path(stack.enter_context(tempfile.TemporaryDirectory(prefix="qb")))
        self.address = f"unix:path={folder}/bus"
        configuration = folder / "bus.conf"
        configuration.write_text(CONFIGURATION.format(self.address))
        self.spawn("dbus-daemon", "--nofork", f"--config-file={configuration}")
        self.bus = quarn.wait_until(self.connection, "the message bus")
        stack.callback(self.bus.close)
        for name, template in (("org.bluez", "bluez5"), ("org.bluez.obex", str(OBEX_TEMPLATE))):
            self.spawn(sys.executable, "-B", "-m", "dbusmock", "--session", "--template", template)
            quarn.wait_until(lambda name=name: self.bus.name_has_owner(name), name)
        self.add_devices()

    def connection(self):
        """None while the bus does not listen, which it does a moment after its socket is there."""
        try:
            return dbus.bus.BusConnection(self.address)
        except dbus.exceptions.DBusException:
            return None

    def spawn(self, *command):
        process = subprocess.Popen([*quarn.ENDS_WITH_US, *command], stdin=subprocess.DEVNULL,
                                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                                   env={**os.environ, "DBUS_SESSION_BUS_ADDRESS": self.address})
        self.stack.callback(process.wait)
        self.stack.callback(process.kill)

    def add_devices(self):
        quarn.wait_until(lambda: self.answers("org.bluez", "/org/bluez"), "the adapters' service")
        mock = self.interface("org.bluez", "/org/bluez", "org.bluez.Mock")
        mock.AddAdapter("hci0", "desk")
        for address, name in (("11:22:33:44:55:66", "My phone"), ("22:33:44:55:66:77", "Kitchen")):
            mock.AddDevice("hci0", address, name)
        self.interface("org.bluez", "/org/bluez/hci0/dev_11_22_33_44_55_66",
                       "org.freedesktop.DBus.Mock") \
            .UpdateProperties("org.bluez.Device1", {"Paired": True, "Connected": False})

    def interface(self, name, path, interface):
        return dbus.Interface(self.bus.get_object(name, path, introspect=False), interface)

    def answers(self, name, path):
        with contextlib.suppress(dbus.DBusException):
            self.interface(name, path, "org.freedesktop.DBus.Mock").GetCalls()
            return True
        return False

    def transfer(self):
        """What is being sent, as its properties; None while nothing is."""
        with contextlib.suppress(dbus.DBusException):
            return self.interface("org.bluez.obex", TRANSFER_PATH,
                                  dbus.PROPERTIES_IFACE).GetAll(TRANSFER)
        return None

    def session(self):
        with contextlib.suppress(dbus.DBusException):
            return self.interface("org.bluez.obex", os.path.dirname(TRANSFER_PATH),
                                  dbus.PROPERTIES_IFACE).GetAll("org.bluez.obex.Session1")
        return None

    def update_transfer(self, **properties):
        self.interface("org.bluez.obex", TRANSFER_PATH, "org.freedesktop.DBus.Mock") \
            .UpdateProperties(TRANSFER, dbus.Dictionary(properties, signature="sv"))


class TestSending(quarn.Case):
    def setUp(self):
        super().setUp()
        stack = contextlib.ExitStack()
        self.addCleanup(stack.close)
        self.services = Services(stack)
        self.sender = self.program()
        quarn.make_file(self.sender.home / "song.mp3", b"x" * 100000)
        self.sender.start(DBUS_SYSTEM_BUS_ADDRESS=self.services.address,
                          DBUS_SESSION_BUS_ADDRESS=self.services.address)
        self.sender.key("down")
        self.before = self.sender.wait_stable()
        self.threads = self.thread_names()

    def thread_names(self):
        """The toolkit's pool aside, which begins with the first large picture."""
        names = (re.search("^Name:\t(.*)", status)[1] for status in self.sender.threads())
        return sorted(name for name in names if name != "Thread (pooled)")

    def look(self, name, box=()):
        if RENEW and name not in keyscript.Script.renewed_names:
            keyscript.Script.renewed_names.add(name)
            keyscript.renewed(self.sender, name, box)
        else:
            keyscript.compare(self.sender, name, box)

    def choose_device(self):
        self.sender.key(*TO_BLUETOOTH)
        self.sender.wait_change(self.before)
        self.look("bluetooth_devices")
        self.sender.key("select")
        return quarn.wait_until(self.services.transfer, "the transfer")

    def wait_as_before(self):
        quarn.wait_until(lambda: self.sender.screenshot().tobytes() == self.before.tobytes(),
                         "the panel to be back")
        quarn.wait_until(lambda: self.services.session() is None, "the session to be closed")

    def test_fileArrives(self):
        transfer = self.choose_device()
        self.assertEqual(transfer["Filename"], str(self.sender.home / "song.mp3"))
        self.assertEqual(self.services.session()["Destination"], "11:22:33:44:55:66")
        self.services.update_transfer(Status="active", Transferred=dbus.UInt64(40000))
        self.look("bluetooth_progress")
        self.assertEqual(self.thread_names(), self.threads)
        self.services.update_transfer(Status="complete", Transferred=dbus.UInt64(100000))
        self.look("bluetooth_sent")
        self.sender.key("softright")
        self.wait_as_before()
        self.sender.key("hash")
        self.sender.wait_for_listing(self.sender.home)

    def test_moduleIsOpenedForTheCommandAlone(self):
        self.assertFalse(self.module_is_open())
        self.choose_device()
        self.assertTrue(self.module_is_open())

    def module_is_open(self):
        maps = pathlib.Path(f"/proc/{self.sender.process.pid}/maps").read_text(encoding="utf-8")
        return f"{self.sender.stage}/modules/sharing.so" in maps

    def test_sendingIsCancelled(self):
        self.choose_device()
        self.services.update_transfer(Status="active", Transferred=dbus.UInt64(40000))
        self.look("bluetooth_progress")
        self.sender.key("softright")
        quarn.wait_until(lambda: self.services.session() is None, "the session to be closed")
        self.sender.key("softright")
        self.wait_as_before()


class TestWithoutBluetooth(quarn.Case):
    def test_busIsNotThere(self):
        self.expect_error(self.program(), DBUS_SYSTEM_BUS_ADDRESS="unix:path=/nonexistent")

    def test_moduleIsNotThere(self):
        with contextlib.ExitStack() as stack:
            address = Services(stack).address
            sender = self.program()
            (sender.stage / "modules" / "sharing.so").unlink()
            self.expect_error(sender, DBUS_SYSTEM_BUS_ADDRESS=address,
                              DBUS_SESSION_BUS_ADDRESS=address)
            self.assertTrue(any(line.startswith("module sharing: ") for line in sender.lines))

    def expect_error(self, sender, **environment):
        quarn.make_file(sender.home / "song.mp3")
        sender.start(**environment)
        sender.key("down")
        before = sender.wait_stable()
        sender.key(*TO_BLUETOOTH)
        quarn.wait_until(sender.shows_box, "the message")
        sender.key("5")
        quarn.wait_until(lambda: sender.screenshot().tobytes() == before.tobytes(),
                         "the message to go")


if __name__ == "__main__":
    if RENEW:
        sys.argv.remove("--renew")
    quarn.main()
