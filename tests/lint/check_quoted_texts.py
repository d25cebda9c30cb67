"""What the program says is quoted as it says it, in the page of what may surprise."""

import re

PAGE = "docs/surprises.md"
QUOTED = re.compile(r'"([^"\n]{3,})"')

GOOD = [{"a/a.cpp": 'say("All is done");\n', "data/lang/a.lang": "A = Please wait\n",
         PAGE: 'It says "is done", "Please wait" or "..".\n'}]
BAD = [{"a/a.cpp": 'say("All is done");\n', PAGE: 'It says "all is done".\n'}]


def check(project):
    said = "".join(project.text(path) for path in project.matching("*.h", "*.cpp", "data/lang/*.lang")
                   if not path.startswith(("tests/", "bench/", "examples/")))
    texts = {text for path in project.matching(PAGE) for text in QUOTED.findall(project.text(path))}
    return [f"{PAGE}: no text of the program: {text}" for text in sorted(texts)
            if text not in said]
