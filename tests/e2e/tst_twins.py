#!/usr/bin/python3
"""Entries whose names are no text, or odd ones, and beside each of them its twins: the entries that
it could be mistaken for. Commands by keys reach the one and leave the others alone."""

import contextlib
import os
import pathlib
import shutil
import signal
import unicodedata

import operations
import quarn
import tst_bluetooth

MARK = b"\xef\xbb\xbf"
NAMES = [b"\x80", b"a\xffb", b"\xc3", b"\xc0\xaf", b"\xed\xb2\x80", b"\xed\xa0\xbd\xed\xb8\x80",
         b"\xf4\x90\x80\x80", MARK, MARK + b"a", b"a" + MARK + b"b", MARK + MARK, b" a ", b"a\tb",
         b"-rf", b"*", b"~", "e\u0301".encode(), b"\xf0\x9f\x98\x80\x80", b"x" * 250 + b"\x80"]
FEW = [b"\x80", b"a\xffb", b"\xed\xb2\x80", MARK, MARK + b"a", b" a "]
LONGEST = 255


def twins_of(name):
    """What a name becomes by decoders that replace, drop or guess, and by a text that is changed."""
    text = name.decode(errors="replace")
    found = {text, name.decode(errors="ignore"), name.decode("latin-1"), text.replace("\ufffd", "?"),
             text.strip(), name.decode("utf-8-sig", errors="replace"), text.replace("\ufeff", ""),
             "\ufeff" + text, unicodedata.normalize("NFC", text),
             unicodedata.normalize("NFD", text)}
    twins = {twin.encode() for twin in found}
    twins.add(name.decode(errors="surrogateescape").encode(errors="surrogatepass"))
    return {twin for twin in twins
            if twin not in (b"", b".", b"..", name) and b"/" not in twin and len(twin) <= LONGEST}


def tree(top):
    """{path: (inode, mode, content or target)} of all entries below a folder, paths as bytes."""
    top = os.fsencode(top)
    entries = {}
    for folder, folders, files in os.walk(top):
        for name in folders + files:
            path = os.path.join(folder, name)
            info = os.lstat(path)
            content = None
            if os.path.islink(path):
                content = os.readlink(path)
            elif os.path.isfile(path):
                content = pathlib.Path(os.fsdecode(path)).read_bytes()
            entries[os.path.relpath(path, top)] = (info.st_ino, info.st_mode, content)
    return entries


def contents(entries):
    return {path: content for path, (_, _, content) in entries.items()}


class Case(operations.Case):
    maxDiff = None

    def setUp(self):
        super().setUp()
        self.user.relist()  # of nothing: the highlight is at the top, wherever it was before

    def at(self, name, folder=None):
        return os.path.join(os.fsencode(folder or self.left), name)

    def write(self, path, content):
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "wb") as file:
            file.write(content)

    def make(self, names, folders=False, twins_right=False):
        """The names and their twins in the left folder; as folders with a file of the same name."""
        for name in names:
            self.write(os.path.join(self.at(name), name) if folders else self.at(name),
                       b"odd " + name)
        for twin in set().union(*map(twins_of, names)) - set(names):
            self.write(self.at(twin), b"twin " + twin)
            if twins_right:
                self.write(self.at(twin, self.right), b"right twin " + twin)
        self.user.relist()

    @staticmethod
    def texts(names):
        return [os.fsdecode(name) for name in names]

    def check(self, expected, folder=None):
        """The entries are the expected ones, inodes included."""
        self.assertEqual(tree(folder or self.left), expected)


class TestManyEntries(Case):
    """All the names, marked at once."""

    def without(self, entries, names):
        return {path: entry for path, entry in entries.items()
                if not any(path == name or path.startswith(name + b"/") for name in names)}

    def test_filesAreDeleted(self):
        self.make(NAMES)
        expected = self.without(tree(self.left), NAMES)
        self.user.delete(*self.texts(NAMES))
        self.check(expected)

    def test_foldersAreDeleted(self):
        self.make(NAMES, folders=True)
        expected = self.without(tree(self.left), NAMES)
        self.user.delete(*self.texts(NAMES))
        self.check(expected)

    def test_linksToTwinsAreDeletedAlone(self):
        self.make(FEW)
        for name in FEW:
            os.unlink(self.at(name))
            os.symlink(min(twins_of(name) - set(FEW)), self.at(name))
        self.user.relist()
        expected = self.without(tree(self.left), FEW)
        self.user.delete(*self.texts(FEW))
        self.check(expected)

    def copy(self, folders, built_in):
        self.make(NAMES, folders=folders, twins_right=True)
        left, right = tree(self.left), tree(self.right)
        self.user.put("copy", *self.texts(NAMES), to=2, built_in=built_in)
        self.user.wait_nothing()
        self.check(left)
        self.check_copies(left, right)

    def check_copies(self, left, right):
        copies = {path: entry for path, entry in left.items() if path.split(b"/")[0] in NAMES}
        now = tree(self.right)
        self.assertEqual({path: now.get(path) for path in right}, right)
        self.assertEqual(contents(now), {**contents(right), **contents(copies)})

    def test_theShellCopiesFiles(self):
        self.copy(folders=False, built_in=False)

    def test_theShellCopiesFolders(self):
        self.copy(folders=True, built_in=False)

    def test_theBuiltInWayCopiesFiles(self):
        self.copy(folders=False, built_in=True)

    def test_theBuiltInWayCopiesFolders(self):
        self.copy(folders=True, built_in=True)

    def test_filesAreMoved(self):
        self.make(NAMES, twins_right=True)
        left, right = tree(self.left), tree(self.right)
        self.user.put("move", *self.texts(NAMES), to=2, answers=[True] * len(NAMES))
        self.user.wait_nothing()
        self.check(self.without(left, NAMES))
        self.check({**right, **{name: left[name] for name in NAMES}}, self.right)

    def test_entriesInTheWayAreReplaced(self):
        self.make(FEW, twins_right=True)
        for name in FEW:
            self.write(self.at(name, self.right), b"in the way")
        left, right = tree(self.left), tree(self.right)
        self.user.put("copy", *self.texts(FEW), to=2, answers=[True] * len(FEW))
        self.user.wait_nothing()
        self.check(left)
        now = tree(self.right)
        self.assertEqual(self.without(now, FEW), self.without(right, FEW))
        self.assertEqual({name: now[name][2] for name in FEW},
                         {name: left[name][2] for name in FEW})


