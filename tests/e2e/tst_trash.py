#!/usr/bin/python3
"""Deleting with "Trash = 1", and what can be done with the trash, by keys."""

import contextlib
import os
import pathlib
import shutil
import tempfile

import operations
import quarn
import twins
from operations import names

WHITE = (255, 255, 255)
TABS = 3
ODD = [b"'quotes' \"both\"", b"$(touch made)", b"line\nbreak", b"-rf", b"%41", b"<b>bold<hr>",
       b"\xe2\x80\xaegpj.exe", b"\xff\xfe", b"\xef\xbb\xbfmark", b"back\\slash", b"x" * 255, b" "]


def content(path):
    with open(path, "rb") as file:
        return file.read()


def infos(trash):
    return names(trash / "info")


class Case(quarn.Case):
    def make(self, *entries, left=None, safe=0, start=True):
        """A program with a trash whose tabs show `left` and `right`, and its user."""
        folder = self.scratch()
        self.left, self.right = left or folder / "left", folder / "right"
        for each in (self.left, self.right):
            each.mkdir(exist_ok=True)
        for name in entries:
            with open(self.at(name), "wb") as file:
                file.write(os.fsencode(name))
        self.program_ = self.program(self.left, second_folder=self.right,
                                     extras={"Trash": 1, **({"Safe": 1} if safe else {})},
                                     alone=left is not None)
        self.trash = self.program_.home / ".local" / "share" / "Trash"
        self.user = operations.User(self.program_, self.left, self.right)
        if start:
            self.program_.start()

    def at(self, name):
        return os.path.join(os.fsencode(self.left), os.fsencode(name))

    def is_page(self):
        """Whether a page with a list is up: it has no tabs."""
        picture = self.program_.screenshot()
        return picture is not None and all(
            picture.getpixel((4 + tab * quarn.WIDTH // TABS, 25)) != WHITE for tab in range(TABS))

    def delete(self, *entries):
        self.user.choose(*entries)
        self.user.command("delete")
        self.user.answer(True)
        quarn.wait_until(lambda: not any(os.path.lexists(self.at(name)) for name in entries),
                         "the entries to go")
        self.user.wait_nothing()
        self.settle()

    def open_trash(self):
        """By the last item of the options menu."""
        self.program_.key("softleft", "up", "select")
        quarn.wait_until(self.is_page, "the trash")

    def settle(self):
        """Waits until a command is over: the main window and the list hear no keys before that."""
        self.program_.wait_idle()

    def choose(self, digit):
        """From the menu of the highlighted row."""
        self.settle()
        self.program_.key("softleft", digit)

    def leave(self):
        self.settle()
        self.program_.key("softright")
        quarn.wait_until(lambda: not self.is_page(), "the panels")
        self.settle()


class TestTrash(Case):
    def test_whatIsDeletedComesBack(self):
        self.make("a", "b")
        (self.left / "folder" / "in").mkdir(parents=True)
        self.user.relist()
        self.delete("a", "folder")
        self.assertEqual(names(self.left), ["b"])
        self.assertEqual(names(self.trash / "files"), ["a", "folder"])
        self.open_trash()
        for _ in range(2):
            self.choose("1")
        quarn.wait_until(lambda: names(self.left) == ["a", "b", "folder"], "the entries to return")
        self.leave()
        self.assertTrue((self.left / "folder" / "in").is_dir())
        self.assertEqual(content(self.at("a")), b"a")
        self.assertEqual((names(self.trash / "files"), infos(self.trash)), ([], []))

    def test_noKeepsEverything(self):
        self.make("a")
        self.user.choose("a")
        self.user.command("delete")
        self.user.answer(False)
        self.user.wait_nothing()
        self.assertEqual(names(self.left), ["a"])
        self.assertFalse(self.trash.exists())

    def test_withSafeOperationsToo(self):
        self.make("a", safe=1)
        self.delete("a")
        self.assertEqual(content(self.trash / "files" / "a"), b"a")

    def test_aTakenPlaceIsAskedAbout(self):
        self.make("a")
        for digit, here, there in (("1", {"a": b"a"}, [b"new"]),
                                   ("2", {"a": b"new", "a (2)": b"a"}, [])):
            with self.subTest(digit):
                self.delete("a")
                quarn.make_file(self.left / "a", b"new")
                self.open_trash()
                self.choose("1")
                self.settle()
                self.program_.key(digit)
                quarn.wait_until(
                    lambda: {name: content(self.at(name)) for name in names(self.left)} == here,
                    "the answer")
                self.assertEqual([content(path) for path in (self.trash / "files").iterdir()],
                                 there)
                if there:
                    self.choose("3")
                    self.user.answer(True)
                    quarn.wait_until(lambda: not infos(self.trash), "the trash to be empty")
                self.leave()
                self.user.relist()

    def test_itIsEmptiedAfterAQuestion(self):
        self.make("a", "b")
        (self.left / "folder" / "in" / "deep").mkdir(parents=True)
        self.user.relist()
        self.delete("a", "b", "folder")
        self.open_trash()
        self.choose("3")
        self.user.answer(False)
        self.user.wait_nothing()
        self.assertEqual(len(infos(self.trash)), 3)
        self.choose("3")
        self.user.answer(True)
        quarn.wait_until(lambda: not names(self.trash / "files") and not infos(self.trash) and
                         not names(self.trash / "expunged"), "the trash to be empty")
        self.leave()

    def test_oneIsDeletedForGood(self):
        self.make("a")
        self.delete("a")
        self.open_trash()
        self.choose("2")
        self.user.answer(True)
        quarn.wait_until(lambda: not names(self.trash / "files"), "the entry to go")
        self.leave()

    def test_namesOfEveryKindGoAndComeBack(self):
        everything = [os.fsdecode(name) for name in ODD]
        self.make(*everything)
        self.delete(*everything)
        self.assertEqual(len(infos(self.trash)), len(ODD))
        self.assertEqual(sorted(content(path) for path in (self.trash / "files").iterdir()),
                         sorted(ODD))
        self.open_trash()
        for left in reversed(range(len(ODD))):
            self.choose("1")
            quarn.wait_until(lambda: len(infos(self.trash)) == left, "an entry to return")
        self.leave()
        self.assertEqual(sorted(os.listdir(os.fsencode(self.left))), sorted(ODD))
        for name in ODD:
            self.assertEqual(content(self.at(name)), name)

    def test_twinsStay(self):
        for name in twins.FEW[:4]:
            with self.subTest(name):
                others = sorted(twins.twins_of(name))
                self.make(*map(os.fsdecode, [name, *others]))
                self.delete(os.fsdecode(name))
                self.assertEqual(sorted(os.listdir(os.fsencode(self.left))), others)
                self.open_trash()
                self.choose("1")
                quarn.wait_until(lambda: os.path.lexists(self.at(name)), "the entry to return")
                for each in [name, *others]:
                    self.assertEqual(content(self.at(each)), each)
                self.program_.stop()

    def test_whatHasNoTrashIsAskedAboutAgain(self):
        self.make(start=False)
        # What is in a trash has none.
        inside = self.trash / "files" / "left"
        inside.mkdir(parents=True)
        (self.trash / "info").mkdir()
        quarn.make_file(inside / "b", b"b")
        quarn.make_file(inside / "c", b"c")
        self.program_.settings["Start_path_tab1"] = inside
        self.program_.write_settings()
        self.user = operations.User(self.program_, inside, self.right)
        self.program_.start()
        self.user.choose("b")
        self.user.command("delete")
        self.user.answer(True)
        self.user.answer(False)
        self.user.wait_nothing()
        self.settle()
        self.assertEqual(names(inside), ["b", "c"])
        self.user.command("delete")
        self.user.answer(True)
        self.user.answer(True)
        quarn.wait_until(lambda: names(inside) == ["c"], "the entry to go")


class TestOtherFileSystem(Case):
    @contextlib.contextmanager
    def other_place(self):
        """A folder on another file system than the home's. Its trash is the user's own, which all
        others list."""
        here = os.stat(tempfile.gettempdir()).st_dev
        for place in ("/dev/shm", "/var/tmp", "/tmp"):
            if os.path.isdir(place) and os.stat(place).st_dev != here:
                break
        else:
            self.fail("there is one file system only")
        with quarn.trashes(alone=True):
            folder = pathlib.Path(tempfile.mkdtemp(prefix="qs", dir=place))
            try:
                yield folder
            finally:
                shutil.rmtree(folder, True)
                self.tidy(folder)

    @staticmethod
    def top_of(folder):
        while not os.path.ismount(folder):
            folder = folder.parent
        return folder

    def trash_of(self, folder):
        return self.top_of(folder) / f".Trash-{os.geteuid()}"

    def tidy(self, folder):
        """Takes away what the test has made there, and nothing else."""
        trash = self.trash_of(folder)
        for name in names(trash / "files") if trash.exists() else []:
            if name.startswith("quarn-test"):
                (trash / "files" / name).unlink()
                (trash / "info" / f"{name}.trashinfo").unlink(missing_ok=True)
        for part in (trash / "expunged", trash / "files", trash / "info", trash):
            with contextlib.suppress(OSError):
                part.rmdir()

    def test_eachFileSystemHasItsOwn(self):
        with self.other_place() as folder:
            mine = f"quarn-test-{os.getpid()}"
            self.make(mine, left=folder)
            device = os.stat(self.at(mine)).st_dev
            self.delete(mine)
            trashed = self.trash_of(folder) / "files" / mine
            self.assertEqual(os.stat(trashed).st_dev, device)
            info = content(self.trash_of(folder) / "info" / f"{mine}.trashinfo").decode()
            self.assertIn(f"\nPath={folder.relative_to(self.top_of(folder))}/{mine}\n", info)
            self.assertFalse(self.trash.exists())
            # The list has those of all file systems; the second is in the home's.
            quarn.make_file(self.right / "here", b"here")
            self.user.go(2)
            self.user.relist()
            self.left = self.right
            self.delete("here")
            self.left = folder
            self.open_trash()
            for count in (1, 0):
                self.choose("1")
                quarn.wait_until(lambda: len(infos(self.trash)) + trashed.exists() == count,
                                 "an entry to return")
            self.leave()
            self.assertEqual(content(self.at(mine)), mine.encode())
            self.assertEqual(content(self.right / "here"), b"here")


if __name__ == "__main__":
    quarn.main()
