"""Texts refer to the code, tests and documents of this repository, not to papers that its readers
do not have."""

import re

OUTSIDE = re.compile("spec" r"\.md|[Ss]peci" r"fication|\bParts? [1-7]" r"\.[1-9]|\bthe sp" r"ec\b")

GOOD = [{"a.cpp": "// Quoted because the shell splits words; a special part of the text.\n"}]
BAD = [
    {"a.cpp": "// as Part " "3.1 says\n"},
    {"docs/a.md": "See the spe" "c for more.\n"},
    {"docs/spec" ".md": "\n"},
]


def check(project):
    result = [f"{path}: the name refers to something outside" for path in project.files
              if OUTSIDE.search(path)]
    return result + [f"{path}:{number}: refers to something outside: {line.strip()}"
                     for path, number, line in project.search(OUTSIDE, project.files)]
