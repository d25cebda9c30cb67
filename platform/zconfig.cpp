#include "platform/zconfig.h"

#include "platform/regularfile.h"

#include <QStringDecoder>

#include <SimpleIni.h>

struct ZConfig::Private {
    CSimpleIniCaseA ini{true, false, false};
};

ZConfig::ZConfig(const QString& file, [[maybe_unused]] bool create)
    : d_(std::make_unique<Private>())
{
    std::optional<QByteArray> bytes = readRegularFile(file, MaxBytes);
    if (!bytes)
        return;
    // The parser works on C strings and would end at the first zero byte of a binary file.
    bytes->replace('\0', ' ');
    d_->ini.LoadData(bytes->constData(), static_cast<size_t>(bytes->size()));
}

ZConfig::~ZConfig() = default;

QByteArray ZConfig::readBytes(const QString& group, const QString& key) const
{
    return d_->ini.GetValue(group.toUtf8().constData(), key.toUtf8().constData(), nullptr);
}

QStringList ZConfig::keysOf(const QString& group) const
{
    CSimpleIniCaseA::TNamesDepend names;
    d_->ini.GetAllKeys(group.toUtf8().constData(), names);
    names.sort(CSimpleIniCaseA::Entry::LoadOrder());
    QStringList keys;
    for (const CSimpleIniCaseA::Entry& name : names)
        keys.append(QString::fromUtf8(name.pItem));
    return keys;
}

QString ZConfig::readEntry(const QString& group, const QString& key, const QString& fallback) const
{
    const QByteArray value = readBytes(group, key);
    if (value.isNull())
        return fallback;
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString text = decoder.decode(QByteArrayView(value));
    if (decoder.hasError())
        return QString::fromLatin1(value);
    return text.isNull() ? QStringLiteral("") : text;
}
