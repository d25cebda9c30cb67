#!/usr/bin/python3
"""Copy, move, delete, rename, new folder and properties by keys, beside what cp, mv and rm make of
the same tree. With --renew the reference pictures are made anew: look at each of them before they
are kept."""

import os
import pathlib
import shutil
import subprocess
import sys

import operations
import quarn
from operations import LONGEST, ODD_NAMES, View, names, tree_text

RENEW = "--renew" in sys.argv


def run(*command):
    subprocess.run([os.fspath(word) for word in command], check=True)


class Case(operations.Case):
    maxDiff = None
    def check_box(self, name):
        """The box that is shown looks like reference/box_NAME.png."""
        self.user.wait_message()
        top, bottom = self.user.box()
        part = (operations.BOX_LEFT, top, operations.BOX_LEFT + 220, bottom)
        View(self.user.program, part=part).check(f"box_{name}", RENEW)

    def check_message(self, name):
        self.check_box(name)
        self.user.dismiss()


class TestCopying(Case):
    def test_theShellCopiesATreeAsCpDoes(self):
        twin = self.twin()
        self.user.put("copy", "tree", to=2)
        expected = self.desk / "expected"
        run("cp", "-R", twin, expected)
        self.assertEqual(tree_text(self.right / "tree"), tree_text(expected))
        self.assertEqual(tree_text(self.left / "tree"), tree_text(twin))

    def test_copiesFromTheSecondPanelToTheFirst(self):
        operations.make_variety(self.right / "tree")
        self.user.relist()
        self.user.go(2)
        self.user.put("copy", "tree", to=1)
        run("cp", "-R", self.right / "tree", self.desk / "expected")
        self.assertEqual(tree_text(self.left / "tree"), tree_text(self.desk / "expected"))

    def test_copiesSeveralEntriesWithOddNames(self):
        for name in ODD_NAMES:
            quarn.make_file(self.left / name, name.encode())
        self.user.relist()
        self.user.put("copy", *ODD_NAMES, to=2)
        self.assertEqual(tree_text(self.right), tree_text(self.left))
        self.assertEqual(names(self.right), sorted(ODD_NAMES))

    def test_theBuiltInWayCopiesPlainFilesAlone(self):
        twin = self.twin()
        self.user.put("copy", "tree", to=2, built_in=True)
        expected = self.built_in_copy(twin, self.desk / "expected")
        self.assertEqual(tree_text(self.right / "tree"), tree_text(expected))

    @staticmethod
    def built_in_copy(source, target):
        """Visible files, through links too, with the mode of new ones; folders only for files."""
        target.mkdir()
        for folder, folders, files in os.walk(source, followlinks=True):
            folders[:] = [name for name in folders if not name.startswith(".")]
            for name in files:
                path = pathlib.Path(folder, name)
                if path.is_file() and not name.startswith("."):
                    copy = target / path.relative_to(source)
                    copy.parent.mkdir(parents=True, exist_ok=True)
                    copy.write_bytes(path.read_bytes())
        return target

    def test_theBuiltInWayCopiesSeveralFilesWithOddNames(self):
        odd = [*ODD_NAMES, 'say "hi"', "$(touch x) `touch y`", "back\\slash"]
        for name in odd:
            quarn.make_file(self.left / name, name.encode())
        self.user.relist()
        self.user.put("copy", *odd, to=2, built_in=True)
        self.assertEqual(tree_text(self.right), tree_text(self.left))

    def test_theBuiltInWayLeavesFoldersWithoutFilesToTheShell(self):
        (self.left / "void" / "deep" / "deeper").mkdir(parents=True)
        (self.left / "void" / "link").symlink_to("nowhere")
        self.user.relist()
        self.user.put("copy", "void", to=2, built_in=True)
        # The folder is made before the shell is called, which so copies into it.
        self.assertEqual(tree_text(self.right / "void"), tree_text(self.left / "void"))

    def test_filesOfAllSizesAroundABlockAreCopiedWhole(self):
        sizes = [0, 1, 524287, 524288, 524289, 1048576, 1500000]
        for size in sizes:
            quarn.make_file(self.left / f"{size:07}", os.urandom(size))
        self.user.relist()
        self.user.put("copy", *[f"{size:07}" for size in sizes], to=2, built_in=True)
        self.assertEqual(tree_text(self.right), tree_text(self.left))

    def test_quotesReachTheShellAsTheyAre(self):
        self.fill(**{'say "hi"': b"with", "say hi": b"without", "$(touch run)x": b"never"})
        self.user.put("copy", 'say "hi"', to=2)
        self.assertEqual(tree_text(self.right / "say hi"), tree_text(self.left / "say hi"))
        self.assertEqual(names(self.right), ["say hi"])
        self.user.go(1)
        # The shell makes the file in the folder in which the program was started.
        self.user.put("copy", '$(touch run)x', to=2)
        self.assertEqual(names(self.right), ["say hi"])
        self.assertTrue((self.program_.base / "started" / "run").exists())

    def test_anEntryInTheWayIsReplacedAfterAQuestion(self):
        self.twin(lambda tree: quarn.make_file(tree / "new"))
        quarn.make_file(self.right / "tree" / "old")
        self.user.relist()
        self.user.put("copy", "tree", to=2, answers=[False])
        self.assertEqual(names(self.right / "tree"), ["old"])
        self.user.go(1)
        self.user.put("copy", "tree", to=2, answers=[True])
        self.assertEqual(names(self.right / "tree"), ["new"])

    def test_eachEntryInTheWayIsAskedAbout(self):
        self.fill(a=b"new a", b=b"new b", c=b"new c", d=b"new d")
        for name in "acd":
            quarn.make_file(self.right / name, b"old")
        self.user.relist()
        self.user.put("copy", *"abcd", to=2, answers=[True, False, True])
        contents = {path.name: path.read_bytes() for path in self.right.iterdir()}
        self.assertEqual(contents, {"a": b"new a", "b": b"new b", "c": b"old", "d": b"new d"})

    def test_aFileCopiedOntoItselfIsLost(self):
        self.fill(file=b"content")
        self.user.put("copy", "file", to=1, answers=[False])
        self.assertEqual(names(self.left), ["file"])
        self.user.put("copy", "file", to=1, answers=[True])
        self.assertEqual(names(self.left), [])

    def test_aFolderIsNotCopiedIntoItself(self):
        quarn.make_file(self.left / "folder" / "inside", b"i")
        self.user.relist()
        before = tree_text(self.left)
        for command in ("copy", "move"):
            self.user.pick(command, "folder")
            self.program_.key("select")
            self.program_.wait_for_listing(self.left / "folder")
            self.user.command("paste")
            self.check_message(f"no_{command}_into_itself")
            self.assertEqual(tree_text(self.left), before)
            self.program_.key("folderup")
            self.program_.wait_for_listing(f"{self.left}/folder/..")

    def test_whatIsInTheWayAndCannotGoRefusesTheCopy(self):
        # Without the folder's name the file manager asks to delete nothing else.
        self.fill(**{'a"b': b"content"})
        quarn.make_folder(self.right / 'a"b')
        self.user.relist()
        for command, questions in (("copy", [True]), ("move", [True, True])):
            self.user.put(command, 'a"b', to=2, answers=questions)
            self.check_message(f"no_{command}_into_itself")
            self.assertEqual(tree_text(self.right / 'a"b').keys(), {"."})
            self.assertEqual((self.left / 'a"b').read_bytes(), b"content")
            self.user.go(1)

    def test_pasteIsThereOnlyAfterCopyOrMove(self):
        self.fill(file=b"content")
        self.user.put("copy", "file", to=2)
        before = self.program_.wait_stable()
        (self.right / "file").unlink()
        self.user.command("paste")  # the item is switched off, so the menus stay
        self.program_.wait_change(before)
        self.assertEqual(names(self.right), [])
        self.program_.key("softright", "softright")
        quarn.wait_until(lambda: self.program_.screenshot().tobytes() == before.tobytes(),
                         "the menus to go")


