#!/usr/bin/python3
"""Programs that the file manager starts and talks to, and the tables that name them."""

import os
import pathlib
import signal

import operations
import quarn

NOTE = 'cd "$HOME" && {} > noting && mv noting noted\n'


class LaunchCase(quarn.Case):
    def opener(self, script, mode=0o755, start=True):
        """A program whose home holds a.pic, which the plugin Probe opens: a shell script."""
        program = self.program()
        probe = program.stage / "plugins" / "Probe" / "Probe"
        probe.parent.mkdir()
        probe.write_text("#!/bin/sh\n" + script)
        probe.chmod(mode)
        (program.stage / "fm_plugins.cfg").write_text("01 0 Probe\n")
        (program.stage / "mime_types.cfg").write_text("001 01 PIC\n")
        (program.home / "a.pic").write_bytes(b"")
        return program.start() if start else program

    def open_picture(self, program):
        """By keys; the busy box takes all others until it goes."""
        program.key("down", "select")
        quarn.wait_until(program.shows_box, "the busy box")
        quarn.wait_until(lambda: not program.shows_box(), "the busy box to go")
        program.key("up")

    @staticmethod
    def wait_for(path):
        quarn.wait_until(path.exists, f"{path.name}")
        return path.read_text()


class TestChildren(LaunchCase):
    def test_getTheFile(self):
        program = self.opener(NOTE.format("printf '%s|' \"$@\""))
        self.open_picture(program)
        self.assertEqual(self.wait_for(program.home / "noted"), f"-d|{program.home}/a.pic|")

    def test_inheritNoDescriptors(self):
        program = self.opener(NOTE.format("ls -l /proc/self/fd"))
        self.open_picture(program)
        lines = self.wait_for(program.home / "noted").splitlines()
        links = dict(line.split()[-3::2] for line in lines if "->" in line)
        extra = {number: target for number, target in links.items()
                 if int(number) > 2 and not target.startswith("/proc/")}
        self.assertEqual(extra, {})

    def test_doNotGetWhatTheFileManagerTellsItself(self):
        program = self.opener(NOTE.format("env"), start=False)
        program.start(QUARN_SCALE="1")
        self.open_picture(program)
        names = [line.partition("=")[0]
                 for line in self.wait_for(program.home / "noted").splitlines()]
        self.assertIn("QUARN_SCALE", names)
        self.assertNotIn("QT_SCALE_FACTOR", names)
        self.assertNotIn("QT_ENABLE_HIGHDPI_SCALING", names)
        self.assertNotIn("QT_XCB_NO_MITSHM", names)

    def test_ignoreNoSignals(self):
        program = self.opener(NOTE.format("grep SigIgn /proc/self/status"))
        self.open_picture(program)
        ignored = int(self.wait_for(program.home / "noted").split()[1], 16)
        names = {each.name for each in signal.Signals
                 if each < signal.SIGRTMIN and ignored & (1 << (each - 1))}
        # The shell ignores these two for what it starts in the background.
        self.assertEqual(names - {"SIGINT", "SIGQUIT"}, set())

    def test_getTheUsersLocale(self):
        names = ("LANG", "LC_ALL", "LC_CTYPE", "LC_COLLATE")
        for given in ({"LANG": "C"}, {"LANG": None}, {"LC_ALL": "C"}, {"LANG": "xx_YY.UTF-8"},
                      {"LC_CTYPE": "C", "LC_COLLATE": "C"}):
            with self.subTest(given):
                program = self.opener(NOTE.format("env"), start=False)
                program.start(**given)
                self.open_picture(program)
                lines = self.wait_for(program.home / "noted").splitlines()
                got = dict(line.split("=", 1) for line in lines if line.split("=")[0] in names)
                wanted = {"LANG": program.environment["LANG"], **given}
                self.assertEqual(got, {name: value for name, value in wanted.items() if value})
                program.stop()

    def test_leaveNoZombies(self):
        for script, mode in (("exit 3\n", 0o755), ("exit 0\n", 0o644)):
            program = self.opener(script, mode)
            self.open_picture(program)
            quarn.wait_until(lambda: not self.children_of(program), "the children to be gone")
            program.stop()

    @staticmethod
    def children_of(program):
        return [(pid, state) for pid, parent, state in quarn.processes()
                if parent == program.process.pid]

    def test_floodedOutputNeitherBlocksNorFillsMemory(self):
        program = self.opener("yes | head -c 20000000 >&2\ntouch \"$HOME/noted\"\n")
        before = self.resident_kilobytes(program)
        self.open_picture(program)
        program.key("hash")
        program.wait_for_listing(program.home)
        quarn.wait_until((program.home / "noted").exists, "the flood to end")
        self.assertLess(self.resident_kilobytes(program) - before, 8192)

    @staticmethod
    def resident_kilobytes(program):
        with open(f"/proc/{program.process.pid}/status") as status:
            return next(int(line.split()[1]) for line in status if line.startswith("VmRSS"))

    def test_outliveTheFileManager(self):
        program = self.opener('mkfifo "$HOME/gate"\n' + NOTE.format("echo $$")
                              + 'read line < "$HOME/gate"\n')
        self.open_picture(program)
        pid = int(self.wait_for(program.home / "noted"))
        before = program.wait_stable()
        program.with_modifier("hide")
        program.wait_change(before)
        program.key("softleft")
        quarn.wait_until(lambda: not program.is_running(), "the file manager to end")
        self.assertEqual(program.process.poll(), 0)
        self.assertTrue(pathlib.Path(f"/proc/{pid}").exists())
        (program.home / "gate").write_text("go\n")
        quarn.wait_until(lambda: not pathlib.Path(f"/proc/{pid}").exists(), "the plugin to end")

    def test_keysAreAnsweredWhileOneRuns(self):
        program = self.opener('mkfifo "$HOME/gate"\ntouch "$HOME/noted"\n'
                              'read line < "$HOME/gate"\n')
        self.open_picture(program)
        self.wait_for(program.home / "noted")
        program.key("hash")
        program.wait_for_listing(program.home)
        (program.home / "gate").write_text("go\n")
        quarn.wait_until(lambda: not program.relatives(), "the plugin to end")


