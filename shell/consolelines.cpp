#include "shell/consolelines.h"

#include "files/names.h"

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

/// The toolkit's word, among our own lines, on names in some scripts, whose letters it then takes
/// from another font.
bool isAboutFonts(const QString& message)
{
    return message.startsWith(QLatin1String("  OpenType support missing for "));
}

/// The toolkit's server for VNC looks for its port when the event loop begins, and the program
/// would go on where nobody sees it.
bool isWithoutServer(const QString& message)
{
    return message.startsWith(QLatin1String("QVncServer could not connect"));
}

void write(const QByteArray& line)
{
    std::fwrite(line.constData(), 1, size_t(line.size()), stderr);
}

/// What failed stands before the toolkit's word on its plugin, or first.
QByteArray reason(const QByteArrayList& kept)
{
    for (qsizetype i = 1; i < kept.size(); ++i) {
        if (kept.at(i).contains("Qt platform plugin"))
            return kept.at(i - 1);
    }
    return kept.value(0, "the toolkit does not say why");
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
        endWithoutDisplay(reason(lines().kept));
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
        endWithoutDisplay(reason(lines().kept));
    lines().areKept = false;
    for (const QByteArray& line : std::as_const(lines().kept))
        write(line);
    lines().kept.clear();
}
