#!/usr/bin/python3
"""File commands when something goes wrong half way: disks that are full, read-only or broken, and
entries that vanish."""

import contextlib
import ctypes
import errno
import os

import operations
import quarn
from operations import BLOCK, names, tree_text

CLONE_NEWNS, MS_NOSUID, MS_REC, MS_PRIVATE, MNT_DETACH = 0x20000, 2, 0x4000, 0x40000, 2
MS_RDONLY, MS_REMOUNT = 1, 32
LIBC = ctypes.CDLL(None, use_errno=True)


def enter_own_mounts():
    """Mounts of this process and its children are their own, if it may have such."""
    if LIBC.unshare(CLONE_NEWNS) != 0:
        return False
    return LIBC.mount(None, b"/", None, MS_REC | MS_PRIVATE, None) == 0


CAN_MOUNT = enter_own_mounts()


def mount_memory(folder, flags=0, options="size=1m"):
    if LIBC.mount(b"tmpfs", os.fsencode(folder), b"tmpfs", MS_NOSUID | flags,
                  options.encode()) != 0:
        raise OSError(ctypes.get_errno(), f"cannot mount {folder}")


def unmount(folder):
    LIBC.umount2(os.fsencode(folder), MNT_DETACH)


class TestDisks(operations.OwnProgramCase):
    """Target file systems that take no more, or nothing."""

    @contextlib.contextmanager
    def small_target(self, user, error=errno.ENOSPC):
        """desk/right has room for a megabyte: by a file system where that can be mounted, else by
        writes that fail."""
        if CAN_MOUNT and error == errno.ENOSPC:
            mount_memory(self.right)
            try:
                yield
            finally:
                unmount(self.right)
        else:
            operations.inject_faults(user.program, f"write {error} {2 * BLOCK} {self.right}/")
            yield

    def fill_left(self):
        """A tree that does not fit into the target, and a file that does."""
        quarn.make_file(self.left / "tree" / "a small", b"small")
        quarn.make_file(self.left / "tree" / "large", os.urandom(2000000))
        quarn.make_file(self.left / "tree" / "z last", b"")
        quarn.make_file(self.left / "large", os.urandom(2000000))
        quarn.make_file(self.left / "empty")

    def check_full(self, error):
        user = self.make()
        self.fill_left()
        before = tree_text(self.left, times=True)
        with self.small_target(user, error):
            user.program.start()
            self.check_shell_copy(user)
            self.check_built_in_copy(user)
        self.assertEqual(tree_text(self.left, times=True), before)

    def check_shell_copy(self, user):
        user.put("copy", "tree", to=2)
        user.wait_nothing()
        self.check_part(self.right / "tree" / "large", self.left / "tree" / "large")
        # The tool goes by the folder's own order: what comes late finds no room any more.
        small = (self.right / "tree" / "a small").read_bytes()
        self.assertTrue(b"small".startswith(small), small)
        user.delete("tree")
        user.go(1)

    def check_built_in_copy(self, user):
        # Of a tree the files that fit are copied, without a word.
        self.copy_built_in(user, "tree")
        user.wait_nothing()
        self.check_part(self.right / "tree" / "large", self.left / "tree" / "large")
        self.assertEqual(names(self.right / "tree"), ["a small", "large", "z last"])
        user.delete("tree")
        user.go(1)
        # Of a single file the box stays, and tells how far the copy got.
        self.copy_built_in(user, "large")
        user.dismiss()
        self.check_part(self.right / "large", self.left / "large")
        self.check_alive(user)

    def check_part(self, part, whole):
        """The file holds the beginning of another one."""
        content = part.read_bytes()
        self.assertEqual(content, whole.read_bytes()[:len(content)])
        self.assertTrue(0 < len(content) < whole.stat().st_size, len(content))

    def test_aFullDiskLeavesPartsAndTheSource(self):
        self.check_full(errno.ENOSPC)

    def test_aQuotaThatIsUsedUpLeavesPartsAndTheSource(self):
        self.check_full(errno.EDQUOT)

    def test_aFileSizeLimitEndsNoProgram(self):
        user = self.make()
        self.fill_left()
        user.program.start(prefix=["prlimit", "--fsize=1048576:1048576"])
        self.copy_built_in(user, "large")
        user.dismiss()
        self.check_part(self.right / "large", self.left / "large")
        self.check_alive(user)

    def test_aMoveToAFullDiskKeepsTheSource(self):
        user = self.make()
        self.fill_left()
        before = tree_text(self.left)
        with self.small_target(user):
            if not CAN_MOUNT:  # within one file system nothing is written
                self.fail_moves(user)
            user.program.start()
            user.put("move", "tree", to=2, answers=[True])
            user.wait_nothing()
            self.check_alive(user)
        self.assertEqual(tree_text(self.left), before)

    @staticmethod
    def fail_moves(user):
        """What mv does when the target is full: it copies what fits and keeps the source."""
        tool = quarn.make_file(user.program.base / "tools" / "mv",
                               b'#!/bin/sh\ncp -R "$1" "$2"\nexit 1\n')
        tool.chmod(0o755)
        user.program.environment["PATH"] = f"{tool.parent}:{user.program.environment['PATH']}"

    @contextlib.contextmanager
    def locked_target(self):
        """desk/right cannot be written: a read-only file system, or a folder without the right."""
        if CAN_MOUNT:
            self.right.chmod(0o755)
            held = sorted((path.name, path.read_bytes()) for path in self.right.iterdir())
            mount_memory(self.right)
            for name, content in held:
                (self.right / name).write_bytes(content)
            mount_memory(self.right, MS_REMOUNT | MS_RDONLY)
        else:
            self.right.chmod(0o555)
        try:
            yield
        finally:
            if CAN_MOUNT:
                unmount(self.right)

    def test_nothingGoesOntoAReadOnlyDiskOrAwayFromIt(self):
        user = self.make()
        self.fill_left()
        quarn.make_file(self.right / "empty", b"old")
        quarn.make_file(self.right / "there", b"old")
        with self.locked_target():
            self.check_locked(user, quarn.WITHOUT_ROOT_POWERS)

    def test_nothingGoesIntoAFolderOfOthersOrAwayFromIt(self):
        user = self.make()
        self.fill_left()
        quarn.make_file(self.right / "empty", b"old")
        quarn.make_file(self.right / "there", b"old")
        self.right.chmod(0o555)
        self.check_locked(user, quarn.WITHOUT_ROOT_POWERS)

    def check_locked(self, user, prefix):
        before = tree_text(self.left), tree_text(self.right)
        user.program.start(prefix=prefix)
        user.put("copy", "tree", to=2)
        user.go(1)
        user.put("copy", "tree", to=2, built_in=True)
        user.wait_nothing()
        user.go(1)
        user.put("move", "tree", to=2, answers=[True])
        user.wait_nothing()
        self.check_locked_entries(user)
        self.assertEqual((tree_text(self.left), tree_text(self.right)), before)
        self.check_alive(user)

    @staticmethod
    def check_locked_entries(user):
        """What is in the folder stays, and each command says so."""
        user.go(1)
        user.put("copy", "empty", to=2, answers=[True])
        user.dismiss()
        user.go(1)
        user.put("move", "empty", to=2, answers=[True, True])
        user.dismiss()
        user.highlight("there")
        user.command("delete")
        user.answer(True)
        user.dismiss()
        user.command("rename")
        user.type("new")
        user.confirm()
        user.dismiss()
        user.command("new folder")
        user.type("new")
        user.confirm()
        user.dismiss()


