#!/usr/bin/python3
"""The start on Wayland: the first listing in a window of the right size, and full screen with keys."""

import quarn
import wayland


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
