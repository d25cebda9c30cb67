"""What the checks know of the project: its files and their texts."""

import fnmatch
import os
import pathlib
import subprocess


class Project:
    """The files under a root folder, without what is built. Paths are relative to the root."""

    def __init__(self, root):
        self.root = pathlib.Path(root).resolve()
        self.files = sorted(path for path in self._list() if (self.root / path).is_file())

    def _list(self):
        """What version control knows or would add; every file where there is none."""
        command = ["git", "-C", str(self.root), "ls-files", "-z", "--cached", "--others",
                   "--exclude-standard"]
        if (self.root / ".git").exists():
            try:
                found = subprocess.run(command, capture_output=True, check=True).stdout
                return {os.fsdecode(name) for name in found.split(b"\0") if name}
            except (OSError, subprocess.CalledProcessError):
                pass
        return self._walk()

    def _walk(self):
        result = set()
        for folder, folders, names in os.walk(self.root):
            relative = pathlib.Path(folder).relative_to(self.root)
            skipped = {".git", "__pycache__"} | ({"build"} if folder == str(self.root) else set())
            folders[:] = [name for name in folders if name not in skipped]
            result.update(str(relative / name) for name in names)
        return result

    def matching(self, *patterns):
        """Files whose paths match a shell pattern; "*" goes across folders."""
        return [path for path in self.files
                if any(fnmatch.fnmatch(path, pattern) for pattern in patterns)]

    def text(self, path):
        """A file's text; empty for a file that is none."""
        content = (self.root / path).read_bytes()
        return "" if b"\0" in content else content.decode(errors="replace")

    def search(self, pattern, paths):
        """(path, line number, line) for each line in which the compiled pattern is found."""
        for path in paths:
            for number, line in enumerate(self.text(path).splitlines(), 1):
                if pattern.search(line):
                    yield path, number, line

    def is_shell(self, path):
        return path.endswith(".sh") or self.text(path).startswith(("#!/bin/bash", "#!/bin/sh"))
