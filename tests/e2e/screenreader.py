"""What a screen reader knows of the staged program: a client of AT-SPI, on buses of its own."""

import os
import pathlib
import select
import shutil
import subprocess
import tempfile

import gi

import quarn

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402

LAUNCHERS = ["/usr/libexec/at-spi-bus-launcher", "/usr/lib/at-spi2-core/at-spi-bus-launcher"]

# The session's bus knows nothing but the address of the one for accessibility, which is found by the
# services that the package installs.
SESSION = """<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <listen>unix:dir={folder}</listen>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
"""


class Buses:
    """A session's bus and, on it, that of programs which help to use others. Only one in a process:
    the client's library finds its bus once."""

    def __init__(self, display):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="qa"))
        settings = self.folder / "session.conf"
        settings.write_text(SESSION.format(folder=self.folder))
        self.session = subprocess.Popen(
            [*quarn.ENDS_WITH_US, "dbus-daemon", "--nofork", "--print-address=1",
             f"--config-file={settings}"],
            stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
        ready, _, _ = select.select([self.session.stdout], [], [], quarn.DEADLINE)
        self.address = self.session.stdout.readline().decode().strip() if ready else ""
        if not self.address:
            raise quarn.Failure("the bus of the session did not start")
        self.environment = {"DBUS_SESSION_BUS_ADDRESS": self.address,
                            "XDG_RUNTIME_DIR": str(self.folder), "AT_SPI_BUS_ADDRESS": None}
        launcher = next(path for path in LAUNCHERS if os.path.exists(path))
        environment = {**display.environment(), **self.environment}
        del environment["AT_SPI_BUS_ADDRESS"]
        self.launcher = subprocess.Popen(
            [*quarn.ENDS_WITH_US, launcher, "--launch-immediately"], env=environment,
            stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        self.at_spi = quarn.wait_until(self.ask_address, "the bus for accessibility")

    def ask_address(self):
        asked = subprocess.run(
            ["dbus-send", f"--bus={self.address}", "--print-reply=literal", "--dest=org.a11y.Bus",
             "/org/a11y/bus", "org.a11y.Bus.GetAddress"],
            capture_output=True, text=True, timeout=quarn.DEADLINE, check=False)
        return asked.stdout.strip() if asked.returncode == 0 else ""

    def stop(self):
        for process in (self.launcher, self.session):
            process.terminate()
            process.wait(quarn.DEADLINE)
        self.session.stdout.close()
        shutil.rmtree(self.folder, ignore_errors=True)


class Reader:
    """The client. Everything that it tells is asked for anew."""

    def __init__(self, buses):
        os.environ["DBUS_SESSION_BUS_ADDRESS"] = buses.address
        os.environ["AT_SPI_BUS_ADDRESS"] = buses.at_spi
        Atspi.init()
        self.events = []
        self.listener = Atspi.EventListener.new(self.hear)

    def listen(self, *kinds):
        for kind in kinds:
            self.listener.register(kind)

    def hear(self, event):
        try:
            self.events.append((event.type, event.detail1, event.source.get_name()))
        except GLib.Error:
            pass  # what it was about is gone already

    @staticmethod
    def look():
        """Lets in what has arrived: events, and what they change in what is known."""
        context = GLib.MainContext.default()
        while context.iteration(False):
            pass

    def heard(self, kind, name):
        """Whether an event of something of that name has come since the last call of forget()."""
        self.look()
        return any(one.startswith(kind) and about == name for one, _, about in self.events)

    def forget(self):
        self.look()
        self.events.clear()

    def application(self, pid):
        """The program of a process; None while it is not on the bus."""
        self.look()
        desktop = Atspi.get_desktop(0)
        for number in range(desktop.get_child_count()):
            try:
                child = desktop.get_child_at_index(number)
                if child is not None and child.get_process_id() == pid:
                    return child
            except GLib.Error:
                continue  # it has just gone
        return None


def children(node):
    for number in range(node.get_child_count()):
        child = node.get_child_at_index(number)
        if child is not None:
            yield child


def walk(node):
    """What is below a node and can be seen."""
    for child in children(node):
        if is_in(child, Atspi.StateType.VISIBLE):
            yield child
            yield from walk(child)


def is_in(node, state):
    return node.get_state_set().contains(state)


def actions(node):
    """What can be done with a node, each with its number; nothing if the node is gone."""
    try:
        return {Atspi.Action.get_action_name(node, number): number
                for number in range(Atspi.Action.get_n_actions(node))}
    except GLib.Error:
        return {}


def act(node, name):
    """Does one of them."""
    known = actions(node)
    if name not in known:
        raise quarn.Failure(f"there are only the actions {sorted(known)}, not {name}")
    Atspi.Action.do_action(node, known[name])
