"""Paths go to the system through files/ alone: what the toolkit does with a path loses names that are
no UTF-8 or begin with a byte-order mark, so that another entry may be meant."""

import fnmatch
import re

FORBIDDEN = re.compile(
    r"\b(?:QFileInfo|QDir|QDirIterator|QSaveFile|QTemporaryFile|QTemporaryDir|QFileSystemWatcher|"
    r"QStandardPaths|QSettings)\b(?!>)"
    r"|\bQFile::(?:exists|remove|rename|link|copy|resize|symLinkTarget|moveToTrash|permissions|"
    r"setPermissions|encodeName|decodeName)\b"
    r"|\bQFile(?:\s+\w+)?\s*[({]\s*[^)}\s]"
    r"|\bsetFileName\s*\("
    r"|\bQ(?:ImageReader|ImageWriter|Image|Pixmap|Icon)\s+\w+\s*[({]\s*\w*(?:[pP]ath|[fF]ile|[nN]ame)\w*\s*[)},]"
    r"|\bQMovie>?\s*(?:\w+\s*)?[({]\s*(?!&)[^)}\s]"
    r"|\b(?:toLocalFile|fromLocalFile|applicationDirPath|applicationFilePath)\b"
    r"|\bQCoreApplication::arguments\b"
    r"|\b(?:from|to)Local8Bit\b")
COMMENT = re.compile(r"//.*")

# Files that may, and why.
EXCEPTIONS = {
    "platform/qcopchannel.cpp": "the folder of channels; the toolkit's server takes texts alone",
    "platform/screenscale.cpp": "the toolkit's own option",
    "plugins/lyraplayer/player.cpp": "the system's text of an error",
    "sharing/*.cpp": "the sharing service takes texts alone, and is handed no others",
}

GOOD = [
    {"shell/a.cpp": "#include <QFile>\nQFile file;\nif (!openRegular(file, path))\n"},
    {"shell/a.cpp": "QImageReader reader(&file);\n// as QFileInfo does\nQFile::readData(a, b);\n"},
    {"platform/qcopchannel.cpp": "QDir::tempPath();\n", "tests/a/a.cpp": "QFileInfo info(path);\n"},
]
BAD = [
    {"shell/a.cpp": "const QFileInfo info(path);\n"},
    {"shell/a.cpp": "if (QFile::exists(path))\n"},
    {"shell/a.cpp": "    QFile file(path);\n"},
    {"shell/a.h": "QByteArray a = QFile::encodeName(b);\n"},
    {"plugins/a/a.cpp": "QImageReader reader(path);\n"},
    {"plugins/a/a.cpp": "movie_ = std::make_unique<QMovie>(path);\n"},
    {"shell/a.cpp": "QDir().mkpath(folder);\n"},
    {"shell/a.cpp": "QCoreApplication::arguments().at(1);\n"},
    {"files/a.cpp": "QString::fromLocal8Bit(name);\n"},
]


def is_exception(path):
    return any(fnmatch.fnmatch(path, pattern) for pattern in EXCEPTIONS)


def check(project):
    sources = [path for path in project.matching("*.h", "*.cpp")
               if not path.startswith(("tests/", "bench/")) and not is_exception(path)]
    return [f"{path}:{number}: a path to the toolkit; files/ has its own way: {line.strip()}"
            for path, number, line in project.search(FORBIDDEN, sources)
            if FORBIDDEN.search(COMMENT.sub("", line))]
