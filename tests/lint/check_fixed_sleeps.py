"""Tests wait for conditions, not for a guessed time. A line that must sleep gives its reason in a
comment that begins with "waits:"."""

import re

CODE = re.compile(r"QTest::q(Wait|Sleep)\s*\(|QThread::[mu]?sleep\s*\(|\bu?sleep\s*\("
                  r"|\bnanosleep\s*\(|\bsleep_(for|until)\s*\(")
SHELL = re.compile(r"(^|[;&|({`]|\b(do|then|else)\b|!)\s*sleep\s+[\d.$]")
REASON = re.compile(r"(//|#|/\*)\s*waits: \w")

GOOD = [{
    "tests/a/tst_a.cpp": "QTest::q" "Wait(50); // waits: the key's auto-repeat is 50 ms\n"
                         "QVERIFY(QTest::q" "WaitFor(ready));\n",
    "tests/e2e/a.sh": "#!/bin/bash\nwait $pid\n",
}]
BAD = [
    {"tests/a/tst_a.cpp": "QTest::q" "Wait(50); // settle\n"},
    {"tests/a/tst_a.cpp": "QThread::ms" "leep(5);\n"},
    {"tests/a/tst_a.cpp": "std::this_thread::sleep" "_for(1s);\n"},
    {"tests/e2e/a.py": "time.s" "leep(0.1)\n"},
    {"tests/e2e/a": "#!/bin/bash\nfor i in 1 2; do sle" "ep 1; done\n"},
]


def check(project):
    result = []
    for path in project.matching("tests/*"):
        pattern = SHELL if project.is_shell(path) else CODE
        if not path.endswith((".cpp", ".h", ".py")) and pattern is CODE:
            continue
        result += [f"{where}:{number}: a fixed sleep without a reason: {line.strip()}"
                   for where, number, line in project.search(pattern, [path])
                   if not REASON.search(line)]
    return result
