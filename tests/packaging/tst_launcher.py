#!/usr/bin/env python3
"""The launcher of an installed program: what it makes of a user's work folder, at the first start,
after an upgrade, and where something is in the way. The program itself is a stand-in here."""

import concurrent.futures
import errno
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

from installation import ROOT, STAND_IN, Package, User, installed, quarn, replace

BLANKS_AND_QUOTES = "it's \"a\" $HOME `b`;c & d"
AS_USER = quarn.WITHOUT_ROOT_POWERS if os.geteuid() == 0 else []


def setUpModule():
    global scratch, original
    scratch = pathlib.Path(tempfile.mkdtemp(prefix="ql"))
    unittest.addModuleCleanup(shutil.rmtree, scratch)
    original = installed(scratch / "original")


class LauncherTest(unittest.TestCase):
    def setUp(self):
        self.base = pathlib.Path(tempfile.mkdtemp(prefix="t", dir=scratch))
        self.addCleanup(self.clean)
        self.package = Package(original, self.base / "usr")
        self.user = User(self.base)

    def clean(self):
        subprocess.run(["chmod", "-R", "u+rwX", self.base], check=True)
        shutil.rmtree(self.base)

    def start(self, *arguments, user=None, launcher=None, **options):
        """Starts the launcher and expects that the program is started; gives what it was called by,
        and the lines that were said."""
        user = user or self.user
        status, output, said = user.start(launcher or self.package.launcher, *arguments, **options)
        self.assertEqual((status, output[1:]), (0, list(arguments)), said)
        return output[0], said

    def setting(self, key, user=None):
        lines = (user or self.user).work.joinpath("fm.cfg").read_text().splitlines()
        return next(line.partition(" = ")[2] for line in lines if line.startswith(key + " = "))

    def edit(self, name, old, new):
        file = self.user.work / name
        text = file.read_text()
        self.assertIn(old, text)
        file.write_text(text.replace(old, new))

    def everything(self, folder=None):
        """Each path of the work folder, with what is in it or where it leads to."""
        folder = folder or self.user.work
        return {str(path.relative_to(folder)): os.readlink(path) if path.is_symlink()
                else path.read_bytes() for path in folder.rglob("*")
                if path.is_symlink() or path.is_file()}