class TestDigits(LaunchCase):
    """Keys of one hold: the modifier goes down once, and the busy box takes all keys meanwhile."""

    def program_with_plugins(self, *others, **options):
        program = self.program(**options)
        for name in ("First", "Second", *others):
            plugin = program.stage / "plugins" / name / name
            plugin.parent.mkdir(exist_ok=True)
            plugin.write_text(f'#!/bin/sh\necho {name} "$@" >> "$HOME/started"\n')
            plugin.chmod(0o755)
        (program.stage / "fm_plugins.cfg").write_text(
            "01 0 First\n02 0 Missing\n03 0 Second\n04 0 LyraPlayer\n")
        (program.home / "a.pic").write_bytes(b"")
        program.start()
        program.key("down")
        return program

    def press_digit(self, program, digit):
        program.key(digit)
        quarn.wait_until(program.shows_box, "the busy box")

    @staticmethod
    def wait_out(program):
        quarn.wait_until(lambda: not program.shows_box(), "the busy box to go")

    def test_startOnePluginAfterTheOtherInOneHold(self):
        program = self.program_with_plugins()
        started = program.home / "started"
        expected = ""
        program.keydown("modifier")
        for digit, name in (("3", "Second"), ("1", "First"), ("3", "Second")):
            self.press_digit(program, digit)
            expected += f"{name} -d {program.home}/a.pic\n"
            quarn.wait_until(lambda: started.exists() and started.read_text() == expected, name)
            self.wait_out(program)
        program.keyup("modifier")
        program.key("3", "hash")
        program.wait_for_listing(program.home)
        self.assertEqual(started.read_text(), expected)

    def test_leaveTheExitQuestionToTheSameHold(self):
        program = self.program_with_plugins()
        program.keydown("modifier")
        self.press_digit(program, "1")
        self.wait_out(program)
        before = program.wait_stable()
        program.key("hide")
        program.wait_change(before)
        self.assertTrue(program.shows_box())
        program.key("softleft")
        program.keyup("modifier")
        self.assertEqual(program.wait_end(), 0)

    def test_leaveTheTestBoxToTheSameHold(self):
        program = self.program_with_plugins()
        program.keydown("modifier")
        self.press_digit(program, "1")
        self.wait_out(program)
        program.key("hash")
        quarn.wait_until(program.shows_box, "the test box")
        program.key("softright")
        self.wait_out(program)
        program.keyup("modifier")
        program.key("hash")  # alone it lists anew
        program.wait_for_listing(program.home)
        self.assertFalse(program.shows_box())

    def test_leaveThePlayerToTheSameHold(self):
        program = self.program_with_plugins("LyraPlayer")
        program.keydown("modifier")
        self.press_digit(program, "1")
        self.wait_out(program)
        program.key("music")
        program.keyup("modifier")
        # Alone the key plays what is highlighted.
        quarn.wait_until(lambda: "LyraPlayer" in (program.home / "started").read_text(), "the player")
        self.assertIn("/TempList.m3u\n", (program.home / "started").read_text())

    def test_leavePasteFileByFileToTheSameHold(self):
        folder = self.scratch()
        (folder / "b.pic").write_bytes(b"")
        program = self.program_with_plugins(second_folder=folder)
        (program.home / "a.pic").chmod(0o600)
        program.key(*operations.COMMANDS["copy"], "right", "down")
        program.keydown("modifier")
        self.press_digit(program, "1")
        self.wait_out(program)
        program.key(*operations.COMMANDS["paste"])
        quarn.wait_until((folder / "a.pic").exists, "the copy")
        self.wait_out(program)
        program.keyup("modifier")
        # The other way keeps who may read it.
        self.assertEqual((folder / "a.pic").stat().st_mode & 0o777, 0o644)

    def test_releaseDuringTheBusyBoxEndsTheHold(self):
        program = self.program_with_plugins()
        program.keydown("modifier")
        self.press_digit(program, "1")
        program.keyup("modifier")
        self.wait_out(program)
        program.key("3", "hide")
        program.wait_hidden()
        self.assertEqual((program.home / "started").read_text(),
                         f"First -d {program.home}/a.pic\n")


