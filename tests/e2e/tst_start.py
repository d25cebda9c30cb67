#!/usr/bin/python3
"""How the program starts: from where, with which files, in which surroundings."""

import contextlib
import os
import pathlib
import shutil

import quarn

BANNER = ["", "--------------------------", "--------Quarn 1.6---------",
          "-File manager for ROKR E2-", "-------Written by --------"]
CLOSING = ["--------------------------", ""]
READ = ["--- read lang ok", "--- read mimes ok", "--- read plugins ok", "--- read bookmarks ok"]


class TestFolders(quarn.Case):
    def test_startsFromAFolderWithBlanksQuotesAndForeignLetters(self):
        program = self.program(name="a b 'c' Träume Ордер")
        program.start()
        self.assertIn(f"{program.stage}/", program.lines)
        program.key("modifier")
        self.assertNotIn("WARNING", "".join(program.lines))

    def test_startsByARelativePath(self):
        program = self.program()
        program.start(["./quarn"], cwd=program.stage)
        self.assertEqual(program.lines[:2], ["./quarn", "./"])
        self.assertIn(str(program.home), program.listings())

    def test_startsByAPathBelowTheCurrentFolder(self):
        program = self.program()
        program.start(["work/quarn"], cwd=program.base)
        self.assertEqual(program.lines[:2], ["work/quarn", "work/"])
        self.assertIn(str(program.home), program.listings())

    def test_startsThroughThePathAndReadsTheSettingsOfTheCurrentFolder(self):
        program = self.program()
        path = f"{program.stage}:{program.environment['PATH']}"
        program.start(["env", "quarn"], cwd=program.stage, PATH=path)
        self.assertEqual(program.lines[:2], ["quarn", ""])
        self.assertIn(str(program.home), program.listings())

    def test_startsThroughThePathWithoutTheSettingsOfAnotherFolder(self):
        program = self.program()
        path = f"{program.stage}:{program.environment['PATH']}"
        program.start(["env", "quarn"], cwd=program.base, PATH=path)
        self.assertNotIn(str(program.home), program.listings())

    def test_startsThroughALinkWithTheSettingsBesideTheLink(self):
        program = self.program()
        (program.base / "bin").mkdir()
        (program.base / "bin" / "quarn").symlink_to(program.stage / "quarn")
        shutil.copy(program.stage / "fm.cfg", program.base / "bin")
        program.start([str(program.base / "bin" / "quarn")])
        self.assertIn(f"{program.base}/bin/", program.lines)
        self.assertIn(str(program.home), program.listings())

    def test_picturesAndTextsComeFromTheWorkFolderOfTheSettings(self):
        program = self.program()
        elsewhere = program.base / "elsewhere"
        shutil.copytree(program.stage / "lang", elsewhere / "lang")
        program.settings["Work_folder"] = f"{elsewhere}/"
        program.write_settings()
        program.start()
        self.assertIn(f"--- read lang file: {elsewhere}//lang/english.lang", program.lines)
        self.assertNotIn("WARNING", "".join(program.lines))


