#include "extras/safetexts.h"

#include "platform/zconfig.h"

namespace
{

struct SafeTextRow {
    QString SafeTexts::* text;
    const char* key;
};

constexpr SafeTextRow SafeTextRows[] = {
#define TEXT(name, key, english) {&SafeTexts::name, key},
#include "extras/safetextlist.inc"
#undef TEXT
};

SafeTexts& safeTextsInUse()
{
    static SafeTexts texts;
    return texts;
}

} // namespace

const SafeTexts& SafeTexts::instance()
{
    return safeTextsInUse();
}

void SafeTexts::load(const QString& file)
{
    const ZConfig config(file, true);
    SafeTexts texts;
    for (const SafeTextRow& row : SafeTextRows) {
        QString& text = texts.*row.text;
        text = config.readEntry(QStringLiteral("Language"), QLatin1String(row.key), text);
    }
    safeTextsInUse() = texts;
}
