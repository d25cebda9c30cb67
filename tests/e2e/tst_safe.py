#!/usr/bin/python3
"""Copy, move and delete with "Safe = 1": by keys, cancelled and killed at random moments, and with
names of every kind."""

import os
import pathlib
import random
import shutil
import signal
import tempfile
import time

import operations
import quarn
from operations import names, tree_text

WHITE = (255, 255, 255)
TABS = 3
BOX_AFTER = 0.4  # seconds
SLICE = 0.1  # seconds, and more than a slice takes
MANY = 600  # small files in a tree
HELD = 30  # of them
ODD = [b"'quotes' \"both\"", b"$(touch made) `touch made`", b"line\nbreak", b"-rf", b"--help", b"a&b;c|d",
       b"<b>bold<hr>", b"\xe2\x80\xaegpj.exe", b"\xff\xfe", b"\xef\xbb\xbfmark", b"back\\slash",
       b"x" * 255, b" ", b"%1 %2", b"~", b"*"]


def make_many(folder, count=MANY):
    """Files whose content is their name, some times over, in folders of a hundred."""
    for number in range(count):
        path = folder / f"part{number // 100:02}" / f"file{number:04}"
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(path.name.encode() * 40)


def files_below(folder):
    return {str(path.relative_to(folder)): path.read_bytes()
            for path in sorted(folder.rglob("*")) if path.is_file()}


def whole(files):
    """Whether each has what make_many() has put into it, and none is only for a while."""
    return all(content == pathlib.Path(name).name.encode() * 40 for name, content in files.items())


