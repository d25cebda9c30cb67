#!/usr/bin/env python3
"""Which display the launcher chooses, and how it shows the program over VNC."""

import os
import re
import sys
import unittest

from installation import Package, replace
from launching import AS_USER, LauncherTest


class OverVnc(LauncherTest):
    def setUp(self):
        super().setUp()
        self.guard = self.package.programs / "modules" / "vncloopback.so"

    def told(self, *arguments, **environment):
        """The arguments that reach the program, what it is told of its display, and what is loaded
        before it."""
        script = "#!/bin/sh\nprintf '%s\\n' \"$*\" \"$QT_QPA_PLATFORM\" \"$LD_PRELOAD\"\n"
        replace(self.package.programs / "quarn", script)
        status, output, said = self.user.start(self.package.launcher, *arguments, **environment)
        self.assertEqual(status, 0, said)
        return output

    def refused(self, *arguments):
        status, output, said = self.user.start(self.package.launcher, *arguments)
        self.assertEqual((output, len(said)), ([], 1))
        self.assertFalse(self.user.work.exists())
        return status, said[0]

    def test_the_server_is_kept_to_this_machine(self):
        self.assertEqual(self.told("--vnc", "rest"),
                         ["rest", "vnc:size=480x640:port=5900", str(self.guard)])

    def test_another_port_can_be_chosen(self):
        self.assertEqual(self.told("--vnc=65535")[1], "vnc:size=480x640:port=65535")

    def test_what_else_is_loaded_before_it_stays(self):
        other = os.environ["QUARN_FAULT_LIBRARY"]
        self.assertEqual(self.told("--vnc", LD_PRELOAD=other)[2], f"{self.guard}:{other}")

    def test_what_is_no_port_is_refused(self):
        for port in ("0", "00", "65536", "123456", "1a", "-1", "5900:size=1x1"):
            status, line = self.refused(f"--vnc={port}")
            self.assertEqual((status, "a port is" in line), (2, True), (port, line))

    def test_without_what_keeps_it_to_this_machine_there_is_none(self):
        self.guard.unlink()
        status, line = self.refused("--vnc")
        self.assertEqual((status, "vncloopback.so is missing" in line), (1, True), line)

    def test_without_the_toolkits_plugin_the_package_is_named(self):
        found = re.search("\ntoolkit='(.*)'\n", self.package.launcher.read_text())[1]
        self.assertTrue(os.path.exists(f"{found}/platforms/libqxcb.so"), found)
        toolkit = self.base / "plugins"
        (toolkit / "platforms").mkdir(parents=True)
        self.package.change_launcher(f"\ntoolkit='{found}'", f"\ntoolkit='{toolkit}'")
        status, line = self.refused("--vnc")
        self.assertEqual((status, "qt6-qpa-plugins" in line), (1, True), line)
        (toolkit / "platforms" / "libqvnc.so").touch()
        self.assertEqual(self.told("--vnc")[1], "vnc:size=480x640:port=5900")

    def test_plugin_of_the_toolkit_may_be_elsewhere(self):
        found = re.search("\ntoolkit='(.*)'\n", self.package.launcher.read_text())[1]
        elsewhere = self.base / "elsewhere" / "platforms"
        elsewhere.mkdir(parents=True)
        (elsewhere / "libqvnc.so").touch()
        self.package.change_launcher(f"\ntoolkit='{found}'", f"\ntoolkit='{self.base}'")
        (self.base / "platforms").mkdir()
        self.refused("--vnc")
        self.told("--vnc", QT_PLUGIN_PATH=elsewhere.parent)
        self.told("--vnc", QT_QPA_PLATFORM_PLUGIN_PATH=elsewhere)

    def test_folder_whose_name_cannot_be_loaded_from_is_refused(self):
        self.package = Package(self.original, self.base / "a b")
        status, line = self.refused("--vnc")
        self.assertEqual((status, "no blank or colon" in line), (1, True), line)


class Displays(LauncherTest):
    def setUp(self):
        super().setUp()
        self.framebuffer = self.base / "fb0"
        self.package.change_launcher("framebuffer=/dev/fb0", f"framebuffer={self.framebuffer}")
        replace(self.package.programs / "quarn", "#!/bin/sh\nprintf '%s\\n' \"${QT_QPA_PLATFORM-none}\"\n")
        self.user.environment.pop("DISPLAY")

    def platform(self, *arguments, **environment):
        """What the program is told to draw with."""
        status, output, said = self.user.start(self.package.launcher, *arguments, **environment)
        self.assertEqual((status, len(output)), (0, 1), said)
        return output[0]

    def refused(self, *words, **options):
        status, output, said = self.user.start(self.package.launcher, **options)
        self.assertEqual((status, output, len(said)), (1, [], 1), said)
        for word in ("quarn: no display", *words):
            self.assertIn(word, said[0])
        self.assertFalse(self.user.work.exists())

    def test_without_a_window_system_the_framebuffer_is_taken(self):
        self.framebuffer.touch()
        self.assertEqual(self.platform(), "linuxfb")

    def test_with_a_window_system_the_framebuffer_is_left(self):
        self.framebuffer.touch()
        for name, value in (("DISPLAY", ":0"), ("WAYLAND_DISPLAY", "wayland-0"), ("WAYLAND_SOCKET", "3"),
                            ("XDG_SESSION_TYPE", "wayland")):
            self.assertEqual(self.platform(**{name: value}), "none", name)

    def test_platform_that_is_named_counts(self):
        self.framebuffer.touch()
        self.assertEqual(self.platform(QT_QPA_PLATFORM="eglfs"), "eglfs")
        for option in ("-platform", "--platform"):
            self.assertEqual(self.platform(option, "eglfs"), "none")
        self.assertEqual(self.platform("-display", ":1"), "none")

    def test_without_any_it_says_so_in_one_line(self):
        self.refused("DISPLAY", "WAYLAND_DISPLAY", str(self.framebuffer))
        self.refused(DISPLAY="", WAYLAND_DISPLAY="")

    def test_framebuffer_of_others_is_named_with_who_may_draw(self):
        self.framebuffer.touch()
        self.framebuffer.chmod(0o440)
        self.refused("group video", str(self.framebuffer), prefix=AS_USER)


if __name__ == "__main__":
    sys.exit(unittest.main())
