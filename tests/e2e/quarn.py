"""Drives the staged program as a user does: a virtual display, a copy of the work folder, keys,
clicks, the debug stream and pictures of the window."""

import contextlib
import fcntl
import functools
import os
import pathlib
import re
import select
import shutil
import signal
import subprocess
import sys
import tempfile
import threading
import time
import unittest

import xclient

WIDTH, HEIGHT = 240, 320
DEADLINE = 60  # seconds; for what takes a fraction of one on an idle machine
LARGE = 1000000  # bytes
POLL = 0.04    # seconds between two looks at something that is awaited; each look is work

# Names of the phone's keys, each with the X key that stands for it.
KEYS = {
    "up": "Up", "down": "Down", "left": "Left", "right": "Right", "select": "Return",
    "modifier": "F1", "hide": "F2", "folderup": "F3", "softleft": "F9", "softright": "F11",
    "pageup": "Prior", "pagedown": "Next", "music": "F26", "prev": "F28", "next": "F29",
    "star": "asterisk", "hash": "numbersign", **{digit: digit for digit in "0123456789"},
}

# What a keyboard has no keys for.
SPARE_KEYCODES = {247: "F26", 248: "F28", 249: "F29"}

# F12 asks the active window to close, as its button or a task bar would.
MANAGER_SETTINGS = """<?xml version="1.0"?>
<openbox_config xmlns="http://openbox.org/3.4/rc">
  <keyboard><keybind key="F12"><action name="Close"/></keybind></keyboard>
</openbox_config>
"""

# Root reads and writes everything; with these the program is bound as a user is.
WITHOUT_ROOT_POWERS = ["setpriv", "--bounding-set", "-dac_override,-dac_read_search",
                       "--inh-caps", "-all"]
ENDS_WITH_US = ["setpriv", "--pdeathsig", "KILL"]


class Failure(AssertionError):
    pass


def wait_until(condition, what="the condition", deadline=DEADLINE):
    """Polls until condition() is true, and gives its value."""
    end = time.monotonic() + deadline
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() > end:
            what = what() if callable(what) else what
            raise Failure(f"not within {deadline} s: {what}")
        time.sleep(POLL)  # waits: the interval of polling


def stage_folder():
    stage = os.environ.get("QUARN_STAGE")
    if not stage or not (pathlib.Path(stage) / "quarn").exists():
        sys.exit("QUARN_STAGE must name a staged work folder")
    return pathlib.Path(stage)