class Case(quarn.Case):
    def make(self, safe=1):
        """A program whose tabs show `left` and `right`, and its user."""
        folder = self.in_memory()
        self.left, self.right = folder / "left", folder / "right"
        for each in (self.left, self.right):
            each.mkdir(exist_ok=True)
        self.program_ = self.program(self.left, second_folder=self.right,
                                     extras={"Safe": safe} if safe else None)
        self.journals = folder / "state" / "quarn" / "journals"
        self.program_.environment["XDG_STATE_HOME"] = str(folder / "state")
        self.user = operations.User(self.program_, self.left, self.right)

    def in_memory(self):
        """A folder where flushing costs nothing, however busy the disks are."""
        folder = pathlib.Path(tempfile.mkdtemp(prefix="qs", dir="/dev/shm"))
        self.addCleanup(shutil.rmtree, folder, True)
        return folder

    def start(self):
        self.user.page = 1
        self.program_.start()

    def is_page(self):
        """Whether a page with a list is up: it has no tabs."""
        picture = self.program_.screenshot()
        return picture is not None and all(
            picture.getpixel((4 + tab * quarn.WIDTH // TABS, 25)) != WHITE for tab in range(TABS))

    def wait_page(self):
        quarn.wait_until(self.is_page, "a page")

    def wait_main(self):
        """The panels are there and have the keys."""
        quarn.wait_until(lambda: not self.is_page() and self.user.box() is None, "the panels")

    def paste(self, command, *what):
        self.user.choose(*what)
        self.user.command(command)
        self.user.go(2)
        self.user.command("paste")
        if command == "move":
            self.user.answer(True)

    def journals_left(self):
        """An operation takes its journal away when it has come to its end."""
        there = os.listdir(self.journals) if self.journals.exists() else []
        return [name for name in there if name.endswith(".journal")]

    def check_no_journal(self):
        quarn.wait_until(lambda: not self.journals_left(), "the end of the operation")

    def has_module_open(self):
        maps = pathlib.Path("/proc", str(self.program_.pid()), "maps").read_text()
        return f"{self.program_.stage}/modules/extras.so" in maps


class TestSafe(Case):
    def test_whatIsInTheWayIsReplacedKeptOrLeftOut(self):
        self.make()
        for name in ("a", "b", "c"):
            quarn.make_file(self.left / name, b"new")
            quarn.make_file(self.right / name, b"old")
        self.start()
        self.paste("copy", "a", "b", "c")
        self.wait_page()
        # Replaces the first, leaves out the last; the second is kept beside the other.
        self.program_.key("select", "1", "down", "down", "select", "3", "softleft")
        self.wait_main()
        self.check_no_journal()
        self.assertEqual({name: (self.right / name).read_bytes() for name in names(self.right)},
                         {"a": b"new", "b": b"old", "b (2)": b"new", "c": b"old"})

    def test_moveMergesFolders(self):
        self.make()
        quarn.make_file(self.left / "f" / "g" / "new", b"new")
        quarn.make_file(self.left / "f" / ".hidden", b"hidden")
        quarn.make_file(self.right / "f" / "g" / "old", b"old")
        os.symlink("nowhere", self.left / "f" / "dangling")
        self.start()
        self.paste("move", "f")
        quarn.wait_until(lambda: not (self.left / "f").exists(), "the move")
        self.check_no_journal()
        self.assertEqual(files_below(self.right),
                         {"f/g/new": b"new", "f/g/old": b"old", "f/.hidden": b"hidden"})
        self.assertEqual(os.readlink(self.right / "f" / "dangling"), "nowhere")

    def test_deleteAsksOnce(self):
        self.make()
        make_many(self.left / "tree", 300)
        quarn.make_file(self.left / "stays", b"")
        quarn.make_file(self.left / "goes", b"")
        self.start()
        self.user.choose("tree", "goes")
        self.user.command("delete")
        self.user.answer(False)
        self.user.wait_nothing()
        self.assertEqual(names(self.left), ["goes", "stays", "tree"])
        self.user.command("delete")
        self.user.answer(True)
        quarn.wait_until(lambda: names(self.left) == ["stays"], "the entries to go")
        self.wait_main()
        self.check_no_journal()

    def test_namesOfEveryKindReachTheDisk(self):
        self.make()
        for name in ODD:
            with open(os.path.join(os.fsencode(self.left), name), "wb") as file:
                file.write(name)
        self.start()
        everything = [os.fsdecode(name) for name in ODD]
        self.paste("copy", *everything)
        self.wait_main()
        quarn.wait_until(lambda: names(self.right) == names(self.left), "the copies")
        for name in ODD:
            path = os.path.join(os.fsencode(self.right), name)
            with open(path, "rb") as file:
                self.assertEqual(file.read(), name)
        self.user.choose(*everything)
        self.user.command("delete")
        self.user.answer(True)
        quarn.wait_until(lambda: not names(self.right), "the copies to go")
        self.assertEqual(len(names(self.left)), len(ODD))
        self.wait_main()

    def test_openingNeverRunsWhatANameSays(self):
        self.make()
        probe = self.program_.stage / "plugins" / "Probe" / "Probe"
        probe.parent.mkdir()
        probe.write_text("#!/bin/sh\ncd \"$HOME\" && printf '%s\\0' \"$@\" > noting && mv noting noted\n")
        probe.chmod(0o755)
        (self.program_.stage / "fm_plugins.cfg").write_text("01 0 Probe\n")
        (self.program_.stage / "mime_types.cfg").write_text("001 01 PIC\n")
        chosen = [name[:250] + b".pic" for name in ODD]
        for name in chosen:
            with open(os.path.join(os.fsencode(self.left), name), "wb"):
                pass
        self.start()
        noted = self.program_.home / "noted"
        for name in chosen:
            self.user.highlight(os.fsdecode(name))
            self.program_.key("select")
            quarn.wait_until(self.program_.shows_box, "the busy box")
            quarn.wait_until(noted.exists, "the plugin")
            self.assertEqual(noted.read_bytes().split(b"\0"),
                             [b"-d", os.path.join(os.fsencode(self.left), name), b""])
            noted.unlink()
            quarn.wait_until(lambda: not self.program_.shows_box(), "the busy box to go")
        made = [path for place in (self.left, self.program_.home, pathlib.Path("/"))
                for path in place.glob("made*")]
        self.assertEqual(made, [])

    def test_whatFailsIsToldEntryByEntry(self):
        self.make()
        make_many(self.left / "tree", 5)
        (self.left / "tree" / "part00" / "file0003").chmod(0)
        quarn.make_file(self.left / "other", b"other")
        self.user.page = 1
        self.program_.start(prefix=quarn.WITHOUT_ROOT_POWERS)
        self.paste("copy", "tree", "other")
        self.wait_page()
        if not (self.right / "other").exists():  # it was seen before anything was done
            self.program_.key("softleft")
            quarn.wait_until(lambda: (self.right / "other").exists(), "the copies")
        self.wait_or_leave_page()
        self.check_no_journal()
        self.assertEqual(sorted(files_below(self.right)),
                         ["other", *(f"tree/part00/file000{n}" for n in (0, 1, 2, 4))])

    def wait_or_leave_page(self):
        """Closes the page after the work, if there is one, and waits for the panels."""
        def left():
            if self.is_page():
                self.program_.key("softright")
            return not self.is_page() and self.user.box() is None

        quarn.wait_until(left, "the panels")


class TestInterrupted(Case):
    """A file chosen at random stands still while it is read, and the user or a kill comes then."""

    display_options = {"window_manager": True}
    TREES = ["one", "two", "three"]

    def prepare(self, seed, elsewhere=False, more=()):
        self.make()
        if elsewhere:
            self.put_right_elsewhere()
        chance = random.Random(seed)
        rules = [rule.format(left=self.left) for rule in more]
        self.held = {}
        for tree in self.TREES:
            make_many(self.left / tree)
            # In the order in which the system lists them, so that many are still to come.
            parts = [entry.path for entry in os.scandir(self.left / tree)][:MANY // 300]
            files = [entry.path for part in parts for entry in os.scandir(part)]
            first = chance.randrange(len(files) - 1)
            self.held[tree] = pathlib.Path(files[first])
            rules += [f"open hold 0 {file}" for file in files[first:first + 2]]
        self.gate = operations.inject_faults(self.program_, *rules)
        self.start()

    def put_right_elsewhere(self):
        """On another file system, so that what is moved there has to be copied."""
        self.right = self.scratch()
        self.assertNotEqual(os.stat(self.right).st_dev, os.stat(self.left).st_dev)
        self.user.folders[2] = self.right
        self.program_.settings["Start_path_tab2"] = self.right
        self.program_.write_settings()

    def paste_up_to_the_gate(self, command, tree):
        self.gate.close()
        self.user.go(1)
        self.paste(command, tree)
        self.gate.wait_reached()

    def paste_and_cancel(self, command, tree):
        """The key is there before the box, which comes up once the file is read."""
        self.paste_up_to_the_gate(command, tree)
        time.sleep(BOX_AFTER)  # waits: what is over sooner has no box, nor anything to cancel
        self.program_.key("softright")
        self.gate.step()
        time.sleep(SLICE)  # waits: on a fast disk all the rest may take less than a slice
        self.gate.stand_open()
        self.wait_main()
        # What is not on the disk yet when it is cancelled follows.
        self.check_no_journal()
        self.program_.wait_idle()

    def test_cancelledCopyLeavesNothingHalf(self):
        self.prepare(1)
        before = tree_text(self.left)
        for tree in self.TREES:
            self.paste_and_cancel("copy", tree)
            copied = files_below(self.right / tree)
            self.assertTrue(whole(copied))
        self.assertLess(len(files_below(self.right)), len(self.TREES) * MANY)
        self.assertEqual(tree_text(self.left), before)
        self.check_no_journal()

    def test_cancelledMoveHasEachFileOnce(self):
        self.prepare(2, elsewhere=True)
        everything = files_below(self.left)
        for tree in self.TREES:
            self.paste_and_cancel("move", tree)
            there, here = files_below(self.right / tree), files_below(self.left / tree)
            self.assertTrue(whole(there) and whole(here))
            self.assertFalse(there.keys() & here.keys())
            self.assertEqual(len(there) + len(here), MANY)
        self.assertEqual({**files_below(self.left), **files_below(self.right)}, everything)
        self.check_no_journal()

    def test_countIsCancelledAtOnce(self):
        self.prepare(5, more=["open hold 0 {left}/one/part00"])
        self.paste_and_cancel("copy", "one")
        self.assertEqual(names(self.right), [])
        self.check_no_journal()

    def test_whatComesIntoTheWayMeanwhileIsAskedAbout(self):
        self.make()
        for name in ("a", "b"):
            quarn.make_file(self.left / name, b"new")
        self.gate = operations.inject_faults(self.program_, f"open hold 0 {self.left}/a")
        self.start()
        self.gate.close()
        self.paste("copy", "a", "b")
        self.gate.wait_reached()
        (self.right / "b").write_bytes(b"meanwhile")
        self.gate.open()
        self.wait_page()
        self.program_.key("3")
        self.wait_main()
        self.check_no_journal()
        self.assertEqual(files_below(self.right), {"a": b"new", "b": b"meanwhile"})

    def end_while_working(self, command, end):
        """Half of a tree is done, and many files of another part of it stand still when they are to
        be read. The program is asked to end then, and has ended."""
        self.make()
        if command == "move":
            self.put_right_elsewhere()
        make_many(self.left / "two")
        self.everything = tree_text(self.left / "two")
        part = [entry.path for entry in os.scandir(self.left / "two")][MANY // 200]
        files = [entry.path for entry in os.scandir(part)][:HELD]
        self.gate = operations.inject_faults(self.program_,
                                             *[f"open hold 0 {file}" for file in files])
        self.start()
        self.paste_up_to_the_gate(command, "two")
        end()
        quarn.wait_until(lambda: self.step_if_held() or self.has_ended(), "the program to end")
        self.gate.stand_open()
        self.program_.wait_end()
        # Nothing is half, and nothing is there only for a while.
        copied = files_below(self.right)
        self.assertTrue(copied and whole(copied))
        self.assertFalse([name for name in names(self.right) if name.startswith(".quarn-")])
        self.assertEqual(len(self.journals_left()), 1)

    def has_ended(self):
        return self.program_.process.poll() is not None

    def step_if_held(self):
        """Never true."""
        if self.gate.reached.exists() and not self.has_ended():
            self.gate.step()

    def go_on(self, key):
        self.start()
        self.wait_page()
        self.program_.key(key)
        quarn.wait_until(lambda: not self.journals_left(), "the rest")
        self.wait_main()

    def terminate(self):
        self.program_.kill(signal.SIGTERM)

    def exit(self):
        """By the exit question, which comes up over the progress. Without it the key means nothing."""
        self.program_.display.client.press("F12")

        def answered():
            self.step_if_held()
            self.program_.key("softleft")
            return self.has_ended()

        quarn.wait_until(answered, "the exit")

    def test_signalThatEndsTheProgramLeavesNothingHalf(self):
        self.end_while_working("copy", self.terminate)
        self.assertEqual(self.program_.process.returncode, -signal.SIGTERM)
        self.go_on("1")
        self.assertEqual(tree_text(self.right / "two"), self.everything)

    def test_moveThatASignalHasEndedIsTakenBack(self):
        self.end_while_working("move", self.terminate)
        self.go_on("2")
        self.assertEqual(tree_text(self.left / "two"), self.everything)
        self.assertEqual(names(self.right), [])

    def test_exitWhileItWorksIsOfferedToBeFinished(self):
        self.end_while_working("copy", self.exit)
        self.assertEqual(self.program_.process.returncode, 0)
        self.go_on("1")
        self.assertEqual(tree_text(self.right / "two"), self.everything)

    def kill_while_copying(self, seed):
        self.prepare(seed)
        self.paste_up_to_the_gate("copy", "two")
        self.program_.kill()
        self.program_.wait_end()
        self.gate.path.unlink()
        # Nothing that has its name is not whole.
        self.assertTrue(whole({name: content for name, content in files_below(self.right).items()
                               if "/.quarn-" not in name}))

    def test_nextStartFinishesWhatAKillHasEnded(self):
        self.kill_while_copying(3)
        self.start()
        self.wait_page()
        self.program_.key("1")
        quarn.wait_until(lambda: not self.journals_left(), "the rest")
        self.wait_main()
        self.assertEqual(tree_text(self.right / "two"), tree_text(self.left / "two"))
        self.assertEqual(names(self.right), ["two"])

    def test_nextStartTakesBackWhatAKillHasEnded(self):
        self.kill_while_copying(4)
        self.start()
        self.wait_page()
        # Later is at the next start.
        self.program_.key("softright")
        self.wait_main()
        self.program_.kill()
        self.program_.wait_end()
        self.start()
        self.wait_page()
        self.program_.key("2")
        quarn.wait_until(lambda: not self.journals_left(), "what was made to go")
        self.wait_main()
        self.assertEqual(names(self.right), [])
        self.assertEqual(len(files_below(self.left)), len(self.TREES) * MANY)
        self.assertTrue(whole(files_below(self.left)))


class TestModule(Case):
    def test_withoutItNothingIsTouched(self):
        self.make()
        (self.program_.stage / "modules" / "extras.so").unlink()
        quarn.make_file(self.left / "a", b"a")
        self.start()
        self.paste("copy", "a")
        self.user.dismiss()
        self.assertEqual(names(self.right), [])
        self.user.go(1)
        self.user.choose("a")
        self.user.command("delete")
        self.user.dismiss()
        self.assertEqual(names(self.left), ["a"])

    def test_isOpenedByTheFirstOperation(self):
        self.make()
        quarn.make_file(self.left / "a", b"a")
        self.start()
        self.assertFalse(self.has_module_open())
        self.paste("copy", "a")
        quarn.wait_until(lambda: names(self.right) == ["a"], "the copy")
        self.assertTrue(self.has_module_open())

    def test_keepsItsNotesInTheUsersFolder(self):
        self.make()
        del self.program_.environment["XDG_STATE_HOME"]
        quarn.make_file(self.left / "a", b"a")
        self.start()
        self.paste("copy", "a")
        quarn.wait_until(lambda: names(self.right) == ["a"], "the copy")
        self.assertTrue((self.program_.home / ".local" / "state" / "quarn" / "journals").is_dir())

    def test_staysClosedWithoutTheSetting(self):
        self.make(safe=0)
        quarn.make_file(self.left / "a", b"a")
        quarn.make_file(self.journals / "1.journal", b"something")
        self.start()
        self.paste("copy", "a")
        quarn.wait_until(lambda: names(self.right) == ["a"], "the copy")
        self.user.wait_nothing()
        self.assertFalse(self.has_module_open())
        self.assertEqual(names(self.journals), ["1.journal"])


del Case  # it is no test itself

if __name__ == "__main__":
    quarn.main()
