#include "shell/consolelines.h"

#include "files/names.h"
#include "shell/toolkitlines.h"

#include <QByteArrayList>
#include <QGuiApplication>
#include <QLoggingCategory>

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace
{

struct Lines {
    QLoggingCategory::CategoryFilter followRules = nullptr;
    bool areKept = false;
    QByteArrayList kept;
};

Lines& lines()
{
    static Lines theLines;
    return theLines;
}

void write(const QByteArray& line)
{
    std::fwrite(line.constData(), 1, size_t(line.size()), stderr);
}

/// Nothing is open yet that would have to be closed, and the toolkit's own end is a crash.
[[noreturn]] void endWithoutDisplay(const QByteArray& why)
{
    write("quarn: no display: " + why.trimmed() + '\n');
    std::fflush(stderr);
    std::_Exit(EXIT_FAILURE);
}

void take(QtMsgType type, const QMessageLogContext& /*context*/, const QString& message)
{
    if (isAboutFonts(message))
        return;
    if (type == QtFatalMsg && lines().areKept)
        endWithoutDisplay(whyNoDisplay(lines().kept));
    const QByteArray line = encodeName(message).value_or(message.toUtf8()) + '\n';
    if (lines().areKept) {
        lines().kept.append(line);
    } else if (isWithoutServer(message)) {
        endWithoutDisplay(line);
    } else {
        write(line);
    }
}

/// Of the rules for the toolkit's logging only those count that are not about our own lines.
void keepLinesOn(QLoggingCategory* category)
{
    lines().followRules(category);
    if (std::strcmp(category->categoryName(), "default") == 0) {
        for (const QtMsgType type : {QtDebugMsg, QtInfoMsg, QtWarningMsg, QtCriticalMsg})
            category->setEnabled(type, true);
    }
}

} // namespace

void ConsoleLines::install()
{
    lines().areKept = true;
    qInstallMessageHandler(take);
    lines().followRules = QLoggingCategory::installFilter(nullptr);
    QLoggingCategory::installFilter(keepLinesOn);
}

void ConsoleLines::displayIsLookedFor()
{
    if (QGuiApplication::primaryScreen() == nullptr)
        endWithoutDisplay(whyNoDisplay(lines().kept));
    lines().areKept = false;
    for (const QByteArray& line : std::as_const(lines().kept))
        write(line);
    lines().kept.clear();
}
