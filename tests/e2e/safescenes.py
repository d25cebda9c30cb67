"""Screens of safe operations and of the trash, brought about the same way each time."""

import operations
import quarn

EXTRAS = {"Safe": 1, "Trash": 1}
SHOTS = 300  # files of a copy that goes on
SHOT_BYTES = 5000
# Where something stands that is not the same each time: the entry that is worked on, the speed and the
# time that is left; the folder of the highlighted one.
MOVING = (12, 120, 216, 19), (12, 157, 216, 19)
NOTE = 0, 265, 240, 19
THROWN = (("Atlas.pdf", "/media/card/Books", "2026-11-20T18:05:00", 90000),
          ("sea.jpg", "/media/card/Photos", "2026-11-20T09:30:00", 40000),
          ("Morning.mp3", "/media/card/Music", "2026-11-14T21:12:00", 3000),
          ("Letter.txt", "/home/me", "2026-10-30T12:00:00", 2800))


def around(holes):
    """The rectangle around holes; empty if there are none."""
    if not holes:
        return ()
    left, top = (min(hole[side] for hole in holes) for side in (0, 1))
    right, bottom = (max(hole[side] + hole[side + 2] for hole in holes) for side in (0, 1))
    return left, top, right - left, bottom - top


def fill(left, right):
    """Two folders to copy between."""
    for name, day, there in (("Letter.txt", "2026-10-30", 2000), ("tour.sh", "2026-09-01", 90)):
        quarn.make_file(left / name, b"x" * 2800, day)
        quarn.make_file(right / name, b"x" * there, "2026-08-15")
    for number in range(SHOTS):
        quarn.make_file(left / "Shots" / f"{number:03}" / "shot.jpg", b"x" * SHOT_BYTES, "2026-07-18")
    quarn.make_file(left / "hills.jpg", b"x" * 40000, "2026-07-18")


def throw_away(home):
    """A trash with some entries in it."""
    trash = home / ".local" / "share" / "Trash"
    for name, folder, time, size in THROWN:
        quarn.make_file(trash / "files" / name, b"x" * size)
        quarn.make_file(trash / "info" / f"{name}.trashinfo",
                        f"[Trash Info]\nPath={folder}/{name}\nDeletionDate={time}\n".encode())
    for folder in (trash, trash / "files", trash / "info"):
        folder.chmod(0o700)


class Scenes:
    """A program, not started, whose panels show `left` and `right`."""

    def __init__(self, program, left, right):
        self.program = program
        self.left, self.right = left, right
        self.user = operations.User(program, left, right)
        fill(left, right)
        throw_away(program.home)
        self.gate = operations.inject_faults(program, f"sync hold 0 {right}",
                                             f"open 5 0 {left}/hills.jpg",
                                             f"open 13 0 {left}/Letter.txt")

    # Each of these calls seen(*holes) when it is on the screen; they come in this order.

    def paste(self, *names):
        self.user.go(1)
        self.user.choose(*names)
        self.user.command("copy")
        self.user.go(2)
        self.user.command("paste")

    def show_question(self, seen):
        self.paste("Letter.txt", "tour.sh")
        seen()
        self.program.key("softright")
        self.program.wait_idle()

    def show_failures(self, seen):
        for name in ("Letter.txt", "tour.sh"):
            (self.right / name).unlink()
        self.paste("Letter.txt", "hills.jpg", "tour.sh")
        quarn.wait_until((self.right / "tour.sh").exists, "what can be copied")
        self.program.wait_idle()
        seen(NOTE)
        self.program.key("softright")
        self.program.wait_idle()
        # What could not be copied is marked.
        self.user.go(1)
        self.program.key("0")
        self.program.wait_idle()

    def show_progress(self, seen):
        self.gate.close()
        self.paste("Shots")
        self.gate.step()
        quarn.wait_until((self.right / "Shots").exists, "some of the files")
        self.gate.wait_reached()
        quarn.wait_until(self.program.shows_box, "the progress")
        seen(*MOVING)
        self.program.key("softright")
        self.program.wait_idle()
        self.gate.stand_open()

    def show_trash(self, seen):
        self.program.key("softleft", "up", "select")
        self.program.wait_idle()
        seen()
        self.program.key("softright")
