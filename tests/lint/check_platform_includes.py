"""platform/ and files/ know nothing of the program: of the project's headers each includes only its
own."""

import re

FOLDERS = ("platform", "files")

GOOD = [{
    "platform/a.cpp": '#include "platform/a.h"\n#include <QString>\n#include "a.moc"\n',
    "files/a.cpp": '#include "files/a.h"\n#include <QString>\n',
    "shell/a.cpp": '#include "browser/a.h"\n',
}]
BAD = [
    {"platform/a.h": '#include "shell/fm.h"\n'},
    {"platform/a.cpp": '#include "../shell/fm.h"\n'},
    {"platform/a.cpp": '#include "platform/../shell/fm.h"\n'},
    {"platform/a.cpp": '#include "files/a.h"\n'},
    {"files/a.cpp": '#include "platform/a.h"\n'},
]


def check(project):
    found = []
    for folder in FOLDERS:
        others = re.compile(rf'^\s*#\s*include\s*"(?!{folder}/[^/"]+"|[^/"]+\.moc")')
        found += [f"{path}:{number}: includes from another folder: {line.strip()}"
                  for path, number, line in project.search(others, project.matching(folder + "/*"))]
    return found
