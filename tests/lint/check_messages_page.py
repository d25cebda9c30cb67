"""The page of messages tells of the channels and messages that programs know. Its table, whose messages are
tried by a test, has no others."""

import re

PAGE = "docs/messages.md"
MESSAGE = re.compile(r'\bmessage [!=]= "([^"]+)"')
CHANNEL = re.compile(r'\bchar (?:Channel|Player)\[\] = "(\w+)"')
TOLD = re.compile(r"^\| `(\w+)` \| `([^`]+)` \|", re.MULTILINE)

SOURCE = 'const char Channel[] = "A";\nif (message == "show")\n'
GOOD = [
    {"a/a.cpp": SOURCE, PAGE: "| `A` | `show` | shows |\n"},
    {"a/a.cpp": SOURCE, "b/b.cpp": 'constexpr char Channel[] = "B";\n',
     PAGE: "| `A` | `show` | shows |\n\n`B` is for programs.\n"},
]
BAD = [
    {"a/a.cpp": SOURCE + 'if (message != "next")\n', PAGE: "| `A` | `show` | shows |\n"},
    {"a/a.cpp": SOURCE, PAGE: "| `A` | `show` | shows |\n| `A` | `next` | goes on |\n"},
    {"a/a.cpp": SOURCE + 'inline constexpr char Player[] = "B";\n',
     PAGE: "| `A` | `show` | shows |\n"},
    {"a/a.cpp": SOURCE, PAGE: "| `A` | `show` | shows |\n| `B` | `show` | shows |\n"},
    {"a/a.cpp": SOURCE, PAGE: "| `A` | `show` | shows |\n| `A` | `B` | shows |\n"},
]


def check(project):
    if PAGE not in project.files:
        return []
    sources = "".join(project.text(path) for path in project.matching("*.h", "*.cpp")
                      if not path.startswith(("tests/", "bench/", "examples/")))
    page = project.text(PAGE)
    known = set(MESSAGE.findall(sources)) | set(CHANNEL.findall(sources))
    named = {name for row in TOLD.findall(page) for name in row}
    return [*(f"{PAGE}: does not tell of {name}" for name in sorted(known)
              if f"`{name}`" not in page),
            *(f"{PAGE}: nothing knows {name}" for name in sorted(named - known))]
