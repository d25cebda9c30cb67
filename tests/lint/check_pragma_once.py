"""Every header begins with "#pragma once"."""

GOOD = [{"a/a.h": "#pragma once\n\nclass A;\n"}]
BAD = [{"a/a.h": "class A;\n"}, {"a/a.h": "// #pragma once\n"}]


def check(project):
    return [f'{path}: does not begin with "#pragma once"' for path in project.matching("*.h")
            if not project.text(path).startswith("#pragma once\n")]
