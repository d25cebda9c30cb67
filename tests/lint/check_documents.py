"""Every link in a document leads to a file of the project and, behind "#", to a heading in it. The
documents show the pictures that the end-to-end tests make for them, all of those and no others."""

import pathlib
import posixpath
import re

LINK = re.compile(r"!?\[[^\]]*\]\(([^)\s]+)\)")
CODE = re.compile(r"^(```.*?^```|(?: {4}|\t).*?$)", re.DOTALL | re.MULTILINE)
HEADING = re.compile(r"^#{1,6} +(.+?) *#*$", re.MULTILINE)
ELSEWHERE = re.compile(r"^[a-z]+:")
PICTURES = "docs/pictures/"
MADE = re.compile(r'\.document\("([\w-]+)"')
MAKERS = "tests/e2e/tst_*.py"

MAKER = "tests/e2e/tst_pictures.py"
MAKING = {MAKER: 'self.document("list")\n', "docs/pictures/list.png": "",
          "docs/pictures/list-dark.png": "", "README.md": "![a](docs/pictures/list.png)\n"
          "![a](docs/pictures/list-dark.png)\n"}
GOOD = [
    {"README.md": "# A `b`, c\n[d](docs/a.md#what-it-is) [e](#a-b-c) [f](docs)\n",
     "docs/a.md": "## What it is\n    [no](link)\n[g](../README.md) [h](http://h)\n"},
    MAKING,
]
BAD = [
    {"README.md": "[a](docs/a.md)\n"},
    {"README.md": "[a](#b)\n"},
    {"README.md": "[a](docs/a.md#b)\n", "docs/a.md": "# A\n"},
    {"docs/a.md": "![a](pictures/a.png)\n"},
    {**MAKING, MAKER: 'self.document("list")\nself.document("menu")\n'},
    {**MAKING, "docs/pictures/old.png": ""},
    {**MAKING, "README.md": "![a](docs/pictures/list.png)\n"},
    {**MAKING, MAKER: "pass\n"},
]


def anchors(text):
    """What leads to the headings of a document: their words in small letters, with hyphens."""
    words = [re.sub(r"[^\w\- ]", "", heading.lower()) for heading in HEADING.findall(text)]
    return {heading.strip().replace(" ", "-") for heading in words}


def linked(project, path):
    """(target, path of the target, anchor) of each link to the project itself."""
    for target in LINK.findall(CODE.sub("", project.text(path))):
        if not ELSEWHERE.match(target):
            file, _, anchor = target.partition("#")
            folder = posixpath.dirname(path)
            yield target, posixpath.normpath(posixpath.join(folder, file)) if file else path, anchor


def broken_links(project, documents):
    folders = {str(folder) for path in project.files for folder in pathlib.PurePath(path).parents}
    for path in documents:
        for target, file, anchor in linked(project, path):
            is_there = file in project.files or (file in folders and not anchor)
            if not is_there or anchor and anchor not in anchors(CODE.sub("", project.text(file))):
                yield f"{path}: a link that leads nowhere: {target}"


def check(project):
    documents = project.matching("*.md")
    made = {f"{PICTURES}{name}{theme}.png" for path in project.matching(MAKERS)
            for name in MADE.findall(project.text(path)) for theme in ("", "-dark")}
    shown = {file for path in documents for _, file, _ in linked(project, path)
             if file.startswith(PICTURES)}
    kept = set(project.matching(f"{PICTURES}*"))
    return [*broken_links(project, documents),
            *(f"{path}: no document shows it" for path in sorted(made - shown)),
            *(f"{path}: no test makes it" for path in sorted((shown | kept) - made)),
            *(f"{path}: missing; make it with scripts/pictures" for path in sorted(made - kept))]
