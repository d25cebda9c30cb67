#!/usr/bin/python3
"""quarn-keys: asks for the keys of a device by real keys, and writes what the file manager then reads."""

import subprocess

import quarn

# The key of the keyboard that is pressed for each question, in their order.
GIVEN = ["F5", "F6", "Up", "Down", "Left", "Right", "space", "BackSpace", "Tab", "End", "Prior", "Next",
         "F7", "comma", "period", "1", "2", "3", "4", "5", "6", "7", "8", "9", "asterisk", "0",
         "numbersign"]


class KeysCase(quarn.Case):
    def setUp(self):
        self.manager = self.program()
        self.client = self.display.client
        self.file = self.manager.stage / "keymap.cfg"

    def start_tool(self, *arguments, **environment):
        """The tool of the work folder, ready for keys."""
        tool = subprocess.Popen(
            [*quarn.ENDS_WITH_US, str(self.manager.stage / "bin" / "quarn-keys"), *arguments],
            env={**self.manager.environment, **environment}, stdin=subprocess.DEVNULL,
            stderr=subprocess.PIPE)
        self.addCleanup(self.end, tool)
        quarn.wait_until(lambda: self.window() or tool.poll() is not None, "the window of the tool")
        self.assertIsNone(tool.poll())
        return tool

    def end(self, tool):
        tool.kill()
        tool.wait()
        tool.stderr.close()

    def window(self):
        windows = self.client.windows("quarn-keys")
        return windows[0] if windows else None

    def picture(self):
        return self.client.picture(*self.client.place(self.window()))

    def changed(self, before):
        """The picture after it has become another one."""
        quarn.wait_until(lambda: self.picture().tobytes() != before.tobytes(), "another picture")
        return self.picture()

    def first_picture(self):
        def shown():
            return len(self.picture().getcolors(100000)) > 20
        quarn.wait_until(shown, "the first question")
        return self.picture()

    def soft_keys(self):
        return self.picture().crop((0, quarn.HEIGHT - 20, quarn.WIDTH, quarn.HEIGHT))

    def lines(self):
        return [line for line in self.file.read_text().splitlines()
                if line and not line.startswith(";")]


class TestKeys(KeysCase):
    def test_whatWasGivenIsWhatTheFileManagerTakes(self):
        tool = self.start_tool()
        picture = self.first_picture()
        for name in GIVEN:
            self.client.press(name)
            picture = self.changed(picture)
        # The list of what was given, by keys that were given.
        self.client.press("Down")
        picture = self.changed(picture)
        self.client.press("F5")
        picture = self.changed(picture)
        self.client.press("F6")
        self.assertEqual(tool.wait(quarn.DEADLINE), 0)
        self.assertEqual(tool.stderr.read(), b"")
        self.assertEqual(self.lines(), ["Keypad = 0", "F5 = 0x1038", "F6 = 0x103a", "Space = 0x1004",
                                        "Tab = 0x1030", "End = 0x1031", "F7 = 0x1049",
                                        ", = 0x104b", ". = 0x104c"])

        quarn.make_folder(self.manager.home / "Music")
        self.manager.start()
        self.client.press("Down", "space")
        self.manager.wait_for_listing(self.manager.home / "Music")
        self.client.press("BackSpace")
        quarn.wait_until(lambda: len(self.manager.listings()) == 4, self.manager.describe)
        self.manager.wait_idle()
        shown = self.manager.wait_stable()
        self.client.press("F5")
        menu = self.manager.wait_change(shown)
        self.client.press("F6")
        self.assertEqual(self.manager.wait_change(menu).tobytes(), shown.tobytes())

    def test_aKeyThatIsHeldLongEndsTheQuestions(self):
        tool = self.start_tool()
        picture = self.first_picture()
        self.client.press("F5")
        self.changed(picture)
        self.client.hold("F8")
        # While it asks there is nothing over the soft keys.
        quarn.wait_until(lambda: len(self.soft_keys().getcolors()) > 1, "the end of the questions")
        self.client.release("F8")
        self.client.press("F11")
        self.assertEqual(tool.wait(quarn.DEADLINE), 0)
        self.assertNotIn("F5 = 0x1038", self.file.read_text())


if __name__ == "__main__":
    quarn.main()
