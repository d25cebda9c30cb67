#!/usr/bin/python3
"""Walking folders with keys and with the mouse, odd entries, and the programs that are started."""

import os
import random
import shutil
import subprocess

from PIL import Image

import quarn

PLAYER = """#!/bin/sh
ls -l /proc/self/fd > "$HOME/descriptors.new"
printf '%s\\n' "$0" "$@" > "$HOME/arguments"
mv "$HOME/descriptors.new" "$HOME/descriptors"
"""

# Points of the screen, in pixels.
TAB_1, TAB_2, TAB_3 = (40, 32), (120, 32), (200, 32)
SOFT_LEFT = (40, 310)


def row(number):
    """The middle of a row of the list with full information."""
    return 100, 42 + 32 * number + 16


class TestKeys(quarn.Case):
    def tree(self):
        program = self.program()
        quarn.make_folder(program.home / "a" / "b" / "c")
        quarn.make_file(program.home / "a" / "file", b"x")
        return program

    def test_threeLevelsDownAndUp(self):
        program = self.tree().start()
        folder = program.home
        for name in ("a", "b", "c"):
            folder = folder / name
            program.key("down", "select")
            program.wait_for_listing(folder)
        # The path of a listing is as it was asked for; the next one starts from where it led.
        program.key("folderup")
        program.wait_for_listing(f"{folder}/..")
        program.key("select")
        program.wait_for_listing(f"{folder.parent}/..")
        program.key("folderup")
        program.wait_for_listing(f"{folder.parent.parent}/..")
        program.key("folderup")
        program.wait_for_listing(f"{program.home}/..")

    def test_theRootHasNoWayUp(self):
        program = self.program(folder="/").start()
        for _ in range(2):
            program.key("folderup")
            program.wait_for_listing("//..")

    def test_keysOfTheOtherPanelLeaveThisOneAlone(self):
        program = self.tree()
        program.settings["Start_path_tab2"] = program.home / "a"
        program.write_settings()
        program.start()
        before = program.wait_stable()
        program.key("right", "folderup")
        program.wait_for_listing(f"{program.home}/a/..")
        program.key("left")
        quarn.wait_until(lambda: program.screenshot().tobytes() == before.tobytes(),
                         "the first panel as it was")

    def test_aKeyThatIsHeldWalksOn(self):
        program = self.program()
        for number in range(60):
            quarn.make_file(program.home / f"{number:02}")
        program.start()
        before = program.wait_stable()
        program.keydown("down")
        last = (0, 42, 235, 280)

        def at_end():
            # The last row is highlighted: held long enough, the highlight is at the bottom.
            picture = program.screenshot().crop(last)
            return picture.getpixel((230, 215)) != (255, 255, 255)

        quarn.wait_until(at_end, "the highlight to go down")
        program.keyup("down")
        self.assertNotEqual(program.wait_stable().tobytes(), before.tobytes())


