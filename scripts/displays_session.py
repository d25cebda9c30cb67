#!/usr/bin/python3
"""Usage: displays_session.py FOLDER KIND...

Tries the staged program on displays of these kinds (x11, wayland, vnc) and saves pictures in FOLDER; for
scripts/try-displays."""

import contextlib
import pathlib
import subprocess
import sys
import time

SCRIPTS = pathlib.Path(__file__).resolve().parent
sys.path[:0] = [str(SCRIPTS), str(SCRIPTS.parent / "tests" / "e2e")]

import quarn  # noqa: E402
import rfbclient  # noqa: E402
import wayland  # noqa: E402

# 127.0.0.1 as the system writes it, and the same within IPv6.
LOOPBACK = ("0100007F", "0000000000000000FFFF00000100007F")
LISTENS = "0A"
PORT = 5900
CALM = 0.7  # seconds
SYMBOLS = {"Down": 0xff54, "F9": 0xffc6, "F11": 0xffc8, "Return": 0xff0d}


class Session:
    """A program with some files on a display, and the pictures of its steps. `picture` gives one of the
    display as it is, `press` presses keys; None if the display has no keyboard."""

    def __init__(self, folder, name, program, picture, press):
        self.folder, self.name, self.program = folder, name, program
        self.picture, self.press = picture, press
        self.steps = 0

    def settled(self, before, after):
        """The picture after it has become another one than `before`, and `after` if that is known, and
        stays the same: what moves while one waits changes every 80 ms."""
        last, since = None, 0

        def calm():
            nonlocal last, since
            now = self.picture()
            if last is None or now.tobytes() != last.tobytes():
                last, since = now, time.monotonic()
            return (time.monotonic() - since > CALM and wayland.screen_in(last) is not None
                    and (before is None or last.tobytes() != before.tobytes())
                    and (after is None or last.tobytes() == after.tobytes()))
        try:
            quarn.wait_until(calm, f"what is to be seen on {self.name}")
        except quarn.Failure:
            if last is not None:
                last.save(self.folder / f"{self.name}-failure.png")
            raise
        return last

    def step(self, what, *keys, before=None, after=None):
        if keys:
            self.press(*keys)
        picture = self.settled(before, after)
        self.steps += 1
        target = self.folder / f"{self.name}-{self.steps}-{what}.png"
        picture.save(target)
        print(target.name, flush=True)
        return picture

    def walk(self):
        """All steps; gives the picture of the listing."""
        quarn.wait_until(lambda: len(self.program.listings()) >= 2 or not self.program.is_running(),
                         self.program.describe)
        # The box at the start takes keys until it goes.
        quarn.wait_until(self.is_ready, f"the end of the start on {self.name}")
        listing = self.step("listing")
        if self.press is None:
            return listing
        down = self.step("down", "Down", "Down", before=listing)
        menu = self.step("menu", "F9", before=down)
        closed = self.step("closed", "F11", before=menu, after=down)
        text = self.step("text", "Return", before=closed)
        self.step("back", "F11", before=text, after=closed)
        return listing

    def is_ready(self):
        picture = self.picture()
        return wayland.screen_in(picture) is not None and not wayland.shows_box(picture)

    def expect(self, condition, what):
        if not condition:
            raise quarn.Failure(f"{self.name}: not so: {what}")

    def expect_filled(self, picture):
        """The screen lies in the middle at the largest quarter step, in black."""
        left, top, scale = quarn.screen_in(picture.size)
        around = picture.copy()
        around.paste((0, 0, 0), (left, top, left + int(quarn.WIDTH * scale),
                                 top + int(quarn.HEIGHT * scale)))
        self.expect(around.getbbox() is None, "black around the screen")
        self.expect(wayland.screen_in(picture) == (left, top, scale),
                    f"the screen at {left}, {top}, {scale} times as large")

    def expect_scale(self, picture, scale):
        found = wayland.screen_in(picture)[2]
        self.expect(found == scale, f"{scale} times as large; it is {found} times")


