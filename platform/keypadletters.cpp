#include "platform/keypadletters.h"

#include <QStringView>

#include <algorithm>
#include <iterator>

namespace
{

constexpr std::array<const char16_t*, KeypadLetters::Keys> LatinLetters{
    u" ", u".-_,'!()&@+", u"abc", u"def", u"ghi", u"jkl", u"mno", u"pqrs", u"tuv", u"wxyz"};

enum class Script { Latin, Own };

/// The letters of a language: each digit is followed by what its key has of them.
struct Language {
    const char16_t* name;
    const char16_t* code;
    Script script;
    const char16_t* letters;
};

constexpr Language Languages[] = {
    {u"albanian", u"sq", Script::Latin, u"2ç3ë"},
    {u"arabic", u"ar", Script::Own, u"2بتةث3اءأإآىئؤ4سشصض5دذرز6جحخ7نهوي8فقكلم9طظعغ"},
    {u"azerbaijani", u"az", Script::Latin, u"2ç3ə4ğı6ö7ş8ü"},
    {u"belarusian", u"be", Script::Own, u"2абвг3деёжз4ійкл5мноп6рстуў7фхцч8шы9ьэюя"},
    {u"bosnian", u"bs", Script::Latin, u"2čć3đ7š9ž"},
    {u"bulgarian", u"bg", Script::Own, u"2абвг3дежз4ийкл5мноп6рсту7фхцч8шщъ9ьюя"},
    {u"catalan", u"ca", Script::Latin, u"2àç3èé4íï6òó8úü"},
    {u"croatian", u"hr", Script::Latin, u"2čć3đ7š9ž"},
    {u"czech", u"cs", Script::Latin, u"2áč3ďéě4í6ňó7řš8ťúů9ýž"},
    {u"danish", u"da", Script::Latin, u"2æå6ø"},
    {u"dutch", u"nl", Script::Latin, u"2á3éë4íï6óö8úü"},
    {u"estonian", u"et", Script::Latin, u"2ä6öõ7š8ü9ž"},
    {u"finnish", u"fi", Script::Latin, u"2äå6ö"},
    {u"french", u"fr", Script::Latin, u"2àâçæ3éèêë4îï6ôœ8ùûü9ÿ"},
    {u"german", u"de", Script::Latin, u"2ä6ö7ß8ü"},
    {u"greek", u"el", Script::Own, u"2αβγά3δεζέ4ηθιήίϊΐ5κλμ6νξοό7πρσς8τυφύϋΰ9χψωώ"},
    {u"hebrew", u"he", Script::Own, u"2דהו3אבג4מםנן5יכךל6זחט7רשת8צץק9סעפף"},
    {u"hungarian", u"hu", Script::Latin, u"2á3é4í6óöő8úüű"},
    {u"icelandic", u"is", Script::Latin, u"2áæ3éð4í6óö8úþ9ý"},
    {u"italian", u"it", Script::Latin, u"2à3èé4ì6ò8ù"},
    {u"latvian", u"lv", Script::Latin, u"2āč3ē4ģī5ķļ6ņ7š8ū9ž"},
    {u"lithuanian", u"lt", Script::Latin, u"2ąč3ęė4į7š8ųū9ž"},
    {u"macedonian", u"mk", Script::Own, u"2абвг3дѓеж4зѕиј5клљм6нњоп7рстќ8уфхц9чџш"},
    {u"norwegian", u"no", Script::Latin, u"2æå6ø"},
    {u"polish", u"pl", Script::Latin, u"2ąć3ę5ł6ńó7ś9źż"},
    {u"portuguese", u"pt", Script::Latin, u"2ãáâàç3éê4í6õóô8ú"},
    {u"romanian", u"ro", Script::Latin, u"2ăâ4î7ș8ț"},
    {u"russian", u"ru", Script::Own, u"2абвг3дежзё4ийкл5мноп6рсту7фхцч8шщъы9ьэюя"},
    {u"serbian", u"sr", Script::Own, u"2абвг3дђеж4зијк5лљмн6њопр7стћу8фхц9чџш"},
    {u"slovak", u"sk", Script::Latin, u"2áäč3ďé4í5ĺľ6ňóô7ŕš8ťú9ýž"},
    {u"slovenian", u"sl", Script::Latin, u"2č7š9ž"},
    {u"spanish", u"es", Script::Latin, u"1¿¡2á3é4í6ñó8úü"},
    {u"swedish", u"sv", Script::Latin, u"2åä6ö"},
    {u"turkish", u"tr", Script::Latin, u"2ç4ğı6ö7ş8ü"},
    {u"ukrainian", u"uk", Script::Own, u"2абвгґ3деєжз4иіїйкл5мноп6рсту7фхцч8шщ9ьюя"},
};

const Language* languageOf(const QString& name)
{
    const auto found =
        std::find_if(std::begin(Languages), std::end(Languages), [&name](const Language& each) {
            return name.compare(QStringView(each.name), Qt::CaseInsensitive) == 0 ||
                   name.compare(QStringView(each.code), Qt::CaseInsensitive) == 0;
        });
    return found == std::end(Languages) ? nullptr : found;
}

std::array<QString, KeypadLetters::Keys> lettersByKey(const Language* language)
{
    std::array<QString, KeypadLetters::Keys> own;
    size_t key = 0;
    for (const QChar character : QStringView(language != nullptr ? language->letters : u"")) {
        if (character >= u'0' && character <= u'9')
            key = size_t(character.unicode() - u'0');
        else
            own[key].append(character);
    }
    return own;
}

KeypadLetters& theCurrent()
{
    static KeypadLetters letters;
    return letters;
}

} // namespace

KeypadLetters::KeypadLetters(const QString& language)
{
    const Language* known = languageOf(language);
    const auto own = lettersByKey(known);
    const bool ownFirst = known != nullptr && known->script == Script::Own;
    for (size_t key = 0; key < small_.size(); ++key) {
        const QString latin = QString::fromUtf16(LatinLetters[key]);
        small_[key] = (ownFirst ? own[key] + latin : latin + own[key]) + QChar(char16_t('0' + key));
    }
    hasDottedCapital_ = own[4].contains(QChar(u'ı'));
}

const KeypadLetters& KeypadLetters::current()
{
    return theCurrent();
}

void KeypadLetters::setLanguage(const QString& language)
{
    theCurrent() = KeypadLetters(language);
}

QString KeypadLetters::capitalsOf(int digit) const
{
    QString capitals;
    for (const QChar letter : of(digit)) {
        const QChar large = capital(letter);
        if (!capitals.contains(large))
            capitals.append(large);
    }
    return capitals;
}

QChar KeypadLetters::capital(QChar letter) const
{
    if (hasDottedCapital_ && letter == u'i')
        return QChar(u'İ');
    return letter.toUpper();
}
