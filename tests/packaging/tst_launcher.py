#!/usr/bin/env python3
"""What the launcher of an installed program makes of a user's work folder at the first start."""

import concurrent.futures
import shutil
import sys
import unittest

from installation import ROOT, STAND_IN, quarn, replace
from launching import LauncherTest


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


if __name__ == "__main__":
    sys.exit(unittest.main())
