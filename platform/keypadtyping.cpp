#include "platform/keypadtyping.h"

namespace
{

bool beginsSentence(const QString& before)
{
    return before.isEmpty() || before.endsWith(QLatin1String(". "));
}

} // namespace

KeypadTyping::KeypadTyping(const KeypadLetters& letters) : letters_(letters) {}

void KeypadTyping::nextMode()
{
    mode_ = static_cast<Mode>((static_cast<int>(mode_) + 1) % Modes);
    end();
}

QString KeypadTyping::nameOf(Mode mode) const
{
    if (mode == Mode::Digits)
        return QStringLiteral("123");
    QString name = letters_.of(2).left(3);
    // A script without capitals could not tell the modes apart.
    if (letters_.capital(name.at(0)) == name.at(0))
        name = QStringLiteral("abc");
    for (qsizetype i = 0; i < name.size(); ++i) {
        if (mode == Mode::Capital || (mode == Mode::Sentence && i == 0))
            name[i] = letters_.capital(name.at(i));
    }
    return name;
}

QChar KeypadTyping::press(int digit, bool goesOn, const QString& before)
{
    if (mode_ == Mode::Digits) {
        end();
        return QChar(char16_t('0' + digit));
    }
    if (goesOn && digit == digit_) {
        ++presses_;
    } else {
        digit_ = digit;
        presses_ = 0;
        isCapital_ = mode_ == Mode::Capital || (mode_ == Mode::Sentence && beginsSentence(before));
    }
    const QString turn = isCapital_ ? letters_.capitalsOf(digit) : letters_.of(digit);
    return turn.at(presses_ % turn.size());
}