class TestMovingByTheHelper(Case):
    """With bin/sys_gui in the place of mv."""

    @classmethod
    def prepare(cls, program):
        shutil.copy(os.environ["QUARN_SYS_GUI"], program.stage / "bin" / "sys_gui")

    def test_filesAreMoved(self):
        self.make(FEW, twins_right=True)
        left, right = tree(self.left), tree(self.right)
        self.user.put("move", *self.texts(FEW), to=2, answers=[True] * len(FEW))
        self.user.wait_nothing()
        self.check({path: entry for path, entry in left.items() if path not in FEW})
        self.check({**right, **{name: left[name] for name in FEW}}, self.right)


class TestNames(Case):
    def test_renamedByTyping(self):
        self.make(FEW)
        for number, name in enumerate(FEW):
            expected = tree(self.left)
            expected[b"plain%d" % number] = expected.pop(name)
            self.user.highlight(os.fsdecode(name))
            self.user.command("rename")
            self.user.type(f"plain{number}")
            with self.user.watching(2):
                self.user.confirm()
            self.check(expected)

    def test_typedTextIsAddedToTheBytes(self):
        self.make(FEW)
        for name in FEW:
            expected = tree(self.left)
            expected[name + b"yy"] = expected.pop(name)
            self.user.highlight(os.fsdecode(name))
            self.user.command("rename")
            quarn.wait_until(self.user.is_typing, "the dialog")
            self.user.press("End", "x", "BackSpace", "y", "y")
            with self.user.watching(2):
                self.user.confirm()
            self.check(expected)

    def test_aNameConfirmedAsItIsIsTaken(self):
        self.make(FEW)
        expected = tree(self.left)
        for name in FEW:
            self.user.highlight(os.fsdecode(name))
            self.user.command("rename")
            self.user.confirm()
            self.user.dismiss()
        self.check(expected)

    def test_aCopiedNameIsPastedAsItsBytes(self):
        self.make(FEW, twins_right=True)
        left, right = tree(self.left), tree(self.right)
        for name in FEW:
            self.user.go(1)
            self.user.highlight(os.fsdecode(name))
            self.user.command("rename")
            quarn.wait_until(self.user.is_typing, "the dialog")
            self.program_.key("modifier", "select")
            self.user.confirm(False)
            self.user.go(2)
            self.user.command("new folder")
            quarn.wait_until(self.user.is_typing, "the dialog")
            self.program_.key("modifier", "down", "select")
            with self.user.watching(1):
                self.user.confirm()
        self.check(left)
        now = tree(self.right)
        self.assertEqual({path: now.get(path) for path in right}, right)
        self.assertEqual(set(now) - set(right), set(FEW))


class TestFolders(Case):
    def enter(self, name):
        """Enters a folder of the left one; what follows is done in it."""
        self.user.highlight(os.fsdecode(name))
        with self.user.watching(1):
            self.program_.key("select")

    def leave(self):
        with self.user.watching(1):
            self.program_.key("folderup")

    def make_folder(self, name):
        self.user.command("new folder")
        self.user.type(name)
        with self.user.watching(1):
            self.user.confirm()

    def test_areEnteredAndLeft(self):
        self.make(FEW, folders=True)
        for name in FEW:
            self.enter(name)
            self.make_folder("in")
            self.leave()
            self.assertEqual(sorted(os.listdir(self.at(name))), sorted([name, b"in"]))
        # The way up led back.
        self.make_folder("up")
        self.assertIn(b"up", os.listdir(os.fsencode(self.left)))

    BOOKMARKS = ["softleft", *["down"] * 5, "select"]

    def test_areBookmarkedAndFoundAfterARestart(self):
        names = FEW[:4]
        self.make(names, folders=True)
        for name in names:
            self.enter(name)
            # The last item adds one; up from the first leads there.
            self.program_.key(*self.BOOKMARKS, "up", "select")
            self.user.type("here")
            self.user.confirm()
            self.leave()
        records = (self.program_.stage / "bookmark.cfg").read_bytes()
        self.assertEqual(records, b"".join(b"\nhere\n" + self.at(name) for name in names))
        self.program_.kill(signal.SIGTERM)
        self.program_.wait_end()
        self.program_.start()
        for number, name in enumerate(names):
            with self.user.watching(1):
                self.program_.key(*self.BOOKMARKS, *["down"] * number, "select")
            self.make_folder("jumped")
            self.assertIn(b"jumped", os.listdir(self.at(name)))
        self.end_program()