def screen_in(size):
    """(left, top, scale) of the screen in a window of this size whose scale follows it."""
    width, height = size
    scale = min(6, max(0.25, min(width / WIDTH, height / HEIGHT) // 0.25 * 0.25))
    return int(width - WIDTH * scale) // 2, int(height - HEIGHT * scale) // 2, scale


def copy_of_stage(source, target):
    """Programs are large and pictures many, and nobody writes into them: another name will do. A
    test that wants another picture takes the name away first."""
    if source.endswith(".png") or os.access(source, os.X_OK) and os.path.getsize(source) > LARGE:
        with contextlib.suppress(OSError):  # another file system
            os.link(source, target)
            return target
    return shutil.copy2(source, target)


def newest_picture():
    """When a staged picture was last written, in nanoseconds."""
    return max(path.stat().st_mtime_ns for path in stage_folder().glob("**/*.png"))


@functools.cache
def is_sanitized():
    """Whether the staged program is the one that is built with the sanitizers."""
    return b"__asan_init" in (stage_folder() / "quarn").read_bytes()


def processes():
    """(pid, parent, state) of every process."""
    for entry in os.listdir("/proc"):
        if entry.isdigit():
            with contextlib.suppress(OSError):
                stat = pathlib.Path("/proc", entry, "stat").read_text(errors="replace")
                fields = stat.rpartition(")")[2].split()
                yield int(entry), int(fields[1]), fields[0]


def environment_of(pid):
    with contextlib.suppress(OSError):
        return pathlib.Path("/proc", str(pid), "environ").read_bytes().split(b"\0")
    return []


@contextlib.contextmanager
def trashes(alone=False):
    """The trashes of the file systems, which all programs of the user share: with others who only
    look at them, or alone, for who puts something there."""
    with open(os.path.join(tempfile.gettempdir(), "quarn-trash-test.lock"), "w") as lock:
        fcntl.flock(lock, fcntl.LOCK_EX if alone else fcntl.LOCK_SH)
        yield


class Display:
    """A virtual display of its own, optionally with a window manager."""

    def __init__(self, width=300, height=400, window_manager=False):
        self.folder = tempfile.mkdtemp(prefix="qd")
        reading, writing = os.pipe()
        self.server = subprocess.Popen(
            [*ENDS_WITH_US, "Xvfb", "-displayfd", str(writing), "-screen", "0",
             f"{width}x{height}x24", "-nolisten", "tcp", "-noreset"],
            pass_fds=[writing], stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
            stderr=subprocess.DEVNULL)
        os.close(writing)
        with open(reading) as pipe:
            ready, _, _ = select.select([pipe], [], [], DEADLINE)
            number = pipe.readline().strip() if ready else ""
        if not number:
            self.stop()
            raise Failure("the virtual display did not start")
        self.name = f":{number}"
        self.client = xclient.Client(self.name)
        self.client.add_keys(SPARE_KEYCODES)
        self.manager = self.start_manager() if window_manager else None

    def start_manager(self):
        settings = pathlib.Path(self.folder, "openbox.xml")
        settings.write_text(MANAGER_SETTINGS)
        manager = subprocess.Popen(
            [*ENDS_WITH_US, "openbox", "--config-file", str(settings)], env=self.environment(),
            stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        wait_until(lambda: self.client.numbers("_NET_SUPPORTING_WM_CHECK"), "a window manager")
        return manager

    def environment(self):
        # No session bus: without an address its library would look for one, and leaks if none is.
        # Nor does the toolkit ask it for a portal; newer ones leak the question if there is no bus.
        return {"DBUS_SESSION_BUS_ADDRESS": "unix:path=/nonexistent",
                "QT_NO_XDG_DESKTOP_PORTAL": "1",
                "PATH": "/usr/local/bin:/usr/bin:/bin", "DISPLAY": self.name, "TZ": "UTC",
                "LANG": "C.UTF-8", "HOME": self.folder, "XDG_RUNTIME_DIR": self.folder}

    def run(self, *command):
        """What an X client prints; empty if it fails."""
        done = subprocess.run(command, env=self.environment(), capture_output=True, text=True,
                              timeout=DEADLINE, check=False)
        return done.stdout if done.returncode == 0 else ""

    def pressed(self, *names):
        """Presses and releases phone keys, one after the other."""
        self.client.press(*[KEYS[name] for name in names])

    def windows(self, pid=None):
        """The ids of the visible windows of the program, or of one process of it."""
        return self.client.windows("quarn", pid)

    def stop(self):
        if hasattr(self, "client"):
            self.client.close()
        for process in (getattr(self, "manager", None), self.server):
            if process is not None:
                process.kill()
                process.wait()
        shutil.rmtree(self.folder, ignore_errors=True)


class Watched:
    """What can be seen of a program from outside. `process` is what it was started as."""

    def pid(self):
        """The process; None if it was not started from here."""
        return self.process.pid if self.process else None

    def threads(self):
        """What the system says of each of its threads."""
        tasks = pathlib.Path("/proc", str(self.pid()), "task")
        for task in tasks.iterdir() if tasks.exists() else ():
            with contextlib.suppress(FileNotFoundError, ProcessLookupError):  # it has just ended
                yield (task / "status").read_text()

    def wake_ups(self):
        """How often its threads have gone to sleep by themselves."""
        return sum(int(re.search(r"^voluntary_ctxt_switches:\s+(\d+)", status, re.MULTILINE)[1])
                   for status in self.threads())

    def is_busy(self):
        """Whether a thread of it works, or would if it were given a processor."""
        return any(re.search(r"^State:\s+[RD]", status, re.MULTILINE)
                   for status in self.threads())

    def wait_idle(self, calm=0.3, deadline=DEADLINE):
        """Waits until the program has slept for `calm` seconds and nothing has woken it."""
        last, since = self.wake_ups(), time.monotonic()

        def is_calm():
            nonlocal last, since
            now = self.wake_ups()
            if now != last or self.is_busy():
                last, since = now, time.monotonic()
            return time.monotonic() - since >= calm

        wait_until(is_calm, "the program to become idle", deadline)


class Program(Watched):
    """One running copy of the program with a work folder, home and runtime folder of its own.

    It must be stopped; stop() also fails if a process that it started is still there. Unless
    `player` says so the music player is not installed, and its keys give a message. What the group
    Extras of the settings switches is off unless `extras` has it. With Trash nobody puts something
    into the trashes of the file systems while it is there, unless it has them `alone` already."""

    def __init__(self, display, folder=None, second_folder="/", settings=None, name="work",
                 player=False, extras=None, alone=False):
        self.display = display
        self.held = contextlib.ExitStack()
        if (extras or {}).get("Trash") and not alone:
            self.held.enter_context(trashes())
        self.base = pathlib.Path(tempfile.mkdtemp(prefix="q"))
        self.stage = self.base / name
        self.home = self.base / "home"
        self.runtime = self.base / "run"
        self.home.mkdir()
        self.runtime.mkdir(mode=0o700)
        shutil.copytree(stage_folder(), self.stage, symlinks=True, copy_function=copy_of_stage)
        if not player:
            (self.stage / "plugins" / "LyraPlayer" / "LyraPlayer").unlink(missing_ok=True)
        self.settings = {"Work_folder": f"{self.stage}/", "Start_path_tab1": folder or self.home,
                         "Start_path_tab2": second_folder, "Language": "english",
                         "Full_screen": 0, "Header_type": 3, "Full_info": 1, **(settings or {})}
        self.extras = extras or {}
        self.write_settings()
        self.environment = {**display.environment(), "HOME": str(self.home), "QUARN_SCALE": "1",
                            "XDG_RUNTIME_DIR": str(self.runtime), "QT_QPA_PLATFORM": "xcb"}
        for variable in ("ASAN_OPTIONS", "LSAN_OPTIONS", "UBSAN_OPTIONS"):
            if variable in os.environ:
                self.environment[variable] = os.environ[variable]
        # The toolkit's keyboard library copies counted strings that no zero ends.
        if "ASAN_OPTIONS" in self.environment:
            self.environment["ASAN_OPTIONS"] += ":strict_string_checks=0"
        self.process = None
        self.lines = []
        self.mark = 0
        self.place = None

    def write_settings(self):
        def lines(group):
            return "".join(f"{key} = {value}\n" for key, value in group.items()
                           if value is not None)

        text = f"[Setting]\n{lines(self.settings)}"
        if self.extras:
            text += f"[Extras]\n{lines(self.extras)}"
        (self.stage / "fm.cfg").write_text(text)

    # Starting and ending.

    def command(self, start=None, prefix=()):
        return [*prefix, *(start or [str(self.stage / "quarn")])]

    def start(self, start=None, prefix=(), cwd="/", wait=True, **environment):
        """Starts the program by its absolute path unless told otherwise. Environment entries of
        None are taken away. With `wait` it is ready for keys afterwards."""
        if self.process is not None:
            self.reader.join(DEADLINE)
            self.process.stderr.close()
        self.lines, self.mark, self.place = [], 0, None
        self.process = self.spawn(start, [*ENDS_WITH_US, *prefix], cwd, **environment)
        self.reader = threading.Thread(target=self.read, args=(self.process.stderr, self.lines),
                                       daemon=True)
        self.reader.start()
        if wait:
            self.wait_ready()
        return self

    def spawn(self, start=None, prefix=(), cwd="/", **environment):
        """Only starts a process; the caller looks after it."""
        merged = {key: value for key, value in {**self.environment, **environment}.items()
                  if value is not None}
        return subprocess.Popen(self.command(start, prefix), cwd=cwd, env=merged,
                                stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                                stderr=subprocess.PIPE)

    @staticmethod
    def read(stream, lines):
        for line in stream:
            lines.append(line.decode(errors="surrogateescape").rstrip("\n"))

    def start_again(self, **environment):
        """A second start; waits for its end. Gives (status, debug lines)."""
        second = self.spawn(**environment)
        try:
            _, errors = second.communicate(timeout=DEADLINE)
        finally:
            second.kill()
            second.wait()
        return second.returncode, errors.decode(errors="replace").splitlines()

    def wait_ready(self):
        """Waits until both panels are listed and the start box, which takes all keys, is gone."""
        wait_until(lambda: len(self.listings()) >= 2 or not self.is_running(), self.describe)
        if not self.is_running():
            raise Failure(f"ended with {self.process.poll()}: {self.lines}")
        wait_until(lambda: not self.shows_box(), "the start box to go")

    def shows_box(self):
        """Whether a message, question or progress box is up, by its black title: a box is 220 wide
        and in the middle. Not to be asked on the about page, which is black."""
        picture = self.screenshot()
        if picture is None:
            return True
        left, top, scale = screen_in(picture.size)
        return any(all(picture.getpixel((left + int(x * scale), top + int(y * scale))) == (0, 0, 0)
                       for x in (12, 40, 200, 228)) for y in range(70, 260))

    def is_running(self):
        return self.process.poll() is None

    def wait_end(self, deadline=DEADLINE):
        """The exit status of the program, which ends by itself."""
        wait_until(lambda: self.process.poll() is not None, "the program to end", deadline)
        self.reader.join(DEADLINE)
        return self.process.returncode

    def kill(self, number=signal.SIGKILL):
        self.process.send_signal(number)

    def relatives(self):
        """Processes that have this program's home, apart from itself."""
        home = os.fsencode(f"HOME={self.home}")
        return [pid for pid, _, state in processes()
                if state != "Z" and home in environment_of(pid)
                and (self.process is None or pid != self.process.pid)]

    def stop(self):
        """Ends the program and takes its folders away. The second time it does nothing."""
        if not self.base.exists():
            return
        self.held.close()
        crashed = None
        if self.process is not None:
            crashed = self.process.poll() if self.process.poll() not in (None, 0, -9, -15) else None
            if self.is_running():
                self.kill(signal.SIGCONT)
                self.kill(signal.SIGTERM if is_sanitized() else signal.SIGKILL)
            try:
                self.process.wait(DEADLINE)
            except subprocess.TimeoutExpired:
                self.kill()
                self.process.wait()
        with contextlib.suppress(Failure):  # what it has started may be about to end
            wait_until(lambda: not self.relatives())
        left = self.relatives()
        for pid in left:
            with contextlib.suppress(ProcessLookupError):
                os.kill(pid, signal.SIGKILL)
        if self.process is not None:
            self.reader.join(DEADLINE)
            self.process.stderr.close()
        subprocess.run(["chmod", "-R", "u+rwX", self.base], check=False)
        shutil.rmtree(self.base, ignore_errors=True)
        if crashed is not None:
            raise Failure(f"the program ended with {crashed}: {self.lines}")
        if left:
            raise Failure(f"processes survived: {left}")
        report = [line for line in self.lines if "Sanitizer" in line or "runtime error" in line]
        if report:
            raise Failure("\n".join(self.lines))

    # The debug stream.

    def describe(self):
        return f"got these lines: {self.lines}"

    def listings(self, start=0):
        head = "fb::set path "
        return [line[len(head):] for line in self.lines[start:] if line.startswith(head)]

    def wait_for_line(self, text, start=0, deadline=DEADLINE):
        return wait_until(lambda: text in self.lines[start:],
                          lambda: f"the line {text!r} in {self.lines[start:]}", deadline)

    def wait_for_listing(self, path, deadline=DEADLINE):
        """A listing of the folder since the last key."""
        wait_until(lambda: str(path) in self.listings(self.mark),
                   lambda: f"a listing of {path}; got {self.listings(self.mark)}", deadline)

    def list_again(self):
        """Presses the key that lists the folder at the start anew until it is answered: a box that
        is still to come, or to go, takes it."""
        mark = len(self.lines)

        def answered():
            self.key("hash")
            return str(self.home) in self.listings(mark)

        wait_until(answered, "a listing of the folder at the start")

    # What the user does.

    def key(self, *names):
        """Presses and releases phone keys, one after the other."""
        self.mark = len(self.lines)
        self.display.pressed(*names)

    def keydown(self, name):
        self.mark = len(self.lines)
        self.display.client.hold(KEYS[name])

    def keyup(self, name):
        self.display.client.release(KEYS[name])

    def with_modifier(self, *names):
        """Presses keys while the modifier is held."""
        self.keydown("modifier")
        self.key(*names)
        self.keyup("modifier")

    def click(self, x, y, button=1):
        """A click at a point of the screen, in pixels of the window."""
        self.mark = len(self.lines)
        left, top, _, _ = self.rectangle()
        self.display.client.click(left + x, top + y, button)

    # What the user sees.

    def window(self):
        """The id of the visible window; None without one."""
        windows = self.display.windows(self.process.pid if self.process else None)
        return windows[0] if windows else None

    def rectangle(self):
        """(left, top, width, height) of the window on the display; None without one."""
        if self.place is None:
            window = self.window()
            if window is None:
                return None
            place = self.display.client.place(window)
            if place is None:
                return None
            if self.display.manager is not None:
                return place  # the manager may move it at any time
            self.place = place
        return self.place

    def screenshot(self):
        """A picture of the window; None without one."""
        place = self.rectangle()
        if place is None:
            return None
        return self.display.client.picture(*place)

    def wait_stable(self, deadline=DEADLINE):
        """The picture as soon as two pictures that follow one another are equal, and the program has
        slept meanwhile: with keys that it has not looked at yet it would not."""
        last, slept = None, None

        def settled():
            nonlocal last, slept
            before, last = last, self.screenshot()
            slept_before, slept = slept, None if self.is_busy() else self.wake_ups()
            return (last is not None and before is not None and last.tobytes() == before.tobytes()
                    and slept is not None and slept == slept_before)

        wait_until(settled, "a picture that stays the same", deadline)
        return last

    def wait_change(self, before, deadline=DEADLINE):
        """The settled picture after it has become another one than `before`."""
        def changed():
            now = self.screenshot()
            return now is not None and now.tobytes() != before.tobytes()

        wait_until(changed, "the picture to change", deadline)
        return self.wait_stable(deadline)

    def wait_hidden(self):
        wait_until(lambda: self.window() is None, "the window to go")
        self.place = None

    def wait_shown(self):
        self.place = None
        wait_until(self.rectangle, "the window to come")


def make_file(path, content=b"", stamp="2008-03-05"):
    """A file of this content and day, the same wherever and whenever it is made."""
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_bytes(content)
    set_day(path, stamp)
    return path


def make_folder(path, stamp="2008-12-25"):
    path.mkdir(parents=True, exist_ok=True)
    set_day(path, stamp)
    return path


def set_day(path, stamp):
    seconds = time.mktime(time.strptime(f"{stamp} 12:00 UTC", "%Y-%m-%d %H:%M %Z"))
    os.utime(path, (seconds, seconds), follow_symlinks=False)


class Case(unittest.TestCase):
    """A test with a display that its class shares."""

    display_options = {}

    @classmethod
    def setUpClass(cls):
        cls.display = Display(**cls.display_options)
        cls.addClassCleanup(cls.display.stop)
        cls.addClassCleanup(cls.check_pictures, newest_picture())

    @staticmethod
    def check_pictures(before):
        """All programs have the same pictures."""
        if newest_picture() != before:
            raise Failure("a test has written into a staged picture")

    def program(self, *arguments, **options):
        """A program that is stopped when the test is over; not started yet."""
        program = Program(self.display, *arguments, **options)
        self.addCleanup(program.stop)
        return program

    def scratch(self):
        folder = pathlib.Path(tempfile.mkdtemp(prefix="qs"))
        self.addCleanup(shutil.rmtree, folder, True)
        return folder


def main():
    os.environ["TZ"] = "UTC"
    time.tzset()
    unittest.main(verbosity=2)
