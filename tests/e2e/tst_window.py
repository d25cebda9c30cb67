#!/usr/bin/python3
"""The window: its name, hiding and showing, closing and ending."""

import re
import signal

import quarn


class TestWindow(quarn.Case):
    def test_titleClassAndSize(self):
        program = self.program().start()
        window = str(program.window())
        self.assertIn('"Quarn"', self.display.run("xprop", "-id", window, "WM_NAME"))
        self.assertIn('"Quarn"', self.display.run("xprop", "-id", window, "_NET_WM_NAME"))
        self.assertIn('"quarn", "quarn"', self.display.run("xprop", "-id", window, "WM_CLASS"))
        self.assertEqual(program.rectangle()[2:], (240, 320))
        hints = self.display.run("xprop", "-id", window, "WM_NORMAL_HINTS")
        sizes = re.findall(r"(\d+) by (\d+)", hints)
        self.assertIn(("240", "320"), sizes)

    def test_everythingIsInOneWindow(self):
        program = self.program().start()
        before = program.wait_stable()
        program.key("softleft", "right")
        menu = program.wait_change(before)
        self.assertEqual(len(self.display.windows()), 1)
        program.key("softright", "softright")
        program.wait_change(menu)
        program.key("music")
        program.wait_change(before)
        self.assertEqual(len(self.display.windows()), 1)

    def test_hideTakesTheWindowAwayAndKeepsTheProgram(self):
        program = self.program().start()
        before = program.wait_stable()
        for _ in range(3):
            program.key("hide")
            program.wait_hidden()
            self.assertTrue(program.is_running())
            self.assertEqual(program.start_again()[0], 0)
            program.wait_shown()
            self.assertEqual(program.wait_stable().tobytes(), before.tobytes())

    def test_hideTakesTheTestBoxAlong(self):
        program = self.program().start()
        program.with_modifier("hash")
        quarn.wait_until(program.shows_box, "the box")
        # The first key closes the box, the second one hides.
        program.key("hide")
        quarn.wait_until(lambda: not program.shows_box(), "the box to go")
        program.key("hide")
        program.wait_hidden()

    def test_keysOnTheWayToAnotherKeyDoNotCloseABox(self):
        program = self.program().start()
        before = program.wait_stable()
        program.key("music")
        message = program.wait_change(before)
        for key in ("Shift_L", "Control_R", "Alt_L", "Super_L", "ISO_Level3_Shift", "Caps_Lock",
                    "Caps_Lock", "Num_Lock", "Num_Lock"):
            self.display.client.press(key)
        program.wait_idle()
        self.assertEqual(program.wait_stable().tobytes(), message.tobytes())

    def test_theAnimationGoesThroughItsFrames(self):
        program = self.program().start()
        program.with_modifier("hash")
        quarn.wait_until(program.shows_box, "the box")
        frames = set()

        def all_seen():
            frames.add(program.screenshot().crop((105, 158, 135, 188)).tobytes())
            return len(frames) >= 8

        quarn.wait_until(all_seen, lambda: f"8 frames; saw {len(frames)}")
        self.assertEqual(len(frames), 8)

    def test_theStartBoxTakesKeysAndGoesByItself(self):
        program = self.program()
        program.start(wait=False)
        program.wait_shown()
        program.wait_ready()
        self.assertFalse(program.shows_box())


