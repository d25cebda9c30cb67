#!/usr/bin/python3
"""The program called by another start, asked to close, or ended by a signal while it asks or works
on files."""

import os
import signal
import subprocess

import operations
import quarn
from operations import BLOCK, names, tree_text


class Work:
    """A program in the middle of something: a question, a dialog or work that stands still."""

    def __init__(self, test):
        self.user = test.make()
        self.program = self.user.program
        self.left, self.right = test.left, test.right
        quarn.make_file(self.left / "film", os.urandom(2 * BLOCK))
        quarn.make_file(self.left / "tree" / "sub" / "file", b"f")
        self.gates = operations.make_tools_wait(self.program)
        self.gates["read"] = self.gates["walk"] = operations.inject_faults(
            self.program, f"read hold 0 {self.left}/film", f"open hold 0 {self.left}/tree/sub")
        self.gate = None
        self.before = tree_text(self.left)

    def hold(self, name):
        self.gate = self.gates[name]
        self.gate.close()

    def let_on(self):
        if self.gate is not None:
            self.gate.open()
            self.gate = None


class Question(Work):
    def begin(self):
        self.user.highlight("film")
        self.user.command("delete")
        self.user.wait_question()

    def end(self):
        self.user.answer(False)
        self.user.wait_nothing()

    def left_unfinished(self):
        return tree_text(self.left) == self.before

    finished = left_unfinished


class Dialog(Work):
    def begin(self):
        self.user.highlight("film")
        self.user.command("rename")
        self.user.type("movie")

    def end(self):
        self.user.confirm()

    def finished(self):
        return names(self.left) == ["movie", "tree"]

    def left_unfinished(self):
        return tree_text(self.left) == self.before


class BuiltInCopy(Work):
    def begin(self):
        self.user.pick("copy", "film")
        self.user.go(2)
        self.hold("read")
        with self.user.modifier():
            self.user.command("paste")
            self.gate.wait_reached()

    def end(self):
        self.user.wait_nothing()

    def finished(self):
        return tree_text(self.right / "film") == tree_text(self.left / "film")

    def left_unfinished(self):
        """Nothing has been read yet when it is ended."""
        return tree_text(self.left) == self.before


class SizeWalk(Work):
    def begin(self):
        self.user.highlight("tree")
        self.hold("walk")
        self.user.command("properties")
        self.gate.wait_reached()

    def end(self):
        """The properties come up, unless they were before the program was asked to close: then they
        have made way for its question."""
        self.user.program.wait_idle()
        if self.user.is_told():
            self.user.dismiss()

    def left_unfinished(self):
        return tree_text(self.left) == self.before

    finished = left_unfinished


class ShellCopy(Work):
    def begin(self):
        self.user.pick("copy", "tree")
        self.user.go(2)
        self.hold("cp")
        self.user.command("paste")
        self.gate.wait_reached()

    def end(self):
        self.user.wait_nothing()

    def finished(self):
        return tree_text(self.right / "tree") == tree_text(self.left / "tree")

    # The tool goes on when the program has ended.
    left_unfinished = finished


class Deletion(Work):
    def begin(self):
        self.user.highlight("tree")
        self.hold("rm")
        self.user.command("delete")
        self.user.answer(True)
        self.gate.wait_reached()

    def end(self):
        self.user.wait_nothing()

    def finished(self):
        return names(self.left) == ["film"]

    left_unfinished = finished


WORK = {"question": Question, "dialog": Dialog, "built-in copy": BuiltInCopy,
        "size walk": SizeWalk, "copy": ShellCopy, "deletion": Deletion}


class TestInterruptions(operations.OwnProgramCase):
    display_options = {"window_manager": True}

    def work(self, kind):
        work = kind(self)
        work.program.start()
        work.begin()
        return work

    def check_finished(self, work):
        quarn.wait_until(work.finished, f"{work}: {tree_text(work.left)} {tree_text(work.right)}")
        self.check_alive(work.user)

    @staticmethod
    def qcop(work, *words):
        """The exit status of the channel tool. It does not wait for the one that works."""
        return subprocess.run(
            [work.program.stage / "bin" / "qcop", *words], check=False, timeout=quarn.DEADLINE,
            env={**work.program.environment, "LD_PRELOAD": ""}).returncode

    def ask_to_close(self):
        self.display.client.press("F12")

    def check_call_and_close(self, kind):
        """Neither a call nor a request to close that is taken back changes what is done."""
        work = self.work(kind)
        self.assertEqual(self.qcop(work, "send", "Quarn", "show()"), 0)
        self.ask_to_close()
        if kind is Question:
            work.program.wait_idle()  # a question is not asked over another one
        else:
            work.let_on()
            # Until the key has reached the program, what is to be ended seems to be at rest.
            work.user.answer(False)
        work.end()
        self.check_finished(work)
        self.end_by_question(work)

    @staticmethod
    def leave(work):
        work.user.wait_question()
        work.program.key("softleft")

    def end_by_question(self, work):
        self.ask_to_close()
        self.leave(work)
        self.assertEqual(work.program.wait_end(), 0)

    def test_keysTypedWhileTheShellCopiesAreSwallowed(self):
        work = ShellCopy(self)
        work.program.start()
        title = (0, 0, quarn.WIDTH, 12)
        before = work.program.wait_stable().crop(title)
        work.begin()
        work.program.key("star", "down")
        work.let_on()
        work.end()
        work.program.wait_idle()
        after = work.program.screenshot().crop(title)
        self.assertTrue(after.tobytes() == before.tobytes(), "the title went")
        work.program.key("select")
        work.program.wait_for_listing(f"{self.right}/..")  # the first row
        self.check_finished(work)

    def check_quit(self, kind):
        work = self.work(kind)
        self.ask_to_close()
        work.let_on()
        self.leave(work)
        self.assertEqual(work.program.wait_end(), 0)
        self.assertTrue(work.left_unfinished() or work.finished())

    def check_signal(self, kind):
        work = self.work(kind)
        work.program.kill(signal.SIGTERM)
        self.assertEqual(work.program.process.wait(quarn.DEADLINE), -signal.SIGTERM)
        # A tool that goes on has nothing that would hinder another start.
        self.assertNotEqual(self.qcop(work, "registered", "Quarn"), 0)
        if kind in (ShellCopy, Deletion):
            work.let_on()
            quarn.wait_until(work.left_unfinished, "the tool to end")
        else:
            self.assertTrue(work.left_unfinished())
            if work.gate is not None:
                work.gate.path.unlink()
        work.program.start()
        self.check_alive(work.user)


def add_tests():
    for name, kind in WORK.items():
        words = "".join(word.capitalize() for word in name.replace("-", " ").split())
        for test, check in (("callAndClose", TestInterruptions.check_call_and_close),
                            ("quit", TestInterruptions.check_quit),
                            ("signal", TestInterruptions.check_signal)):
            if (test, kind) != ("quit", Question):
                setattr(TestInterruptions, f"test_{test}During{words}",
                        lambda self, check=check, kind=kind: check(self, kind))


add_tests()

if __name__ == "__main__":
    quarn.main()
