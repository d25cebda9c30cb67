#!/usr/bin/python3
"""The language and the theme of fm.cfg in the plugins, and names in every script on the screen and on
the debug stream."""

import contactsheet
import quarn
import tst_plugins

BAR = (0, 300, quarn.WIDTH, quarn.HEIGHT)
MIDDLE = (quarn.WIDTH // 2, quarn.HEIGHT * 3 // 4)
BRIGHT = 200


class TestLanguages(tst_plugins.TestPlugins):
    def shown(self, language="", extras=""):
        """What the text viewer shows of an empty file when fm.cfg and the language file `own` say
        this."""
        program = self.program(settings={"Language": "own"})
        (program.stage / "lang" / "own.lang").write_text(f"[Language]\nVER = 102\n{language}\n")
        with open(program.stage / "fm.cfg", "a", encoding="utf-8") as settings:
            settings.write(extras)
        quarn.make_file(program.home / "empty.txt")
        viewer = self.picked(program, "TextView")
        picture = viewer.wait_stable()
        viewer.end()
        program.stop()
        return picture

    def test_pluginsSpeakTheLanguageOfTheSettings(self):
        english = self.shown()
        same = self.shown("EXIT = Exit\nFILE_EMPTY = The file is empty.")
        self.assertEqual(english.tobytes(), same.tobytes())
        other = self.shown("EXIT = Ende\nFILE_EMPTY = Leer.")
        self.assertNotEqual(english.crop(BAR).tobytes(), other.crop(BAR).tobytes())
        self.assertEqual(len({picture.getpixel(MIDDLE) for picture in (english, other)}), 1)

    def test_pluginsHaveTheThemeOfTheSettings(self):
        self.assertGreater(min(self.shown().getpixel(MIDDLE)), BRIGHT)
        dark = self.shown(extras="[Extras]\nTheme = 1\n")
        self.assertLess(max(dark.getpixel(MIDDLE)), 255 - BRIGHT)
        nonsense = self.shown(extras="[Extras]\nTheme = dark\n")
        self.assertGreater(min(nonsense.getpixel(MIDDLE)), BRIGHT)

    def test_namesInEveryScriptLeaveTheDebugStreamAlone(self):
        program = self.program()
        for name in contactsheet.NAMES:
            quarn.make_file(program.home / name, b"x")
        program.start()
        program.wait_stable()
        program.key("pagedown")
        program.wait_stable()
        ours = ("-", "fb::set path ", str(program.stage))
        self.assertEqual([line for line in program.lines if line and not line.startswith(ours)], [])


if __name__ == "__main__":
    quarn.main()
