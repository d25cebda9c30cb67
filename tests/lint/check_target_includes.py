"""A file includes headers of its own target and of those that this one links by name, so that the
link lists tell who uses whom; and no target needs itself in a roundabout way. Tests and benchmarks
look into everything."""

import pathlib
import re

CALL = re.compile(r"^\s*(\w+)\s*\(([^()]*)\)", re.M)
INCLUDE = re.compile(r'^\s*#\s*include\s*"([^"]+/[^"]+)"', re.M)
# What follows in a call is about these until the next of them.
SECTIONS = {"SOURCES", "HEADERS", "LINK", "USES", "PUBLIC", "PRIVATE", "INTERFACE", "STATIC", "MODULE"}
MAKES = {"quarn_library", "quarn_module", "quarn_plugin", "add_executable", "add_library"}

LIBRARIES = "quarn_library(low SOURCES low.cpp HEADERS low.h)\n" \
            "quarn_library(mid SOURCES mid.cpp HEADERS mid.h LINK low)\n"
GOOD = [{
    "a/CMakeLists.txt": LIBRARIES + "add_executable(top main.cpp)\n"
                                    "target_link_libraries(top PRIVATE mid Qt6::Core)\n",
    "a/low.h": "", "a/low.cpp": '#include "a/low.h"\n', "a/mid.h": '#include "a/low.h"\n',
    "a/mid.cpp": "", "a/main.cpp": '#include "a/mid.h"\n#include <QString>\n',
    "tests/a/tst_a.cpp": '#include "a/low.h"\n',
}, {
    "a/CMakeLists.txt": LIBRARIES + "target_sources(mid PRIVATE more.cpp more.h)\n",
    "a/low.h": "", "a/more.h": "", "a/more.cpp": '#include "a/more.h"\n#include "a/low.h"\n',
}]
BAD = [
    {"a/CMakeLists.txt": LIBRARIES, "a/low.h": "", "a/mid.h": "",
     "a/low.cpp": '#include "a/mid.h"\n'},
    {"a/CMakeLists.txt": LIBRARIES + "add_executable(top main.cpp)\n"
                                     "target_link_libraries(top PRIVATE mid)\n",
     "a/low.h": "", "a/main.cpp": '#include "a/low.h"\n'},
    {"a/CMakeLists.txt": LIBRARIES + "target_link_libraries(low PUBLIC mid)\n"},
]


class Targets:
    """The program's targets: which files are theirs, and what they link by name."""

    def __init__(self, project):
        self.owner = {}
        self.links = {}
        for path in project.matching("CMakeLists.txt", "*/CMakeLists.txt"):
            if not path.startswith(("tests/", "bench/")):
                text = re.sub(r"#.*", "", project.text(path))
                for name, arguments in CALL.findall(text):
                    self.read(name, arguments.split(), pathlib.PurePath(path).parent)

    def read(self, name, arguments, folder):
        if name in MAKES:
            # A module has a second name, the one of its file.
            target, rest = arguments[0], arguments[2 if name == "quarn_module" else 1:]
            self.links.setdefault(target, set())
        elif name in ("target_sources", "target_link_libraries"):
            target, rest = arguments[0], arguments[1:]
        else:
            return
        links = name == "target_link_libraries"
        for word in rest:
            if word in SECTIONS:
                links = links if name == "target_link_libraries" else word in ("LINK", "USES")
            elif links:
                self.links.setdefault(target, set()).add(word)
            else:
                self.owner[str(folder / word)] = target

    def cycle(self):
        """The targets of some cycle, in order; empty if there is none."""
        done, way = set(), []

        def walk(target):
            if target in way:
                return way[way.index(target):] + [target]
            if target in done or target not in self.links:
                return []
            way.append(target)
            for other in sorted(self.links[target]):
                if found := walk(other):
                    return found
            done.add(way.pop())
            return []

        for target in sorted(self.links):
            if found := walk(target):
                return found
        return []


def check(project):
    targets = Targets(project)
    found = []
    for path, target in sorted(targets.owner.items()):
        if path not in project.files:
            continue
        for header in INCLUDE.findall(project.text(path)):
            owner = targets.owner.get(header)
            if owner not in (None, target) and owner not in targets.links.get(target, ()):
                found.append(f"{path}: {target} does not link {owner}, whose {header} it includes")
    if cycle := targets.cycle():
        found.append("targets need each other: " + " -> ".join(cycle))
    return found
