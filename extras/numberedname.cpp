#include "extras/numberedname.h"

namespace
{

/// A longer suffix is none that tells of a kind of file.
constexpr qsizetype LongestSuffix = 24;

/// The first bytes of a name, without a character's first half at the end.
QByteArray cut(const QByteArray& name, qsizetype bytes)
{
    if (name.size() <= bytes)
        return name;
    qsizetype end = bytes;
    const auto continues = [&name](qsizetype at) {
        return (static_cast<unsigned char>(name.at(at)) & 0xc0U) == 0x80;
    };
    while (end > bytes - 4 && continues(end))
        --end;
    // What goes on for longer than a character does is no text.
    return name.first(continues(end) ? bytes : end);
}

} // namespace

QByteArray numberedName(const QByteArray& name, int number, qsizetype longest)
{
    const qsizetype dot = name.lastIndexOf('.');
    const bool hasSuffix = dot > 0 && name.size() - dot <= LongestSuffix;
    const QByteArray suffix = hasSuffix ? name.sliced(dot) : QByteArray();
    const QByteArray stem = name.first(name.size() - suffix.size());
    const QByteArray mark = number > 1 ? " (" + QByteArray::number(number) + ')' : QByteArray();
    return cut(stem, longest - mark.size() - suffix.size()) + mark + suffix;
}
