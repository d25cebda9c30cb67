#!/usr/bin/python3
"""One instance at a time: what further starts do, and what strangers on the channel cannot do."""

import contextlib
import os
import pathlib
import signal
import socket
import struct
import threading
import time

import quarn

MAGIC = 0x51434f50  # of the channel's wire


def channel_of(program):
    return program.runtime / "qcop" / "Quarn"


def qcop(program, *arguments):
    """Runs the staged channel tool; gives its exit status."""
    tool = program.spawn([str(program.stage / "bin" / "qcop"), *arguments])
    try:
        tool.communicate(timeout=quarn.DEADLINE)
    finally:
        tool.kill()
        tool.wait()
    return tool.returncode


class TestSecondStart(quarn.Case):
    def test_endsWithZeroAndLeavesOneWindow(self):
        program = self.program().start()
        status, lines = program.start_again()
        self.assertEqual(status, 0)
        self.assertEqual(lines, [])
        self.assertEqual(len(self.display.windows()), 1)
        self.assertTrue(program.is_running())

    def test_showsAHiddenInstanceAsItWas(self):
        program = self.program().start()
        program.key("down", "folderup")
        program.wait_for_listing(f"{program.home}/..")
        before = program.wait_stable()
        program.key("hide")
        program.wait_hidden()
        self.assertEqual(program.start_again()[0], 0)
        program.wait_shown()
        self.assertEqual(program.wait_stable().tobytes(), before.tobytes())
        program.key("hash")
        program.wait_for_listing(os.path.realpath(program.base))

    def test_doesNotAnswerAQuestionThatIsOpen(self):
        program = self.program().start()
        before = program.wait_stable()
        program.with_modifier("hide")
        question = program.wait_change(before)
        self.assertEqual(program.start_again()[0], 0)
        program.wait_idle()
        self.assertEqual(program.wait_stable().tobytes(), question.tobytes())
        program.key("softright")
        self.assertEqual(program.wait_change(question).tobytes(), before.tobytes())

    def test_manySecondStartsChangeNothing(self):
        program = self.program().start()
        before = program.wait_stable()
        for _ in range(12):
            self.assertEqual(program.start_again()[0], 0)
        program.wait_idle()
        self.assertEqual(len(self.display.windows()), 1)
        self.assertEqual(program.wait_stable().tobytes(), before.tobytes())

    def test_fromAnotherFolderRaisesTheSameInstance(self):
        first = self.program().start()
        other = self.program()
        status, _ = other.start_again(XDG_RUNTIME_DIR=str(first.runtime))
        self.assertEqual(status, 0)
        self.assertEqual(len(self.display.windows()), 1)

    def test_withAnotherRuntimeFolderIsAnInstanceOfItsOwn(self):
        first = self.program().start()
        second = self.program().start()
        self.assertTrue(first.is_running())
        self.assertNotEqual(first.window(), second.window())

    def test_theToolRaisesToo(self):
        program = self.program().start()
        program.key("hide")
        program.wait_hidden()
        self.assertEqual(qcop(program, "registered", "Quarn"), 0)
        self.assertEqual(qcop(program, "send", "Quarn", "show()"), 0)
        program.wait_shown()

    def test_otherMessagesAreIgnored(self):
        program = self.program().start()
        program.key("hide")
        program.wait_hidden()
        for message in ("show", "show() ", "hide()", "quit()", "", "SHOW()"):
            qcop(program, "send", "Quarn", message)
        program.wait_idle()
        self.assertEqual(self.display.windows(), [])
        self.assertTrue(program.is_running())


