"""Command strings are handed to the shell in one place, a function in launch/."""

import re

CALL = re.compile(r"(?<![\w.>:])(?:std::|::)?(?:system|popen)\s*\(")
COMMENT = re.compile(r"//.*")
SAMPLE = "int runShell(const QByteArray& command)\n{\n    return std::system(command);\n}\n"

GOOD = [
    {"launch/a.cpp": SAMPLE, "shell/a.cpp": "file.system(1); // never system()\nA::system();\n"},
]
BAD = [
    {"launch/a.cpp": SAMPLE, "fileops/a.cpp": "    system(line);\n"},
    {"launch/a.cpp": SAMPLE + SAMPLE},
    {"launch/a.cpp": SAMPLE, "fileops/a.cpp": "    ::popen(line);\n"},
    {"fileops/a.cpp": SAMPLE},
    {"launch/a.cpp": "int a;\n"},
]


def check(project):
    sources = [path for path in project.matching("*.h", "*.cpp")
               if not path.startswith(("tests/", "bench/"))]
    calls = [(path, number) for path, number, line in project.search(CALL, sources)
             if CALL.search(COMMENT.sub("", line))]
    if len(calls) == 1 and calls[0][0].startswith("launch/"):
        return []
    places = ", ".join(f"{path}:{number}" for path, number in calls)
    return [f"one call in launch/ hands commands to the shell; found: {places or 'none'}"]
