#!/usr/bin/python3
"""The start on Wayland: the first listing in a window of the right size, and full screen with keys."""

import quarn
import wayland


POINTER = 24  # pixels


def without_pointer(picture):
    """Without what is in the corner at the lower right."""
    picture.paste((0, 0, 0), (picture.width - POINTER, picture.height - POINTER, *picture.size))
    return picture


class OnWayland:
    """A program in a compositor of its own."""

    def compositor(self, *arguments):
        compositor = wayland.Compositor(self.display.environment(), *arguments)
        self.addCleanup(compositor.stop)
        return compositor

    def started(self, compositor, scale=None):
        program = self.program()
        quarn.make_folder(program.home / "Documents")
        program.start(wait=False, QUARN_SCALE=scale, **compositor.environment())
        quarn.wait_until(lambda: len(program.listings()) >= 2 or not program.is_running(),
                         program.describe)
        return program


class TestWayland(OnWayland, quarn.Case):
    display_options = {"width": 480, "height": 700}

    def test_theFirstWindowHasTheLargestWholeScaleInTwoThirds(self):
        compositor = self.compositor("headless", (1024, 960))
        program = self.started(compositor)

        def is_twice_as_large():
            screen = wayland.screen_in(compositor.picture())
            return screen is not None and screen[2] == 2
        quarn.wait_until(is_twice_as_large, program.describe)
        self.assertTrue(program.is_running())

    def test_fullScreenItLiesInTheMiddleAndTakesKeys(self):
        size = 480, 700
        compositor = self.compositor("x11", size, "--shell=kiosk-shell.so")
        program = self.started(compositor)

        def lies_in_the_middle():
            picture = compositor.picture()
            around = picture.copy()
            around.paste((0, 0, 0), (0, 30, 480, 670))
            return (wayland.screen_in(picture) == (0, 30, 2) and around.getbbox() is None
                    and not wayland.shows_box(picture))
        quarn.wait_until(lies_in_the_middle, program.describe)
        self.display.client.press("Down", "Return")
        program.wait_for_listing(program.home / "Documents")


class TestFullScreen(quarn.Case):
    """On a display of each size it looks as it does on X11 without a window manager."""

    def shown(self, size, start):
        """The picture after a step down, as `start` has it shown: a function that gives how to take one
        and the environment, of a display of its own."""
        display = quarn.Display(*size)
        self.addCleanup(display.stop)
        picture, environment = start(display)
        program = quarn.Program(display)
        self.addCleanup(program.stop)
        for name in ("Albums", "Documents"):
            quarn.make_folder(program.home / name)
        program.start(wait=False, QUARN_SCALE=None, **environment)
        quarn.wait_until(lambda: len(program.listings()) >= 2 or not program.is_running(),
                         program.describe)
        quarn.wait_until(lambda: wayland.screen_in(picture()) and not wayland.shows_box(picture()),
                         "the first listing")
        # The compositor draws the pointer.
        display.client.point(size[0] - 1, size[1] - 1)
        display.client.press("Down")
        return picture, program

    def on_x11(self, size):
        return self.shown(size, lambda display: (
            lambda: display.client.picture(0, 0, *size), {}))

    def on_wayland(self, size):
        def start(display):
            compositor = wayland.Compositor(display.environment(), "x11", size,
                                            "--shell=kiosk-shell.so")
            self.addCleanup(compositor.stop)
            return compositor.picture, compositor.environment()

        return self.shown(size, start)

    def test_everySizeLooksAsOnX11(self):
        for size in ((320, 240), (480, 640), (640, 480), (720, 1440), (800, 600), (1920, 1080)):
            with self.subTest(size):
                _, x11 = self.on_x11(size)
                expected = without_pointer(x11.wait_stable())
                self.assertEqual(wayland.screen_in(expected), quarn.screen_in(size))
                picture, program = self.on_wayland(size)
                quarn.wait_until(lambda: (without_pointer(picture()).tobytes()
                                          == expected.tobytes()), program.describe)


class TestSmallDisplay(OnWayland, quarn.Case):
    display_options = {"width": 320, "height": 240}

    def test_aScaleWithNoRoomFullScreenGivesTheNextOneDown(self):
        compositor = self.compositor("x11", (320, 240), "--shell=kiosk-shell.so")
        program = self.started(compositor, "1")
        self.assertTrue(program.is_running(), program.lines)

        def enters_a_folder():
            self.display.client.press("Down", "Return")
            return str(program.home / "Documents") in program.listings()
        quarn.wait_until(enters_a_folder, program.describe)
        self.assertTrue([line for line in program.lines if line.startswith("QUARN_SCALE")])


if __name__ == "__main__":
    quarn.main()