class TestMouse(quarn.Case):
    def started(self):
        program = self.program()
        quarn.make_folder(program.home / "a" / "b" / "c")
        quarn.make_file(program.home / "a" / "file", b"x")
        program.settings["Start_path_tab2"] = program.home / "a"
        program.write_settings()
        program.start()
        return program, program.wait_stable()

    def enter(self, program, number, path):
        """The first click highlights a row, the next one selects it."""
        program.click(*row(number))
        program.wait_idle()
        self.assertEqual(program.listings(program.mark), [])
        program.click(*row(number))
        program.wait_for_listing(path)

    def test_rowsLeadThreeLevelsDownAndUp(self):
        program, before = self.started()
        folder = program.home
        for name in ("a", "b", "c"):
            folder = folder / name
            self.enter(program, 1, folder)
        for _ in range(3):
            program.click(100, 50)  # the back entry, which is highlighted
            program.wait_for_listing(f"{folder}/..")
            folder = folder.parent
        program.wait_idle()
        self.assertEqual(program.wait_stable().tobytes(), before.tobytes())

    def test_tabs(self):
        program, before = self.started()
        program.click(*TAB_3)
        about = program.wait_change(before)
        self.assertEqual(about.getpixel((120, 280)), (0, 0, 0))
        program.click(*TAB_2)
        second = program.wait_change(about)
        program.key("hash", "folderup")
        program.wait_for_listing(f"{program.home}/a/..")
        program.key("hash")
        program.click(*TAB_1)
        program.wait_change(second)
        program.wait_idle()
        self.assertEqual(program.wait_stable().tobytes(), before.tobytes())

    def test_softKeyAndMenuItems(self):
        program, before = self.started()
        program.click(*SOFT_LEFT)
        menu = program.wait_change(before)
        program.click(60, 166)  # the copy menu
        submenu = program.wait_change(menu)
        self.assertNotEqual(submenu.tobytes(), menu.tobytes())
        program.click(200, 60)  # beside the menus
        program.wait_change(submenu)
        program.wait_idle()
        self.assertEqual(program.wait_stable().tobytes(), before.tobytes())

    def test_marks(self):
        program, before = self.started()
        program.key("0")
        unmarked = program.wait_change(before)
        program.click(*row(1))
        program.wait_change(unmarked)
        program.wait_idle()
        self.assertEqual(program.listings(program.mark), [])
        marked = program.wait_stable()
        program.click(*row(1))
        program.wait_change(marked)

    def test_theMessageBoxGoesByAClick(self):
        program, before = self.started()
        program.key("music")
        message = program.wait_change(before)
        program.click(120, 160)
        self.assertEqual(program.wait_change(message).tobytes(), before.tobytes())

    def test_theTestBoxGoesByItsCancelKey(self):
        program, before = self.started()
        program.with_modifier("hash")
        quarn.wait_until(program.shows_box, "the box")
        top = next(y for y in range(60, 260)
                   if program.screenshot().getpixel((12, y)) == (0, 0, 0))
        program.click(120, 320 - top - 7)  # the box is in the middle, its key bar at its bottom
        quarn.wait_until(lambda: program.screenshot().tobytes() == before.tobytes(),
                         "the listing again")

    def test_theWheelScrolls(self):
        program = self.program()
        for number in range(40):
            quarn.make_file(program.home / f"{number:02}")
        program.start()
        before = program.wait_stable()
        program.click(*row(3), button=5)
        scrolled = program.wait_change(before)
        program.click(*row(3), button=4)
        self.assertEqual(program.wait_change(scrolled).tobytes(), before.tobytes())


class TestOddEntries(quarn.Case):
    def test_pipesAndDevicesNamedAsPicturesDoNotHoldTheThumbnails(self):
        program = self.program()
        folder = program.home
        for name in ("a.png", "b.jpg", "c.gif", "d.bmp"):
            os.mkfifo(folder / name)
        (folder / "e.png").symlink_to("/dev/zero")
        (folder / "f.png").symlink_to("a.png")
        (folder / "g.png").symlink_to("g.png")
        Image.new("RGB", (64, 48), (200, 0, 200)).save(folder / "h.png")
        quarn.set_day(folder / "h.png", "2009-07-01")
        program.start()
        program.key("pagedown", "pagedown")
        quarn.wait_until(lambda: (200, 0, 200) in
                         [colour for _, colour in program.screenshot().getcolors(100000)],
                         "the thumbnail of the last picture")
        program.key("hash")
        program.wait_for_listing(folder)

    def test_brokenAndHugePicturesDoNotEndTheProgram(self):
        program = self.program()
        folder = program.home
        random.seed(1)
        Image.new("1", (12000, 12000)).save(folder / "a huge one.png")
        picture = folder / "whole.png"
        Image.new("RGB", (64, 48), (1, 2, 3)).save(picture)
        whole = picture.read_bytes()
        for number in range(20):
            torn = bytearray(whole)
            torn[random.randrange(8, len(torn))] = random.randrange(256)
            (folder / f"torn {number}.png").write_bytes(torn)
            (folder / f"cut {number}.png").write_bytes(whole[:number * 8])
        (folder / "wrong.jpg").write_bytes(whole)
        (folder / "text.svg").write_text("<svg><image href='file:///dev/zero'/></svg>")
        program.start()
        program.wait_idle(calm=1)
        program.key("hash")
        program.wait_for_listing(folder)

    def test_aFolderThatCannotBeReadIsEmptyAndKeysLeadBack(self):
        program = self.program()
        locked = quarn.make_folder(program.home / "locked")
        quarn.make_file(locked / "hidden inside")
        locked.chmod(0)
        program.start(prefix=quarn.WITHOUT_ROOT_POWERS)
        before = program.wait_stable()
        program.key("down", "select")
        program.wait_for_listing(locked)
        empty = program.wait_change(before)
        area = empty.crop((0, 44, 240, 298))
        self.assertEqual(len(area.getcolors(1000)), 1, "nothing is listed")
        program.key("up", "down", "select", "pageup", "pagedown", "0", "0")
        program.wait_for_listing(program.home)
        program.key("folderup")
        program.wait_for_listing(f"{program.home}/..")

    def test_aFolderThatVanishesMeanwhile(self):
        program = self.program()
        gone = quarn.make_folder(program.home / "gone" / "deep").parent
        program.start()
        program.key("down", "select")
        program.wait_for_listing(gone)
        shutil.rmtree(gone)
        program.key("hash")
        program.wait_for_listing(gone)
        program.key("down", "down", "select", "folderup")
        program.wait_for_listing(f"{gone}/..")

    def test_namesOfEveryKindCanBeEntered(self):
        names = ["%1 %2 %%", "new\nline", "quote\"'`$(touch x)", "-rf", "  blanks  ", "*?[a]",
                 "é" * 100, "tab\there", "<b>bold<br>", "&amp;", "\\back\\"]
        program = self.program()
        for name in names:
            quarn.make_folder(program.home / name)
        program.start()
        for number, name in enumerate(sorted(names)):
            path = f"fb::set path {program.home / name}".split("\n")
            program.key(*["down"] * (number + 1), "select")
            quarn.wait_until(lambda wanted=path: all(
                line in program.lines[program.mark:] for line in wanted), program.describe)
            program.key("folderup")
            quarn.wait_until(lambda wanted=f"{path[-1]}/..":
                             wanted in program.lines[program.mark:], program.describe)


