#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <memory>

/// Reader of INI files: "[group]" lines followed by "key = value" lines, UTF-8, with lines that
/// begin with ";" or "#" as comments. Blanks around key and value are dropped, everything else of
/// a value (quotes, commas, backslashes) is kept. Names are case-sensitive; of a key given twice
/// the last one counts.
///
/// The file is read once by the constructor. One that is missing, unreadable, not a regular file
/// or not INI gives no keys and no error. Only the first MaxBytes of a file are looked at.
class ZConfig
{
public:
    static constexpr qsizetype MaxBytes = 1024 * 1024;

    /// `create` is accepted for files that a caller would write later; nothing is made on disk.
    ZConfig(const QString& file, bool create);
    ~ZConfig();
    ZConfig(const ZConfig&) = delete;
    ZConfig& operator=(const ZConfig&) = delete;

    /// The value of a key. An absent key gives `fallback` as it is (so a null one stays null); a
    /// key with nothing behind its equals sign gives an empty text that is not null. Bytes that are
    /// not UTF-8 are taken as Latin-1.
    QString readEntry(const QString& group, const QString& key, const QString& fallback) const;
    /// The bytes of a value as they stand in the file; null if the key is absent.
    QByteArray readBytes(const QString& group, const QString& key) const;
    /// The keys of a group, each once, in the order of the file; with U+FFFD for what is not UTF-8.
    QStringList keysOf(const QString& group) const;

private:
    struct Private;
    std::unique_ptr<Private> d_;
};
