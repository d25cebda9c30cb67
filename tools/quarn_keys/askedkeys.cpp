#include "tools/quarn_keys/askedkeys.h"

#include "platform/keymap.h"
#include "plugins/support/plugintexts.h"

namespace
{

struct AskedKey {
    int code;
    QString PluginTexts::* name;
};

/// Those without which nothing works come first: who has no more keys ends the questions there.
constexpr AskedKey NamedKeys[] = {
    {PhoneKey::SoftLeft, &PluginTexts::keySoftLeft},
    {PhoneKey::SoftRight, &PluginTexts::keySoftRight},
    {PhoneKey::Up, &PluginTexts::keyUp},
    {PhoneKey::Down, &PluginTexts::keyDown},
    {PhoneKey::Left, &PluginTexts::keyLeft},
    {PhoneKey::Right, &PluginTexts::keyRight},
    {PhoneKey::Return, &PluginTexts::keySelect},
    {PhoneKey::Clear, &PluginTexts::keyClear},
    {PhoneKey::Modifier, &PluginTexts::keyModifier},
    {PhoneKey::Hide, &PluginTexts::keyHide},
    {PhoneKey::PageUp, &PluginTexts::keyPageUp},
    {PhoneKey::PageDown, &PluginTexts::keyPageDown},
    {PhoneKey::Music, &PluginTexts::keyMusic},
    {PhoneKey::MusicPrevious, &PluginTexts::keyPrevious},
    {PhoneKey::MusicNext, &PluginTexts::keyNext},
};
constexpr char Characters[] = "123456789*0#";

QList<int> makeAskedKeys()
{
    QList<int> codes;
    for (const AskedKey& asked : NamedKeys)
        codes.append(asked.code);
    for (const char* character = Characters; *character != '\0'; ++character)
        codes.append(*character);
    return codes;
}

} // namespace

const QList<int>& askedKeys()
{
    static const QList<int> codes = makeAskedKeys();
    return codes;
}

QString nameOfAsked(int code)
{
    for (const AskedKey& asked : NamedKeys) {
        if (asked.code == code)
            return pluginTexts().*asked.name;
    }
    return QString(QChar(code));
}
