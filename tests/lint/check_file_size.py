"""The repository keeps sources: nothing above 400 kB."""

LIMIT = 400_000

GOOD = [{"a.txt": "a" * LIMIT}]
BAD = [{"data/a.txt": "a" * (LIMIT + 1)}]


def check(project):
    sizes = {path: (project.root / path).stat().st_size for path in project.files}
    return [f"{path}: {size} bytes, more than {LIMIT}" for path, size in sizes.items()
            if size > LIMIT]