class TestBrokenFiles(operations.OwnProgramCase):
    """Sources that cannot be read, or not to their end."""

    def test_aReadErrorHalfWayLeavesWhatWasRead(self):
        user = self.make()
        content = os.urandom(3 * BLOCK)
        quarn.make_file(self.left / "single", content)
        quarn.make_file(self.left / "tree" / "broken", content)
        quarn.make_file(self.left / "tree" / "sound", content)
        operations.inject_faults(user.program,
                                 f"read {errno.EIO} {2 * BLOCK + 5} {self.left}/single",
                                 f"read {errno.EIO} {BLOCK + 5} {self.left}/tree/broken")
        user.program.start()
        self.copy_built_in(user, "single")
        user.dismiss()
        # A block that cannot be read as a whole is not written.
        self.assertEqual((self.right / "single").read_bytes(), content[:2 * BLOCK])
        user.go(1)
        self.copy_built_in(user, "tree")
        user.wait_nothing()
        self.assertEqual((self.right / "tree" / "broken").read_bytes(), content[:BLOCK])
        self.assertEqual((self.right / "tree" / "sound").read_bytes(), content)
        user.delete("tree")
        user.go(1)
        user.put("copy", "tree", to=2)
        user.wait_nothing()
        self.assertEqual((self.right / "tree" / "sound").read_bytes(), content)
        self.check_alive(user)

    def test_whatCannotBeOpenedIsLeftOut(self):
        user = self.make()
        quarn.make_file(self.left / "tree" / "locked", b"l").chmod(0)
        quarn.make_file(self.left / "tree" / "sound", b"s")
        quarn.make_file(self.left / "tree" / "locked folder" / "inside", b"i")
        quarn.make_file(self.left / "locked", b"l").chmod(0)
        (self.left / "tree" / "locked folder").chmod(0)
        user.program.start(prefix=quarn.WITHOUT_ROOT_POWERS)
        for built_in in (False, True):
            user.put("copy", "tree", to=2, built_in=built_in)
            user.wait_nothing()
            self.assertEqual((self.right / "tree" / "sound").read_bytes(), b"s")
            self.assertFalse((self.right / "tree" / "locked").exists())
            user.delete("tree")
            user.go(1)
            user.put("copy", "locked", to=2, built_in=built_in)
            user.wait_nothing()
            self.assertEqual(names(self.right), [])
            user.go(1)
        self.check_alive(user)

    def test_aPipeHoldsNothingUp(self):
        user = self.make()
        quarn.make_file(self.left / "tree" / "file", b"f")
        os.mkfifo(self.left / "tree" / "pipe")
        os.mkfifo(self.left / "pipe")
        user.program.start()
        user.put("copy", "pipe", to=2)
        user.go(1)
        self.copy_built_in(user, "tree")
        user.wait_nothing()
        self.assertEqual(names(self.right / "tree"), ["file"])
        self.assertTrue((self.right / "pipe").is_fifo())
        (self.right / "pipe").unlink()
        user.go(1)
        # The built-in way copies plain files, and of others makes nothing.
        self.copy_built_in(user, "pipe")
        user.wait_nothing()
        self.assertEqual(names(self.right), ["tree"])
        user.highlight("tree")
        user.command("properties")
        user.dismiss()
        self.check_alive(user)

    def test_aFolderCopiedIntoItsOwnSubfolderEnds(self):
        user = self.make()
        quarn.make_file(self.left / "tree" / "sub" / "file", b"f")
        user.program.settings["Start_path_tab2"] = self.left / "tree" / "sub"
        user.program.write_settings()
        user.folders[2] = self.left / "tree" / "sub"
        user.program.start()
        for command, built_in, answers in (("copy", True, []), ("copy", False, [True]),
                                           ("move", False, [True, True])):
            user.put(command, "tree", to=2, built_in=built_in, answers=answers)
            user.wait_nothing()
            self.assertEqual((self.left / "tree" / "sub" / "file").read_bytes(), b"f")
            user.go(1)
        self.check_alive(user)

    def test_linksThatGoRoundEndTheWalk(self):
        user = self.make()
        quarn.make_file(self.left / "tree" / "sub" / "file", b"f")
        (self.left / "tree" / "sub" / "up").symlink_to("..")
        (self.left / "tree" / "self").symlink_to("self")
        user.program.start()
        self.copy_built_in(user, "tree")
        user.wait_nothing()
        self.assertEqual((self.right / "tree" / "sub" / "file").read_bytes(), b"f")
        self.check_alive(user)


