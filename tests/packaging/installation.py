"""An installation of the built program in a scratch folder, packages made of it, and users."""

import fcntl
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "e2e"))

import quarn  # noqa: E402

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
LINE = "#!/bin/sh\n"
# Tells how it was called, and nothing else.
STAND_IN = LINE + "printf '%s\\n' \"$0\" \"$@\"\n"


def installed(prefix):
    """Installs the build tree QUARN_BUILD there."""
    build = os.environ.get("QUARN_BUILD") or sys.exit("QUARN_BUILD must name a build tree")
    # The tool notes in the build tree what it installs: one at a time.
    with open(pathlib.Path(build, "packaging", "install.lock"), "w") as lock:
        fcntl.flock(lock, fcntl.LOCK_EX)
        subprocess.run(["cmake", "--install", build, "--prefix", str(prefix)], check=True,
                       stdout=subprocess.DEVNULL)
    return prefix


def replace(path, text, mode=None):
    """Puts a file in the place of another one, as a package manager does: whoever has the old one
    open keeps it."""
    new = path.with_name(path.name + ".new")
    new.write_text(text)
    new.chmod(mode if mode is not None else path.stat().st_mode if path.exists() else 0o644)
    new.rename(path)


class Package:
    """A copy of an installation that can be another version of it. With `stand_in` its program is a
    script that tells how it was called."""

    def __init__(self, original, prefix, stand_in=True):
        self.original, self.prefix = original, pathlib.Path(prefix)
        self.launcher = self.prefix / "bin" / "quarn"
        self.data = self.prefix / "share" / "quarn"
        self.programs = self.prefix / "libexec" / "quarn"
        self.stand_in = stand_in
        self.lay_out()

    def lay_out(self):
        """Puts every file there anew, as an upgrade does."""
        shutil.rmtree(self.prefix, ignore_errors=True)
        # Other names for the same files will do: those that change are put in their place.
        shutil.copytree(self.original, self.prefix, copy_function=os.link)
        words = str(self.prefix).replace("'", "'\\''")
        replace(self.launcher, self.launcher.read_text().replace(str(self.original), words))
        if self.stand_in:
            replace(self.programs / "quarn", STAND_IN)

    def change_launcher(self, old, new):
        text = self.launcher.read_text()
        assert old in text, f"{old!r} is not in the launcher"
        replace(self.launcher, text.replace(old, new))

    def make_version(self, version, without=(), tables=()):
        """Makes it another version, which lacks the paths `without` and has other texts in `tables`,
        a dictionary."""
        self.change_launcher("\nedition='", f"\nedition='{version} ")
        text = self.launcher.read_text()
        first = text.index("\nversion='")
        replace(self.launcher, text[:first] + f"\nversion='{version}'" + text[text.index("\n", first + 1):])
        for path in without:
            for root in (self.data, self.programs):
                (root / path).unlink(missing_ok=True)
            self.change_launcher(f" {path}", "")
        for name, content in dict(tables).items():
            replace(self.data / name, content)


class User:
    """Somebody with a home folder and a folder of the session of their own."""

    def __init__(self, base, name="home"):
        self.home = pathlib.Path(base) / name
        self.home.mkdir(parents=True)
        self.runtime = pathlib.Path(tempfile.mkdtemp(prefix="qr", dir=base))
        self.environment = {"HOME": str(self.home), "XDG_RUNTIME_DIR": str(self.runtime),
                            "PATH": "/usr/local/bin:/usr/bin:/bin", "LANG": "C.UTF-8",
                            # Of a display that nobody looks for.
                            "DISPLAY": ":nowhere"}

    @property
    def work(self):
        return self.home / ".local" / "share" / "quarn"

    def start(self, launcher, *arguments, prefix=(), **environment):
        """Runs a launcher to its end; gives (status, lines of stdout, lines of stderr). Entries of
        None are taken out of the environment."""
        merged = {key: str(value) for key, value in {**self.environment, **environment}.items()
                  if value is not None}
        done = subprocess.run([*prefix, str(launcher), *arguments], env=merged, cwd="/",
                              capture_output=True, timeout=quarn.DEADLINE, check=False)
        return (done.returncode, os.fsdecode(done.stdout).splitlines(),
                os.fsdecode(done.stderr).splitlines())