class TestMovingByMv(Case):
    def moved(self, *entries, to, answers):
        self.user.put("move", *entries, to=to, answers=answers)
        self.user.wait_nothing()

    def test_movesATreeAsItIs(self):
        twin = self.twin()
        self.moved("tree", to=2, answers=[True])
        self.assertEqual(tree_text(self.right / "tree", times=True), tree_text(twin, times=True))
        self.assertEqual(names(self.left), [])

    def test_movesFromTheSecondPanelToTheFirst(self):
        operations.make_variety(self.right / "tree")
        operations.make_variety(self.desk / "twin")
        self.user.relist()
        self.user.go(2)
        self.moved("tree", to=1, answers=[True])
        self.assertEqual(tree_text(self.left / "tree", times=True),
                         tree_text(self.desk / "twin", times=True))
        self.assertEqual(names(self.right), [])

    def test_movesSeveralEntriesWithOddNames(self):
        for folder in (self.left, self.desk / "twin"):
            for name in ODD_NAMES:
                quarn.make_file(folder / name, name.encode())
        self.user.relist()
        self.moved(*ODD_NAMES, to=2, answers=[True] * len(ODD_NAMES))
        for name in ODD_NAMES:
            self.assertEqual(tree_text(self.right / name, times=True),
                             tree_text(self.desk / "twin" / name, times=True), name)
        self.assertEqual(names(self.left), [])

    def test_eachEntryIsAskedAbout(self):
        self.fill(a=b"new a", b=b"new b", c=b"new c", d=b"new d")
        for name in "bcd":
            quarn.make_file(self.right / name, b"old")
        self.user.relist()
        # a: moved; b: not to be moved; c: to be moved but not to replace; d: replaced.
        self.moved(*"abcd", to=2, answers=[True, False, True, False, True, True])
        contents = {path.name: path.read_bytes() for path in self.right.iterdir()}
        self.assertEqual(contents, {"a": b"new a", "b": b"old", "c": b"old", "d": b"new d"})
        self.assertEqual(names(self.left), ["b", "c"])

    def test_aFileMovedOntoItselfIsLost(self):
        self.fill(file=b"content")
        self.moved("file", to=1, answers=[True, True])
        self.assertEqual(names(self.left), [])

    def test_theLastOfCopyAndMoveCounts(self):
        self.fill(file=b"content")
        for first, second, left in (("move", "copy", ["file"]), ("copy", "move", [])):
            self.user.pick(first, "file")
            self.moved_or_copied(second)
            self.assertEqual(names(self.left), left)
            self.assertEqual(names(self.right), ["file"])
            (self.right / "file").unlink()
            self.user.go(1)

    def moved_or_copied(self, command):
        self.user.put(command, "file", to=2, answers=[True] if command == "move" else [])