class FirstStart(LauncherTest):
    def test_it_makes_the_work_folder_of_the_user(self):
        called, said = self.start()
        self.assertEqual(called, f"{self.user.work}/quarn")
        self.assertEqual(said, [f"quarn: your settings are in {self.user.work}"])
        self.assertEqual(self.setting("Work_folder"), f"{self.user.work}/")
        self.assertEqual(self.setting("Start_path_tab1"), f"{self.user.home}/")

    def test_everything_of_a_work_folder_is_there(self):
        self.start()
        stage = quarn.stage_folder()
        wanted = [path.relative_to(stage) for path in stage.rglob("*") if path.is_file()]
        self.assertGreater(len(wanted), 100)
        # Modules are found beside the program that the link leads to.
        missing = [str(path) for path in wanted if path.parts[0] != "modules"
                   and not (self.user.work / path).is_file()]
        self.assertEqual(missing, [])

    def test_what_the_user_edits_is_copied_and_the_rest_is_linked(self):
        self.start()
        files = {path: entry for path, entry in self.everything().items()
                 if not path.startswith(".package/")}
        copied = sorted(path for path, entry in files.items() if isinstance(entry, bytes))
        self.assertEqual(copied, ["fm.cfg", "fm_plugins.cfg", "keymap.cfg", "mime_types.cfg"])

    def test_new_users_get_the_settings_that_are_staged_and_are_safe(self):
        self.start()
        template = (ROOT / "data" / "fm.cfg.in").read_text().splitlines()
        wanted = dict(line.split(" = ", 1) for line in template if not line.startswith((";", "[")) and line)
        wanted.update({"Work_folder": f"{self.user.work}/", "Start_path_tab1": f"{self.user.home}/"})
        wanted.update({key: "1" for key in ("Safe", "Trash") if key in wanted})
        self.assertGreater(len(wanted), 10)
        self.assertEqual({key: self.setting(key) for key in wanted}, wanted)

    def test_files_can_be_written_beside_a_plugin(self):
        self.start()
        (self.user.work / "plugins" / "LyraPlayer" / "TempList.m3u").write_text("/a.mp3\n")
        self.assertFalse(list(self.package.prefix.rglob("TempList.m3u")))

    def test_arguments_reach_the_program(self):
        self.start("-platform", "linuxfb:fb=/dev/fb1", "a b")

    def tool(self):
        """Makes another tool, which the launcher starts; gives its name in bin/."""
        tool = self.package.programs / "bin" / "quarn-trial"
        tool.parent.mkdir(exist_ok=True)
        replace(tool, STAND_IN, 0o755)
        self.package.change_launcher('linked_programs="', 'linked_programs="bin/quarn-trial ')
        link = self.package.launcher.with_name("quarn-trial")
        link.symlink_to("quarn")
        return link

    def test_tools_get_the_work_folder(self):
        self.assertEqual(self.start("--all", launcher=self.tool())[0], f"{self.user.work}/bin/quarn-trial")

    def test_tools_tell_their_usage_without_a_home(self):
        link = self.tool()
        for option in ("-h", "--help"):
            status, output, said = self.user.start(link, option, HOME=None, XDG_RUNTIME_DIR=None, DISPLAY=None)
            self.assertEqual((status, output, said), (0, [f"{self.package.programs}/bin/quarn-trial", option], []))

    def test_link_to_a_tool_starts_the_tool(self):
        self.tool()
        links = self.base / "links"
        links.mkdir()
        (links / "keys").symlink_to("../usr/bin/quarn-trial")
        (links / "more").symlink_to(links / "keys")
        (links / "quarn-mine").symlink_to("more")
        for link in links.iterdir():
            self.assertEqual(self.start(launcher=link)[0], f"{self.user.work}/bin/quarn-trial")

    def test_data_folder_of_the_environment_counts(self):
        data = self.base / "data"
        called, _ = self.start(XDG_DATA_HOME=data)
        self.assertEqual(called, f"{data}/quarn/quarn")
        self.assertFalse(self.user.work.exists())

    def test_data_folder_that_is_not_absolute_does_not_count(self):
        called, _ = self.start(XDG_DATA_HOME="data")
        self.assertEqual(called, f"{self.user.work}/quarn")

    def test_it_tells_its_version_and_usage_without_a_home(self):
        for option, text in (("--version", "quarn 1."), ("--help", "Usage: quarn")):
            status, output, said = self.user.start(self.package.launcher, option, HOME=None)
            self.assertEqual((status, said), (0, []))
            self.assertTrue(output[0].startswith(text), output)
        self.assertFalse(self.user.work.exists())

    def test_many_first_starts_at_once_make_one_folder(self):
        with concurrent.futures.ThreadPoolExecutor(8) as pool:
            starts = list(pool.map(lambda _: self.start(), range(8)))
        self.assertEqual({called for called, _ in starts}, {f"{self.user.work}/quarn"})
        self.assertEqual(self.setting("Work_folder"), f"{self.user.work}/")
        self.assertEqual(self.start()[1], [])

    def test_first_start_that_was_cut_off_is_done_again(self):
        self.start()
        whole = self.everything()
        (self.user.work / ".package" / "package").unlink()
        (self.user.work / "mime_types.cfg").unlink()
        shutil.rmtree(self.user.work / "lang")
        self.start()
        self.assertEqual(self.everything(), whole)


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
        self.package = Package(original, self.base / "a b")
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


