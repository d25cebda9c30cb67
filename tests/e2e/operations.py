"""The file commands as a user gives them, by menus, answers and typed names, and trees of files to
give them on."""

import contextlib
import hashlib
import os
import pathlib
import random
import shutil
import stat

import keyscript
import quarn

BLACK, WHITE = (0, 0, 0), (255, 255, 255)
BOX_LEFT = 10
KEY_BAR = 15     # height of a question's answers
SMALLEST_BOX = 30

BLOCK = 524288   # bytes that the built-in copy reads at a time

# The keys that lead from a panel to a command.
COMMANDS = {
    "delete": ["softleft", "down", "select"],
    "copy": ["softleft", "down", "down", "right", "select"],
    "move": ["softleft", "down", "down", "right", "down", "select"],
    "paste": ["softleft", "down", "down", "right", "down", "down", "select"],
    "rename": ["softleft", "down", "down", "down", "select"],
    "new folder": ["softleft", "down", "down", "down", "down", "select"],
    "properties": ["softleft", "up", "select"],
}
TO_THE_TOP = ["pageup"] * 6


def listed(folder):
    """The names in the order of a panel's rows; the first is the way back."""
    folder = os.fsencode(folder)
    names = sorted(os.listdir(folder))
    folders = [name for name in names if os.path.isdir(os.path.join(folder, name))]
    rest = [name for name in names if name not in folders]
    return [os.fsdecode(name) for name in [b"..", *folders, *rest]]


