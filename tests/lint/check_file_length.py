"""A source file of more than 800 lines has more than one subject."""

LIMIT = 800

GOOD = [{"a.cpp": "\n" * LIMIT}]
BAD = [{"a/a.h": "\n" * (LIMIT + 1)}]


def check(project):
    lengths = {path: project.text(path).count("\n") for path in project.matching("*.h", "*.cpp")}
    return [f"{path}: {length} lines, more than {LIMIT}" for path, length in lengths.items()
            if length > LIMIT]
