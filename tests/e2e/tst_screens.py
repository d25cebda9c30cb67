#!/usr/bin/python3
"""Displays and windows of every size: the scale that fits, sharp, in the middle, and usable there."""

import re

import quarn

DISPLAYS = ((240, 320), (320, 240), (480, 640), (640, 480), (720, 1440), (800, 600), (1920, 1080))


def crop_screen(picture):
    """The screen without what is around it."""
    left, top, scale = quarn.screen_in(picture.size)
    return picture.crop((left, top, left + int(quarn.WIDTH * scale),
                         top + int(quarn.HEIGHT * scale)))


def share_apart(one, other):
    """The share of pixels that are clearly not the same."""
    pairs = zip(one.convert("L").tobytes(), other.convert("L").tobytes())
    return sum(abs(a - b) > 64 for a, b in pairs) / (one.width * one.height)


class ScreenCase(quarn.Case):
    def filled(self, display, **options):
        """A program with some files, not started, on a display."""
        program = quarn.Program(display, **options)
        self.addCleanup(program.stop)
        quarn.make_folder(program.home / "Documents")
        quarn.make_file(program.home / "README.txt", b"x" * 3000)
        quarn.make_file(program.home / "song.mp3", b"x" * 3000)
        return program

    def new_display(self, *size, **options):
        display = quarn.Display(*size, **options)
        self.addCleanup(display.stop)
        return display

    def native(self, scale, *keys):
        """What the toolkit draws at a scale that it is told at the start, after these keys. At less
        than one it leaves parts out: there many pixels are made few."""
        if scale < 1:
            size = int(quarn.WIDTH * scale), int(quarn.HEIGHT * scale)
            return self.native(3, *keys).resize(size, resample=4)
        program = self.filled(self.new_display(1500, 1940))
        program.start(QUARN_SCALE=str(scale))
        program.key(*keys)
        program.wait_idle()
        picture = program.wait_stable()
        program.stop()
        return picture

    def assertSharp(self, picture, native):
        """As sharp as the toolkit's own: a picture that was made larger or smaller is not."""
        self.assertEqual(picture.size, native.size)
        limit = 0.004 if picture.width >= quarn.WIDTH else 0.03
        self.assertLess(share_apart(picture, native), limit)
        if picture.width > quarn.WIDTH:
            small = native.resize((quarn.WIDTH, quarn.HEIGHT), resample=2)
            blurred = small.resize(native.size, resample=2)
            self.assertGreater(share_apart(blurred, native), 0.008)

    def assertSitsInTheMiddle(self, picture):
        left, top, scale = quarn.screen_in(picture.size)
        for box in ((0, 0, left, picture.height), (0, 0, picture.width, top),
                    (left + int(quarn.WIDTH * scale), 0, picture.width, picture.height),
                    (0, top + int(quarn.HEIGHT * scale), picture.width, picture.height)):
            if box[0] < box[2] and box[1] < box[3]:
                self.assertEqual(picture.crop(box).getcolors(), [((box[2] - box[0]) *
                                                                  (box[3] - box[1]), (0, 0, 0))])
        # The list reaches from edge to edge.
        row = top + int(200 * scale)
        for x in (left, left + int(quarn.WIDTH * scale) - 1):
            self.assertEqual(picture.getpixel((x, row)), (255, 255, 255))


class TestWithoutManager(ScreenCase):
    def test_theDisplayIsFilledSharplyAndInTheMiddle(self):
        natives = {}
        for size in DISPLAYS:
            with self.subTest(size):
                program = self.filled(self.new_display(*size)).start(QUARN_SCALE=None)
                program.wait_idle()
                picture = program.wait_stable()
                self.assertEqual(program.rectangle(), (0, 0, *size))
                scale = quarn.screen_in(size)[2]
                if scale not in natives:
                    natives[scale] = self.native(scale)
                self.assertSitsInTheMiddle(picture)
                self.assertSharp(crop_screen(picture), natives[scale])
                program.stop()

    def test_aTapHitsTheRowUnderIt(self):
        for size in ((320, 240), (640, 480), (1920, 1080)):
            with self.subTest(size):
                program = self.filled(self.new_display(*size)).start(QUARN_SCALE=None)
                left, top, scale = quarn.screen_in(size)
                program.click(left + int(80 * scale), top + int(90 * scale))
                program.wait_idle()
                if str(program.home / "Documents") not in program.listings(program.mark):
                    program.key("select")
                program.wait_for_listing(program.home / "Documents")
                program.stop()

    def test_tapsBesideTheScreenDoNothing(self):
        program = self.filled(self.new_display(640, 480)).start(QUARN_SCALE=None)
        before = program.wait_stable()
        for point in ((40, 470), (600, 470), (10, 200), (630, 200)):
            program.click(*point)
        program.wait_idle()
        self.assertEqual(program.wait_stable().tobytes(), before.tobytes())

    def test_whatChangesIsDrawnAsSharply(self):
        program = self.filled(self.new_display(640, 480)).start(QUARN_SCALE=None)
        before = program.wait_stable()
        program.key("down", "down")
        program.wait_idle()
        moved = program.wait_stable()
        self.assertSharp(crop_screen(moved), self.native(1.5, "down", "down"))
        program.key("softleft")
        program.wait_idle()
        menu = program.wait_change(moved)
        self.assertSharp(crop_screen(menu), self.native(1.5, "down", "down", "softleft"))
        program.key("softright")
        self.assertEqual(program.wait_change(menu).tobytes(), moved.tobytes())
        program.key("up", "up")
        self.assertEqual(program.wait_change(moved).tobytes(), before.tobytes())

    def test_aLongListScrollsAndComesBack(self):
        program = self.filled(self.new_display(640, 480))
        for number in range(40):
            quarn.make_file(program.home / f"file{number:02}", b"x")
        program.start(QUARN_SCALE=None)
        before = program.wait_stable()
        program.key(*["down"] * 20)
        program.wait_idle()
        down = program.wait_stable()
        self.assertGreater(share_apart(down, before), 0.01)
        program.key(*["up"] * 20)
        self.assertEqual(program.wait_change(down).tobytes(), before.tobytes())

    def test_hidingAndShowingKeepsTheSize(self):
        program = self.filled(self.new_display(640, 480)).start(QUARN_SCALE=None)
        before = program.wait_stable()
        program.key("hide")
        program.wait_hidden()
        self.assertEqual(program.start_again()[0], 0)
        program.wait_shown()
        self.assertEqual(program.wait_stable().tobytes(), before.tobytes())


    def test_aScaleBelowOneThatIsSetShowsAllOfTheScreen(self):
        program = self.filled(self.new_display(300, 400)).start(QUARN_SCALE="0.75")
        self.assertEqual(program.rectangle()[2:], (180, 240))
        program.key("down", "down")
        program.wait_idle()
        before = program.wait_stable()
        self.assertSharp(before, self.native(0.75, "down", "down"))
        program.click(60, 63)
        program.wait_idle()
        tapped = program.wait_change(before)
        self.assertSharp(tapped, self.native(0.75, "down"))
        program.with_modifier("hide")
        question = program.wait_change(tapped)
        # The box is there up to the ground of its answers, from side to side.
        self.assertEqual([question.getpixel((x, 152)) for x in (10, 90, 170)], [(0, 0, 0)] * 3)
        program.key("softright")
        self.assertEqual(program.wait_change(question).tobytes(), tapped.tobytes())


