#!/usr/bin/python3
"""Commands by keys reach entries with odd names and leave their twins alone."""

import collections
import os
import shutil
import signal

import PIL.Image

import operations
import quarn
import twins


class TestManyEntries(twins.Case):
    """All the names, marked at once."""

    def without(self, entries, names):
        return {path: entry for path, entry in entries.items()
                if not any(path == name or path.startswith(name + b"/") for name in names)}

    def test_filesAreDeleted(self):
        self.make(twins.NAMES)
        expected = self.without(twins.tree(self.left), twins.NAMES)
        self.user.delete(*self.texts(twins.NAMES))
        self.check(expected)

    def test_foldersAreDeleted(self):
        self.make(twins.NAMES, folders=True)
        expected = self.without(twins.tree(self.left), twins.NAMES)
        self.user.delete(*self.texts(twins.NAMES))
        self.check(expected)

    def test_linksToTwinsAreDeletedAlone(self):
        self.make(twins.FEW)
        for name in twins.FEW:
            os.unlink(self.at(name))
            os.symlink(min(twins.twins_of(name) - set(twins.FEW)), self.at(name))
        self.user.relist()
        expected = self.without(twins.tree(self.left), twins.FEW)
        self.user.delete(*self.texts(twins.FEW))
        self.check(expected)

    def copy(self, folders, built_in):
        self.make(twins.NAMES, folders=folders, twins_right=True)
        left, right = twins.tree(self.left), twins.tree(self.right)
        self.user.put("copy", *self.texts(twins.NAMES), to=2, built_in=built_in)
        self.user.wait_nothing()
        self.check(left)
        self.check_copies(left, right)

    def check_copies(self, left, right):
        copies = {path: entry for path, entry in left.items()
                  if path.split(b"/")[0] in twins.NAMES}
        now = twins.tree(self.right)
        self.assertEqual({path: now.get(path) for path in right}, right)
        self.assertEqual(twins.contents(now), {**twins.contents(right), **twins.contents(copies)})

    def test_theShellCopiesFiles(self):
        self.copy(folders=False, built_in=False)

    def test_theShellCopiesFolders(self):
        self.copy(folders=True, built_in=False)

    def test_theBuiltInWayCopiesFiles(self):
        self.copy(folders=False, built_in=True)

    def test_theBuiltInWayCopiesFolders(self):
        self.copy(folders=True, built_in=True)

    def test_filesAreMoved(self):
        self.make(twins.NAMES, twins_right=True)
        left, right = twins.tree(self.left), twins.tree(self.right)
        self.user.put("move", *self.texts(twins.NAMES), to=2, answers=[True] * len(twins.NAMES))
        self.user.wait_nothing()
        self.check(self.without(left, twins.NAMES))
        self.check({**right, **{name: left[name] for name in twins.NAMES}}, self.right)

    def test_entriesInTheWayAreReplaced(self):
        self.make(twins.FEW, twins_right=True)
        for name in twins.FEW:
            self.write(self.at(name, self.right), b"in the way")
        left, right = twins.tree(self.left), twins.tree(self.right)
        self.user.put("copy", *self.texts(twins.FEW), to=2, answers=[True] * len(twins.FEW))
        self.user.wait_nothing()
        self.check(left)
        now = twins.tree(self.right)
        self.assertEqual(self.without(now, twins.FEW), self.without(right, twins.FEW))
        self.assertEqual({name: now[name][2] for name in twins.FEW},
                         {name: left[name][2] for name in twins.FEW})


class TestMovingByTheHelper(twins.Case):
    """With bin/sys_gui in the place of mv."""

    @classmethod
    def prepare(cls, program):
        shutil.copy(os.environ["QUARN_SYS_GUI"], program.stage / "bin" / "sys_gui")

    def test_filesAreMoved(self):
        self.make(twins.FEW, twins_right=True)
        left, right = twins.tree(self.left), twins.tree(self.right)
        self.user.put("move", *self.texts(twins.FEW), to=2, answers=[True] * len(twins.FEW))
        self.user.wait_nothing()
        self.check({path: entry for path, entry in left.items() if path not in twins.FEW})
        self.check({**right, **{name: left[name] for name in twins.FEW}}, self.right)


class TestNames(twins.Case):
    def test_renamedByTyping(self):
        self.make(twins.FEW)
        for number, name in enumerate(twins.FEW):
            expected = twins.tree(self.left)
            expected[b"plain%d" % number] = expected.pop(name)
            self.user.highlight(os.fsdecode(name))
            self.user.command("rename")
            self.user.type(f"plain{number}")
            with self.user.watching(2):
                self.user.confirm()
            self.check(expected)

    def test_typedTextIsAddedToTheBytes(self):
        self.make(twins.FEW)
        for name in twins.FEW:
            expected = twins.tree(self.left)
            expected[name + b"yy"] = expected.pop(name)
            self.user.highlight(os.fsdecode(name))
            self.user.command("rename")
            quarn.wait_until(self.user.is_typing, "the dialog")
            self.user.press("End", "x", "BackSpace", "y", "y")
            with self.user.watching(2):
                self.user.confirm()
            self.check(expected)

    def test_aNameConfirmedAsItIsIsTaken(self):
        self.make(twins.FEW)
        expected = twins.tree(self.left)
        for name in twins.FEW:
            self.user.highlight(os.fsdecode(name))
            self.user.command("rename")
            self.user.confirm()
            self.user.dismiss()
        self.check(expected)

    def test_aCopiedNameIsPastedAsItsBytes(self):
        self.make(twins.FEW, twins_right=True)
        left, right = twins.tree(self.left), twins.tree(self.right)
        for name in twins.FEW:
            self.user.go(1)
            self.user.highlight(os.fsdecode(name))
            self.user.command("rename")
            quarn.wait_until(self.user.is_typing, "the dialog")
            self.program_.key("modifier", "select")
            self.user.confirm(False)
            self.user.go(2)
            self.user.command("new folder")
            quarn.wait_until(self.user.is_typing, "the dialog")
            self.program_.key("modifier", "down", "select")
            with self.user.watching(1):
                self.user.confirm()
        self.check(left)
        now = twins.tree(self.right)
        self.assertEqual({path: now.get(path) for path in right}, right)
        self.assertEqual(set(now) - set(right), set(twins.FEW))


