#include "plugins/support/plugintexts.h"

#include "platform/zconfig.h"

namespace
{

struct TextRow {
    QString PluginTexts::*text;
    const char* key;
};

constexpr TextRow PluginTextRows[] = {
#define TEXT(name, key, english) {&PluginTexts::name, key},
#include "plugins/support/plugintextlist.inc"
#undef TEXT
};

PluginTexts& textsInUse()
{
    static PluginTexts texts;
    return texts;
}

} // namespace

const PluginTexts& pluginTexts()
{
    return textsInUse();
}

void loadPluginTexts(const QString& file)
{
    const ZConfig config(file, true);
    PluginTexts texts;
    for (const TextRow& row : PluginTextRows) {
        QString& text = texts.*row.text;
        text = config.readEntry(QStringLiteral("Language"), QLatin1String(row.key), text);
    }
    textsInUse() = texts;
}
