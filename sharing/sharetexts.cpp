#include "sharing/sharetexts.h"

#include "lang/languagereader.h"

namespace
{

constexpr KeyedText<ShareTexts> ShareTextKeys[] = {
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
    shareTextsInUse() = readTexts(file, ShareTextKeys);
}