@contextlib.contextmanager
def program_on(display, **environment):
    program = quarn.Program(display)
    quarn.make_folder(program.home / "Documents")
    quarn.make_file(program.home / "notes.txt", b"A text.\n")
    quarn.make_file(program.home / "song.mp3", b"x" * 3000)
    try:
        yield program.start(wait=False, **{"QUARN_SCALE": None, **environment})
    finally:
        # A display that has gone may have ended it.
        with contextlib.suppress(quarn.Failure):
            program.stop()


@contextlib.contextmanager
def display_of(*size, **options):
    display = quarn.Display(*size, **options)
    try:
        yield display
    finally:
        display.stop()


@contextlib.contextmanager
def compositor_on(display, *arguments):
    compositor = wayland.Compositor(display.environment(), *arguments)
    try:
        yield compositor
    finally:
        compositor.stop()


def on_x11(folder):
    for name, size, manager, scale in (("x11-bare", (720, 1440), False, None),
                                       ("x11-window", (1920, 1080), True, 2)):
        with display_of(*size, window_manager=manager) as display, program_on(display) as program:
            session = Session(folder, name, program,
                              lambda: display.client.picture(0, 0, *size), display.client.press)
            listing = session.walk()
            if scale:
                session.expect_scale(listing, scale)
            else:
                session.expect_filled(listing)


def on_wayland(folder):
    with display_of() as display:
        for name, size, density, scale in (("wayland-window", (1920, 1080), 1, 2),
                                           ("wayland-small", (800, 600), 1, 1),
                                           ("wayland-dense", (1600, 1200), 2, 2)):
            logical = [side // density for side in size]
            with compositor_on(display, "headless", logical, f"--scale={density}") as compositor, \
                    program_on(display, **compositor.environment()) as program:
                session = Session(folder, name, program, compositor.picture, None)
                session.expect_scale(session.walk(), scale)
    # Full screen it is shown to a seat, which a compositor without a display has none of.
    for size in ((240, 320), (320, 240), (480, 640), (640, 480), (720, 1440), (800, 600),
                 (1920, 1080)):
        with display_of(*size) as display, \
                compositor_on(display, "x11", size, "--shell=kiosk-shell.so") as compositor, \
                program_on(display, **compositor.environment()) as program:
            session = Session(folder, f"wayland-full-{size[0]}x{size[1]}", program,
                              compositor.picture, display.client.press)
            session.expect_filled(session.walk())


def on_vnc(folder):
    size = 480, 640
    with display_of() as display, \
            program_on(display, QT_QPA_PLATFORM=f"vnc:size={size[0]}x{size[1]}:port={PORT}",
                       LD_PRELOAD=str(quarn.stage_folder() / "modules" / "vncloopback.so")) as program:
        quarn.wait_until(lambda: listeners(PORT), "the server of VNC")
        expect_loopback(PORT)
        client = rfbclient.Client("127.0.0.1", PORT)
        session = Session(folder, "vnc", program, client.picture,
                          lambda *keys: client.press(*[SYMBOLS[key] for key in keys]))
        session.expect_filled(session.walk())
        client.close()


def expect_loopback(port):
    others = [address for address in listeners(port) if address not in LOOPBACK]
    if others:
        raise quarn.Failure(f"the server listens beyond this machine, and asks for no password: {others}")


def listeners(port):
    """The addresses on which somebody listens on a port, as the system writes them."""
    found = []
    for table in ("tcp", "tcp6"):
        for line in pathlib.Path("/proc/net", table).read_text().splitlines()[1:]:
            _, local, _, state, *_ = line.split()
            address, _, number = local.partition(":")
            if state == LISTENS and int(number, 16) == port:
                found.append(address)
    return found


def main():
    folder = pathlib.Path(sys.argv[1])
    failures = 0
    for kind in sys.argv[2:]:
        start = time.monotonic()
        try:
            {"x11": on_x11, "wayland": on_wayland, "vnc": on_vnc}[kind](folder)
            print(f"{kind}: all came about, in {time.monotonic() - start:.0f} s")
        except (quarn.Failure, OSError, subprocess.CalledProcessError) as failure:
            print(f"{kind}: {failure}", file=sys.stderr)
            failures += 1
    return min(failures, 1)


if __name__ == "__main__":
    sys.exit(main())
