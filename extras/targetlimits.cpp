#include "extras/targetlimits.h"

#include "extras/mounts.h"

#include <QString>
#include <QStringDecoder>

#include <sys/statfs.h>

namespace
{

// linux/magic.h has not all of them.
constexpr quint64 FatKind = 0x4d44;
constexpr quint64 ExfatKind = 0x2011bab0;
constexpr quint64 NtfsKind = 0x7366746e;
constexpr quint64 FuseKind = 0x65735546;

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
    const auto nameBytes = qint64(info.f_namelen);
    return quint64(info.f_type) == FuseKind ? ofProgram(fileSystemName(folder), nameBytes)
                                            : ofKind(quint64(info.f_type), nameBytes);
}

TargetLimits TargetLimits::ofKind(quint64 kind, qint64 nameBytes)
{
    TargetLimits limits;
    if (kind == FatKind || kind == ExfatKind || kind == NtfsKind) {
        limits.namesAreTexts = limits.namesAreOfDos = limits.hasClusters = true;
        limits.mostNameUnits = MostTextUnits;
    } else if (nameBytes > 0) {
        limits.mostNameUnits = nameBytes;
    }
    if (kind == FatKind || kind == ExfatKind) {
        limits.ignoresCase = true;
        limits.keepsHoles = limits.keepsLinks = limits.keepsRights = false;
    }
    if (kind == FatKind)
        limits.mostFileBytes = MostFatBytes;
    return limits;
}

TargetLimits TargetLimits::ofProgram(const QByteArray& name, qint64 nameBytes)
{
    if (name == "vfat" || name == "fat" || name == "fusefat")
        return ofKind(FatKind, nameBytes);
    if (name == "exfat" || name == "exfat-fuse")
        return ofKind(ExfatKind, nameBytes);
    if (name != "ntfs" && name != "ntfs-3g")
        return ofKind(FuseKind, nameBytes);
    TargetLimits limits = ofKind(NtfsKind, nameBytes);
    // Whether these are refused is up to how it was mounted, which nobody can ask.
    limits.namesAreOfDos = false;
    return limits;
}

bool TargetLimits::takesName(const QByteArray& name) const
{
    if (!namesAreTexts)
        return name.size() <= mostNameUnits;
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString text = decoder(name);
    return !decoder.hasError() && text.size() <= mostNameUnits &&
           (!namesAreOfDos || isTextForDos(text));
}

QByteArray TargetLimits::nameKey(const QByteArray& name) const
{
    return ignoresCase ? QString::fromUtf8(name).toCaseFolded().toUtf8() : name;
}
