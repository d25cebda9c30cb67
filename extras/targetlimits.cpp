#include "extras/targetlimits.h"

#include <QString>
#include <QStringDecoder>

#include <sys/statfs.h>

namespace
{

// linux/magic.h has not all of them.
constexpr quint64 FatKind = 0x4d44;
constexpr quint64 ExfatKind = 0x2011bab0;
constexpr quint64 NtfsKind = 0x7366746e;

constexpr qint64 MostFatBytes = (qint64(1) << 32) - 1;
constexpr qint64 MostTextUnits = 255;

bool isTextForDos(const QString& text)
{
    static const QString forbidden = QStringLiteral("\"*/:<>?\\|");
    for (const QChar character : text) {
        if (character.unicode() < 0x20 || forbidden.contains(character))
            return false;
    }
    return !text.endsWith(QLatin1Char('.')) && !text.endsWith(QLatin1Char(' '));
}

} // namespace

TargetLimits TargetLimits::of(int folder)
{
    struct statfs info = {};
    if (fstatfs(folder, &info) != 0)
        return {};
    return ofKind(quint64(info.f_type), qint64(info.f_namelen));
}

TargetLimits TargetLimits::ofKind(quint64 kind, qint64 nameBytes)
{
    TargetLimits limits;
    if (kind == FatKind || kind == ExfatKind || kind == NtfsKind) {
        limits.namesAreTexts = true;
        limits.mostNameUnits = MostTextUnits;
        limits.ignoresCase = kind != NtfsKind;
    } else if (nameBytes > 0) {
        limits.mostNameUnits = nameBytes;
    }
    if (kind == FatKind)
        limits.mostFileBytes = MostFatBytes;
    return limits;
}

bool TargetLimits::takesName(const QByteArray& name) const
{
    if (!namesAreTexts)
        return name.size() <= mostNameUnits;
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString text = decoder(name);
    return !decoder.hasError() && text.size() <= mostNameUnits && isTextForDos(text);
}

QByteArray TargetLimits::nameKey(const QByteArray& name) const
{
    return ignoresCase ? QString::fromUtf8(name).toCaseFolded().toUtf8() : name;
}