class TestDesktop(ScreenCase):
    display_options = {"width": 1920, "height": 1080, "window_manager": True}

    def test_theFirstWindowHasTheLargestWholeScaleInTwoThirds(self):
        for display, size in (((1920, 1080), (480, 640)), ((800, 600), (240, 320))):
            self.assertFirstWindow(display, size)

    def test_theFirstWindowIsNoWiderThanANarrowDisplay(self):
        for display, size in (((200, 700), (180, 240)), ((310, 1200), (300, 400))):
            self.assertFirstWindow(display, size)

    def assertFirstWindow(self, display, size):
        with self.subTest(display):
            program = self.filled(self.new_display(*display, window_manager=True))
            program.start(QUARN_SCALE=None)
            self.assertEqual(program.rectangle()[2:], size)
            program.stop()

    def test_theSmallestWindowIsThreeQuartersOfTheScreen(self):
        program = self.filled(self.display).start(QUARN_SCALE=None)
        hints = self.display.run("xprop", "-id", str(program.window()), "WM_NORMAL_HINTS")
        self.assertEqual(re.findall(r"minimum size: (\d+) by (\d+)", hints), [("180", "240")])

    def test_aResizedWindowIsFollowed(self):
        program = self.filled(self.display).start(QUARN_SCALE=None)
        program.wait_stable()
        for size in ((300, 400), (1000, 250), (500, 700), (200, 260), (240, 320), (720, 960)):
            with self.subTest(size):
                self.resized(program, size)
                picture = program.wait_stable()
                self.assertSitsInTheMiddle(picture)
                self.assertSharp(crop_screen(picture), self.native(quarn.screen_in(size)[2]))

    def test_whatIsOpenIsDrawnAnewAtTheNewScale(self):
        program = self.filled(self.display).start(QUARN_SCALE=None)
        before = program.wait_stable()
        program.with_modifier("hide")
        question = program.wait_change(before)
        self.assertTrue(program.shows_box())
        self.resized(program, (960, 1280 - 280))
        self.resized(program, (480, 640))
        program.wait_idle()
        self.assertEqual(program.wait_stable().tobytes(), question.tobytes())
        program.key("softright")
        self.assertEqual(program.wait_change(question).tobytes(), before.tobytes())

    def test_hidingAndShowingKeepsTheSize(self):
        program = self.filled(self.display).start(QUARN_SCALE=None)
        program.wait_stable()
        self.resized(program, (360, 500))
        program.key("hide")
        program.wait_hidden()
        self.assertEqual(program.start_again()[0], 0)
        program.wait_shown()
        quarn.wait_until(lambda: program.rectangle()[2:] == (360, 500), "the size")

    def test_aPluginOpensAtTheSameScale(self):
        program = self.filled(self.display).start(QUARN_SCALE=None)
        program.wait_stable()
        self.resized(program, (600, 800))
        wanted = program.rectangle()
        program.key("down", "down", "select")
        client = self.display.client
        quarn.wait_until(lambda: client.windows("TextView"), "the text viewer")
        viewer = client.windows("TextView")[0]
        quarn.wait_until(lambda: client.place(viewer) == wanted,
                         lambda: f"{client.place(viewer)} to be {wanted}")
        quarn.wait_until(lambda: client.active() == viewer, "the viewer to have the keyboard")
        program.key("softright")
        quarn.wait_until(lambda: not client.windows("TextView"), "the viewer to end")

    def resized(self, program, size):
        self.display.client.resize(program.window(), *size)
        quarn.wait_until(lambda: program.rectangle()[2:] == size, f"the size {size}")
        program.wait_idle()


if __name__ == "__main__":
    quarn.main()