class TestStartedPrograms(quarn.Case):
    def with_player(self):
        program = self.program()
        player = program.stage / "plugins" / "LyraPlayer" / "LyraPlayer"
        player.parent.mkdir(parents=True, exist_ok=True)
        player.write_text(PLAYER)
        player.chmod(0o755)
        return program

    def test_theModifiedMusicKeyStartsThePlayerOnTheLastList(self):
        program = self.with_player().start()
        program.with_modifier("music")
        descriptors = program.home / "descriptors"
        quarn.wait_until(descriptors.exists, "the player")
        folder = f"{program.stage}//plugins/LyraPlayer"
        self.assertEqual((program.home / "arguments").read_text().splitlines(),
                         [f"{folder}/LyraPlayer", "-d", f"{folder}/TempList.m3u"])

    def test_aStartedProgramInheritsNothingButTheStandardStreams(self):
        program = self.with_player().start()
        program.with_modifier("music")
        descriptors = program.home / "descriptors"
        quarn.wait_until(descriptors.exists, "the player")
        # ls itself holds 3 for the folder that it lists.
        held = [line.split(" -> ") for line in descriptors.read_text().splitlines()
                if " -> " in line]
        foreign = [target for name, target in held
                   if name.split()[-1] not in ("0", "1", "2") and "/proc/" not in target
                   and "descriptors" not in target]
        self.assertEqual(foreign, [])
        self.assertFalse([target for _, target in held if target.startswith("socket:")])

    def test_aPlayerThatRunsOnDoesNotHoldTheProgramOrItsChannel(self):
        program = self.with_player()
        player = program.stage / "plugins" / "LyraPlayer" / "LyraPlayer"
        player.write_text("#!/bin/sh\necho $$ > \"$HOME/pid\"\nexec sleep 600 2>&-\n")
        program.start()
        program.with_modifier("music")
        noted = program.home / "pid"
        quarn.wait_until(lambda: noted.exists() and noted.read_text().strip(), "the player")
        pid = int(noted.read_text())
        try:
            program.wait_idle()  # its box, which takes keys, may still be to come
            program.list_again()
            program.with_modifier("hide")
            quarn.wait_until(program.shows_box, "the question")
            program.key("softleft")
            quarn.wait_until(lambda: program.process.poll() == 0, "the program to end")
            # The player goes on, and neither lock nor socket of the channel went with it.
            self.assertTrue(os.path.exists(f"/proc/{pid}"))
            program.start()
            self.assertTrue(program.is_running())
        finally:
            subprocess.run(["kill", str(pid)], check=False)
            quarn.wait_until(lambda: not os.path.exists(f"/proc/{pid}/exe"), "the player's end")


if __name__ == "__main__":
    quarn.main()
