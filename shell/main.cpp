#include "files/names.h"
#include "files/programnames.h"
#include "platform/screenscale.h"
#include "shell/startup.h"

#include <QGuiApplication>
#include <QLoggingCategory>

#include <csignal>
#include <cstdio>
#include <cstring>

namespace
{

QLoggingCategory::CategoryFilter followRules = nullptr;

/// The toolkit's word, among our own lines, on names in some scripts, whose letters it then takes
/// from another font.
bool isAboutFonts(const QString& message)
{
    return message.startsWith(QLatin1String("  OpenType support missing for "));
}

/// Debug texts are a documented interface: they reach stderr as they are, whatever the environment
/// says about the toolkit's logging.
void writeLine(QtMsgType /*type*/, const QMessageLogContext& /*context*/, const QString& message)
{
    if (isAboutFonts(message))
        return;
    const QByteArray line = encodeName(message).value_or(message.toUtf8()) + '\n';
    std::fwrite(line.constData(), 1, size_t(line.size()), stderr);
}

/// Of the rules for the toolkit's logging only those count that are not about our own lines.
void keepLinesOn(QLoggingCategory* category)
{
    followRules(category);
    if (std::strcmp(category->categoryName(), "default") == 0) {
        for (const QtMsgType type : {QtDebugMsg, QtInfoMsg, QtWarningMsg, QtCriticalMsg})
            category->setEnabled(type, true);
    }
}

} // namespace

int main(int argc, char** argv)
{
    // A copy that gets too large for a limit of the user fails; it does not end the program. Were
    // the signal ignored, programs that are started would ignore it, too.
    std::signal(SIGXFSZ, [](int) {});
    qInstallMessageHandler(writeLine);
    followRules = QLoggingCategory::installFilter(nullptr);
    QLoggingCategory::installFilter(keepLinesOn);
    QCoreApplication::setApplicationName(QStringLiteral("quarn"));
    QGuiApplication::setApplicationDisplayName(ProgramNames::Program);
    QGuiApplication::setDesktopFileName(QStringLiteral("quarn"));
    ScreenScale::setVariable("QUARN_SCALE");
    return startQuarn(argc, argv);
}
