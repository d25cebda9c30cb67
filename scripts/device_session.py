#!/usr/bin/python3
"""Usage: device_session.py WIDTHxHEIGHT KERNEL INITRAMFS FOLDER [MEGABYTES]

Boots a device in an emulator, presses keys on it and saves a picture of each step in FOLDER; for
scripts/try-device."""

import pathlib
import sys

sys.dont_write_bytecode = True

from device import BOOT_DEADLINE, Device, try_on  # noqa: E402


def session(device):
    listed = "fb::set path "
    device.wait_for_line("^device: ", deadline=BOOT_DEADLINE)
    device.wait_for_line(listed, 2, BOOT_DEADLINE)
    # The box at the start takes keys until it goes.
    device.wait(lambda: not device.shows_box(), "the end of the start")
    home = device.picture("listing")
    device.press("down")
    device.picture("folder-chosen", home)
    device.press("ret")
    device.wait_for_line(f"{listed}/home/user/Documents$")
    folder = device.picture("folder", home)
    device.press("f8")
    menu = device.picture("menu", folder)
    device.press("esc")
    folder = device.picture("menu-closed", menu)
    for _ in range(2):
        device.press("down")
    text = device.picture("text-chosen", folder)
    device.press("ret")
    viewer = device.picture("text", text)
    device.press("esc")
    device.picture("text-closed", viewer)
    device.press("backspace")
    device.wait_for_line(f"{listed}/home/user/Documents/..$")
    back = device.picture("back", folder)
    device.press("f1", "f2")
    device.picture("question", back)
    device.press("f9")
    device.wait_for_line("^device: quarn ended with 0")


def main():
    size, kernel, system, folder, *memory = sys.argv[1:]
    # Nothing blinks on the display.
    device = Device(size, kernel, system, pathlib.Path(folder), *memory, options="vt.global_cursor_default=0")
    return try_on(device, session, "try-device")


if __name__ == "__main__":
    sys.exit(main())
