"""No notes to oneself, and no test that is skipped, expected to fail or switched off."""

import re

NOTE = re.compile(r"\b(TO" r"DO|FIX" r"ME)\b")
SKIPPED = re.compile(r"\bQS" r"KIP\b|\bQEXPECT" r"_FAIL\b|\bunittest\.(skip|expectedFailure)"
                     r"|\bWILL" r"_FAIL\b|\bSKIP" r"_(RETURN_CODE|REGULAR_EXPRESSION)\b"
                     r"|\bDISA" r"BLED\s+(TRUE|ON|1)\b")

GOOD = [{"a.cpp": "// Everything is done here.\nbutton->setEnabled(false);\n"}]
BAD = [
    {"a.cpp": "// TO" "DO: the rest\n"},
    {"docs/a.md": "FIX" "ME\n"},
    {"tests/a/tst_a.cpp": 'QS' 'KIP("slow");\n'},
    {"tests/CMakeLists.txt": "set_tests_properties(a PROPERTIES DISA" "BLED TRUE)\n"},
]


def check(project):
    notes = [f"{path}:{number}: a note to oneself: {line.strip()}"
             for path, number, line in project.search(NOTE, project.files)]
    return notes + [f"{path}:{number}: a test that cannot fail: {line.strip()}"
                    for path, number, line in project.search(SKIPPED, project.files)]