class TestOpening(Case):
    NOTE = """#!/bin/sh
cd "$HOME" && printf '%s\\0' "$@" > noting && mv noting noted
"""

    @classmethod
    def prepare(cls, program):
        for name in ("Probe", "LyraPlayer"):
            plugin = program.stage / "plugins" / name / name
            plugin.parent.mkdir(exist_ok=True)
            plugin.unlink(missing_ok=True)
            plugin.write_text(cls.NOTE)
            plugin.chmod(0o755)
        (program.stage / "fm_plugins.cfg").write_text("01 0 Probe\n")
        (program.stage / "mime_types.cfg").write_text("001 01 PIC\n")

    def let_box_go(self):
        """The busy box takes all keys."""
        quarn.wait_until(self.program_.shows_box, "the busy box")
        quarn.wait_until(lambda: not self.program_.shows_box(), "the busy box to go")

    def noted(self):
        """What the last plugin got."""
        path = self.program_.home / "noted"
        quarn.wait_until(path.exists, "the plugin")
        arguments = path.read_bytes().split(b"\0")[:-1]
        path.unlink()
        return arguments

    def test_aPluginGetsTheBytes(self):
        names = [name + b".pic" for name in FEW]
        self.make(names)
        for name in names:
            self.user.highlight(os.fsdecode(name))
            self.program_.key("select")
            self.let_box_go()
            self.assertEqual(self.noted(), [b"-d", self.at(name)])

    def test_aChosenPluginGetsTheBytes(self):
        self.make(FEW)
        for name in FEW:
            self.user.highlight(os.fsdecode(name))
            self.program_.with_modifier("1")
            self.let_box_go()
            self.assertEqual(self.noted(), [b"-d", self.at(name)])

    def test_thePlayerGetsTheBytes(self):
        self.make(FEW)
        for name in FEW:
            self.user.highlight(os.fsdecode(name))
            self.program_.key("music")
            self.assertEqual(self.noted(), [b"-d", self.at(name)])

    def test_thePlaylistHoldsTheBytes(self):
        names = [name + b".mp3" for name in FEW]
        self.make(names)
        for name in names:
            self.write(os.path.join(self.at(b"\xff"), name), b"")
        self.user.relist()
        self.user.choose(*self.texts([b"\xff", *names]))
        self.program_.key("music")
        songs = self.program_.stage / "plugins" / "LyraPlayer" / "TempList.m3u"
        self.assertEqual(self.noted(), [b"-d", os.fsencode(songs).replace(b"/plugins", b"//plugins")])
        inside = sorted(os.path.join(self.at(b"\xff"), name) for name in names)
        marked = [self.at(name) for name in sorted(names)]
        self.assertEqual(songs.read_bytes().split(b"\n"), [*inside, *marked, b"", b""])


class TestSharing(quarn.Case):
    """Names of messages on the bus are text: what is none cannot be named there."""

    def send(self, name):
        """What the sending service got for a file: its name, or None after a message."""
        with contextlib.ExitStack() as stack:
            services = tst_bluetooth.Services(stack)
            sender = self.program()
            stack.callback(sender.stop)
            for each in (name, *twins_of(name)):
                with open(os.path.join(os.fsencode(sender.home), each), "wb") as file:
                    file.write(each)
            sender.start(DBUS_SYSTEM_BUS_ADDRESS=services.address,
                         DBUS_SESSION_BUS_ADDRESS=services.address)
            user = operations.User(sender, sender.home, "/")
            user.highlight(os.fsdecode(name))
            before = sender.wait_stable()
            sender.key(*tst_bluetooth.TO_BLUETOOTH)
            sender.wait_change(before)
            if user.is_told():
                self.assertIsNone(services.transfer())
                return None
            sender.key("select")
            got = quarn.wait_until(lambda: services.transfer() or user.is_told(),
                                   "the transfer, or a message")
            if got is True:
                self.assertIsNone(services.transfer())
                return None
            return os.path.basename(os.fsencode(str(got["Filename"])))

    def test_textIsSentUnderItsVeryName(self):
        for name in (MARK + b"a.txt", "e\u0301.txt".encode()):
            self.assertEqual(self.send(name), name)

    def test_whatIsNoTextIsNotSentAsItsTwin(self):
        for name in (b"a\xffb.txt", b"\xed\xb2\x80.txt"):
            self.assertIn(self.send(name), (None, name))


del Case  # it is no test itself

if __name__ == "__main__":
    quarn.main()
