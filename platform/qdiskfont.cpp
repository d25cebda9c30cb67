#include "platform/qdiskfont.h"

#include "platform/regularfile.h"

#include <QFont>
#include <QFontDatabase>
#include <QHash>

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
        QStringList families;
        if (const auto bytes = readRegularFile(record.file, MaxFileBytes)) {
            const int id = QFontDatabase::addApplicationFontFromData(*bytes);
            families = QFontDatabase::applicationFontFamilies(id);
        }
        found = familiesByFile.insert(record.file, families);
    }
    if (!found->isEmpty() && found->first() != record.name &&
        !QFont::substitutes(record.name).contains(found->first()))
        QFont::insertSubstitution(record.name, found->first());
}
