"""The page of settings names each key of the settings files, each code of a key, and each variable of
the environment that programs and scripts read, and no variable that nothing knows."""

import re

PAGE = "docs/settings.md"
SETTING = re.compile(r"^(\w+) *=", re.MULTILINE)
CODE = re.compile(r"(?:= |; | {2}|and )(0x10[0-9A-F]{2})\b")
# A literal in the sources of programs; a default of a script.
VARIABLE = re.compile(r'"(QUARN_[A-Z_]+)"')
SCRIPT_VARIABLE = re.compile(r"\$\{(QUARN_[A-Z_]+):?-")
ANY_VARIABLE = re.compile(r"\bQUARN_[A-Z_]+")
NAMED_VARIABLE = re.compile(r"`(QUARN_[A-Z_]+)[`=]")

GOOD = [
    {"data/fm.cfg.in": "[Extras]\n; Find = 2\nFind = 1\n",
     "data/keymap.cfg": ";  0x1012 left\nKeypad = 0\n", "tests/a.cpp": '"QUARN_C"\n',
     PAGE: "`Find` `Keypad = 0` `0x1012` `QUARN_A` `QUARN_B=1` `QUARN_C`\n",
     "a/a.cpp": 'qgetenv("QUARN_A");\n', "scripts/a": "echo ${QUARN_B:-2}\n"},
]
BAD = [
    {"data/fm.cfg.in": "Find = 1\n", PAGE: "Find\n"},
    {"data/keymap.cfg": ";  0x1012 left\n", PAGE: "`0x1013`\n"},
    {"data/keymap.cfg": "Keypad = 0\n", PAGE: ""},
    {"a/keymap.h": "Left = 0x1012,\n", PAGE: ""},
    {"a/a.h": 'char A[] = "QUARN_A";\n', PAGE: ""},
    {"scripts/a": "echo ${QUARN_B-2}\n", PAGE: ""},
    {PAGE: "`QUARN_A`\n"},
    {PAGE: "`QUARN_A`\n", "a.md": "`QUARN_A`\n"},
]


def found(pattern, project, paths):
    return {name for path in paths for name in pattern.findall(project.text(path))}


def settings(project):
    files = project.matching("data/fm.cfg.in", "data/keymap.cfg")
    return found(SETTING, project, files) | \
        found(CODE, project, project.matching("data/keymap.cfg", "*/keymap.h"))


def variables(project):
    sources = [path for path in project.matching("*.h", "*.cpp")
               if not path.startswith(("tests/", "bench/", "examples/"))]
    scripts = [path for path in project.matching("scripts/*") if path.count("/") == 1]
    return found(VARIABLE, project, sources) | found(SCRIPT_VARIABLE, project, scripts)


def check(project):
    if PAGE not in project.files:
        return []
    page = project.text(PAGE)
    named = set(NAMED_VARIABLE.findall(page))
    known = found(ANY_VARIABLE, project, [path for path in project.files if not path.endswith(".md")])
    missing = {key for key in settings(project) if not re.search(rf"`{key}[`\s=]", page)}
    return [*(f"{PAGE}: does not name {name}" for name in sorted(missing | variables(project) - named)),
            *(f"{PAGE}: nothing knows {name}" for name in sorted(named - known))]
