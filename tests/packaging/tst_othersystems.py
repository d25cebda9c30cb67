#!/usr/bin/env python3
"""The scripts on a system that is not Debian: its package manager is hidden from them, and tools that
compile are stand-ins that note how they are called."""

import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
OF_DEBIAN = ("apt", "dpkg", "debconf")
NOTES = "#!/bin/sh\necho \"${0##*/} $*\" >>\"$NOTES\"\n"


class OtherSystem(unittest.TestCase):
    def setUp(self):
        self.base = pathlib.Path(tempfile.mkdtemp(prefix="qo"))
        self.addCleanup(shutil.rmtree, self.base)
        self.tools = self.base / "bin"
        self.tools.mkdir()
        for folder in ("/usr/bin", "/bin", "/usr/sbin", "/sbin"):
            for tool in os.scandir(folder):
                link = self.tools / tool.name
                if not tool.name.startswith(OF_DEBIAN) and not os.path.lexists(link):
                    link.symlink_to(tool.path)
        for tool in ("cmake", "ninja"):
            (self.tools / tool).unlink(missing_ok=True)
            (self.tools / tool).write_text(NOTES)
            (self.tools / tool).chmod(0o755)
        self.root = self.base / "quarn"
        shutil.copytree(ROOT / "scripts", self.root / "scripts")
        shutil.copy(ROOT / "CMakePresets.json", self.root)
        (self.root / "build" / "release").mkdir(parents=True)

    def run_script(self, name, *arguments):
        """(status, output and errors, calls of the tools)."""
        notes = self.base / "notes"
        notes.write_text("")
        done = subprocess.run([self.root / "scripts" / name, *arguments], check=False, text=True,
                              env={"PATH": str(self.tools), "HOME": str(self.base), "NOTES": str(notes)},
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        return done.returncode, done.stdout, notes.read_text().splitlines()

    def packages(self, section):
        """The first of the names in each line of a section of the list."""
        text = (ROOT / "scripts" / "packages.txt").read_text()
        lines = text.partition(f"[{section}]\n")[2].partition("\n[")[0].splitlines()
        return [line.split()[0] for line in lines if line and not line.startswith("#")]

    def test_package_manager_is_hidden(self):
        for tool in ("apt-get", "dpkg-query"):
            self.assertIsNone(shutil.which(tool, path=str(self.tools)))

    def test_building_names_what_is_needed_and_goes_on(self):
        status, output, calls = self.run_script("build")
        self.assertEqual(status, 0, output)
        self.assertIn("This is no Debian system", output)
        lines = output.splitlines()
        self.assertGreater(len(self.packages("build")), 10)
        self.assertEqual([name for name in self.packages("build") if name not in lines], [])
        self.assertTrue(any(call.startswith("cmake --fresh --preset release") for call in calls), calls)
        self.assertTrue(any(call.startswith("ninja") and call.endswith("stage") for call in calls), calls)

    def test_what_a_failed_build_says_is_not_hidden(self):
        (self.tools / "ninja").write_text("#!/bin/sh\necho no such compiler >&2\nexit 1\n")
        status, output, _ = self.run_script("build")
        self.assertEqual(status, 1)
        self.assertIn("no such compiler", output)

    def test_packages_are_refused_in_one_line(self):
        status, output, calls = self.run_script("package")
        self.assertEqual((status, calls), (1, []))
        self.assertIn("only Debian's own tools can build its packages", output.splitlines()[-1])

    def test_no_section_is_needed_that_the_list_does_not_have(self):
        for script in (self.root / "scripts").iterdir():
            for line in script.read_text().splitlines():
                words = line.split()
                if words[:1] == ["install_missing"] and "$@" not in line:
                    for section in words[1:]:
                        self.assertTrue(self.packages(section), f"{script.name}: {section}")


if __name__ == "__main__":
    sys.exit(unittest.main())