class TestVanishing(operations.OwnProgramCase):
    """Entries that go while a question about them is open."""

    def ask(self, user, command, name):
        if command == "delete":
            user.highlight(name)
            user.command("delete")
        else:
            user.pick(command, name)
            user.go(2)
            user.command("paste")
        user.wait_question()

    def test_aFileOrFolderToBeDeleted(self):
        user = self.make()
        quarn.make_file(self.left / "file")
        quarn.make_file(self.left / "folder" / "inside")
        user.program.start()
        for name in ("file", "folder"):
            self.ask(user, "delete", name)
            operations.Case.remove(self.left / name)
            user.answer(True)
            user.dismiss()
            self.check_alive(user)

    def test_theSourceOfACopyOrMove(self):
        user = self.make()
        user.program.start()
        for command in ("copy", "move"):
            quarn.make_file(self.left / "file", b"new")
            quarn.make_file(self.right / "file", b"old")
            user.relist()
            self.ask(user, command, "file")
            (self.left / "file").unlink()
            with user.watching(2):
                user.answer(True)
                if command == "move":
                    user.answer(True)
            # There is nothing to take its place.
            self.assertEqual(names(self.right), ["file"])
            user.dismiss()
            user.wait_nothing()
            user.go(1)
        self.check_alive(user)

    def test_theTargetOfACopyOrMove(self):
        user = self.make()
        user.program.start()
        for command, left in (("copy", ["file"]), ("move", [])):
            quarn.make_file(self.left / "file", b"new")
            quarn.make_file(self.right / "file", b"old")
            user.relist()
            self.ask(user, command, "file")
            (self.right / "file").unlink()
            with user.watching(2):
                user.answer(True)
            user.wait_nothing()
            self.assertEqual((self.right / "file").read_bytes(), b"new")
            self.assertEqual(names(self.left), left)
            (self.right / "file").unlink()
            user.go(1)
        self.check_alive(user)

    def test_theFolderThatIsShown(self):
        user = self.make()
        quarn.make_file(self.left / "file", b"new")
        quarn.make_file(self.right / "file", b"old")
        user.program.start()
        self.ask(user, "copy", "file")
        operations.Case.remove(self.right)
        user.answer(True)
        user.dismiss()
        # cp would make a file of the folder's name.
        self.assertEqual(names(self.desk), ["left"])
        self.assertEqual((self.left / "file").read_bytes(), b"new")
        user.program.key("folderup")
        user.program.wait_for_listing(f"{self.right}/..")

    def test_theEntryOrFolderOfADialog(self):
        user = self.make()
        quarn.make_file(self.left / "file", b"new")
        user.program.start()
        user.highlight("file")
        user.command("rename")
        user.type("new name")
        (self.left / "file").unlink()
        user.confirm()
        user.dismiss()
        user.command("new folder")
        user.type("new")
        operations.Case.remove(self.left)
        user.confirm()
        user.dismiss()
        self.assertEqual(names(self.desk), ["right"])


if __name__ == "__main__":
    quarn.main()
