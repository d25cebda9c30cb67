"""The documents name each setting, each key code, each variable of the environment and each message
that the code knows, and none of the last two that it does not."""

import re

SETTINGS, MESSAGES = "docs/settings.md", "docs/messages.md"
SETTING = re.compile(r"^(\w+) *=", re.MULTILINE)
CODE = re.compile(r"(?:= |; | {2}|and )(0x10[0-9A-F]{2})\b")
# A literal in the sources of programs; a default of a script.
VARIABLE = re.compile(r'"(QUARN_[A-Z_]+)"')
SCRIPT_VARIABLE = re.compile(r"\$\{(QUARN_[A-Z_]+):?-")
MESSAGE = re.compile(r'\bmessage [!=]= "([^"]+)"')
CHANNEL = re.compile(r'\bchar (?:Channel|Player)\[\] = "(\w+)"')
NAMED_VARIABLE = re.compile(r"`(QUARN_[A-Z_]+)[`=]")
NAMED_MESSAGE = re.compile(r"^\| `(\w+)` \| `([^`]+)` \|", re.MULTILINE)

GOOD = [
    {"data/fm.cfg.in": "[Extras]\n; Find = 2\nFind = 1\n", "data/keymap.cfg": ";  0x1012 left\nKeypad = 0\n",
     SETTINGS: "`Find` `Keypad = 0` `0x1012` `QUARN_A` `QUARN_B=1`\n",
     "a/a.cpp": 'qgetenv("QUARN_A");\nif (message == "show")\nconst char Channel[] = "A";\n',
     "scripts/a": "echo ${QUARN_B:-2}\n", "tests/a.cpp": '"QUARN_C"\n',
     MESSAGES: "| `A` | `show` | shows |\n"},
]
BAD = [
    {"data/fm.cfg.in": "Find = 1\n", SETTINGS: "Find\n"},
    {"data/keymap.cfg": ";  0x1012 left\n", SETTINGS: "`0x1013`\n"},
    {"data/keymap.cfg": "Keypad = 0\n", SETTINGS: ""},
    {"a/keymap.h": "Left = 0x1012,\n", SETTINGS: ""},
    {"a/a.h": 'char A[] = "QUARN_A";\n', SETTINGS: ""},
    {"scripts/a": "echo ${QUARN_B-2}\n", SETTINGS: ""},
    {SETTINGS: "`QUARN_A`\n"},
    {"a/a.cpp": 'if (message != "show")\n', MESSAGES: ""},
    {"a/a.h": 'inline constexpr char Channel[] = "A";\n', MESSAGES: ""},
    {"a/a.cpp": 'const char Channel[] = "A";\n', MESSAGES: "| `A` | `show` | shows |\n"},
]


def named_in(pattern, project, *paths):
    return {name for path in project.matching(*paths)
            for name in pattern.findall(project.text(path))}


def programs(project):
    """The sources of what is installed."""
    return [path for path in project.matching("*.h", "*.cpp")
            if not path.startswith(("tests/", "bench/", "examples/"))]


def settings(project):
    """What the settings' page must have between back-quotes."""
    keys = named_in(SETTING, project, "data/fm.cfg.in", "data/keymap.cfg")
    return keys | named_in(CODE, project, "data/keymap.cfg", "*/keymap.h")


def variables(project):
    scripts = [path for path in project.matching("scripts/*") if "/" not in path[len("scripts/"):]]
    return named_in(VARIABLE, project, *programs(project)) | \
        named_in(SCRIPT_VARIABLE, project, *scripts)


def check(project):
    page, messages = project.matching(SETTINGS), project.matching(MESSAGES)
    if not page and not messages:
        return []
    text = "".join(map(project.text, page))
    found = [f"{SETTINGS}: does not name {key}" for key in sorted(settings(project))
             if page and not re.search(rf"`{key}[`\s=]", text)]
    known, named = variables(project), set(NAMED_VARIABLE.findall(text))
    found += [f"{SETTINGS}: does not name {name}" for name in sorted(known - named) if page]
    found += [f"{SETTINGS}: nothing reads {name}" for name in sorted(named - known)]
    told = {pair for path in messages for pair in NAMED_MESSAGE.findall(project.text(path))}
    for what, pattern, of_page in (("message", MESSAGE, {pair[1] for pair in told}),
                                   ("channel", CHANNEL, {pair[0] for pair in told})):
        in_code = named_in(pattern, project, *programs(project)) if messages else set()
        found += [f"{MESSAGES}: does not tell of the {what} {name}"
                  for name in sorted(in_code - of_page)]
        found += [f"{MESSAGES}: nothing knows the {what} {name}"
                  for name in sorted(of_page - in_code)]
    return found
