#!/usr/bin/python3
"""Usage: device_session.py WIDTHxHEIGHT KERNEL INITRAMFS FOLDER

Boots a device in an emulator, presses keys on it and saves a picture of each step in FOLDER; for
scripts/try-device."""

import contextlib
import json
import pathlib
import re
import socket
import subprocess
import sys
import time

DEADLINE = 240  # seconds for each step; the emulated processor is slow
BOOT_DEADLINE = 600
POLL = 0.2
CALM = 1  # seconds
HOLD = 60  # milliseconds


class Failure(Exception):
    pass


class Device:
    """An emulated device with a display, a keyboard and a console that is written to a file."""

    def __init__(self, size, kernel, system, folder):
        width, height = size.split("x")
        self.folder = folder
        self.console = folder / "console.txt"
        self.console.touch()
        self.steps = 0
        self.monitor = folder / "monitor"
        self.process = subprocess.Popen(
            ["setpriv", "--pdeathsig", "KILL", "qemu-system-x86_64", "-machine", "pc,accel=tcg",
             "-m", "1024", "-kernel", kernel, "-initrd", system, "-append",
             "console=ttyS0 quiet panic=-1 no_timer_check vt.global_cursor_default=0", "-display", "none",
             "-vga", "none", "-device", f"VGA,edid=on,xres={width},yres={height}", "-nic", "none",
             "-no-reboot", "-serial", f"file:{self.console}",
             "-qmp", f"unix:{self.monitor},server=on,wait=off"], stdin=subprocess.DEVNULL)
        self.wait(self.connect, "the emulator's monitor", 60)

    def connect(self):
        self.socket = socket.socket(socket.AF_UNIX)
        try:
            self.socket.connect(str(self.monitor))
        except OSError:
            self.socket.close()
            return False
        self.stream = self.socket.makefile("rw")
        self.stream.readline()
        self.ask("qmp_capabilities")
        return True

    def ask(self, command, **arguments):
        """The monitor's answer to a command."""
        json.dump({"execute": command, "arguments": arguments}, self.stream)
        self.stream.flush()
        for line in self.stream:
            answer = json.loads(line)
            if "error" in answer:
                raise Failure(f"{command}: {answer['error']['desc']}")
            if "return" in answer:
                return answer["return"]
        raise Failure("the emulator has ended")

    def wait(self, condition, what, deadline=DEADLINE):
        end = time.monotonic() + deadline
        while True:
            value = condition()
            if value:
                return value
            if time.monotonic() > end:
                raise Failure(f"not within {deadline} s: {what}")
            if self.process.poll() is not None:
                raise Failure(f"the device went off before {what}")
            time.sleep(POLL)

    def lines(self):
        return self.console.read_text(errors="replace").splitlines()

    def wait_for_line(self, pattern, count=1, deadline=DEADLINE):
        def found():
            return sum(bool(re.search(pattern, line)) for line in self.lines()) >= count
        self.wait(found, f"the line {pattern!r}", deadline)

    def press(self, *keys):
        """Presses these keys together."""
        self.ask("human-monitor-command", **{"command-line": f"sendkey {'-'.join(keys)} {HOLD}"})

    def screen(self):
        dump = self.folder / "screen.ppm"
        self.ask("screendump", filename=str(dump))
        return dump.read_bytes()

    def picture(self, name, before=b""):
        """Saves the picture of a step as soon as it is another one than before and stays the same;
        gives it."""
        last, since = b"", 0

        def settled():
            nonlocal last, since
            now = self.screen()
            if now != last:
                last, since = now, time.monotonic()
            return time.monotonic() - since > CALM and last != before
        self.wait(settled, f"a picture of {name}")
        self.steps += 1
        target = self.folder / f"{self.steps}-{name}.png"
        subprocess.run(["convert", str(self.folder / "screen.ppm"), str(target)], check=True)
        print(f"{target.name}", flush=True)
        return last

    def shows_box(self):
        """Whether a message or progress box is up, by its black title: a box is 220 wide and in the
        middle of the screen."""
        width, height, pixels = re.match(
            rb"P6\n(\d+) (\d+)\n\d+\n(.*)", self.screen(), re.DOTALL).groups()
        width, height = int(width), int(height)
        scale = min(width / 240, height / 320) // 0.25 * 0.25
        left, top = (width - 240 * scale) // 2, (height - 320 * scale) // 2

        def is_black(x, y):
            place = 3 * (int(top + y * scale) * width + int(left + x * scale))
            return pixels[place:place + 3] == bytes(3)
        return any(all(is_black(x, y) for x in (12, 40, 200, 228)) for y in range(70, 260))

    def end(self):
        with contextlib.suppress(OSError, ValueError):
            self.socket.close()
        self.process.kill()
        self.process.wait()
        for name in ("screen.ppm", "monitor"):
            (self.folder / name).unlink(missing_ok=True)


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
    size, kernel, system, folder = sys.argv[1:]
    folder = pathlib.Path(folder)
    start = time.monotonic()
    device = Device(size, kernel, system, folder)
    try:
        session(device)
    except Failure as failure:
        with contextlib.suppress(Exception):
            device.picture("failure")
        print(f"try-device: {failure}; the device said:", *device.lines()[-20:], sep="\n    ",
              file=sys.stderr)
        return 1
    finally:
        device.end()
    print(f"All steps came about, in {time.monotonic() - start:.0f} s.")
    return 0


if __name__ == "__main__":
    sys.exit(main())