class User:
    """Someone at the keys of a program whose two panels show `left` and `right`."""

    def __init__(self, program, left, right):
        self.program = program
        self.folders = {1: pathlib.Path(left), 2: pathlib.Path(right)}
        self.page = 1

    # What is seen.

    def box(self):
        """(top, bottom) of the message, question or progress box; None without one. Its left edge
        is a black line from top to bottom, and it is in the middle."""
        picture = self.program.screenshot()
        if picture is None:
            return None
        for top in range((quarn.HEIGHT - SMALLEST_BOX) // 2):
            bottom = quarn.HEIGHT - top
            if picture.getpixel((BOX_LEFT + 2, top + 1)) == BLACK \
                    and set(picture.crop((BOX_LEFT, top, BOX_LEFT + 1, bottom)).getdata()) \
                    == {BLACK}:
                return top, bottom
        return None

    def is_asked(self):
        """Whether a box offers answers: it ends with a black bar."""
        box = self.box()
        if box is None:
            return False
        bar = self.program.screenshot().crop(
            (BOX_LEFT + 2, box[1] - KEY_BAR, BOX_LEFT + 3, box[1]))
        return set(bar.getdata()) == {BLACK}

    def is_told(self):
        return self.box() is not None and not self.is_asked()

    def is_typing(self):
        """Whether the dialog for a name is open: it has a black line around it."""
        picture = self.program.screenshot()
        if picture is None:
            return False
        edge = list(picture.crop((BOX_LEFT - 1, 0, BOX_LEFT, quarn.HEIGHT)).getdata())
        return edge.count(BLACK) > 60 and self.box() is None

    def wait_question(self):
        quarn.wait_until(self.is_asked, "a question")

    def wait_message(self):
        quarn.wait_until(self.is_told, "a message")

    def wait_nothing(self):
        quarn.wait_until(lambda: self.box() is None and not self.is_typing(), "the box to go")

    # What is done.

    def go(self, page):
        if page != self.page:
            self.program.key("right" if page > self.page else "left")
        self.page = page

    def folder(self):
        return self.folders[self.page]

    def highlight(self, name):
        self.program.key(*TO_THE_TOP, *["down"] * listed(self.folder()).index(str(name)))

    def mark(self, *names):
        """Marks entries in the mode for several."""
        rows = listed(self.folder())
        keys, at = ["0", *TO_THE_TOP], 0
        for row in sorted(rows.index(str(name)) for name in names):
            keys += ["down"] * (row - at) + ["select"]
            at = row
        self.program.key(*keys)

    def choose(self, *names):
        """Highlights an entry, or marks several."""
        if len(names) == 1:
            self.highlight(names[0])
            return
        with self.watching(1):
            self.mark(*names)

    def command(self, name):
        self.program.key(*COMMANDS[name])

    def answer(self, yes):
        """Answers the question that is asked, and waits until it is gone."""
        self.wait_question()
        before = self.program.wait_stable().tobytes()
        self.program.key("softleft" if yes else "softright")

        def is_same():
            return self.program.screenshot().tobytes() == before

        quarn.wait_until(lambda: not is_same() or self.program.listings(self.program.mark),
                         "the answered question to go")
        # What was done has been listed. The next question may look the same, so none is seen to go.
        if is_same():
            self.program.wait_idle()

    def dismiss(self):
        """Closes a message."""
        self.wait_message()
        self.program.key("5")
        self.wait_nothing()

    @contextlib.contextmanager
    def watching(self, listings):
        """Waits until so many folders have been listed by what is done in it."""
        start = len(self.program.lines)
        yield
        quarn.wait_until(lambda: len(self.program.listings(start)) >= listings,
                         lambda: f"{listings} listings in {self.program.lines[start:]}")

    @contextlib.contextmanager
    def modifier(self):
        """Holds the modifier."""
        self.program.keydown("modifier")
        try:
            yield
        finally:
            self.program.keyup("modifier")

    def delete(self, *names, answers=None):
        """Deletes entries of the panel that is shown. `answers`: to each question, in order."""
        answers = [True] * len(names) if answers is None else answers
        self.choose(*names)
        with self.watching(answers.count(True) + (len(names) > 1)):
            self.command("delete")
            for yes in answers:
                self.answer(yes)
        self.wait_nothing()

    def put(self, command, *names, to, answers=(), built_in=False):
        """Copies or moves entries of the panel that is shown into that of the page `to`."""
        self.pick(command, *names)
        self.go(to)
        with self.modifier() if built_in else contextlib.nullcontext(), \
                self.watching(2 * len(names)):
            self.command("paste")
            for yes in answers:
                self.answer(yes)

    def pick(self, command, *names):
        """Chooses what the next paste is to copy or move."""
        self.choose(*names)
        with self.watching(0 if len(names) == 1 else 1):
            self.command(command)

    def type(self, text):
        """Types ASCII text instead of the one that the dialog holds."""
        quarn.wait_until(self.is_typing, "the dialog for a name")
        if text:
            self.program.display.client.type(text)
        else:
            self.press("BackSpace")

    def press(self, *keys):
        """Presses keys that a keyboard has and the phone has not."""
        self.program.display.client.press(*keys)

    def confirm(self, yes=True):
        quarn.wait_until(self.is_typing, "the dialog for a name")
        self.program.key("softleft" if yes else "softright")
        quarn.wait_until(lambda: not self.is_typing(), "the dialog to go")

    def relist(self):
        """Lists both panels anew by the switch of the rows' form, there and back."""
        with self.watching(4):
            self.program.key("hash", "hash")


class Gate:
    """A place at which processes stand still while the file PATH is there. One that does has made
    the file PATH.reached, and waits at the FIFO PATH.fifo."""

    def __init__(self, path):
        self.path = pathlib.Path(path)
        self.reached = pathlib.Path(f"{path}.reached")
        self.fifo = pathlib.Path(f"{path}.fifo")
        self.held_open = None
        os.mkfifo(self.fifo)

    def close(self):
        """From now on processes wait."""
        if self.held_open is not None:
            os.close(self.held_open)
            self.held_open = None
        self.reached.unlink(missing_ok=True)
        self.path.touch()

    def wait_reached(self):
        quarn.wait_until(self.reached.exists, f"a process at {self.path.name}")

    def step(self):
        """Lets the waiting process on, up to the next time."""
        self.wait_reached()
        self.reached.unlink()

        def opened():
            try:
                os.close(os.open(self.fifo, os.O_WRONLY | os.O_NONBLOCK))
                return True
            except OSError:  # it has told that it waits, but does not yet
                return False

        quarn.wait_until(opened, f"a reader of {self.fifo.name}")

    def open(self):
        """Lets the waiting process on; none waits any more."""
        self.wait_reached()
        self.path.unlink()
        self.step()

    def stand_open(self):
        """From now on no process waits, not even one that has seen the gate closed just before and
        is about to tell that it waits: there is something to be read for each."""
        self.path.unlink(missing_ok=True)
        self.held_open = os.open(self.fifo, os.O_RDWR | os.O_NONBLOCK)
        os.write(self.held_open, bytes(1000))


def make_tools_wait(program):
    """Has cp, mv and rm of the program wait at a gate while there is one. Gives the gates."""
    tools = quarn.make_folder(program.base / "tools")
    gates = {}
    for tool in ("cp", "mv", "rm"):
        script = tools / tool
        script.write_text(f"""#!/bin/sh
if [ -e "$HOME/{tool}.gate" ]; then
    : > "$HOME/{tool}.gate.reached"
    read -r line < "$HOME/{tool}.gate.fifo"
fi
exec {shutil.which(tool)} "$@"
""")
        script.chmod(0o755)
        gates[tool] = Gate(program.home / f"{tool}.gate")
    program.environment["PATH"] = f"{tools}:{program.environment['PATH']}"
    return gates


def inject_faults(program, *rules):
    """Starts the program with faults, each "CALL ACTION BYTES PATH". Gives the gate of those that
    hold."""
    gate = Gate(program.base / "fault.gate")
    program.environment.update(LD_PRELOAD=os.environ["QUARN_FAULT_LIBRARY"],
                               QUARN_FAULTS="\n".join(rules), QUARN_FAULT_GATE=str(gate.path))
    if "ASAN_OPTIONS" in program.environment:
        program.environment["ASAN_OPTIONS"] += ":verify_asan_link_order=0"
    return gate


class View:
    """A part of the screen, with holes where it is never the same, as reference pictures show
    it."""

    def __init__(self, program, *holes, part=None):
        self.program = program
        self.holes = holes
        self.part = part

    def screenshot(self):
        picture = self.program.screenshot()
        if picture is None:
            return None
        for hole in self.holes:
            picture = keyscript.masked(picture, hole)
        return picture.crop(self.part) if self.part else picture

    def check(self, name, renew):
        """The screen looks like reference/name.png, which is made first to renew it."""
        if renew and name not in keyscript.Script.renewed_names:
            keyscript.Script.renewed_names.add(name)
            keyscript.renewed(self, name, ())
        else:
            keyscript.compare(self, name, ())


# Trees.

def entry_text(path, times):
    info = os.lstat(path)
    fields = [oct(info.st_mode), f"{info.st_uid}:{info.st_gid}"]
    if stat.S_ISREG(info.st_mode):
        fields.append(hashlib.sha1(path.read_bytes()).hexdigest())
    if stat.S_ISLNK(info.st_mode):
        fields.append(f"-> {os.readlink(path)}")
    if times:
        fields.append(str(info.st_mtime_ns))
    return " ".join(fields)


def tree_text(top, times=False):
    """A line for each entry at and below `top`: kind and mode, owner, content or target, and with
    `times` the time of change. Trees with the same lines are the same."""
    top = pathlib.Path(top)
    if not os.path.lexists(top):
        return {}
    lines = {".": entry_text(top, times)}
    for folder, folders, files in os.walk(top):
        for name in folders + files:
            path = pathlib.Path(folder, name)
            lines[str(path.relative_to(top))] = entry_text(path, times)
    return lines


def names(folder):
    return sorted(os.listdir(folder))


LONGEST = "n" * 251 + ".txt"
ODD_NAMES = ["it's", "50% %1 %2 %%", "  two  blanks ", "new\nline", "Ünïcödé пример 名前", "-rf",
             "--help", "*?[a-z]", "&; | <>(){}~#!", "tab\there", LONGEST]


def make_variety(top):
    """A tree with some of everything, the same wherever it is made."""
    for name in ODD_NAMES:
        quarn.make_file(top / "odd" / name, name.encode())
    quarn.make_file(top / "empty")
    quarn.make_file(top / "program", b"#!/bin/sh\n").chmod(0o4755)
    quarn.make_file(top / "large", b"large" * 300000).chmod(0o440)
    quarn.make_file(top / ".hidden" / ".file", b"h")
    quarn.make_file(top / "Folder" / "deep" / "er" / "one", b"1").chmod(0o600)
    quarn.make_file(top / "Folder" / "two", b"2")
    quarn.make_folder(top / "Folder" / "void" / "in void")
    (top / "link to a file").symlink_to("large")
    (top / "link to a folder").symlink_to("Folder/deep")
    (top / "broken").symlink_to("no/where")
    os.mkfifo(top / "pipe", 0o600)
    (top / "Folder" / "void").chmod(0o711)
    for path in [*top.rglob("*"), top]:
        quarn.set_day(path, "2008-12-25")


def make_numbered_folder():
    """A folder in /tmp whose name is always as wide: digits are, whatever they are."""
    while True:
        folder = pathlib.Path(f"/tmp/q{random.SystemRandom().randrange(10**8):08}")
        with contextlib.suppress(FileExistsError):
            folder.mkdir()
            return folder


class Case(quarn.Case):
    """Tests that share one program and two folders, emptied before each of them. After a test that
    failed the next one gets another program."""

    settings = {"Full_info": 0}
    user = None

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.addClassCleanup(cls.end_program)

    @classmethod
    def end_program(cls):
        user, cls.user = cls.user, None
        if user is not None:
            user.program.stop()
            shutil.rmtree(user.program.desk, ignore_errors=True)

    @classmethod
    def prepare(cls, program):
        """What a class wants to have in the program's work folder before it starts."""

    @classmethod
    def begin_program(cls):
        desk = make_numbered_folder()
        program = quarn.Program(cls.display, quarn.make_folder(desk / "left"),
                                quarn.make_folder(desk / "right"), settings=cls.settings)
        program.desk = desk
        cls.user = User(program, desk / "left", desk / "right")
        cls.prepare(program)
        program.start(cwd=quarn.make_folder(program.base / "started"))

    def run(self, result=None):
        before = len(result.failures) + len(result.errors)
        super().run(result)
        if len(result.failures) + len(result.errors) > before:
            type(self).end_program()

    def setUp(self):
        if self.user is None:
            self.begin_program()
        self.program_ = self.user.program
        self.left, self.right = self.user.folders[1], self.user.folders[2]
        self.desk = self.left.parent
        self.user.go(1)
        self.empty()

    def empty(self):
        for path in self.desk.iterdir():
            if path.name not in ("left", "right"):
                self.remove(path)
        for folder in (self.left, self.right):
            folder.chmod(0o755)
            for path in folder.iterdir():
                self.remove(path)

    @staticmethod
    def remove(path):
        if path.is_dir() and not path.is_symlink():
            shutil.rmtree(path)
        else:
            path.unlink()

    def fill(self, **contents):
        """Makes files of the left folder, and lists it."""
        for name, content in contents.items():
            quarn.make_file(self.left / name, content)
        self.user.relist()

    def twin(self, make=make_variety):
        """Makes the same tree as left/tree and desk/twin, and lists the panels."""
        make(self.left / "tree")
        make(self.desk / "twin")
        self.user.relist()
        return self.desk / "twin"


class OwnProgramCase(quarn.Case):
    """Tests with a program each, whose panels show desk/left and desk/right."""

    maxDiff = None

    def make(self):
        """A user of a program that is not started yet; its panels are filled first."""
        program = self.program(settings={"Full_info": 0})
        self.desk = program.base / "desk"
        self.left = quarn.make_folder(self.desk / "left")
        self.right = quarn.make_folder(self.desk / "right")
        program.settings.update(Start_path_tab1=self.left, Start_path_tab2=self.right)
        program.write_settings()
        return User(program, self.left, self.right)

    def copy_built_in(self, user, name):
        user.put("copy", name, to=2, built_in=True)

    def check_alive(self, user):
        """It lists folders and, at no work, sleeps."""
        user.relist()
        user.program.wait_idle()