class LaterStarts(LauncherTest):
    def test_nothing_is_said_or_written(self):
        self.start()
        before = {path: path.lstat().st_mtime_ns for path in self.user.work.rglob("*")}
        self.assertEqual(self.start()[1], [])
        self.assertEqual({path: path.lstat().st_mtime_ns for path in self.user.work.rglob("*")},
                         before)

    def test_no_process_is_started(self):
        self.start()
        replace(self.package.programs / "quarn", "#!/bin/sh\nprintf '%s\\n' \"$0\"\n")
        self.start(PATH="/nonexistent")

    def test_what_the_user_changed_stays(self):
        self.start()
        self.edit("fm.cfg", "Language = english", "Language = german")
        self.edit("mime_types.cfg", "002 01 JPG\n", "")
        (self.user.work / "bookmark.cfg").write_text("a\n/a\n")
        (self.user.work / "lang" / "mine.lang").write_text("[Language]\n")
        before = self.everything()
        self.start()
        self.assertEqual(self.everything(), before)

    def test_what_the_user_took_away_stays_away(self):
        self.start()
        for path in ("lang/german.lang", "keymap.cfg", "plugins/Execute/Execute"):
            (self.user.work / path).unlink()
        before = self.everything()
        self.start()
        self.assertEqual(self.everything(), before)

    def test_settings_that_are_gone_come_back(self):
        self.start()
        (self.user.work / "fm.cfg").unlink()
        self.start()
        self.assertEqual(self.setting("Work_folder"), f"{self.user.work}/")

    def test_link_that_leads_nowhere_is_mended_and_told(self):
        self.start()
        link = self.user.work / "lang" / "german.lang"
        link.unlink()
        link.symlink_to(self.package.data / "lang" / "old" / "german.lang")
        _, said = self.start()
        self.assertTrue(link.exists())
        self.assertEqual(len(said), 1)
        self.assertIn("mended: lang/german.lang", said[0])
        self.assertEqual(self.start()[1], [])

    def test_users_own_link_that_leads_nowhere_stays(self):
        self.start()
        link = self.user.work / "lang" / "german.lang"
        link.unlink()
        link.symlink_to("/media/card/german.lang")
        self.start()
        self.assertEqual(os.readlink(link), "/media/card/german.lang")

    def test_settings_on_a_card_that_is_out_stay_the_users(self):
        self.start()
        settings = self.user.work / "fm.cfg"
        settings.unlink()
        settings.symlink_to("/media/card/fm.cfg")
        called, said = self.start()
        self.assertEqual(called, f"{self.user.runtime}/quarn/quarn")
        self.assertEqual(len(said), 1, said)
        self.assertIn("leads nowhere", said[0])
        self.assertEqual(os.readlink(settings), "/media/card/fm.cfg")

    def test_table_on_a_card_that_is_out_stays_the_users(self):
        self.start()
        table = self.user.work / "mime_types.cfg"
        table.unlink()
        table.symlink_to("/media/card/mime_types.cfg")
        self.package.make_version("1.7", tables={"mime_types.cfg": "001 02 TXT\n"})
        self.start()
        self.assertEqual(os.readlink(table), "/media/card/mime_types.cfg")

    def test_home_that_was_moved_is_followed(self):
        self.start()
        self.edit("fm.cfg", "Language = english", "Language = german")
        moved = User(self.base, "moved")
        shutil.copytree(self.user.home, moved.home, symlinks=True, dirs_exist_ok=True)
        self.start(user=moved)
        self.assertEqual(self.setting("Work_folder", moved), f"{moved.work}/")
        self.assertEqual(self.setting("Language", moved), "german")

    def moved(self):
        """The user with another home, which has what was in the old one."""
        moved = User(self.base, "moved")
        shutil.copytree(self.user.home, moved.home, symlinks=True, dirs_exist_ok=True)
        return moved

    def test_first_tab_follows_a_home_that_was_moved(self):
        self.start()
        self.edit("fm.cfg", "Language = english", "Language = german")
        moved = self.moved()
        self.start(user=moved)
        self.assertEqual(self.setting("Start_path_tab1", moved), f"{moved.home}/")
        self.assertEqual(self.start(user=moved)[1], [])

    def test_first_tab_follows_a_home_whose_settings_lie_elsewhere(self):
        data = self.base / "data"
        self.start(XDG_DATA_HOME=data)
        settings = data / "quarn" / "fm.cfg"
        settings.write_text(settings.read_text().replace("Language = english", "Language = german"))
        other = User(self.base, "other")
        self.start(user=other, XDG_DATA_HOME=data)
        self.assertIn(f"\nStart_path_tab1 = {other.home}/\n", settings.read_text())

    def test_first_tab_follows_a_home_after_a_version_that_did_not_note_it(self):
        self.start()
        self.edit("fm.cfg", "Language = english", "Language = german")
        (self.user.work / ".package" / "home").unlink()
        moved = self.moved()
        self.start(user=moved)
        self.assertEqual(self.setting("Start_path_tab1", moved), f"{moved.home}/")

    def test_first_tab_that_the_user_chose_stays(self):
        self.start()
        self.edit("fm.cfg", f"Start_path_tab1 = {self.user.home}/", "Start_path_tab1 = /srv/")
        moved = self.moved()
        self.start(user=moved)
        self.assertEqual(self.setting("Start_path_tab1", moved), "/srv/")

    def test_settings_in_another_form_follow_a_home_that_was_moved(self):
        self.start()
        settings = self.user.work / "fm.cfg"
        before = settings.read_text()
        for old, new in ((" = ", "="), (" = ", "\t =  "), ("\n", "\r\n")):
            settings.write_bytes(before.replace(old, new).encode())
            moved = User(self.base, f"moved{ord(new[0])}{len(new)}")
            shutil.copytree(self.user.home, moved.home, symlinks=True, dirs_exist_ok=True)
            self.start(user=moved)
            text = (moved.work / "fm.cfg").read_bytes().decode()
            self.assertNotIn(f"{self.user.home}/", text)
            end = "\r\n" if "\r" in new else "\n"
            for line in (f"Work_folder = {moved.work}/", f"Start_path_tab1 = {moved.home}/"):
                self.assertIn(f"{end}{line}{end}", text)
            self.assertEqual(text.count("\r"), text.count("\n") if "\r" in new else 0)

    def test_work_folder_that_the_user_chose_stays(self):
        self.start()
        self.edit("fm.cfg", f"Work_folder = {self.user.work}/", "Work_folder = /srv/quarn/")
        moved = User(self.base, "moved")
        shutil.copytree(self.user.home, moved.home, symlinks=True, dirs_exist_ok=True)
        self.start(user=moved)
        self.assertEqual(self.setting("Work_folder", moved), "/srv/quarn/")