class TestEnd(quarn.Case):
    def asked(self):
        program = self.program().start()
        before = program.wait_stable()
        program.with_modifier("hide")
        quarn.wait_until(program.shows_box, "the question")
        return program, before

    def test_yesEndsWithStatusZero(self):
        program, _ = self.asked()
        program.key("softleft")
        self.assertEqual(program.wait_end(), 0)
        self.assertEqual(self.display.windows(), [])

    def test_noKeepsTheProgram(self):
        program, before = self.asked()
        question = program.wait_stable()
        program.key("softright")
        self.assertEqual(program.wait_change(question).tobytes(), before.tobytes())
        program.key("hash")
        program.wait_for_listing(program.home)

    def test_onlyTheSoftKeysAnswer(self):
        program, _ = self.asked()
        question = program.wait_stable()
        program.key("select", "up", "down", "left", "right", "5", "0", "folderup", "music")
        program.wait_idle()
        self.assertEqual(program.wait_stable().tobytes(), question.tobytes())
        program.key("softleft")
        self.assertEqual(program.wait_end(), 0)

    def test_theQuestionCanBeAskedAgain(self):
        program, _ = self.asked()
        for _ in range(3):
            program.key("softright")
            quarn.wait_until(lambda: not program.shows_box(), "the question to go")
            program.with_modifier("hide")
            quarn.wait_until(program.shows_box, "the question")
        program.key("softleft")
        self.assertEqual(program.wait_end(), 0)

    def test_aClickAnswersYes(self):
        program, _ = self.asked()
        program.click(60, 192)
        self.assertEqual(program.wait_end(), 0)

    def test_aClickAnswersNo(self):
        program, before = self.asked()
        question = program.wait_stable()
        program.click(180, 192)
        self.assertEqual(program.wait_change(question).tobytes(), before.tobytes())

    def test_clicksBesideTheBoxDoNothing(self):
        program, _ = self.asked()
        question = program.wait_stable()
        for point in ((60, 50), (60, 290), (40, 310), (120, 20), (120, 150)):
            program.click(*point)
        program.wait_idle()
        self.assertEqual(program.wait_stable().tobytes(), question.tobytes())

    def test_aSystemsRequestEndsTheProgramInEveryState(self):
        for keys in ((), ("softleft",), ("music",), ("hide",)):
            with self.subTest(keys):
                program = self.program().start()
                program.key("down", *keys)
                program.wait_idle()
                program.kill(signal.SIGTERM)
                self.assertIn(program.wait_end(20), (0, -signal.SIGTERM))
                program.stop()

    def test_theProgramEndsWhenItsDisplayGoes(self):
        display = quarn.Display()
        self.addCleanup(display.stop)
        program = quarn.Program(display)
        # The toolkit ends the process from a thread of its own, with nothing put away.
        if "ASAN_OPTIONS" in program.environment:
            program.environment["ASAN_OPTIONS"] += ":detect_leaks=0"
        program.start()
        display.server.kill()
        display.server.wait()
        status = program.wait_end()
        self.assertGreaterEqual(status, 0)  # ended, not crashed
        program.process.returncode = 0
        program.stop()


class TestClosing(quarn.Case):
    display_options = {"window_manager": True}

    def started(self):
        program = self.program().start()
        quarn.wait_until(lambda: program.window() == self.display.client.active(), "the focus")
        return program, program.wait_stable()

    def close(self):
        self.display.client.press("F12")  # a key of the window manager

    def test_closingAsks(self):
        program, before = self.started()
        self.close()
        question = program.wait_change(before)
        self.assertTrue(program.shows_box())
        program.key("softright")
        self.assertEqual(program.wait_change(question).tobytes(), before.tobytes())
        self.close()
        program.wait_change(before)
        program.key("softleft")
        self.assertEqual(program.wait_end(), 0)

    def test_closingTwiceAsksOnce(self):
        program, before = self.started()
        self.close()
        question = program.wait_change(before)
        self.close()
        self.close()
        program.wait_idle()
        self.assertEqual(program.wait_stable().tobytes(), question.tobytes())
        program.key("softright")
        self.assertEqual(program.wait_change(question).tobytes(), before.tobytes())
        program.wait_idle()
        self.assertEqual(program.wait_stable().tobytes(), before.tobytes())
        self.assertTrue(program.is_running())

    def test_closingAsksOverAMenu(self):
        program, before = self.started()
        program.key("softleft", "right")
        program.wait_change(before)
        self.close()
        quarn.wait_until(program.shows_box, "the question")
        program.key("softleft")
        self.assertEqual(program.wait_end(), 0)

    def test_closingAsksOverAMessage(self):
        program, before = self.started()
        program.key("music")
        message = program.wait_change(before)
        self.close()
        question = program.wait_change(message)
        self.assertTrue(program.shows_box())
        program.key("5")
        program.wait_idle()
        self.assertEqual(program.wait_stable().tobytes(), question.tobytes())
        program.key("softleft")
        self.assertEqual(program.wait_end(), 0)


if __name__ == "__main__":
    quarn.main()
