"""The page of messages tells of the channels and messages that programs know, and of no others."""

import re

PAGE = "docs/messages.md"
MESSAGE = re.compile(r'\bmessage [!=]= "([^"]+)"')
CHANNEL = re.compile(r'\bchar (?:Channel|Player)\[\] = "(\w+)"')
TOLD = re.compile(r"^\| `(\w+)` \| `([^`]+)` \|", re.MULTILINE)

SOURCE = 'const char Channel[] = "A";\nif (message == "show")\n'
GOOD = [{"a/a.cpp": SOURCE, PAGE: "| `A` | `show` | shows |\n"}]
BAD = [
    {"a/a.cpp": SOURCE + 'if (message != "next")\n', PAGE: "| `A` | `show` | shows |\n"},
    {"a/a.cpp": SOURCE, PAGE: "| `A` | `show` | shows |\n| `A` | `next` | goes on |\n"},
    {"a/a.cpp": SOURCE + 'inline constexpr char Player[] = "B";\n',
     PAGE: "| `A` | `show` | shows |\n"},
    {"a/a.cpp": SOURCE, PAGE: "| `A` | `show` | shows |\n| `B` | `show` | shows |\n"},
]


def check(project):
    if PAGE not in project.files:
        return []
    sources = "".join(project.text(path) for path in project.matching("*.h", "*.cpp")
                      if not path.startswith(("tests/", "bench/", "examples/")))
    told = TOLD.findall(project.text(PAGE))
    known = set(MESSAGE.findall(sources)) | set(CHANNEL.findall(sources))
    named = {name for row in told for name in row}
    return [*(f"{PAGE}: does not tell of {name}" for name in sorted(known - named)),
            *(f"{PAGE}: nothing knows {name}" for name in sorted(named - known))]
