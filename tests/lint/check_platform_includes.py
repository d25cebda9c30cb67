"""platform/ knows nothing of the program: of the project's headers it includes only its own."""

import re

OTHERS = re.compile(r'^\s*#\s*include\s*"(?!platform/[^/"]+"|[^/"]+\.moc")')

GOOD = [{
    "platform/a.cpp": '#include "platform/a.h"\n#include <QString>\n#include "a.moc"\n',
    "shell/a.cpp": '#include "browser/a.h"\n',
}]
BAD = [
    {"platform/a.h": '#include "shell/fm.h"\n'},
    {"platform/a.cpp": '#include "../shell/fm.h"\n'},
    {"platform/a.cpp": '#include "platform/../shell/fm.h"\n'},
]


def check(project):
    return [f"{path}:{number}: includes from another folder: {line.strip()}"
            for path, number, line in project.search(OTHERS, project.matching("platform/*"))]