class TestFolders(twins.Case):
    def enter(self, name):
        """Enters a folder of the left one; what follows is done in it."""
        self.user.highlight(os.fsdecode(name))
        with self.user.watching(1):
            self.program_.key("select")

    def leave(self):
        with self.user.watching(1):
            self.program_.key("folderup")

    def make_folder(self, name):
        self.user.command("new folder")
        self.user.type(name)
        with self.user.watching(1):
            self.user.confirm()

    def test_areEnteredAndLeft(self):
        self.make(twins.FEW, folders=True)
        for name in twins.FEW:
            self.enter(name)
            self.make_folder("in")
            self.leave()
            self.assertEqual(sorted(os.listdir(self.at(name))), sorted([name, b"in"]))
        # The way up led back.
        self.make_folder("up")
        self.assertIn(b"up", os.listdir(os.fsencode(self.left)))

    BOOKMARKS = ["softleft", *["down"] * 5, "select"]

    def test_areBookmarkedAndFoundAfterARestart(self):
        names = twins.FEW[:4]
        self.make(names, folders=True)
        for name in names:
            self.enter(name)
            # The last item adds one; up from the first leads there.
            self.program_.key(*self.BOOKMARKS, "up", "select")
            self.user.type("here")
            self.user.confirm()
            self.leave()
        records = (self.program_.stage / "bookmark.cfg").read_bytes()
        self.assertEqual(records, b"".join(b"\nhere\n" + self.at(name) for name in names))
        self.program_.kill(signal.SIGTERM)
        self.program_.wait_end()
        self.program_.start()
        for number, name in enumerate(names):
            with self.user.watching(1):
                self.program_.key(*self.BOOKMARKS, *["down"] * number, "select")
            self.make_folder("jumped")
            self.assertIn(b"jumped", os.listdir(self.at(name)))
        self.end_program()


    def test_newFoldersAreMadeUnderPastedNames(self):
        """A name is copied in the rename dialog, and pasted into that for a new folder inside."""
        self.make(twins.FEW, folders=True)
        expected = set(twins.tree(self.left))
        for name in twins.FEW:
            self.user.highlight(os.fsdecode(name))
            self.user.command("rename")
            quarn.wait_until(self.user.is_typing, "the dialog")
            self.program_.key("modifier", "select")
            self.user.confirm(False)
            inner = os.path.join(name, b"in" if name.startswith(b"a") else b"2")
            self.enter(name)
            self.make_folder(os.path.basename(inner).decode())
            self.leave()
            expected.add(inner)
        self.assertEqual(set(twins.tree(self.left)), expected)


class TestProperties(twins.Case):
    def picture_of(self, name):
        self.user.highlight(os.fsdecode(name))
        self.user.command("properties")
        self.user.wait_message()
        picture = self.program_.wait_stable()
        top, bottom = self.user.box()
        self.user.dismiss()
        left = operations.BOX_LEFT + 2
        return picture.crop((left, top, quarn.WIDTH - left, bottom)).tobytes()

    def test_areThoseOfTheEntry(self):
        """Twins are smaller: once they are gone, the boxes look as before."""
        self.make(twins.FEW)
        for number, name in enumerate(twins.FEW):
            self.write(self.at(name), b"x" * (4096 + number))
        expected = twins.tree(self.left)
        seen = [self.picture_of(name) for name in twins.FEW]
        self.check(expected)
        for twin in set().union(*map(twins.twins_of, twins.FEW)) - set(twins.FEW):
            os.unlink(self.at(twin))
        self.user.relist()
        self.assertEqual([self.picture_of(name) == before for name, before in zip(twins.FEW, seen)],
                         [True] * len(twins.FEW))
        self.assertEqual(len(set(seen)), len(twins.FEW))


class TestThumbnails(twins.Case):
    settings = {"Full_info": 1}
    RED, BLUE = (255, 0, 0), (0, 0, 255)

    def draw(self, name, colour):
        PIL.Image.new("RGB", (30, 30), colour).save(self.at(name).decode(errors="surrogateescape"))

    def counts(self):
        """How many pixels of the screen have the colour of the odd name, and of its twins."""
        seen = collections.Counter(self.program_.screenshot().getdata())
        return seen[self.RED], seen[self.BLUE]

    def test_areOfTheEntry(self):
        for number, name in enumerate(twins.FEW):
            self.empty()
            # Pictures are remembered by their paths.
            end = b"%d.png" % number
            others = sorted(twins.twins_of(name))[:3]
            self.draw(name + end, self.RED)
            for twin in others:
                self.draw(twin + end, self.BLUE)
            self.user.relist()
            quarn.wait_until(lambda: self.counts()[0] > 0 and
                             self.counts() == (self.counts()[0], len(others) * self.counts()[0]),
                             lambda: f"a picture for {name} and each of {others}: {self.counts()}")


if __name__ == "__main__":
    quarn.main()
