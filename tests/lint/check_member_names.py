"""Data members that are not public end in "_", public ones do not. Bare are also those in NAMED:
what is written about these classes elsewhere calls them so."""

import re

NAMED = {
    "FileBrowserFtab": "multiSelect itemFormat previewTimer rowIcon previewIndex previewIdle "
                       "fullInfo dirsOnly",
    "kWidget": "canvas aniFrame aniTimer closed visible y aniY frameNo countdown waiting result",
    "TextInput": "label edit menu keyBarHtml progDir running accepted",
}

# Comments, texts and characters, the preprocessor's lines, and what stands between brackets.
NOISE = re.compile(r'//[^\n]*|/\*.*?\*/|R"\((?:.*?)\)"|"(?:\\.|[^"\\\n])*"'
                   r"|(?<!\d)'(?:\\.|[^'\\\n])'|^\s*#[^\n]*", re.S | re.M)
TOKEN = re.compile(r"[{};:]|[^{};:]+")
TYPE = re.compile(r"\b(class|struct)\s+(?:\w+::)*(\w+)(?:\s+final)?$")
ACCESS = re.compile(r"\b(public|protected|private)(?:\s+slots)?$|\b(signals)$")
OTHERS = re.compile(r"(using|friend|typedef|enum|class|struct|template|static|Q_\w+)\b")
NAME = re.compile(r"[\w>*&\]]\s*[\s*&](\w+)(?:\s*\[[^\]]*\])*$")

GOOD = [{
    "a/a.h": "class A : public B\n{\npublic:\n    A() : a_(1) { int local; }\n    int open;\n"
             "private:\n    enum { X };\n    int a_ = 1;\n    QMap<int, int> b_{{1, 2}};\n"
             "    void run(int x);\n    static constexpr int C = 1;\n    class Inner;\n"
             "    std::function<void(int)> c_ = [] { int d; };\n    int e_[2] = {1, 2};\n"
             "    struct Plain {\n        int bare = 0;\n    };\n    Plain f_;\n};\n",
    "a/b.h": "class B\n{\n    B(int a = 1) : a_{a}, b_(2) { a = 3; }\n    B& operator=(B&& b) { return b; }\n"
             "    void f() const override { if (x == 1) { g({1}); } }\n    int a_;\n};\n",
    "a/k.h": "class kWidget : public QWidget\n{\n    int frameNo = 0;\n};\n",
}]
BAD = [
    {"a/a.h": "class A\n{\n    int bare;\n};\n"},
    {"a/a.cpp": "}\n\nA_MACRO(x)\n\nclass A : public B\n{\n    int bare;\n};\n"},
    {"a/a.h": "class A : public B\n{\nprivate:\n    A* other = nullptr;\n};\n"},
    {"a/a.h": "class A\n{\nprivate slots:\n    void f() { g('{'); }\n\nprivate:\n"
              "    std::function<void()> bare = [] {};\n};\n"},
    {"a/a.h": "class A\n{\n    QList<int> bare{1};\n};\n"},
    {"a/a.h": "class A\n{\n    int bare, a_;\n};\n"},
    {"a/a.h": "class A\n{\n    int bare[2];\n};\n"},
    {"a/a.h": "class A\n{\n    void f(int x = 1) { x = 2; }\n    A& operator=(A&& a) { return a; }\n"
              "    A() : a_{1} {}\n    int bare;\n};\n"},
    {"a/a.h": "struct A {\n    int a;\n\nprivate:\n    int bare;\n};\n"},
    {"a/a.cpp": "class A::Inner : public B\n{\nprotected:\n    const A& bare;\n};\n"},
    {"a/a.h": "struct A {\n    int a_;\n};\n"},
    {"a/a.h": "class kWidget\n{\nprivate:\n    int frame = 0;\n};\n"},
]


def without(brackets, text):
    """A text without what stands between such brackets, and without those."""
    while (shorter := re.sub(brackets, "", text)) != text:
        text = shorter
    return text


def declared(text):
    """The names of the data members that a declaration makes."""
    text = without(r"<[^<>]*>", " ".join(text.split("=")[0].split()))
    if OTHERS.match(text) or "(" in text or "~" in text:
        return []
    first, *more = text.split(",")
    return [found[1] for each in [first] + ["x " + each.strip() for each in more]
            if (found := NAME.search(each.strip()))]


def opened(head):
    """What a brace behind that text opens: a type as [name, access], the text of a declaration
    whose initial value it belongs to, or None for a body."""
    head = re.sub(r"operator\s*\S+(?=\()|^\s*[A-Z_]+\([^()]*\)", "", head)
    found = TYPE.search(re.split(r"(?<!:):(?!:)", head)[0].strip())
    if found and "(" not in head:
        return [found[2], "private" if found[1] == "class" else "public"]
    outside = without(r"\([^()]*\)", head)
    is_value = "=" in outside or ("(" not in head and NAME.search(outside.strip()))
    return head if is_value and not OTHERS.match(head.strip()) else None


def members(text):
    """(class, access, name) for each data member. Follows the braces."""
    open_parts, head = [], ""
    text = NOISE.sub(lambda noise: " " if noise[0].strip()[0] in "/#" else '""', text)
    for token in TOKEN.findall(text):
        here = open_parts[-1] if open_parts else None
        if token == "{":
            open_parts.append(opened(head))
            head = ""
        elif token == "}":
            part = open_parts.pop() if open_parts else None
            head = part if isinstance(part, str) else ""
        elif token == ";":
            for name in declared(head) if isinstance(here, list) else ():
                yield here[0], here[1], name
            head = ""
        elif token == ":" and isinstance(here, list) and (found := ACCESS.search(head.strip())):
            here[1], head = found[1] or "signals", ""
        else:
            head += token


def check(project):
    result = []
    for path in project.matching("*.h", "*.cpp"):
        for owner, access, name in members(project.text(path)):
            if access == "public" and name.endswith("_"):
                result.append(f"{path}: {owner}::{name} is public and should not end in \"_\"")
            elif access != "public" and not name.endswith("_") \
                    and name not in NAMED.get(owner, "").split():
                result.append(f"{path}: {owner}::{name} should end in \"_\"")
    return result