class TestRaising(quarn.Case):
    display_options = {"window_manager": True}

    def test_comesToTheFrontOfOtherWindows(self):
        first = self.program().start()
        cover = self.program().start()
        wanted = first.window()
        quarn.wait_until(lambda: self.topmost() == cover.window(), "the cover on top")
        self.assertEqual(first.start_again()[0], 0)
        quarn.wait_until(lambda: self.topmost() == wanted, "the first instance on top")
        quarn.wait_until(lambda: self.display.client.active() == wanted, "the first instance to get the keys")
        first.key("hash")
        first.wait_for_listing(first.home)

    def topmost(self):
        return (self.display.client.numbers("_NET_CLIENT_LIST_STACKING") or [None])[-1]


class TestSimultaneousStarts(quarn.Case):
    def start_together(self, count):
        program = self.program()
        started = [program.spawn(prefix=quarn.ENDS_WITH_US) for _ in range(count)]
        try:
            quarn.wait_until(lambda: sum(one.poll() is None for one in started) <= 1,
                             "all starts but one to end")
            running = [one for one in started if one.poll() is None]
            self.assertEqual(len(running), 1)
            self.assertEqual([one.returncode for one in started if one not in running],
                             [0] * (count - 1))
            quarn.wait_until(self.display.windows, "the window")
            self.assertEqual(len(self.display.windows()), 1)
            self.assertEqual(program.start_again()[0], 0)
            self.assertEqual(len(self.display.windows()), 1)
        finally:
            for one in started:
                one.kill()
                one.wait()
                one.stderr.close()
        program.stop()

    def test_twoLeaveOne(self):
        for _ in range(4):
            self.start_together(2)

    def test_eightLeaveOne(self):
        self.start_together(8)


class TestUnwellInstances(quarn.Case):
    def test_aStoppedInstanceDoesNotHoldASecondStart(self):
        program = self.program().start()
        program.key("hide")
        program.wait_hidden()
        program.kill(signal.SIGSTOP)
        start = time.monotonic()
        for _ in range(3):
            self.assertEqual(program.start_again()[0], 0)
        # Three starts, each of which may wait for a second to hand its message over.
        self.assertLess(time.monotonic() - start, 20)
        program.kill(signal.SIGCONT)
        program.wait_shown()
        self.assertEqual(len(self.display.windows()), 1)

    def test_afterAKillTheNextStartRuns(self):
        program = self.program().start()
        program.kill(signal.SIGKILL)
        self.assertEqual(program.wait_end(), -signal.SIGKILL)
        self.assertTrue(channel_of(program).exists())
        program.start()
        self.assertEqual(program.start_again()[0], 0)
        self.assertEqual(len(self.display.windows()), 1)

    def test_afterASystemsRequestToEndTheNextStartRuns(self):
        program = self.program().start()
        program.kill(signal.SIGTERM)
        self.assertIn(program.wait_end(), (0, -signal.SIGTERM))
        self.assertEqual(self.display.windows(), [])
        program.start()
        self.assertEqual(len(self.display.windows()), 1)

    def test_aFileInThePlaceOfTheChannelDoesNotPreventTheStart(self):
        program = self.program()
        channel_of(program).parent.mkdir(mode=0o700)
        channel_of(program).write_text("not a socket")
        program.start()
        program.key("hash")
        program.wait_for_listing(program.home)

    def test_aRuntimeFolderThatCannotBeWrittenDoesNotPreventTheStart(self):
        program = self.program()
        program.runtime.chmod(0o500)
        program.start(prefix=quarn.WITHOUT_ROOT_POWERS)
        program.key("hash")
        program.wait_for_listing(program.home)