class TestMovingByTheHelper(TestMovingByMv):
    """The same with bin/sys_gui."""

    @classmethod
    def prepare(cls, program):
        helper = pathlib.Path(os.environ["QUARN_SYS_GUI"])
        shutil.copy(helper, program.stage / "bin" / "called")
        script = program.stage / "bin" / "sys_gui"
        script.write_text('#!/bin/sh\nprintf "%s\\n" "$@" >> "$HOME/arguments"\n'
                          'exec "${0%/*}/called" "$@"\n')
        script.chmod(0o755)

    def test_theHelperIsToldWhatToShow(self):
        self.fill(file=b"content")
        told = self.program_.home / "arguments"
        told.unlink(missing_ok=True)
        self.moved("file", to=2, answers=[True])
        self.assertEqual(told.read_text().splitlines(),
                         ["mv", str(self.left / "file"), str(self.right), "Moving",
                          "Please wait..", f"{self.program_.stage}/res/img/copy.png"])


class TestDeleting(Case):
    def test_deletesATreeAsRmDoes(self):
        self.twin()
        quarn.make_file(self.left / "other", b"stays")
        self.user.relist()
        self.user.delete("tree")
        self.assertEqual(names(self.left), ["other"])

    def test_aFileAnsweredNoStays(self):
        self.fill(file=b"content")
        self.user.delete("file", answers=[False])
        self.assertEqual(names(self.left), ["file"])
        self.user.delete("file")
        self.assertEqual(names(self.left), [])

    def test_eachOfSeveralIsAskedAbout(self):
        self.fill(a=b"", b=b"", c=b"")
        quarn.make_file(self.left / "folder" / "inside")
        self.user.relist()
        self.user.delete("a", "b", "c", "folder", answers=[True, True, False, True])
        self.assertEqual(names(self.left), ["b"])

    def test_deletesEntriesWithOddNames(self):
        odd = [*ODD_NAMES, 'say "hi"', "$(touch x)", "back\\slash"]
        for name in odd:
            quarn.make_file(self.left / name)
        for name in ODD_NAMES:
            if name != LONGEST:
                quarn.make_file(self.left / f"{name} folder" / "inside")
        self.user.relist()
        self.user.delete(*names(self.left))
        self.assertEqual(names(self.left), [])

    def test_aLinkGoesAndWhatItLeadsToStays(self):
        quarn.make_file(self.right / "folder" / "inside")
        quarn.make_file(self.right / "file")
        (self.left / "to a folder").symlink_to(self.right / "folder")
        (self.left / "to a file").symlink_to(self.right / "file")
        before = tree_text(self.right)
        self.user.relist()
        self.user.delete("to a folder", "to a file")
        self.assertEqual(names(self.left), [])
        self.assertEqual(tree_text(self.right), before)

    def test_whatIsNeitherFileNorFolderIsPassedOver(self):
        self.fill(file=b"")
        (self.left / "broken").symlink_to("nowhere")
        os.mkfifo(self.left / "a pipe")
        self.user.relist()
        self.user.delete("broken", "a pipe", "file", answers=[True])
        self.assertEqual(names(self.left), ["a pipe", "broken"])

    def test_aFolderWhoseNameTheShellCannotReadIsReported(self):
        quarn.make_file(self.left / 'a"b' / "inside")
        self.user.relist()
        before = tree_text(self.left)
        self.user.highlight('a"b')
        self.user.command("delete")
        self.user.answer(True)
        self.check_message("not_deleted")
        self.assertEqual(tree_text(self.left), before)