class TestPlayersChannel(quarn.Case):
    def test_listenerThatHangsDoesNotHoldTheFileManager(self):
        program = self.program(player=True).start()
        listener = program.spawn([str(program.stage / "bin" / "qcop"), "listen", "LyraPlayer"])
        try:
            quarn.wait_until((program.runtime / "qcop" / "LyraPlayer").exists, "the channel")
            listener.send_signal(signal.SIGSTOP)
            program.key("next", "prev", "next", "music")
            program.key("hash")
            program.wait_for_listing(program.home)
            listener.send_signal(signal.SIGCONT)
        finally:
            listener.kill()
            listener.wait()
            listener.stderr.close()


class TestBookmarks(quarn.Case):
    BOOKMARKS = ["softleft", *["down"] * 5, "select"]

    def test_addedOneIsJumpedToAfterARestart(self):
        program = self.program()
        place = quarn.make_folder(program.home / "place")
        program.start()
        program.key("down", "select")
        program.wait_for_listing(place)
        before = program.wait_stable()
        program.key(*self.BOOKMARKS, "select")
        dialog = program.wait_change(before)
        program.display.client.type("here")
        program.wait_change(dialog)
        program.key("softleft")
        record = program.stage / "bookmark.cfg"
        quarn.wait_until(record.exists, "the bookmark file")
        self.assertEqual(record.read_bytes(), b"\nhere\n" + os.fsencode(place))
        program.kill(signal.SIGTERM)
        program.wait_end()
        program.start()
        self.assertEqual(program.listings()[-2:], [str(program.home), "/"])
        program.key(*self.BOOKMARKS, "select")
        program.wait_for_listing(place)


class TestLargeTables(quarn.Case):
    COUNT = 100000

    def test_aHundredThousandLinesLeaveTheProgramUsable(self):
        program = self.program()
        (program.stage / "fm_plugins.cfg").write_text(
            "".join(f"{i % 100:02} {i % 10} plugin{i}\n" for i in range(self.COUNT)))
        (program.stage / "mime_types.cfg").write_text(
            "".join(f"001 {i % 100:02} E{i}\n" for i in range(self.COUNT)))
        (program.stage / "bookmark.cfg").write_text(
            "".join(f"\nname{i}\n/" for i in range(self.COUNT // 2)))
        (program.home / "a.e99999").write_bytes(b"")
        program.start()
        program.key("down")
        before = program.wait_stable()
        program.key("softleft", "select")
        menu = program.wait_change(before)
        # Up from the first item goes to the last: of kind 1, which has no label of its own.
        program.key("up", "select")
        program.wait_change(menu)
        program.list_again()


if __name__ == "__main__":
    quarn.main()
