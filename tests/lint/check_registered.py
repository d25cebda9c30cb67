"""Every source and every test is named in the CMakeLists.txt of its folder or of one above, so that
none is forgotten by the build. So is every header of a library, which then must compile alone."""

import pathlib
import re

APART = ("tests", "bench", "tools")  # their headers belong to no library

GOOD = [{
    "CMakeLists.txt": "add_subdirectory(a)\n",
    "a/CMakeLists.txt": "quarn_library(a SOURCES a.cpp HEADERS a.h)\n",
    "a/a.cpp": "", "a/a.h": "",
    "tests/CMakeLists.txt": "quarn_test(a/tst_a)\nquarn_test(tst_b)\n",
    "tests/a/tst_a.cpp": "", "tests/b/tst_b.cpp": "", "tests/a/keys.h": "",
}]
BAD = [
    {"a/CMakeLists.txt": "quarn_library(a SOURCES aa.cpp)\n", "a/a.cpp": ""},
    {"a/CMakeLists.txt": "# a.cpp\n", "a/a.cpp": ""},
    {"a/CMakeLists.txt": "quarn_library(a SOURCES a.cpp)\n", "a/a.cpp": "", "a/a.h": ""},
    {"tests/CMakeLists.txt": "quarn_test(tst_bb)\n", "tests/b/tst_b.cpp": ""},
]


def lists_above(project, path):
    """The text, without comments, of the CMake files that could name a file."""
    folders = pathlib.PurePath(path).parents
    lists = [str(folder / "CMakeLists.txt") for folder in folders]
    return "\n".join(re.sub(r"#.*", "", project.text(name)) for name in lists
                     if name in project.files)


def is_named(project, path):
    file = pathlib.PurePath(path)
    name = re.escape(file.name)
    if file.name.startswith(("tst_", "bench_")):
        name = f"{re.escape(file.stem)}({re.escape(file.suffix)})?"
    return re.search(rf"(?<![\w.]){name}(?![\w.])", lists_above(project, path)) is not None


def check(project):
    headers = [path for path in project.matching("*/*.h") if path.split("/")[0] not in APART]
    return [f"{path}: no CMakeLists.txt names it"
            for path in project.matching("*.cpp") + headers if not is_named(project, path)]
