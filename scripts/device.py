"""An emulated device with a display, a keyboard and a console, for the scripts that try Quarn on one."""

import contextlib
import json
import re
import socket
import subprocess
import sys
import threading
import time

DEADLINE = 240  # seconds for each step; the emulated processor is slow
BOOT_DEADLINE = 600
POLL = 0.2
CALM = 1  # seconds
HOLD = 60  # milliseconds


class Failure(Exception):
    pass


class Device:
    """An emulated device with a display, a keyboard and a console. What the console says is written to a
    file; it has a keyboard, too."""

    def __init__(self, size, kernel, system, folder, memory=1024, options=""):
        width, height = size.split("x")
        self.folder = folder
        self.console = folder / "console.txt"
        self.console.write_text("")
        self.steps = 0
        self.monitor = folder / "monitor"
        self.process = subprocess.Popen(
            ["setpriv", "--pdeathsig", "KILL", "qemu-system-x86_64", "-machine", "pc,accel=tcg",
             "-m", str(memory), "-kernel", kernel, "-initrd", system, "-append",
             f"console=ttyS0 quiet panic=-1 no_timer_check {options}", "-display", "none",
             "-vga", "none", "-device", f"VGA,edid=on,xres={width},yres={height}", "-nic", "none",
             "-no-reboot", "-serial", "chardev:serial", "-chardev",
             f"socket,id=serial,path={folder}/serial,server=on,wait=on",
             "-qmp", f"unix:{self.monitor},server=on,wait=off"], stdin=subprocess.DEVNULL)
        # It waits for whom its console is connected to.
        self.serial = socket.socket(socket.AF_UNIX)
        self.wait(self.connect_console, "the emulator's console", 60)
        threading.Thread(target=self.keep_console, daemon=True).start()
        self.wait(self.connect, "the emulator's monitor", 60)

    def connect_console(self):
        return self.serial.connect_ex(str(self.folder / "serial")) == 0

    def keep_console(self):
        """Writes what the console says to its file until the device goes off."""
        with self.console.open("ab", buffering=0) as file, contextlib.suppress(OSError):
            while said := self.serial.recv(65536):
                file.write(said)

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

    def type(self, text):
        """Types on the console."""
        self.serial.sendall(text.encode())

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
        """What the console has said."""
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
        self.keep(name)
        return last

    def keep(self, name):
        """Saves the picture of a step as it is now."""
        self.screen()
        self.steps += 1
        target = self.folder / f"{self.steps}-{name}.png"
        subprocess.run(["convert", str(self.folder / "screen.ppm"), str(target)], check=True)
        print(f"{target.name}", flush=True)

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
        self.serial.close()
        for name in ("screen.ppm", "monitor", "serial"):
            (self.folder / name).unlink(missing_ok=True)

    def explain(self):
        """Tells what the console does not, after a failure."""


def try_on(device, session, name, lines=20):
    """Walks a session on a device, which ends with it. 0, or 1 with the last lines of its console told if a
    step did not come about."""
    start = time.monotonic()
    try:
        session(device)
    except Failure as failure:
        with contextlib.suppress(Exception):
            device.picture("failure")
        with contextlib.suppress(Exception):
            device.explain()
        print(f"{name}: {failure}; the device said:", *device.lines()[-lines:], sep="\n    ", file=sys.stderr)
        return 1
    finally:
        device.end()
    print(f"All steps came about, in {time.monotonic() - start:.0f} s.")
    return 0