class TestSettings(quarn.Case):
    TOGETHER = 4  # programs that start at the same time: their start boxes take a second

    def test_startsWithoutSettings(self):
        program = self.program()
        (program.stage / "fm.cfg").unlink()
        program.start(cwd=program.home)
        self.assertEqual(program.listings(), ["", ""])
        self.assertIn("--- read lang file: /lang/.lang", program.lines)
        self.assertIn("WARNING: Version of lang file is 0 - please update it to 102",
                      program.lines)
        program.key("hash")
        quarn.wait_until(lambda: len(program.listings(program.mark)) == 2, program.describe)

    def test_withoutAWorkFolderPicturesComeFromBesideTheExecutable(self):
        with_folder = self.program()
        with_folder.start()
        bar = (0, 0, 240, 42)
        # The tab icons are loaded after the folder has been found.
        expected = with_folder.wait_stable().crop(bar)
        with_folder.stop()
        without = self.program(settings={"Work_folder": None})
        without.start(cwd=without.stage)
        self.assertEqual(without.wait_stable().crop(bar).tobytes(), expected.tobytes())

    def test_readsTheKeyMapBesideTheExecutable(self):
        program = self.program()
        (program.stage / "keymap.cfg").write_text("F5 = 0x1032\nnonsense\nF6 = what\n")
        program.start()
        named = [line for line in program.lines if "keymap.cfg:" in line]
        self.assertEqual(len(named), 2, named)
        self.assertIn("keymap.cfg:2", named[0])
        self.assertIn("keymap.cfg:3", named[1])
        self.display.client.press("F5")
        program.wait_for_listing(f"{program.home}/..")

    def test_theDefaultKeysAlsoWork(self):
        program = self.program()
        program.start()
        self.display.client.press("BackSpace")
        program.wait_for_listing(f"{program.home}/..")
        before = program.wait_stable()
        self.display.client.press("Menu")
        program.wait_change(before)
        menu = program.wait_stable()
        self.display.client.press("Escape")
        self.assertEqual(program.wait_change(menu).tobytes(), before.tobytes())

    def test_endlessAndBlockingConfigurationFilesDoNotHoldTheStartUp(self):
        displays = [quarn.Display() for _ in range(self.TOGETHER)]
        for display in displays:
            self.addCleanup(display.stop)
        names = ("fm.cfg", "mime_types.cfg", "fm_plugins.cfg", "bookmark.cfg", "keymap.cfg",
                     "lang/english.lang", "res/font.ttf", "fm.png", "res/img/1.png",
                     "res/img/process/3.png", "res/img/browser/1/folder.png",
                     "plugins/full_path/6/desktop.ini", "plugins/full_path/6/icon.png")
        cases = [(name, make) for name in names
                 for make in (os.mkfifo, self.link_to_zero, os.mkdir)]
        for first in range(0, len(cases), self.TOGETHER):
            self.start_with(cases[first:first + self.TOGETHER], displays)

    @staticmethod
    def link_to_zero(path):
        os.symlink("/dev/zero", path)

    def start_with(self, cases, displays):
        """Starts a program for each (name, make) on a display of its own, and gives it a key."""
        with contextlib.ExitStack() as ending:
            programs = []
            for (name, make), display in zip(cases, displays):
                program = quarn.Program(display)
                ending.callback(program.stop)
                for path in program.stage.glob(f"{pathlib.Path(name).with_suffix('')}*"):
                    if path.is_file():  # the picture for other densities too
                        path.unlink()
                make(program.stage / name)
                programs.append(program.start(cwd=program.home, wait=False))
            for (name, make), program in zip(cases, programs):
                with self.subTest(name=name, kind=make.__name__):
                    self.check_answers(program)

    @staticmethod
    def check_answers(program):
        program.wait_ready()
        program.key("hash")
        quarn.wait_until(lambda: len(program.listings(program.mark)) == 2, program.describe)

    def test_hugeConfigurationFilesDoNotHoldTheStartUp(self):
        program = self.program()
        for name in ("mime_types.cfg", "fm_plugins.cfg", "bookmark.cfg"):
            with open(program.stage / name, "wb") as file:
                file.write(b"\xff\x00 no line end" * 200000)
        program.start()
        program.key("hash")
        quarn.wait_until(lambda: len(program.listings(program.mark)) == 2, program.describe)

    def test_startsWithoutOrWithABrokenFont(self):
        for content in (None, b"", b"\x00\x01\x00\x00" + b"\xff" * 5000):
            with self.subTest(content=content and len(content)):
                program = self.program()
                font = program.stage / "res" / "font.ttf"
                font.unlink()
                if content is not None:
                    font.write_bytes(content)
                program.start()
                # Texts are still there, in the font of the system.
                bar = program.wait_stable().crop((0, 300, 120, 320))
                self.assertGreater(sum(bar.convert("L").histogram()[100:]), 30)
                program.stop()

    def test_startsWithoutAnythingButTheExecutable(self):
        program = self.program()
        for path in program.stage.iterdir():
            if path.name != "quarn":
                shutil.rmtree(path) if path.is_dir() else path.unlink()
        program.start(cwd=program.home)
        program.key("hash")
        quarn.wait_until(lambda: len(program.listings(program.mark)) == 2, program.describe)


