#include "lang/languagereader.h"

LanguageReader::LanguageReader(const QString& file) : config_(file, true) {}

QString LanguageReader::text(const char* key, const QString& fallback) const
{
    return config_.readEntry(QStringLiteral("Language"), QString::fromLatin1(key), fallback);
}
