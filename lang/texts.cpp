#include "lang/texts.h"

#include "lang/languagereader.h"

#include <QDebug>

#include <cstdlib>

#define TEXT(name, key, english) QString name;
#include "lang/extratextlist.inc"
#include "lang/textlist.inc"
#undef TEXT

namespace
{

struct TextRow {
    QString* text;
    const char* key;
    const char* fallback;
};

constexpr TextRow Rows[] = {
#define TEXT(name, key, english) {&(name), key, english},
#include "lang/extratextlist.inc"
#include "lang/textlist.inc"
#undef TEXT
};

QString& fileInUse()
{
    static QString file;
    return file;
}

} // namespace

QString languageFile(const QString& workFolder, const QString& language)
{
    return workFolder + QStringLiteral("/lang/") + language + QStringLiteral(".lang");
}

const QString& languageFileInUse()
{
    return fileInUse();
}

void loadTexts(const QString& file)
{
    fileInUse() = file;
    qDebug().noquote() << "--- read lang file:" << file;
    const LanguageReader reader(file);
    const QByteArray digits = reader.text("VER", QStringLiteral("")).toLatin1();
    const long version = std::strtol(digits.constData(), nullptr, 10);
    if (version < LanguageVersion) {
        qDebug("WARNING: Version of lang file is %ld - please update it to %d", version,
               LanguageVersion);
    }
    for (const TextRow& row : Rows)
        *row.text = reader.text(row.key, QString::fromLatin1(row.fallback));
}

QString withNumber(const QString& text, int number)
{
    return QString(text).replace(QLatin1String("%1"), QString::number(number));
}
