#!/usr/bin/python3
"""Menus by digits, and what the soft-key bar says meanwhile."""

import operations
import quarn

BAR = (0, 300, quarn.WIDTH, quarn.HEIGHT)


class Presses:
    """Presses keys of a user's program and counts them."""

    def __init__(self, user):
        self.user = user
        self.count = 0

    def __call__(self, *names):
        self.user.program.key(*names)
        self.count += len(names)


class TestMenus(operations.Case):
    def copied(self, name):
        """Whether the copy is there, and the panels show it."""
        path = self.right / name
        return path.exists() and path.read_bytes() == (self.left / name).read_bytes()

    def copy(self, name, to_copy, to_paste):
        """Copies an entry into the other panel and gives the number of presses that it takes from
        the highlighted entry to the pasted one."""
        self.user.highlight(name)
        press = Presses(self.user)
        with self.user.watching(2):
            press(*to_copy)
            press("right")
            self.user.page = 2
            press(*to_paste)
        quarn.wait_until(lambda: self.copied(name), f"a copy of {name}")
        return press.count

    def test_copying_takes_seven_presses_instead_of_thirteen(self):
        self.fill(**{"by arrows": b"one", "by digits": b"two"})
        self.assertEqual(
            self.copy("by arrows", operations.COMMANDS["copy"], operations.COMMANDS["paste"]), 13)
        self.user.go(1)
        self.assertEqual(
            self.copy("by digits", ["softleft", "3", "1"], ["softleft", "3", "3"]), 7)
        self.assertEqual(operations.names(self.right), ["by arrows", "by digits"])

    def test_digit_runs_a_command_at_once(self):
        self.fill(file=b"x")
        self.user.highlight("file")
        self.program_.key("softleft", "2")
        self.user.answer(True)
        quarn.wait_until(lambda: not (self.left / "file").exists(), "the file to go")

    def test_digit_of_a_disabled_item_does_nothing(self):
        self.fill(file=b"x")
        self.user.highlight("file")
        closed = self.program_.wait_stable()
        self.program_.key("softleft", "3")
        menu = self.program_.wait_change(closed)
        self.program_.key("3", "4")
        self.program_.wait_idle()
        self.assertEqual(self.program_.screenshot().tobytes(), menu.tobytes())
        self.program_.key("softright", "softright")
        quarn.wait_until(lambda: self.program_.screenshot().tobytes() == closed.tobytes(),
                         "the menus to close")
        self.assertEqual(operations.names(self.right), [])

    def bar(self):
        return self.program_.screenshot().crop(BAR).tobytes()

    def wait_bar(self, wanted):
        quarn.wait_until(lambda: self.bar() == wanted, "the bar to be as it was")

    def wait_other_bar(self, *seen):
        """The settled bar, which is none of those seen before."""
        quarn.wait_until(lambda: self.bar() not in seen, "the bar to change")
        return self.program_.wait_stable().crop(BAR).tobytes()

    def test_bar_changes_with_what_has_the_keys_and_comes_back(self):
        self.fill(file=b"x")
        self.user.highlight("file")
        self.program_.wait_idle()
        options = self.program_.wait_stable().crop(BAR).tobytes()
        self.program_.key("softleft")
        select = self.wait_other_bar(options)
        self.program_.key("3", "down", "down")
        back_alone = self.wait_other_bar(options, select)
        self.program_.key("up")
        self.wait_bar(select)
        self.program_.key("softright", "4")  # the name's dialog
        answers = self.wait_other_bar(options, select, back_alone)
        self.program_.key("modifier")
        self.wait_bar(select)
        self.program_.key("softright")
        self.wait_bar(answers)
        self.user.confirm(False)
        self.wait_bar(options)
        self.program_.key("softleft", "2")
        self.user.wait_question()
        self.wait_bar(bytes(len(options)))
        self.user.answer(False)
        self.wait_bar(options)

    def test_taps_on_the_bar_are_its_keys(self):
        self.fill(file=b"x")
        self.user.highlight("file")
        self.program_.wait_idle()
        closed = self.program_.wait_stable()
        self.program_.click(20, 310)
        menu = self.program_.wait_change(closed)
        self.program_.click(20, 310)  # Select: the menu of programs
        self.program_.wait_change(menu)
        self.program_.click(220, 310)
        quarn.wait_until(lambda: self.program_.screenshot().tobytes() == menu.tobytes(),
                         "the first menu")
        self.program_.click(220, 310)
        quarn.wait_until(lambda: self.program_.screenshot().tobytes() == closed.tobytes(),
                         "the menu to close")


if __name__ == "__main__":
    quarn.main()
