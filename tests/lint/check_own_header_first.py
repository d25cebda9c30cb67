"""A source includes the header of its own name first: so whoever compiles it without precompiled
headers, as clang-tidy does, sees whether that header names all that it needs."""

import pathlib
import re

INCLUDE = re.compile(r"^#include (.+)$", re.MULTILINE)

GOOD = [{"a/b.h": "", "a/b.cpp": '#include "a/b.h"\n\n#include <QFile>\n'},
        {"a/c.cpp": "#include <QFile>\n"}]
BAD = [{"a/b.h": "", "a/b.cpp": '#include <QFile>\n#include "a/b.h"\n'},
       {"a/b.h": "", "a/b.cpp": '#include "b.h"\n'},
       {"a/b.h": "", "a/b.cpp": ""}]


def check(project):
    result = []
    for path in project.matching("*.cpp"):
        header = str(pathlib.PurePath(path).with_suffix(".h"))
        if header in project.files:
            first = INCLUDE.search(project.text(path))
            if first is None or first[1] != f'"{header}"':
                result.append(f"{path}: does not include {header} first")
    return result
