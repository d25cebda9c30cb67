#!/usr/bin/python3
"""Usage: contactsheet.py FOLDER [LANGUAGE...]

Draws a sheet for each language, FOLDER/LANGUAGE.png, with what the program and its plugins show in it
side by side: to be looked at whenever texts, fonts or drawing change. QUARN_STAGE names the staged work
folder, QUARN_FAULT_LIBRARY build/release/tests/e2e/libfaultinjector.so, QUARN_SHEET_SCALE how many pixels of the sheet are one of the screen (1),
QUARN_SHEET_THEME the theme (0)."""

import contextlib
import os
import pathlib
import subprocess
import sys

from PIL import Image

import quarn
import safescenes
import tst_bluetooth
import tst_keys
import tst_plugins

COLUMNS = 6
GAP = 4
SCALE = int(os.environ.get("QUARN_SHEET_SCALE", "1"))
EXTRAS = {"Status": 1, "Theme": int(os.environ.get("QUARN_SHEET_THEME", "0"))}

# Keys, and behind each step what is seen then. One that begins with "-" is a way back and left out.
STEPS = ["down", "softleft", "3", "softright 6", "-softright softright",
         "softleft 4", "modifier", "softright softleft", "-5",
         "softleft 5", "softright softleft 6 1", "-softright",
         "down softleft 2", "softright softleft 8", "5 up softleft 2", "-softright",
         "modifier+hide", "-softright", "pagedown"]

NAMES = ["中文文件.txt", "日本語のファイル.txt", "한국어 파일.txt", "ملف عربي.txt", "קובץ עברי.txt",
         "हिन्दी फ़ाइल.txt", "ไฟล์ไทย.txt", "emoji 😀🎵.txt", "turned \u202egpj.exe"]


def make_files(home):
    quarn.make_folder(home / "A folder" / "inside")
    for name in NAMES:
        quarn.make_file(home / name, b"x" * 1536)


def settled(seen, before):
    """The picture after something has changed; the same if nothing does."""
    try:
        return seen.wait_change(before, 2)
    except quarn.Failure:
        return seen.wait_stable()


def screens(seen, steps):
    picture = seen.wait_stable()
    pictures = []
    for step in steps:
        for name in step.lstrip("-").split():
            if name.startswith("modifier+"):
                seen.with_modifier(name.partition("+")[2])
            else:
                seen.key(name)
        picture = settled(seen, picture)
        if not step.startswith("-"):
            pictures.append(picture)
    return pictures


def program_in(display, language, extras=(), **options):
    return quarn.Program(display, settings={"Language": language}, extras={**EXTRAS, **dict(extras)},
                         **options)


def main_window(display, language):
    program = program_in(display, language)
    try:
        make_files(program.home)
        program.start()
        return screens(program, STEPS)
    finally:
        program.stop()


def typing(display, language):
    """What is found, what no name has, the sheet of symbols."""
    program = program_in(display, language, {"Find": 1})
    try:
        make_files(program.home)
        program.start(QUARN_KEYPAD="1")
        before = program.wait_stable()
        pictures = []
        for keys in (("3", "6"), ("9", "9", "1", "7")):
            program.key(*keys)
            pictures.append(program.wait_change(before))
            program.wait_idle(calm=2)
            before = program.wait_stable()
        return pictures + screens(program, ["-down softleft 4", "star"])
    finally:
        program.stop()


def safe(display, language):
    """The pages of safe operations and of the trash."""
    program = program_in(display, language, safescenes.EXTRAS)
    pictures = []
    try:
        left, right = (quarn.make_folder(program.base / side) for side in ("left", "right"))
        program.settings.update({"Start_path_tab1": left, "Start_path_tab2": right})
        program.write_settings()
        scenes = safescenes.Scenes(program, left, right)
        program.start()

        def seen(*holes):
            if holes != safescenes.MOVING:
                program.wait_idle()
            pictures.append(program.screenshot())

        for name in ("question", "failures", "progress", "trash"):
            getattr(scenes, f"show_{name}")(seen)
        return pictures
    finally:
        program.stop()