class Upgrade(LauncherTest):
    def setUp(self):
        super().setUp()
        self.table = (self.package.data / "mime_types.cfg").read_text()
        self.older = self.table.replace("002 01 WEBP\n", "")
        self.package.make_version("1.5", without=("lang/turkish.lang", "plugins/PicView/PicView"),
                                  tables={"mime_types.cfg": self.older})

    def upgrade(self):
        self.package.lay_out()
        return self.start()[1]

    def test_what_is_new_is_added_and_told_once(self):
        self.start()
        said = self.upgrade()
        for path in ("lang/turkish.lang", "plugins/PicView/PicView"):
            self.assertTrue((self.user.work / path).exists(), path)
        self.assertEqual(len(said), 1)
        self.assertIn("is for version 1.6 now; new: plugins/PicView/PicView lang/turkish.lang", said[0])
        self.assertEqual(self.start()[1], [])

    def test_one_that_cannot_be_ended_keeps_no_later_start_waiting(self):
        self.start()
        shutil.rmtree(self.user.work / "lang")
        (self.user.work / "lang").write_text("a file of the user")
        self.package.lay_out()
        replace(self.package.programs / "quarn",
                "#!/bin/sh\nfor each in /proc/$$/fd/*; do readlink \"$each\"; done | grep -c /lock\n")
        _, output, said = self.user.start(self.package.launcher)
        self.assertEqual((output, len(said)), (["0"], 1), said)

    def notice(self):
        """What is left for the program to tell."""
        return (self.user.work / ".package" / "notice").read_text().splitlines()

    def tell_notice_file(self):
        """The program says on stderr which file it is told to show."""
        replace(self.package.programs / "quarn", STAND_IN + "echo \"tells: ${QUARN_NOTICE-nothing}\" >&2\n")

    def test_what_is_new_is_left_for_the_program_to_tell(self):
        self.start()
        self.package.lay_out()
        self.tell_notice_file()
        self.assertEqual(self.start()[1][-1], f"tells: {self.user.work}/.package/notice")
        self.assertEqual(self.notice(), ["version 1.6", f"folder {self.package.data}",
                                         "new plugins/PicView/PicView", "new lang/turkish.lang",
                                         "renewed mime_types.cfg"])

    def test_without_an_upgrade_there_is_nothing_to_tell(self):
        self.tell_notice_file()
        for _ in range(2):
            self.assertEqual(self.start()[1][-1], "tells: nothing")
        (self.user.work / "lang" / "german.lang").unlink()
        (self.user.work / "lang" / "german.lang").symlink_to(self.package.data / "lang" / "old")
        self.assertEqual(self.start()[1][-1], "tells: nothing")

    def test_two_upgrades_that_nobody_has_seen_are_both_told(self):
        self.start()
        self.upgrade()
        self.package.make_version("1.7", tables={"mime_types.cfg": self.older})
        self.start()
        self.assertEqual(self.notice()[-3:], ["version 1.7", f"folder {self.package.data}",
                                              "renewed mime_types.cfg"])
        self.assertIn("new lang/turkish.lang", self.notice())

    def test_settings_that_are_new_are_named_and_those_taken_away_are_not(self):
        settings = (self.package.data / "fm.cfg").read_text()
        self.package.make_version("1.5", tables={"fm.cfg": settings.replace("Motion = 1\n", "")})
        self.start()
        self.edit("fm.cfg", "Theme = 0\n", "")
        self.edit("fm.cfg", "Language = english", "Language = german")
        self.upgrade()
        named = [line for line in self.notice() if line.partition(" ")[0] in ("setting", "kept")]
        self.assertEqual(named, ["setting Motion", "kept fm.cfg"])

    def test_table_that_nobody_changed_is_renewed(self):
        self.start()
        self.assertEqual((self.user.work / "mime_types.cfg").read_text(), self.older)
        self.assertIn("renewed: mime_types.cfg", self.upgrade()[0])
        self.assertEqual((self.user.work / "mime_types.cfg").read_text(), self.table)

    def test_table_that_the_user_keeps_elsewhere_stays_a_link(self):
        self.start()
        elsewhere = self.base / "mime_types.cfg"
        table = self.user.work / "mime_types.cfg"
        os.rename(table, elsewhere)
        table.symlink_to(elsewhere)
        before = elsewhere.read_text()
        self.upgrade()
        self.assertEqual((os.readlink(table), elsewhere.read_text()), (str(elsewhere), before))

    def test_table_that_the_user_changed_stays_and_the_new_one_is_named(self):
        self.start()
        self.edit("mime_types.cfg", "002 01 JPG\n", "002 09 JPG\n")
        before = (self.user.work / "mime_types.cfg").read_text()
        said = self.upgrade()
        self.assertEqual((self.user.work / "mime_types.cfg").read_text(), before)
        self.assertIn(f"yours stays, the new one is in {self.package.data}: mime_types.cfg", said[0])

    def test_settings_that_the_user_changed_stay(self):
        self.start()
        self.edit("fm.cfg", "Theme = 0", "Theme = 1")
        (self.user.work / "bookmark.cfg").write_text("a\n/a\n")
        said = self.upgrade()
        self.assertEqual(self.setting("Theme"), "1")
        self.assertEqual((self.user.work / "bookmark.cfg").read_text(), "a\n/a\n")
        # The package has the same settings as before, so there is none to look at.
        self.assertNotIn("fm.cfg", said[0])

    def test_what_the_user_took_away_stays_away(self):
        self.start()
        (self.user.work / "lang" / "german.lang").unlink()
        self.upgrade()
        self.assertFalse((self.user.work / "lang" / "german.lang").is_symlink())

    def test_what_the_user_put_in_place_of_a_link_stays(self):
        self.start()
        mine = {"lang/german.lang": "[Language]\nOPEN = Auf\n", "plugins/TextView/TextView": STAND_IN}
        for path, text in mine.items():
            (self.user.work / path).unlink()
            (self.user.work / path).write_text(text)
        icon = self.user.work / "plugins/TextView/icon.png"
        icon.unlink()
        icon.symlink_to("/media/card/icon.png")
        self.upgrade()
        for path, text in mine.items():
            self.assertEqual((self.user.work / path).read_text(), text)
        self.assertEqual(os.readlink(icon), "/media/card/icon.png")

    def test_links_to_what_is_no_longer_there_go(self):
        self.package.lay_out()
        self.start()
        self.package.make_version("1.7", without=("lang/polish.lang", "plugins/PicView/PicView"))
        self.start()
        for path in ("lang/polish.lang", "plugins/PicView/PicView"):
            self.assertFalse((self.user.work / path).is_symlink(), path)

    def test_program_that_was_moved_is_found_again(self):
        self.start()
        (self.user.work / "lang" / "german.lang").unlink()
        elsewhere = Package(original, self.base / "local")
        shutil.rmtree(self.package.prefix)
        _, said = self.start(launcher=elsewhere.launcher)
        self.assertEqual(len(said), 1)
        self.assertEqual(os.readlink(self.user.work / "quarn"), f"{elsewhere.programs}/quarn")
        links = [path for path in self.user.work.rglob("*") if path.is_symlink()]
        self.assertEqual([str(path) for path in links if not path.exists()], [])
        self.assertFalse((self.user.work / "lang" / "german.lang").exists())

    def test_older_version_again_keeps_what_the_user_changed(self):
        self.package.lay_out()
        self.start()
        self.edit("fm.cfg", "Language = english", "Language = german")
        self.package.make_version("1.4", tables={"mime_types.cfg": self.older})
        self.start()
        self.assertEqual(self.setting("Language"), "german")
        self.assertEqual((self.user.work / "mime_types.cfg").read_text(), self.older)


