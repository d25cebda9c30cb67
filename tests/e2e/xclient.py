"""A client of an X server that stays connected: it presses keys, moves the pointer, finds windows and
takes pictures in fractions of a millisecond, where tools would have to start for each."""

import contextlib
import io
import time

from PIL import Image
from Xlib import X, XK, display, error
from Xlib.ext import xtest

XK.load_keysym_group("xkb")

FIRST_KEYCODE, LAST_KEYCODE = 8, 255
TICK = 0.002  # seconds in which the server's clock, of milliseconds, goes on for sure


class Client:
    def __init__(self, name):
        # It warns where no permission is needed.
        with contextlib.redirect_stderr(io.StringIO()):
            self.connection = display.Display(name)
        self.root = self.connection.screen().root
        self.size = self.root.get_geometry()
        self.atoms = {}
        self.released = set()
        self.read_keys()

    def close(self):
        with contextlib.suppress(error.ConnectionClosedError, OSError):
            self.connection.close()

    def atom(self, name):
        if name not in self.atoms:
            self.atoms[name] = self.connection.intern_atom(name)
        return self.atoms[name]

    # Keys and buttons.

    def read_keys(self):
        """Notes which key gives a symbol, and whether with Shift."""
        mapping = self.connection.get_keyboard_mapping(
            FIRST_KEYCODE, LAST_KEYCODE - FIRST_KEYCODE + 1)
        self.codes = {}
        for shifted in (True, False):
            for code, symbols in reversed(list(enumerate(mapping, FIRST_KEYCODE))):
                if len(symbols) > shifted and symbols[shifted]:
                    self.codes[symbols[shifted]] = code, shifted

    def add_keys(self, names):
        """Gives the keyboard keys: {code: name}."""
        for code, name in names.items():
            self.connection.change_keyboard_mapping(code, [[XK.string_to_keysym(name)]])
        self.read_keys()

    def down(self, code):
        """A press in the millisecond of the key's release would be taken for its auto-repeat."""
        if code in self.released:
            self.connection.sync()
            time.sleep(TICK)  # waits: until the server's clock has gone on
            self.released.clear()
        xtest.fake_input(self.connection, X.KeyPress, code)

    def up(self, code):
        xtest.fake_input(self.connection, X.KeyRelease, code)
        self.released.add(code)

    def press(self, *names):
        """Presses and releases keys one after the other; returns when the server has done it."""
        for name in names:
            self.stroke(XK.string_to_keysym(name))
        self.connection.sync()

    def type(self, text):
        """Types a text of Latin letters."""
        for letter in text:
            self.stroke(ord(letter))
        self.connection.sync()

    def stroke(self, symbol):
        code, shifted = self.codes[symbol]
        shift = [self.codes[XK.XK_Shift_L][0]] if shifted else []
        strokes = [*shift, code]
        for each in strokes:
            self.down(each)
        for each in reversed(strokes):
            self.up(each)

    def hold(self, name):
        self.down(self.codes[XK.string_to_keysym(name)][0])
        self.connection.sync()

    def release(self, name):
        self.up(self.codes[XK.string_to_keysym(name)][0])
        self.connection.sync()

    def click(self, x, y, button):
        xtest.fake_input(self.connection, X.MotionNotify, x=x, y=y)
        xtest.fake_input(self.connection, X.ButtonPress, button)
        xtest.fake_input(self.connection, X.ButtonRelease, button)
        self.connection.sync()

    # Windows.

    def windows(self, name, pid=None):
        """The ids of the visible windows of this class, or of one process of it, as others see
        them: the lowest first."""
        return [window.id for window in self.visible(self.root, name)
                if pid is None or self.numbers("_NET_WM_PID", window) == [pid]]

    def visible(self, top, name):
        found = []
        for window in top.query_tree().children:
            with contextlib.suppress(error.BadWindow, error.BadDrawable):  # it has gone meanwhile
                if window.get_attributes().map_state != X.IsViewable:
                    continue
                if name in (window.get_wm_class() or ()):
                    found.append(window)
                else:
                    found += self.visible(window, name)
        return found

    def numbers(self, name, window=None):
        """The numbers that a property of a window, or of the root window, holds."""
        with contextlib.suppress(error.BadWindow):
            found = (window or self.root).get_full_property(self.atom(name), X.AnyPropertyType)
            return list(found.value) if found else []
        return []

    def active(self):
        """The id of the window that has the keys, as the window manager tells; None without."""
        return (self.numbers("_NET_ACTIVE_WINDOW") or [None])[0] or None

    def focus(self):
        """The id of the window that the server gives the keys to; None without one."""
        return getattr(self.connection.get_input_focus().focus, "id", None)

    def move(self, window, x, y):
        """Moves a window on the display, or asks the window manager to."""
        self.connection.create_resource_object("window", window).configure(x=x, y=y)
        self.connection.sync()

    def resize(self, window, width, height):
        """Makes a window another size, or asks the window manager to."""
        self.connection.create_resource_object("window", window).configure(width=width,
                                                                           height=height)
        self.connection.sync()

    def point(self, x, y):
        """Moves the pointer there."""
        xtest.fake_input(self.connection, X.MotionNotify, x=x, y=y)
        self.connection.sync()

    def place(self, window):
        """(left, top, width, height) of a window on the display; None if it has gone."""
        with contextlib.suppress(error.BadWindow, error.BadDrawable):
            drawable = self.connection.create_resource_object("window", window)
            size = drawable.get_geometry()
            corner = self.root.translate_coords(drawable, 0, 0)
            return corner.x, corner.y, size.width, size.height
        return None

    # Pictures.

    def picture(self, left, top, width, height):
        """What the display shows there; black beside it."""
        x, y = max(left, 0), max(top, 0)
        size = (min(left + width, self.size.width) - x, min(top + height, self.size.height) - y)
        if min(size) <= 0:
            return Image.new("RGB", (width, height))
        pixels = self.root.get_image(x, y, *size, X.ZPixmap, 0xffffffff).data
        part = Image.frombytes("RGB", size, pixels, "raw", "BGRX")
        return part.crop((left - x, top - y, left - x + width, top - y + height))
