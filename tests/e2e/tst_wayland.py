#!/usr/bin/python3
"""The start on Wayland: the first listing in a window of the right size, and full screen with keys."""

import quarn
import wayland


class TestWayland(quarn.Case):
    display_options = {"width": 480, "height": 700}

    def compositor(self, *arguments):
        compositor = wayland.Compositor(self.display.environment(), *arguments)
        self.addCleanup(compositor.stop)
        return compositor

    def started(self, compositor):
        program = self.program()
        quarn.make_folder(program.home / "Documents")
        program.start(wait=False, QUARN_SCALE=None, **compositor.environment())
        quarn.wait_until(lambda: len(program.listings()) >= 2 or not program.is_running(),
                         program.describe)
        return program

    def test_theFirstWindowHasTheLargestWholeScaleInTwoThirds(self):
        compositor = self.compositor("headless", (1024, 960))
        program = self.started(compositor)
        quarn.wait_until(lambda: wayland.accent_width(compositor.picture()) == 2 * quarn.WIDTH,
                         lambda: f"a window, in {program.lines}")
        self.assertTrue(program.is_running())

    def test_fullScreenItLiesInTheMiddleAndTakesKeys(self):
        size = 480, 700
        compositor = self.compositor("x11", size, "--shell=kiosk-shell.so")
        program = self.started(compositor)

        def lies_in_the_middle():
            picture = compositor.picture()
            bars = (picture.crop((0, 0, 480, 30)), picture.crop((0, 670, 480, 700)))
            return (wayland.accent_width(picture) == 480
                    and all(bar.getbbox() is None for bar in bars)
                    and picture.getpixel((1, 600)) == (255, 255, 255))
        quarn.wait_until(lies_in_the_middle, lambda: f"the screen, in {program.lines}")

        # The box at the start takes keys until it goes.
        def opened():
            if str(program.home / "Documents") in program.listings():
                return True
            program.display.client.press("Up", "Up", "Down", "Return")
            return False
        quarn.wait_until(opened, "the folder")


if __name__ == "__main__":
    quarn.main()
