#pragma once

#include "files/folderscan.h"

#include <QHash>
#include <QPixmap>
#include <QString>

#include <array>
#include <optional>

class ZListBox;
class ZListBoxItem;

/// The dates of times; quick for one that is close to the one before.
class DateTexts
{
public:
    /// As dateText() gives it.
    QString of(qint64 seconds);

private:
    qint64 from_ = 0; ///< from this second until that one the date is known
    qint64 until_ = 0;
    QString date_;
};

/// What a panel lists, and the rows made of it: the entries of a folder, numbered in row order from
/// 0, without the back entry. An entry is asked for size and time when its row is made.
class EntryRows
{
public:
    /// `iconSet` 1 is that of full information: rows have a second text. `format` is the rows'
    /// layout.
    EntryRows(FolderScan&& scan, int iconSet, QString format);

    /// How many rows there are; with `dirsOnly` those of folders alone.
    int count(bool dirsOnly) const;
    QString name(int number);
    /// The name as the system has it; no row is made for it. Valid as long as this.
    QByteArrayView nameBytes(int number);
    /// Whether the row has a second text, for which its entry must tell size and time.
    bool isDetailed(int number);
    /// The width and height that the icons of the kinds among the first `rows` need.
    QSize iconSize(int rows);
    ZListBoxItem* makeRow(ZListBox* box, int number);

private:
    QString detail(const FolderEntry& entry);
    const QPixmap& kindIcon(EntryKind kind);
    const QPixmap& fileIcon(const QString& name);

    FolderScan scan_;
    int iconSet_;
    QString format_;
    std::array<std::optional<QPixmap>, 5> kindIcons_; ///< by EntryKind, those read so far
    QHash<QString, int> iconNumbers_; ///< by extension, where the table's last entry counts
    QHash<int, QPixmap> icons_;       ///< those read so far
    DateTexts dates_;
};