def device_keys(display, language):
    """The program that asks for the keys of a device, and what it has been told."""
    program = program_in(display, language)
    tool = subprocess.Popen([*quarn.ENDS_WITH_US, str(program.stage / "bin" / "quarn-keys")],
                            env=program.environment, stdin=subprocess.DEVNULL)
    try:
        window = tst_plugins.Plugin(program, "quarn-keys")
        quarn.wait_until(window.has_keyboard, "the keyboard")
        question = shown = window.wait_stable()
        for name in tst_keys.GIVEN:
            display.client.press(name)
            shown = window.wait_change(shown)
        return [question, shown]
    finally:
        tool.kill()
        tool.wait()
        program.stop()


def plugin(display, language, name, steps, file, content=b"", leave=("softright",), **options):
    """What a plugin shows that opens a file; `leave` are the keys that end it."""
    program = program_in(display, language, **options)
    try:
        quarn.make_file(program.home / file, content)
        program.start()
        program.key("down", "select")
        window = tst_plugins.Plugin(program, name)
        pictures = [window.wait_stable(), *screens(window, steps)]
        window.key(*leave)
        window.wait_end()
        return pictures
    finally:
        program.stop()


def sharing(display, language):
    """The list of devices, and a file that is sent and then not."""
    program = program_in(display, language)
    with contextlib.ExitStack() as stack:
        stack.callback(program.stop)
        services = tst_bluetooth.Services(stack)
        quarn.make_file(program.home / "song.mp3", b"x" * 100000)
        program.start(DBUS_SYSTEM_BUS_ADDRESS=services.address,
                      DBUS_SESSION_BUS_ADDRESS=services.address)
        pictures = screens(program, ["-down", "softleft 7", "select"])
        quarn.wait_until(services.transfer, "the transfer")
        pictures += screens(program, ["softright"])
        program.key("5")
        program.wait_stable()
        return pictures


def plugins(display, language):
    text = "".join(f"{number}. Hello world, hello again and again.\n" for number in range(60))
    return [
        *plugin(display, language, "TextView", ["0"], "text.txt", text.encode()),
        *plugin(display, language, "TextView", [], "empty.txt"),
        *plugin(display, language, "PicView", [], "broken.png", b"no picture"),
        *plugin(display, language, "Execute", [], "script.sh",
                b"#!/bin/sh\necho hello\nexit 3\n"),
        *plugin(display, language, "LyraPlayer", ["folderup"], "song.mp3", b"no music",
                ("softright", "softright"), player=True),
    ]


def sheet_of(pictures):
    width, height = quarn.WIDTH + GAP, quarn.HEIGHT + GAP
    rows = -(-len(pictures) // COLUMNS)
    sheet = Image.new("RGB", (COLUMNS * width, rows * height), (128, 128, 160))
    for number, picture in enumerate(pictures):
        sheet.paste(picture.convert("RGB"), (number % COLUMNS * width, number // COLUMNS * height))
    return sheet.resize((sheet.width * SCALE, sheet.height * SCALE), Image.Resampling.NEAREST)


def main(folder, languages):
    folder.mkdir(parents=True, exist_ok=True)
    known = sorted(path.stem for path in (quarn.stage_folder() / "lang").glob("*.lang"))
    display = quarn.Display(window_manager=True)
    try:
        for language in languages or known:
            pictures = [picture for part in (main_window, typing, safe, sharing, plugins, device_keys)
                        for picture in part(display, language)]
            sheet_of(pictures).save(folder / f"{language}.png")
            print(folder / f"{language}.png", flush=True)
    finally:
        display.stop()


if __name__ == "__main__":
    if len(sys.argv) < 2 or sys.argv[1].startswith("-"):
        sys.exit(__doc__)
    main(pathlib.Path(sys.argv[1]), sys.argv[2:])
