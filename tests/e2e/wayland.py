"""A Wayland compositor of the tests' own, and pictures of what it shows."""

import functools
import os
import pathlib
import shutil
import subprocess
import tempfile

from PIL import Image, ImageChops

import quarn

SOCKET = "wayland-quarn"
ACCENT = (255, 100, 12)
LINE_TOP = 18  # pixels of the screen


class Compositor:
    """Started in the environment of a display; `backend` is headless, or x11 for one with keys in a
    window on that display."""

    def __init__(self, environment, backend, size, *options):
        self.runtime = pathlib.Path(tempfile.mkdtemp(prefix="qw"))
        log = self.runtime / "weston.log"
        self.process = subprocess.Popen(
            [*quarn.ENDS_WITH_US, "weston", f"--backend={backend}-backend.so", "--use-pixman",
             f"--width={size[0]}", f"--height={size[1]}", f"--socket={SOCKET}", "--no-config",
             "--debug", "--idle-time=0", f"--log={log}", *options],
            env={**environment, "XDG_RUNTIME_DIR": str(self.runtime)}, stdin=subprocess.DEVNULL,
            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        try:
            quarn.wait_until(lambda: (self.runtime / SOCKET).exists()
                             or self.process.poll() is not None, "the compositor")
            if self.process.poll() is not None:
                raise quarn.Failure(f"the compositor has ended: {log.read_text()}")
        except quarn.Failure:
            self.stop()
            raise

    def environment(self):
        """Of its clients."""
        return {"XDG_RUNTIME_DIR": str(self.runtime), "WAYLAND_DISPLAY": SOCKET,
                "QT_QPA_PLATFORM": "wayland"}

    def picture(self):
        """What it shows, by its own client."""
        with tempfile.TemporaryDirectory() as folder:
            subprocess.run(["weston-screenshooter"], cwd=folder, check=True,
                           env={**os.environ, **self.environment()}, stdout=subprocess.DEVNULL,
                           stderr=subprocess.DEVNULL)
            (picture,) = pathlib.Path(folder).iterdir()
            return Image.open(picture).convert("RGB")

    def stop(self):
        self.process.terminate()
        self.process.wait()
        shutil.rmtree(self.runtime, ignore_errors=True)


def screen_in(picture):
    """(left, top, scale) of the program's screen anywhere in a picture, by the line below its title;
    None if there is none."""
    apart = ImageChops.difference(picture, Image.new("RGB", picture.size, ACCENT)).split()
    most = functools.reduce(ImageChops.lighter, apart)
    mask = most.point(lambda value: 0 if value else 255)
    found = mask.getbbox()
    if found is None:
        return None
    line = mask.crop((0, found[1], picture.width, found[1] + 1)).getbbox()
    scale = (line[2] - line[0]) / quarn.WIDTH
    return line[0], round(found[1] - LINE_TOP * scale), scale


def shows_box(picture):
    """Whether a message or progress box is up, by its black title: a box is 220 wide and in the middle
    of the screen."""
    left, top, scale = screen_in(picture)
    return any(all(picture.getpixel((left + int(x * scale), top + int(y * scale))) == (0, 0, 0)
                   for x in (12, 40, 200, 228)) for y in range(70, 260))