class TestSurroundings(quarn.Case):
    def check_lines(self, **environment):
        program = self.program(second_folder="/nowhere")
        program.start(**environment)
        start = [str(program.stage / "quarn"), f"{program.stage}/"]
        lines = program.lines
        self.assertEqual(lines[:2], start)
        self.assertEqual(lines[2:7], BANNER)
        self.assertEqual([len(line) for line in lines[7:11]], [26] * 4)
        self.assertEqual(lines[11:13], CLOSING)
        self.assertEqual(lines[13:], [
            *start, f"--- read lang file: {program.stage}//lang/english.lang", *READ,
            f"fb::set path {program.home}", "fb::set path /nowhere"])

    def test_theDebugStreamIsTheSameInEveryLocale(self):
        locales = {"plain": {"LANG": "C"}, "all": {"LC_ALL": "C"}, "posix": {"LC_ALL": "POSIX"},
                   "utf8": {"LANG": "C.UTF-8"}, "none": {"LANG": None},
                   "unknown": {"LANG": "xx_YY.ISO-8859-1"},
                   "mixed": {"LANG": "C.UTF-8", "LC_CTYPE": "C"}}
        for name, variables in locales.items():
            with self.subTest(name):
                self.check_lines(**variables)

    def test_loggingRulesOfTheToolkitChangeNothing(self):
        self.check_lines(QT_LOGGING_RULES="*=false", QT_MESSAGE_PATTERN="%{time} %{message}")

    def test_foreignFileNamesAreReadInEveryLocale(self):
        for variables in ({"LC_ALL": "C"}, {"LANG": "C.UTF-8"}):
            with self.subTest(variables):
                program = self.program()
                folder = program.home / "Träume"
                quarn.make_folder(folder / "Ордер")
                program.start(**variables)
                program.key("down", "select")
                program.wait_for_listing(folder)
                program.key("down", "select")
                program.wait_for_listing(folder / "Ордер")
                program.stop()  # it would share the display with the next

    def test_startsWithoutARuntimeFolder(self):
        program = self.program()
        program.start(XDG_RUNTIME_DIR=None, TMPDIR=str(program.runtime))
        status, _ = program.start_again(XDG_RUNTIME_DIR=None, TMPDIR=str(program.runtime))
        self.assertEqual(status, 0)

    def test_startsWithStandardStreamsClosed(self):
        program = self.program()
        closed = program.spawn(["sh", "-c", 'exec "$0" <&- >&- 2>&-',
                                str(program.stage / "quarn")], quarn.ENDS_WITH_US)
        self.addCleanup(lambda: (closed.kill(), closed.wait(), closed.stderr.close()))
        program.wait_shown()
        quarn.wait_until(lambda: not program.shows_box(), "the start box to go")
        before = program.wait_stable()
        program.key("softleft")
        program.wait_change(before)
        self.assertIsNone(closed.poll())


