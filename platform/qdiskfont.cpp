#include "platform/qdiskfont.h"

#include "platform/regularfile.h"

#include <QFont>
#include <QFontDatabase>
#include <QHash>

namespace
{

/// The families in a font file; none if it is none.
QStringList loadFile(const QString& file)
{
    const auto bytes = readRegularFile(file, ZFontManager::MaxFileBytes);
    return bytes ? QFontDatabase::applicationFontFamilies(
                       QFontDatabase::addApplicationFontFromData(*bytes))
                 : QStringList();
}

/// "folder/x-bold.ttf" for "folder/x.ttf".
QString boldFile(QString file)
{
    const qsizetype dot = file.lastIndexOf(QLatin1Char('.'));
    const bool isInName = dot > file.lastIndexOf(QLatin1Char('/'));
    return file.insert(isInName ? dot : file.size(), QStringLiteral("-bold"));
}

} // namespace

QString ZFontManager::firstFactory()
{
    return QStringLiteral("freetype");
}

QList<QDiskFont>& ZFontManager::diskFonts()
{
    static QList<QDiskFont> fonts;
    return fonts;
}

void ZFontManager::addDiskFont(const QDiskFont& record)
{
    static QHash<QString, QStringList> familiesByFile;
    auto found = familiesByFile.find(record.file);
    if (found == familiesByFile.end()) {
        const QStringList families = loadFile(record.file);
        if (!families.isEmpty())
            loadFile(boldFile(record.file));
        found = familiesByFile.insert(record.file, families);
    }
    if (!found->isEmpty() && found->first() != record.name &&
        !QFont::substitutes(record.name).contains(found->first()))
        QFont::insertSubstitution(record.name, found->first());
}