class BadPlaces(LauncherTest):
    def fails(self, *words, user=None, **options):
        """Expects one line, with these words, and no program."""
        status, output, said = (user or self.user).start(self.package.launcher, **options)
        self.assertEqual((status, output, len(said)), (1, [], 1), said)
        for word in words:
            self.assertIn(word, said[0])

    def lasts_for_the_session(self, *words, **options):
        """Expects one line and a work folder among what goes with the session."""
        called, said = self.start(**options)
        self.assertEqual(called, f"{self.user.runtime}/quarn/quarn")
        self.assertEqual(len(said), 1, said)
        for word in ("last until you log out", *words):
            self.assertIn(word, said[0])

    def read_only(self, folder, recursive=False):
        subprocess.run(["chmod", *(["-R"] if recursive else []), "a-w", folder], check=True)

    def test_home_that_is_read_only(self):
        self.read_only(self.user.home)
        self.lasts_for_the_session(".local", "Permission denied", prefix=AS_USER)

    def test_home_that_is_read_only_without_a_session(self):
        self.read_only(self.user.home)
        self.fails("Permission denied", prefix=AS_USER, XDG_RUNTIME_DIR=None)
        self.assertEqual(list(self.user.home.iterdir()), [])

    def test_work_folder_that_is_read_only_serves_as_it_is(self):
        self.start()
        self.read_only(self.user.home, recursive=True)
        called, said = self.start(prefix=AS_USER)
        self.assertEqual((called, said), (f"{self.user.work}/quarn", []))

    def test_work_folder_that_is_read_only_serves_after_an_upgrade(self):
        self.start()
        self.package.make_version("1.7", tables={"mime_types.cfg": "001 02 TXT\n"})
        self.read_only(self.user.home, recursive=True)
        before = self.everything()
        called, said = self.start(prefix=AS_USER)
        self.assertEqual(called, f"{self.user.work}/quarn")
        self.assertEqual(len(said), 1)
        self.assertIn("stays as it is", said[0])
        self.assertEqual(self.everything(), before)

    def faults(self, call="write", error=errno.ENOSPC, bytes_before=0):
        return {"LD_PRELOAD": os.environ["QUARN_FAULT_LIBRARY"],
                "QUARN_FAULTS": f"{call} {error} {bytes_before} {self.user.home}/"}

    def test_home_that_is_full(self):
        self.lasts_for_the_session("No space left on device", **self.faults())

    def test_home_that_gets_full_is_made_whole_when_there_is_room(self):
        for room in (0, 100, 1000, 3000):
            self.start(**self.faults(bytes_before=room))
        _, said = self.start()
        self.assertEqual(said, [f"quarn: your settings are in {self.user.work}"])
        for name in ("fm_plugins.cfg", "keymap.cfg", "mime_types.cfg"):
            self.assertEqual((self.user.work / name).read_text(), (self.package.data / name).read_text())
        self.assertEqual(self.setting("Work_folder"), f"{self.user.work}/")

    def test_home_that_is_full_at_an_upgrade_loses_nothing(self):
        self.start()
        self.edit("fm.cfg", "Language = english", "Language = german")
        before = (self.user.work / "mime_types.cfg").read_text()
        self.package.make_version("1.7", tables={"mime_types.cfg": "001 02 TXT\n"})
        called, said = self.start(**self.faults())
        self.assertEqual(called, f"{self.user.work}/quarn")
        self.assertEqual(len(said), 1)
        self.assertEqual(self.setting("Language"), "german")
        self.assertEqual((self.user.work / "mime_types.cfg").read_text(), before)
        self.start()
        self.assertEqual((self.user.work / "mime_types.cfg").read_text(), "001 02 TXT\n")

    def bookmarks(self):
        return (self.user.work / "bookmark.cfg").read_text()

    def test_bookmarks_made_while_home_was_full_are_kept_when_there_is_room(self):
        self.lasts_for_the_session(**self.faults())
        session = self.user.runtime / "quarn"
        (session / "bookmark.cfg").write_text("\na b\n/a b\nc\n/c")
        _, said = self.start()
        self.assertIn("quarn: added the bookmarks of this session to yours", said)
        self.assertEqual(self.bookmarks(), "\na b\n/a b\nc\n/c")
        self.assertFalse((session / "bookmark.cfg").exists())
        self.assertEqual(self.start()[1], [])
        # With those that are there already, each once.
        (session / "bookmark.cfg").write_text("c\n/c\n\nd\n/d\n")
        (self.user.work / "bookmark.cfg").write_text("x\n/x\nc\n/c\n")
        self.start()
        self.assertEqual(self.bookmarks(), "x\n/x\nc\n/c\nd\n/d")

    def test_bookmarks_of_a_session_stay_there_while_home_is_full(self):
        self.start()
        (self.user.work / "bookmark.cfg").write_text("x\n/x")
        session = self.user.runtime / "quarn"
        session.mkdir()
        (session / "bookmark.cfg").write_text("\nd\n/d")
        _, said = self.start(**self.faults())
        self.assertEqual(len(said), 1, said)
        self.assertIn("stay in", said[0])
        self.assertEqual((self.bookmarks(), (session / "bookmark.cfg").read_text()), ("x\n/x", "\nd\n/d"))
        self.assertFalse((self.user.work / "bookmark.cfg.new").exists())

    def test_home_on_another_file_system(self):
        with tempfile.TemporaryDirectory(dir="/dev/shm") as folder:
            elsewhere = User(folder)
            self.assertEqual(self.start(user=elsewhere)[0], f"{elsewhere.work}/quarn")
            self.assertEqual(self.start(user=elsewhere)[1], [])

    def test_file_system_without_links(self):
        tools = self.base / "tools"
        tools.mkdir()
        refusal = "case $3 in \"$HOME\"*) echo \"ln: Operation not permitted\" >&2; exit 1 ;; esac"
        replace(tools / "ln", f"#!/bin/sh\n{refusal}\nexec /bin/ln \"$@\"\n", 0o755)
        self.lasts_for_the_session("Operation not permitted",
                                   PATH=f"{tools}:{self.user.environment['PATH']}")

    def test_file_where_the_folder_should_be(self):
        self.user.work.parent.mkdir(parents=True)
        self.user.work.write_text("mine")
        self.lasts_for_the_session(str(self.user.work))
        self.assertEqual(self.user.work.read_text(), "mine")

    def test_no_home(self):
        self.lasts_for_the_session("HOME is not set", HOME=None)
        self.fails("HOME is not set", HOME=None, XDG_RUNTIME_DIR=None)

    def test_no_folder_of_the_session(self):
        called, said = self.start(XDG_RUNTIME_DIR=None)
        self.assertEqual((called, len(said)), (f"{self.user.work}/quarn", 1))

    def test_package_that_is_not_whole(self):
        shutil.rmtree(self.package.data / "res")
        self.fails(str(self.package.data), "install the package again")

    def test_home_with_blanks_and_quotes_has_a_name_without_for_the_program(self):
        odd = User(self.base, BLANKS_AND_QUOTES)
        called, said = self.start(user=odd)
        place = f"{odd.runtime}/quarn-work"
        self.assertEqual(called, f"{place}/quarn")
        self.assertEqual(said, [f"quarn: your settings are in {odd.work}"])
        self.assertEqual(self.setting("Work_folder", odd), f"{place}/")
        self.assertEqual(self.setting("Start_path_tab1", odd), f"{odd.home}/")
        self.assertEqual(self.start(user=odd)[1], [])

    def test_name_without_blanks_is_made_anew_in_each_session(self):
        odd = User(self.base, BLANKS_AND_QUOTES)
        self.start(user=odd)
        other = User(self.base, "other").runtime
        called, said = self.start(user=odd, XDG_RUNTIME_DIR=other)
        self.assertEqual((called, said), (f"{other}/quarn-work/quarn", []))
        self.assertEqual(self.setting("Work_folder", odd), f"{other}/quarn-work/")

    def test_home_with_blanks_and_no_folder_of_the_session(self):
        odd = User(self.base, BLANKS_AND_QUOTES)
        self.package.change_launcher("own=/tmp/quarn-", f"own={self.base}/quarn-")
        called, _ = self.start(user=odd, XDG_RUNTIME_DIR=None)
        place = self.base / f"quarn-{os.geteuid()}"
        self.assertEqual(called, f"{place}/quarn-work/quarn")
        self.assertEqual(place.stat().st_mode & 0o777, 0o700)

    def test_home_with_a_line_break(self):
        odd = User(self.base, "a\nb")
        self.assertEqual(self.start(user=odd)[0], f"{odd.runtime}/quarn-work/quarn")
        self.assertEqual(self.setting("Start_path_tab1", odd), "/")
        self.assertEqual(self.start(user=odd)[1], [])

    def test_launcher_that_is_called_through_a_link(self):
        link = self.base / "somewhere" / "q"
        link.parent.mkdir()
        link.symlink_to("../usr/bin/quarn")
        self.assertEqual(self.start(launcher=link)[0], f"{self.user.work}/quarn")

    def test_link_of_another_name_starts_the_program(self):
        link = self.base / "quarn-of-mine"
        link.symlink_to(self.package.launcher)
        self.assertEqual(self.start(launcher=link)[0], f"{self.user.work}/quarn")

    def test_launcher_in_a_folder_with_blanks_and_quotes(self):
        package = Package(original, self.base / BLANKS_AND_QUOTES)
        self.assertEqual(self.start(launcher=package.launcher)[0], f"{self.user.work}/quarn")

    def test_two_users_have_a_folder_each(self):
        other = User(self.base, "other")
        self.start()
        self.edit("fm.cfg", "Language = english", "Language = german")
        self.start(user=other)
        self.assertEqual(self.setting("Language", other), "english")
        self.assertEqual(self.setting("Work_folder", other), f"{other.work}/")
        self.assertEqual(self.setting("Language"), "german")


if __name__ == "__main__":
    sys.exit(unittest.main())