class TestScale(quarn.Case):
    display_options = {"width": 800, "height": 1000}

    def picture(self, scale):
        program = self.program()
        quarn.make_file(program.home / "README", b"x")
        program.start(QUARN_SCALE=scale)
        return program, program.wait_stable()

    def test_oneIsTheSizeOfThePhonesScreen(self):
        program, picture = self.picture("1")
        self.assertEqual(picture.size, (240, 320))
        self.assertEqual(program.rectangle()[2:], (240, 320))

    def test_twoIsTwiceTheSizeAndCrisp(self):
        program, one = self.picture("1")
        program.stop()
        _, two = self.picture("2")
        self.assertEqual(two.size, (480, 640))
        doubled = one.resize((480, 640), resample=0)
        text = (12, 606, 120, 638)  # the label of the left soft key
        fine = two.crop(text)
        coarse = doubled.crop(text)
        self.assertNotEqual(fine.tobytes(), coarse.tobytes())
        # Drawn at that size, pairs of pixels differ within; in a doubled picture never.
        differing = sum(fine.getpixel((x, y)) != fine.getpixel((x + 1, y))
                        for x in range(0, fine.width - 1, 2) for y in range(fine.height))
        self.assertGreater(differing, 50)
        # And it shows the same: made small again it is nearly the other picture.
        small = two.resize((240, 320), resample=4)
        apart = sum(abs(a - b) for a, b in zip(small.convert("L").tobytes(),
                                               one.convert("L").tobytes()))
        self.assertLess(apart / (240 * 320), 8)

    def test_clicksHitWhatIsUnderThemAtEveryScale(self):
        for scale in ("1", "1.5", "2"):
            with self.subTest(scale):
                program, before = self.picture(scale)
                factor = float(scale)
                program.click(int(40 * factor), int(310 * factor))  # the left soft key
                program.wait_change(before)
                program.stop()

    def test_aScaleThatIsNoneIsNamedAndTakenAsNone(self):
        for scale in ("junk", "0", "-1", "1e9", "nan", ""):
            with self.subTest(scale):
                program, picture = self.picture(scale)
                self.assertEqual(picture.size, (800, 1000))  # as without one
                named = [line for line in program.lines if line.startswith("QUARN_SCALE")]
                self.assertEqual(len(named), 1, program.lines)
                self.assertTrue(named[0].endswith(scale))
                program.stop()

    def test_aScaleWithNoRoomGivesTheNextOneDown(self):
        for scale, size in (("4", (720, 960)), ("3.2", (720, 960)), ("3.1", (744, 992))):
            with self.subTest(scale):
                program, picture = self.picture(scale)
                self.assertEqual(picture.size, size)
                named = [line for line in program.lines if line.startswith("QUARN_SCALE")]
                self.assertEqual(len(named), int(size == (720, 960)), program.lines)
                program.stop()

    def test_withoutAScaleTheDisplayIsFilled(self):
        program = self.program()
        program.start(QUARN_SCALE=None)
        self.assertEqual(program.wait_stable().size, (800, 1000))


class TestLoading(quarn.Case):
    """What the first listing does not need waits until it is needed."""

    # A red pixel, in a format that takes a library to decode.
    GIF = bytes.fromhex("47494638396101000100800000ff0000ffffff2c00000000010001000002024401003b")

    @staticmethod
    def loaded(program, part):
        """The files that the program has in its memory and whose paths have that part."""
        maps = pathlib.Path("/proc", str(program.process.pid), "maps").read_text()
        paths = {line.split(maxsplit=5)[5] for line in maps.splitlines() if "/" in line}
        return [path for path in paths if part in path]

    def test_theFirstListingNeedsNoNetworkAndNoDecoders(self):
        program = self.program()
        program.start()
        self.assertTrue(self.loaded(program, "libQt6Widgets"))
        for part in ("libQt6Network", "/imageformats/", "/modules/"):
            self.assertEqual(self.loaded(program, part), [])

    def test_theFirstListingNeedsNoFontOfTheSystem(self):
        program = self.program()
        program.start()
        self.assertEqual(self.loaded(program, ".ttf"), [])

    def test_picturesOfMenusAreDecodedWhenTheyAreFirstSeen(self):
        program = self.program()
        for path in (program.stage / "res" / "img").glob("delete*.png"):
            path.unlink()
            path.write_bytes(self.GIF)
        program.start()
        self.assertEqual(self.loaded(program, "/imageformats/"), [])
        before = program.wait_stable()
        program.key("softleft")
        program.wait_change(before)
        self.assertTrue(self.loaded(program, "/imageformats/"))

    def test_thePictureOfTheThirdTabIsDecodedWhenItIsFirstSeen(self):
        program = self.program()
        for path in program.stage.glob("fm*.png"):
            path.unlink()
            path.write_bytes(self.GIF)
        program.start()
        self.assertEqual(self.loaded(program, "/imageformats/"), [])
        before = program.wait_stable()
        program.key("left")
        program.wait_change(before)
        self.assertTrue(self.loaded(program, "/imageformats/"))


if __name__ == "__main__":
    quarn.main()