class TestNaming(Case):
    def rename(self, name, text, yes=True):
        self.user.highlight(name)
        self.user.command("rename")
        if text is not None:
            self.user.type(text)
        self.user.confirm(yes)

    def test_renamesWhatIsHighlighted(self):
        self.fill(old=b"content")
        with self.user.watching(2):
            self.rename("old", "A new name (1).txt")
        self.assertEqual(names(self.left), ["A new name (1).txt"])
        with self.user.watching(2):
            self.rename("A new name (1).txt", "no", yes=False)
            self.rename("A new name (1).txt", "-rf")
        self.assertEqual(names(self.left), ["-rf"])

    def test_theNameCanBeAddedTo(self):
        for name in ("Ünïcödé пример", 'quo"te % %1', LONGEST[:-2]):
            with self.subTest(name):
                self.empty()
                quarn.make_file(self.left / name, b"c")
                self.user.relist()
                self.user.highlight(name)
                self.user.command("rename")
                quarn.wait_until(self.user.is_typing, "the dialog")
                with self.user.watching(2):
                    self.user.press("End", "x", "BackSpace", "y")
                    self.user.confirm()
                self.assertEqual(names(self.left), [f"{name}y"])

    def test_aNameCanBeCopiedAndPasted(self):
        self.fill(first=b"1", second=b"2")
        self.user.highlight("first")
        self.user.command("rename")
        quarn.wait_until(self.user.is_typing, "the dialog")
        self.program_.key("modifier", "select")  # copies what is selected: all of it
        self.user.confirm(False)
        self.user.highlight("second")
        self.user.command("rename")
        quarn.wait_until(self.user.is_typing, "the dialog")
        with self.user.watching(2):
            self.user.press("Home")
            self.program_.key("modifier", "down", "select")
            self.user.confirm()
        self.assertEqual(names(self.left), ["first", "firstsecond"])

    def test_aNameThatIsTakenIsRefused(self):
        self.fill(old=b"old", taken=b"taken")
        before = tree_text(self.left)
        for text in (None, "taken", "", ".", "../left"):
            with self.subTest(text):
                self.rename("old", text)
                self.check_message("name_taken")
                self.assertEqual(tree_text(self.left), before)

    def test_aNameWithAFolderInItMoves(self):
        self.fill(old=b"old")
        quarn.make_folder(self.left / "folder")
        self.user.relist()
        with self.user.watching(2):
            self.rename("old", "folder/new")
        self.assertEqual(names(self.left / "folder"), ["new"])
        self.assertEqual(names(self.left), ["folder"])

    def test_aNameThatTheSystemRefusesIsReported(self):
        self.fill(old=b"old")
        for text in ("no folder/new", "n" * 256):
            self.rename("old", text)
            self.check_message("not_renamed")
            self.assertEqual(names(self.left), ["old"])

    def make(self, text, yes=True):
        self.user.command("new folder")
        if text is not None:
            self.user.type(text)
        self.user.confirm(yes)

    def test_makesFolders(self):
        wanted = ["a folder", "-p", "it's 100%", "$HOME", "n" * 255]
        self.user.relist()
        for name in wanted:
            with self.user.watching(1):
                self.make(name)
        # A name that begins with a slash is one in the folder that is shown all the same.
        with self.user.watching(1):
            self.make("/tmp")
        self.assertEqual(names(self.left), sorted([*wanted, "tmp"]))
        modes = {oct(path.stat().st_mode) for path in self.left.iterdir()}
        (self.desk / "folder").mkdir()
        self.assertEqual(modes, {oct((self.desk / "folder").stat().st_mode)})

    def test_noNameMakesNothing(self):
        self.user.relist()
        self.make(None)
        self.user.wait_nothing()
        self.make("name", yes=False)
        self.user.wait_nothing()
        self.assertEqual(names(self.left), [])

    def test_aFolderThatCannotBeMadeIsReported(self):
        self.fill(taken=b"")
        quarn.make_folder(self.left / "folder")
        self.user.relist()
        for text in ("taken", "folder", ".", "n" * 256, "no/folder"):
            with self.subTest(text):
                self.make(text)
                self.check_message("folder_not_made")
                self.assertEqual(names(self.left), ["folder", "taken"])


