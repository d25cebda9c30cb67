#include "sharing/sharetexts.h"

#include "platform/zconfig.h"

namespace
{

struct ShareTextRow {
    QString ShareTexts::*text;
    const char* key;
};

constexpr ShareTextRow ShareTextRows[] = {
#define TEXT(name, key, english) {&ShareTexts::name, key},
#include "sharing/sharetextlist.inc"
#undef TEXT
};

ShareTexts& shareTextsInUse()
{
    static ShareTexts texts;
    return texts;
}

} // namespace

const ShareTexts& ShareTexts::instance()
{
    return shareTextsInUse();
}

void ShareTexts::load(const QString& file)
{
    const ZConfig config(file, true);
    ShareTexts texts;
    for (const ShareTextRow& row : ShareTextRows) {
        QString& text = texts.*row.text;
        text = config.readEntry(QStringLiteral("Language"), QLatin1String(row.key), text);
    }
    shareTextsInUse() = texts;
}
