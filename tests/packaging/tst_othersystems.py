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

    def expect_named(self, output, *sections):
        self.assertIn("This is no Debian system", output)
        lines = output.splitlines()
        for section in sections:
            self.assertEqual([name for name in self.packages(section) if name not in lines], [], section)

    def stand_in(self, name, script=NOTES):
        tool = self.tools / name
        tool.unlink(missing_ok=True)
        tool.write_text(script)
        tool.chmod(0o755)

    def test_running_names_what_is_needed_and_goes_on(self):
        program = self.root / "build" / "stage" / "quarn"
        program.parent.mkdir(parents=True)
        program.write_text("#!/bin/sh\necho fb::set path / >&2\necho fb::set path / >&2\nexit 3\n")
        program.chmod(0o755)
        _, output, calls = self.run_script("run", "--once")
        self.expect_named(output, "build", "run", "screen")
        self.assertTrue(any(call.startswith("ninja") for call in calls), calls)
        self.assertIn("fb::set path /", output.splitlines())

    def test_testing_names_what_is_needed_and_goes_on(self):
        self.stand_in("ctest")
        status, output, calls = self.run_script("test", "--quick")
        self.expect_named(output, "build", "run", "screen", "test")
        self.assertTrue(any(call.startswith("ctest --preset release") for call in calls), calls)
        self.assertEqual(status, 0, output)

    def test_making_pictures_names_what_is_needed_and_goes_on(self):
        _, output, calls = self.run_script("pictures")
        self.expect_named(output, "build", "run", "screen", "test", "pictures")
        self.assertIn("--target faultinjector", calls[-1])

    def test_trying_displays_names_what_is_needed_and_goes_on(self):
        _, output, calls = self.run_script("try-displays")
        self.expect_named(output, "build", "run", "test", "displays")
        self.assertTrue(any(call.startswith("ninja") for call in calls), calls)
        self.assertIn("Pictures: ", output)

    def test_trying_a_device_names_what_is_needed_and_looks_for_a_kernel_here(self):
        # Of a machine that has one it is as far as this.
        self.stand_in("qtpaths6", "#!/bin/sh\necho qtpaths6 >>\"$NOTES\"\nexit 1\n")
        self.stand_in("qmake6", "#!/bin/sh\nexit 1\n")
        (self.tools / "uname").unlink()
        self.stand_in("uname", "#!/bin/sh\necho x86_64\n")
        _, output, calls = self.run_script("try-device")
        self.expect_named(output, "build", "run", "screen", "device")
        self.assertTrue("this machine has none that can be read" in output or "qtpaths6" in calls, output)

    def test_what_needs_debians_tools_says_so(self):
        for script, release in (("try-debian", "trixie"), ("package", "trixie"), ("cross", "arm64")):
            status, output, calls = self.run_script(script, release)
            self.assertEqual((status, calls), (1, []), (script, output))
            self.expect_named(output, "chroot")
            self.assertIn("apt is missing, which a bare system is made with", output)

    def test_no_section_is_needed_that_the_list_does_not_have(self):
        for script in (self.root / "scripts").iterdir():
            for line in script.read_text().splitlines():
                words = line.split()
                if words[:1] == ["install_missing"] and "$@" not in line:
                    for section in words[1:]:
                        self.assertTrue(self.packages(section), f"{script.name}: {section}")


if __name__ == "__main__":
    sys.exit(unittest.main())
