#!/usr/bin/python3
"""What the program does when nobody does anything. A program in each state, on a display of its own;
their wake-ups are counted at the same time."""

import time
import unittest

import quarn

# Something else on the machine may wake a thread now and then: a moved mouse, a page fault.
STRAY_WAKE_UPS = 2
SPAN = 4        # seconds in which wake-ups are counted
LONG_SPAN = 10  # the same over a listing, where the program spends its days


def over_a_listing(_):
    pass


def over_a_menu(program):
    program.key("softleft")


def over_a_message(program):
    program.key("music")
    quarn.wait_until(program.shows_box, "the message")


def over_a_question(program):
    program.with_modifier("hide")
    quarn.wait_until(program.shows_box, "the question")


def after_a_glide(program):
    """Over a name that is too long for its row, once it has been shown whole."""
    before = program.screenshot()
    program.key(*["down"] * 6)
    program.wait_change(before)
    resting = program.screenshot()
    quarn.wait_until(lambda: program.screenshot().tobytes() != resting.tobytes(), "the glide")
    # Longer than it rests between.
    program.wait_idle(calm=1.5)


def when_hidden(program):
    program.key("hide")
    program.wait_hidden()


def after_the_test_box(program):
    program.with_modifier("hash")
    quarn.wait_until(program.shows_box, "the box")
    program.key("softright")
    quarn.wait_until(lambda: not program.shows_box(), "the box to go")


STATES = (over_a_listing, over_a_menu, over_a_message, over_a_question, when_hidden,
          after_the_test_box, after_a_glide)


class TestIdling(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        programs = {state: cls.started() for state in STATES}
        for state, program in programs.items():
            program.wait_ready()
            state(program)
        for program in programs.values():
            program.wait_idle(calm=0.5)
        before = {state: program.wake_ups() for state, program in programs.items()}
        time.sleep(SPAN)  # waits: the span in which wake-ups are counted
        cls.woken = {state: program.wake_ups() - before[state]
                     for state, program in programs.items()}
        time.sleep(LONG_SPAN - SPAN)  # waits: the rest of the longer span
        cls.woken[over_a_listing] = programs[over_a_listing].wake_ups() - before[over_a_listing]

    @classmethod
    def started(cls):
        display = quarn.Display()
        cls.addClassCleanup(display.stop)
        program = quarn.Program(display, extras={"Motion": 1})
        cls.addClassCleanup(program.stop)
        for number in range(5):
            quarn.make_file(program.home / f"{number}.txt", b"x")
        quarn.make_file(program.home / f"{'a name that is too long for its row ' * 2}.txt", b"x")
        return program.start(wait=False)

    def check_idle(self, state):
        self.assertLessEqual(self.woken[state], STRAY_WAKE_UPS)

    def test_nothingWakesTheProgramOverAListing(self):
        self.check_idle(over_a_listing)

    def test_nothingWakesTheProgramOverAMenu(self):
        self.check_idle(over_a_menu)

    def test_nothingWakesTheProgramOverAMessage(self):
        self.check_idle(over_a_message)

    def test_nothingWakesTheProgramOverAQuestion(self):
        self.check_idle(over_a_question)

    def test_nothingWakesTheProgramAfterAGlide(self):
        self.check_idle(after_a_glide)

    def test_nothingWakesTheProgramWhenHidden(self):
        self.check_idle(when_hidden)

    def test_nothingWakesTheProgramAfterTheTestBox(self):
        self.check_idle(after_the_test_box)


if __name__ == "__main__":
    quarn.main()
