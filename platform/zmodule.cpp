#include "platform/zmodule.h"

#include <QCoreApplication>
#include <QLibrary>

namespace
{

QString& chosenFolder()
{
    static QString folder;
    return folder;
}

} // namespace

QFunctionPointer ZModule::open(const QString& name)
{
    QLibrary library(folder() + QLatin1Char('/') + name + QStringLiteral(".so"));
    // A module that lacks anything shall fail here and not at a call. It keeps objects and types
    // that outlive any use, so it never goes.
    library.setLoadHints(QLibrary::ResolveAllSymbolsHint | QLibrary::PreventUnloadHint);
    QFunctionPointer function = nullptr;
    if (library.load())
        function = library.resolve((name + QStringLiteral("_module")).toLatin1().constData());
    if (function == nullptr)
        qWarning("module %s: %s", qUtf8Printable(name), qUtf8Printable(library.errorString()));
    return function;
}

QString ZModule::folder()
{
    return chosenFolder().isEmpty()
               ? QCoreApplication::applicationDirPath() + QStringLiteral("/modules")
               : chosenFolder();
}

void ZModule::setFolder(const QString& folder)
{
    chosenFolder() = folder;
}
