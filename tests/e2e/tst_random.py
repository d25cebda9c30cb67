#!/usr/bin/python3
"""Commands at random, by keys, on the staged program: after each the files are those of a model.
QUARN_SEED plays another game than the usual one, QUARN_STEPS is its length. The thousands of
commands of tests/fileops/tst_random do the same without a display."""

import os
import random
import shutil

import operations
import quarn

SEED = int(os.environ.get("QUARN_SEED", "1"))
STEPS = int(os.environ.get("QUARN_STEPS", "40"))
NAMES = ["a", "b", "it's", "50% %1", ".hidden"]


class Model:
    """A folder that is worked on by plain calls, in the place of the commands."""

    def __init__(self, folders, top):
        self.top = quarn.make_folder(top)
        self.folders = {page: quarn.make_folder(top / path.name)
                        for page, path in folders.items()}

    def put(self, command, source, target):
        if not source.exists() or target in (source, *source.parents):
            return
        if command == "move":
            source.rename(target)
        elif source.is_dir():
            shutil.copytree(source, target)
        else:
            shutil.copy(source, target)


class TestRandomCommands(operations.Case):
    def test_filesBecomeWhatCommandsMakeOfThem(self):
        self.dice = random.Random(SEED)
        self.model = Model(self.user.folders, self.program_.base / "model")
        self.written = 0
        steps = [self.write, self.write, self.make_folder, self.rename, self.delete, self.put,
                 self.put]
        for number in range(1, STEPS + 1):
            self.what = ""
            try:
                self.user.go(self.dice.choice([1, 2]))
                self.user.relist()
                self.dice.choice(steps)()
                self.user.wait_nothing()
                for page, folder in self.user.folders.items():
                    self.assertEqual(operations.tree_text(folder),
                                     operations.tree_text(self.model.folders[page]))
            except AssertionError as failure:
                raise quarn.Failure(f"QUARN_SEED={SEED}, step {number}: {self.what}: {failure}") \
                    from failure

    def here(self):
        """The folder that is shown, and the model's."""
        return self.user.folder(), self.model.folders[self.user.page]

    def entry(self):
        entries = operations.names(self.here()[0])
        return self.dice.choice(entries) if entries else None

    def write(self):
        name = self.dice.choice(NAMES)
        self.written += 1
        for folder in self.here():
            if not (folder / name).is_dir():
                (folder / name).write_text(str(self.written))

    def make_folder(self):
        name = self.dice.choice([name for name in NAMES if "%" not in name])
        self.what = f"make {name}"
        self.user.command("new folder")
        self.user.type(name)
        self.user.confirm()
        made = self.here()[1] / name
        if made.exists():
            self.user.dismiss()
            return
        made.mkdir()
        (made / "inside").write_text("i")
        quarn.wait_until((self.here()[0] / name).is_dir, "the folder")
        (self.here()[0] / name / "inside").write_text("i")

    def rename(self):
        old, new = self.entry(), self.dice.choice(NAMES)
        if old is None:
            return
        self.what = f"rename {old} to {new}"
        self.user.highlight(old)
        self.user.command("rename")
        self.user.type(new)
        taken = (self.here()[1] / new).exists()
        with self.user.watching(0 if taken else 2):
            self.user.confirm()
        if taken:
            self.user.dismiss()
        else:
            (self.here()[1] / old).rename(self.here()[1] / new)

    def delete(self):
        name, yes = self.entry(), self.dice.random() < 0.7
        if name is None:
            return
        self.what = f"delete {name}: {yes}"
        self.user.delete(name, answers=[yes])
        if yes:
            self.remove(self.here()[1] / name)

    def put(self):
        name, command = self.entry(), self.dice.choice(["copy", "move"])
        if name is None:
            return
        page = self.dice.choice([1, 2, 3 - self.user.page])
        source = self.here()[1] / name
        target = self.model.folders[page] / name
        questions = (command == "move") + target.exists()
        answers = []
        while len(answers) < questions and False not in answers:
            answers.append(self.dice.random() < 0.8)
        self.what = f"{command} {name} from {self.user.page} to {page}: {answers}"
        self.user.put(command, name, to=page, answers=answers)
        if False in answers:
            return
        if target.exists():
            self.remove(target)
        self.model.put(command, source, target)


if __name__ == "__main__":
    quarn.main()