class TestPictures(Case):
    """What a command shows while it asks or works. The folder's number in paths is left out."""

    @classmethod
    def prepare(cls, program):
        cls.gates = operations.make_tools_wait(program)
        cls.blocks = operations.inject_faults(
            program, f"read hold 0 {program.desk}/left/Video.mpg")

    def setUp(self):
        super().setUp()
        quarn.make_file(self.left / "Holidays" / "2008" / "beach.jpg", b"x" * 1500000)
        quarn.make_file(self.left / "Holidays" / "list.txt", b"x" * 1025)
        quarn.make_folder(self.left / "Music")
        quarn.make_file(self.left / "Video.mpg", b"x" * 2500000)
        quarn.make_file(self.left / "notes.txt", b"x" * 1536).chmod(0o644)
        quarn.make_file(self.right / "notes.txt")
        (self.left / "link to notes").symlink_to("notes.txt")
        for path in (self.left / "Holidays", self.left / "Holidays" / "2008"):
            path.chmod(0o755)
        self.user.relist()

    def check_screen(self, name, *holes):
        View(self.user.program, *holes).check(name, RENEW)

    def test_deleteQuestion(self):
        self.user.choose("Holidays")
        self.user.command("delete")
        self.user.wait_question()
        self.check_screen("delete_folder_question", (68, 169, 65, 13))
        self.user.answer(False)
        self.user.choose("notes.txt")
        self.user.command("delete")
        self.user.wait_question()
        self.check_screen("delete_file_question", (68, 169, 65, 13))
        self.user.answer(False)

    def test_copyBox(self):
        self.gates["cp"].close()
        self.user.pick("copy", "Holidays")
        self.user.go(2)
        self.user.command("paste")
        self.gates["cp"].wait_reached()
        self.check_screen("copy_box")
        self.gates["cp"].open()
        self.user.wait_nothing()

    def test_copyBoxOfTheBuiltInWay(self):
        self.blocks.close()
        self.user.pick("copy", "Video.mpg")
        self.user.go(2)
        with self.user.modifier():
            self.user.command("paste")
            for _ in range(2):
                self.blocks.step()
        # It is about to read the third block: what it said of the second is on the display.
        self.blocks.wait_reached()
        self.check_screen("copy_box_built_in", (52, 127, 78, 13), (52, 165, 78, 13))
        self.blocks.open()
        self.user.wait_nothing()

    def test_renameDialog(self):
        # The cursor behind the name blinks.
        cursor = (64, 150, 28, 20)
        self.user.choose("notes.txt")
        self.user.command("rename")
        self.check_screen("rename_dialog", cursor)
        self.program_.key("modifier")
        self.check_screen("rename_dialog_menu", cursor)
        self.program_.key("softright")
        self.check_screen("rename_dialog", cursor)
        self.user.confirm(False)

    def test_newFolderDialog(self):
        self.user.command("new folder")
        self.check_screen("new_folder_dialog", (10, 150, 8, 20))
        self.user.type("Pictures")
        self.check_screen("new_folder_dialog_typed", (60, 150, 12, 20))
        self.user.confirm(False)

    def test_replaceQuestion(self):
        self.user.pick("copy", "notes.txt")
        self.user.go(2)
        self.user.command("paste")
        self.user.wait_question()
        self.check_screen("replace_question")
        self.user.answer(False)

    def test_moveQuestionAndBox(self):
        self.user.pick("move", "Holidays")
        self.user.go(2)
        self.user.command("paste")
        self.user.wait_question()
        self.check_screen("move_question", (88, 184, 70, 13))
        self.gates["mv"].close()
        self.program_.key("softleft")
        self.gates["mv"].wait_reached()
        self.check_screen("move_box")
        self.gates["mv"].open()
        self.user.wait_nothing()

    def test_properties(self):
        # The number, and the owner's name.
        for name, picture, number, owner in (
                ("notes.txt", "properties_of_a_file", (52, 172, 72, 13), (55, 216, 155, 18)),
                ("Holidays", "properties_of_a_folder", (52, 163, 72, 13), (55, 226, 155, 18)),
                ("link to notes", "properties_of_a_link", (52, 154, 72, 13), (55, 236, 155, 16))):
            self.user.choose(name)
            self.user.command("properties")
            self.user.wait_message()
            self.check_screen(picture, number, owner)
            self.user.dismiss()


del Case  # it is no test itself

if __name__ == "__main__":
    if RENEW:
        sys.argv.remove("--renew")
    quarn.main()
