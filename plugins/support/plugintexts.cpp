#include "plugins/support/plugintexts.h"

#include "lang/languagereader.h"

namespace
{

constexpr KeyedText<PluginTexts> PluginTextKeys[] = {
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
    textsInUse() = readTexts(file, PluginTextKeys);
}
