#pragma once

#include <QList>
#include <QString>

/// A record of the disk-font list: a font family's name and the file that holds it.
/// Several records may share a name (one per weight) and a file.
class QDiskFont
{
public:
    QString factory; ///< what renders the file; informative
    QString name;    ///< the family name that programs ask for
    bool italic = false;
    int weight = 50; ///< 0 to 99
    int size = 0;    ///< 0: scalable
    QString flavour; ///< "s": smooth
    QString file;    ///< path, relative to the current folder if it does not begin with "/"
    bool loaded = false;
};

/// The disk fonts known to this process.
class ZFontManager
{
public:
    static constexpr qsizetype MaxFileBytes = 32 * 1024 * 1024;

    /// The name of the first font factory.
    static QString firstFactory();
    static QList<QDiskFont>& diskFonts();

    /// Makes the record's family name usable with QFont: the file is loaded (once, however many
    /// records name it) and the name mapped to the family found in it. With "x.ttf" goes
    /// "x-bold.ttf" of the same family, if it lies beside it; otherwise bold texts are made from
    /// the one there is. A file that is missing or no font changes nothing: the name then gives
    /// the system's default font.
    static void addDiskFont(const QDiskFont& record);
};