class TestHostilePeers(quarn.Case):
    def setUp(self):
        super().setUp()
        self.target = self.program().start()
        self.open = contextlib.ExitStack()
        self.addCleanup(self.open.close)

    def connect(self):
        peer = self.open.enter_context(socket.socket(socket.AF_UNIX))
        peer.settimeout(quarn.DEADLINE)

        def connected():
            with contextlib.suppress(BlockingIOError):  # the queue is full for the moment
                peer.connect(str(channel_of(self.target)))
                return True
            return False

        quarn.wait_until(connected, "a connection")
        return peer

    def check_alive(self):
        """Keys are answered, and in the end the channel is too."""
        self.target.key("hash")
        self.target.wait_for_listing(self.target.home, deadline=20)
        self.target.key("hide")
        self.target.wait_hidden()

        def raised():
            qcop(self.target, "send", "Quarn", "show()")
            return self.target.window()

        quarn.wait_until(raised, "the channel to be served again")
        self.target.place = None

    def resident_kilobytes(self):
        with open(f"/proc/{self.target.process.pid}/status") as status:
            return next(int(line.split()[1]) for line in status if line.startswith("VmRSS"))

    def test_junk(self):
        for junk in (b"", b"\0", b"show()", b"\xff" * 100000, struct.pack(">3I", MAGIC, 6, 0),
                     struct.pack(">3I", MAGIC, 2**32 - 1, 2**32 - 1) + b"x" * 1000,
                     struct.pack(">3I", MAGIC, 4097, 0) + b"x" * 4097,
                     struct.pack(">3I", MAGIC + 1, 6, 0) + b"show()",
                     struct.pack(">3I", MAGIC, 6, 0) + b"sho"):
            peer = self.connect()
            with contextlib.suppress(OSError):
                peer.sendall(junk)
            peer.close()
        self.check_alive()

    def test_endlessData(self):
        ending = threading.Event()
        before = self.resident_kilobytes()

        def flood():
            while not ending.is_set():
                with contextlib.suppress(OSError), socket.socket(socket.AF_UNIX) as peer:
                    peer.settimeout(1)
                    peer.connect(str(channel_of(self.target)))
                    while not ending.is_set():
                        peer.sendall(b"x" * 65536)

        flooder = threading.Thread(target=flood)
        flooder.start()
        try:
            for _ in range(5):
                self.target.key("hash")
                self.target.wait_for_listing(self.target.home, deadline=20)
        finally:
            ending.set()
            flooder.join()
        self.assertLess(self.resident_kilobytes() - before, 65536)
        self.check_alive()

    def test_connectionsThatSayNothing(self):
        quiet = []
        for _ in range(200):
            peer = self.open.enter_context(socket.socket(socket.AF_UNIX))
            peer.setblocking(False)
            with contextlib.suppress(BlockingIOError):
                peer.connect(str(channel_of(self.target)))
                quiet.append(peer)
        self.assertTrue(quiet)
        self.target.key("hash")
        self.target.wait_for_listing(self.target.home, deadline=20)
        # A further start ends in spite of them, whether or not it is heard.
        self.assertEqual(self.target.start_again()[0], 0)
        self.open.close()
        self.check_alive()

    def test_halfAMessage(self):
        peer = self.connect()
        peer.sendall(struct.pack(">3I", MAGIC, 6, 0) + b"show")
        self.check_alive()

    def test_manyValidMessages(self):
        sockets = self.sockets()
        message = struct.pack(">3I", MAGIC, 6, 0) + b"show()"
        for _ in range(300):
            peer = self.connect()
            with contextlib.suppress(OSError):
                peer.sendall(message)
            peer.close()
        self.wait_served(sockets)
        self.check_alive()
        self.assertEqual(len(self.display.windows()), 1)

    def sockets(self):
        """How many sockets the program has open."""
        count = 0
        for link in pathlib.Path(f"/proc/{self.target.process.pid}/fd").iterdir():
            with contextlib.suppress(OSError):
                count += os.readlink(link).startswith("socket:")
        return count

    def wait_served(self, sockets):
        """Waits until every connection made so far was accepted, read and closed: they are
        accepted in turn, and the last one, which says nothing sensible, is hung up on."""
        peer = self.connect()
        peer.sendall(b"x" * 64)
        with contextlib.suppress(ConnectionResetError):
            self.assertEqual(peer.recv(1), b"")
        peer.close()
        quarn.wait_until(lambda: self.sockets() <= sockets, "the connections to be served")


if __name__ == "__main__":
    quarn.main()
