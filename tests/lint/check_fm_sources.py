"""Sources that define members of the main window are called fm_*.cpp, wherever their subject lives;
nothing else outside shell/ knows the main window."""

import re

HEADER = re.compile(r'^\s*#\s*include\s*"shell/fm\.h"')

GOOD = [{
    "shell/startup.cpp": '#include "shell/fm.h"\n',
    "fileops/fm_copy.cpp": '#include "shell/fm.h"\n',
    "tests/shell/tst_a.cpp": '#include "shell/fm.h"\n',
}]
BAD = [
    {"fileops/copy.cpp": '#include "shell/fm.h"\n'},
    {"widgets/box.h": '#include "shell/fm.h"\n'},
]


def check(project):
    others = [path for path in project.matching("*.h", "*.cpp")
              if not path.startswith(("shell/", "tests/", "bench/"))
              and not re.search(r"/fm_[a-z]+\.cpp$", path)]
    return [f"{path}:{number}: only shell/ and fm_*.cpp include the main window"
            for path, number, line in project.search(HEADER, others)]
